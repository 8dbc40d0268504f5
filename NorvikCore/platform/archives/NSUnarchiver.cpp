#include "NorvikCore/platform/archives/NSUnarchiver.h"

#include "NorvikCore/platform/archives/internal/ArchiveReader.h"

namespace norvik {

NSUnarchiver::NSUnarchiver(const NSData& data) {
  Ref<NSData> kept = data.copy();
  auto content = detail::parseSequentialArchive(kept->bytes());
  reader_ = detail::Hidden(new detail::ArchiveReader(*this, std::move(kept), std::move(content)));
}

NSUnarchiver::~NSUnarchiver() = default;

Value NSUnarchiver::unarchiveObjectWithData(const NSData& data) {
  const auto unarchiver = make<NSUnarchiver>(data);
  try {
    return unarchiver->decodeObject();
  } catch (...) {
    unarchiver->reader_->abandon();
    throw;
  }
}

bool NSUnarchiver::isAtEnd() const noexcept { return reader_->isAtEnd(); }

Value NSUnarchiver::decodeObject() { return reader_->next(); }

bool NSUnarchiver::containsValueForKey(const NSString& key) const { return reader_->field(key) != nullptr; }

Value NSUnarchiver::decodeObjectForKey(const NSString& key) {
  const detail::ArchivedField* field = reader_->field(key);
  return field ? reader_->value(field->value) : Value();
}

void NSUnarchiver::encodeObject(const Value&) { detail::raiseUnarchive("an unarchiver does not write"); }

void NSUnarchiver::encodeObject(const Value&, const NSString&) {
  detail::raiseUnarchive("an unarchiver does not write");
}

}  // namespace norvik

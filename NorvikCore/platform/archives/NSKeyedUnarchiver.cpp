#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"

#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/internal/ArchiveReader.h"
#include "NorvikCore/platform/archives/internal/CodedObject.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {

constexpr NSString NSCoderErrorDomain = "NSCoderErrorDomain";

using detail::ArchivedField;

NSKeyedUnarchiver::NSKeyedUnarchiver(const NSData& data) {
  Ref<NSData> kept = data.copy();
  auto content = detail::parseKeyedArchive(kept->bytes());
  reader_ = detail::Hidden(new detail::ArchiveReader(*this, std::move(kept), std::move(content)));
}
NSKeyedUnarchiver::~NSKeyedUnarchiver() = default;

Value NSKeyedUnarchiver::unarchiveObjectWithData(const NSData& data) {
  const auto unarchiver = make<NSKeyedUnarchiver>(data);
  try {
    return unarchiver->decodeObjectForKey(NSKeyedArchiveRootObjectKey);
  } catch (...) {
    unarchiver->reader_->abandon();
    throw;
  }
}

Value NSKeyedUnarchiver::unarchivedObjectOfClass(const Class& wanted, const NSData& data, Ref<NSError>* error) {
  const auto refuse = [&](std::int64_t code, const NSString& why) {
    if (error) {
      *error = NSError::errorWithDomain(
          NSCoderErrorDomain, code,
          NSDictionary::dictionaryWith({{NSLocalizedDescriptionKey, "The data could not be read: " + why + "."},
                                        {NSLocalizedFailureReasonErrorKey, why}}));
    }
    return Value();
  };
  try {
    Value root = unarchiveObjectWithData(data);
    if (!root.isAbsent() && root.classObject().isSubclassOf(wanted)) return root;
    return refuse(NSCoderValueNotFoundError, "there is no " + wanted.name() + " in it");
  } catch (const NSException& e) {
    if (e.name() != NSInvalidUnarchiveOperationException) throw;
    return refuse(NSCoderReadCorruptError, e.reason());
  }
}

bool NSKeyedUnarchiver::containsValueForKey(const NSString& key) const { return reader_->field(key) != nullptr; }

Value NSKeyedUnarchiver::decodeObjectForKey(const NSString& key) {
  const ArchivedField* field = reader_->field(key);
  return field ? reader_->value(field->value) : Value();
}

Value NSKeyedUnarchiver::decodeObject() {
  const ArchivedField* field = reader_->field(detail::keyOfUnnamedValue(reader_->countUnnamed()));
  if (!field) detail::raiseUnarchive("there is no further value without a key");
  return reader_->value(field->value);
}

void NSKeyedUnarchiver::encodeObject(const Value&) { detail::raiseUnarchive("an unarchiver does not write"); }

void NSKeyedUnarchiver::encodeObject(const Value&, const NSString&) {
  detail::raiseUnarchive("an unarchiver does not write");
}

}  // namespace norvik

#include "NorvikCore/platform/archives/NSArchiver.h"

#include "NorvikCore/platform/archives/internal/ArchiveWriter.h"

namespace norvik {

/// Writes everything into one text, each item at its first occurrence.
class NSArchiver::Writer : public detail::ArchiveWriter {
 public:
  explicit Writer(NSCoder& coder) : ArchiveWriter(coder), out_(detail::sequentialArchiveMark) {}

  void encodeNext(const Value& value) { writeValue(out_, value); }

  void encodeField(const Value& value, const NSString& key) {
    useKey(key);
    detail::writeByte(out_, detail::ArchiveTag::Key);
    writeText(out_, key);
    writeValue(out_, value);
  }

  [[nodiscard]] Ref<NSData> data() const {
    checkIsComplete();
    return NSData::dataWithText(out_);
  }

 private:
  void writeText(std::string& out, const NSString& text) override {
    const auto [number, isNew] = this->number(text);
    detail::writeNumber(out, isNew ? 0 : number + 1);
    if (isNew) detail::writeCharacters(out, text);
  }

  void writeReference(std::string& out, NSObject& object) override {
    const auto [number, isNew] = this->number(object);
    detail::writeNumber(out, isNew ? 0 : number + 1);
    if (isNew) writeObject(out, object);
  }

  void writeCoded(std::string& out, const NSCoding& object, NSCoder& coder) override {
    object.encodeWithCoder(coder);
    detail::writeByte(out, detail::ArchiveTag::End);
  }

  std::string out_;
};

NSArchiver::NSArchiver() : writer_(new Writer(*this)) {}
NSArchiver::~NSArchiver() = default;

Ref<NSData> NSArchiver::archivedDataWithRootObject(const Value& root) {
  const auto archiver = make<NSArchiver>();
  archiver->encodeObject(root);
  return archiver->archiverData();
}

void NSArchiver::encodeObject(const Value& value) { writer_->encodeNext(value); }

void NSArchiver::encodeObject(const Value& value, const NSString& key) { writer_->encodeField(value, key); }

Ref<NSData> NSArchiver::archiverData() const { return writer_->data(); }

Value NSArchiver::decodeObject() { detail::raiseArchive("an archiver does not read"); }

bool NSArchiver::containsValueForKey(const NSString&) const { detail::raiseArchive("an archiver does not read"); }

Value NSArchiver::decodeObjectForKey(const NSString&) { detail::raiseArchive("an archiver does not read"); }

}  // namespace norvik

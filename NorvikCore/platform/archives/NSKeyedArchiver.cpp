#include "NorvikCore/platform/archives/NSKeyedArchiver.h"

#include "NorvikCore/platform/archives/internal/ArchiveWriter.h"
#include "NorvikCore/platform/archives/internal/CodedObject.h"

namespace norvik {

constexpr NSString NSKeyedArchiveRootObjectKey = "root";

/// Writes each object into a body of its own.
class NSKeyedArchiver::Writer : public detail::ArchiveWriter {
 public:
  explicit Writer(NSCoder& coder) : ArchiveWriter(coder) {}

  void encodeField(const Value& value, const NSString& key) {
    useKey(key);
    std::string bytes;
    writeText(bytes, key);
    writeValue(bytes, value);
    Fields& fields = fields_.back();  // looked up only now, because objects written meanwhile had fields of their own
    fields.bytes += bytes;
    ++fields.count;
  }

  void encodeNext(const Value& value) { encodeField(value, detail::keyOfUnnamedValue(fields_.back().unnamedCount++)); }

  [[nodiscard]] Ref<NSData> data() const {
    checkIsComplete();
    std::string out(detail::archiveMark);
    detail::writeNumber(out, texts_.size());
    for (const NSString& text : texts_) detail::writeCharacters(out, text);
    detail::writeNumber(out, bodies_.size());
    for (const std::string& body : bodies_) out += body;
    writeFields(out, fields_.front());
    return NSData::dataWithText(out);
  }

 private:
  struct Fields {
    std::size_t count = 0, unnamedCount = 0;
    std::string bytes;
  };

  static void writeFields(std::string& out, const Fields& fields) {
    detail::writeNumber(out, fields.count);
    out += fields.bytes;
  }

  void writeText(std::string& out, const NSString& text) override {
    const auto [number, isNew] = this->number(text);
    if (isNew) texts_.push_back(text);
    detail::writeNumber(out, number);
  }

  void writeReference(std::string& out, NSObject& object) override {
    const auto [number, isNew] = this->number(object);
    if (isNew) {
      bodies_.emplace_back();
      std::string body;
      writeObject(body, object);
      bodies_[number] = std::move(body);
    }
    detail::writeNumber(out, number);
  }

  void writeCoded(std::string& out, const NSCoding& object, NSCoder& coder) override {
    fields_.emplace_back();
    object.encodeWithCoder(coder);
    writeFields(out, fields_.back());
    fields_.pop_back();
  }

  std::vector<NSString> texts_;
  std::vector<std::string> bodies_;
  std::vector<Fields> fields_{1};  ///< of the archive itself, then of the objects being written
};

NSKeyedArchiver::NSKeyedArchiver() : writer_(new Writer(*this)) {}
NSKeyedArchiver::~NSKeyedArchiver() = default;

Ref<NSData> NSKeyedArchiver::archivedDataWithRootObject(const Value& root) {
  const auto archiver = make<NSKeyedArchiver>();
  archiver->encodeObject(root, NSKeyedArchiveRootObjectKey);
  return archiver->encodedData();
}

void NSKeyedArchiver::encodeObject(const Value& value) { writer_->encodeNext(value); }

void NSKeyedArchiver::encodeObject(const Value& value, const NSString& key) { writer_->encodeField(value, key); }

Ref<NSData> NSKeyedArchiver::encodedData() const { return writer_->data(); }

Value NSKeyedArchiver::decodeObject() { detail::raiseArchive("an archiver does not read"); }

bool NSKeyedArchiver::containsValueForKey(const NSString&) const { detail::raiseArchive("an archiver does not read"); }

Value NSKeyedArchiver::decodeObjectForKey(const NSString&) { detail::raiseArchive("an archiver does not read"); }

}  // namespace norvik

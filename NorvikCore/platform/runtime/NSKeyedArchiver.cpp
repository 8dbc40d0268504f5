#include "NorvikCore/platform/runtime/NSKeyedArchiver.h"

#include "NorvikCore/platform/runtime/NSException.h"
#include "NorvikCore/platform/runtime/NSMutableArray.h"
#include "NorvikCore/platform/runtime/NSMutableData.h"
#include "NorvikCore/platform/runtime/NSMutableDictionary.h"
#include "NorvikCore/platform/runtime/NSMutableSet.h"
#include "NorvikCore/platform/runtime/internal/ArchiveFormat.h"

#include <algorithm>
#include <bit>
#include <string>
#include <unordered_map>
#include <utility>

namespace norvik {

constexpr NSString NSKeyedArchiveRootObjectKey = "root";

namespace {

using detail::ArchiveKind;
using detail::ArchiveTag;

[[noreturn]] void raiseArchive(const NSString& reason) {
  NSException::raise(NSInvalidArchiveOperationException, reason);
}

void writeNumber(std::string& out, std::uint64_t number) {
  for (; number >= 0x80; number >>= 7) out += static_cast<char>(number | 0x80);
  out += static_cast<char>(number);
}

template <class Enumeration>
void writeByte(std::string& out, Enumeration value) {
  out += static_cast<char>(value);
}

void writeDouble(std::string& out, double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  for (int shift = 0; shift < 64; shift += 8) out += static_cast<char>(bits >> shift);
}

void writeDecimal(std::string& out, const Decimal& decimal) {
  const Decimal::Parts parts = decimal.parts();
  out += static_cast<char>((parts.isNegative ? 1 : 0) | (parts.isNaN ? 2 : 0));
  writeNumber(out, detail::zigzag(parts.isNaN ? 0 : parts.exponent));
  writeNumber(out, parts.isNaN ? 0 : parts.mantissaHigh);
  writeNumber(out, parts.isNaN ? 0 : parts.mantissaLow);
}

void writeText(std::string& out, const NSString& text) {
  if (!text.empty() && text.isWellFormed()) {
    writeNumber(out, text.view().size());
    out += text.view();
    return;
  }
  const std::u16string units = text.toUtf16();
  writeNumber(out, 0);
  writeNumber(out, units.size());
  for (const char16_t unit : units) {
    out += static_cast<char>(unit & 0xFF);
    out += static_cast<char>(unit >> 8);
  }
}

template <class Mutable>
ArchiveKind kindOf(const NSObject& object, ArchiveKind immutableKind) {
  const bool isMutable = dynamic_cast<const Mutable*>(&object) != nullptr;
  return static_cast<ArchiveKind>(static_cast<int>(immutableKind) + (isMutable ? 1 : 0));
}

}  // namespace

class NSKeyedArchiver::Writer {
 public:
  void encodeField(NSCoder& coder, const Value& value, const NSString& key) {
    Fields& fields = current();
    const std::uint64_t keyNumber = textNumber(key);
    if (std::ranges::find(fields.keys, keyNumber) != fields.keys.end()) {
      raiseArchive("the key \"" + key + "\" is used twice for one object");
    }
    fields.keys.push_back(keyNumber);
    std::string bytes;
    writeNumber(bytes, keyNumber);
    writeValue(coder, bytes, value);
    current().bytes += bytes;  // looked up again: objects written meanwhile had fields of their own
  }

  [[nodiscard]] Ref<NSData> data() const {
    if (!isComplete_) raiseArchive("an object could not be encoded, or is still being encoded");
    std::string out(detail::archiveMark);
    writeNumber(out, texts_.size());
    for (const NSString& text : texts_) writeText(out, text);
    writeNumber(out, objects_.size());
    for (const std::string& body : bodies_) out += body;
    writeFields(out, fields_.front());
    return NSData::dataWithText(out);
  }

 private:
  struct Fields {
    std::vector<std::uint64_t> keys;
    std::string bytes;
  };

  Fields& current() { return fields_.back(); }

  static void writeFields(std::string& out, const Fields& fields) {
    writeNumber(out, fields.keys.size());
    out += fields.bytes;
  }

  std::uint64_t textNumber(const NSString& text) {
    const auto [entry, isNew] = numberOfText_.try_emplace(text, texts_.size());
    if (isNew) texts_.push_back(text);
    return entry->second;
  }

  void writeValue(NSCoder& coder, std::string& out, const Value& value) {
    switch (value.kind()) {
      case Value::Kind::Absent:
        writeByte(out, ArchiveTag::Absent);
        break;
      case Value::Kind::Null:
        writeByte(out, ArchiveTag::Null);
        break;
      case Value::Kind::Boolean:
        writeByte(out, value.as<bool>() ? ArchiveTag::True : ArchiveTag::False);
        break;
      case Value::Kind::Integer:
        writeByte(out, ArchiveTag::Integer);
        writeNumber(out, detail::zigzag(value.as<std::int64_t>()));
        break;
      case Value::Kind::Double:
        writeByte(out, ArchiveTag::Double);
        writeDouble(out, value.as<double>());
        break;
      case Value::Kind::Decimal:
        writeByte(out, ArchiveTag::Decimal);
        writeDecimal(out, *value.decimal());
        break;
      case Value::Kind::Date:
        writeByte(out, ArchiveTag::Date);
        writeDouble(out, value.date()->timeIntervalSinceReferenceDate());
        break;
      case Value::Kind::String:
        writeByte(out, ArchiveTag::Text);
        writeNumber(out, textNumber(*value.string()));
        break;
      case Value::Kind::Object:
        writeByte(out, ArchiveTag::Object);
        writeNumber(out, objectNumber(coder, *value.object()));
        break;
    }
  }

  /// The object's number; writes its body where it is met for the first time.
  std::uint64_t objectNumber(NSCoder& coder, NSObject& object) {
    const auto [entry, isNew] = numberOfObject_.try_emplace(&object, objects_.size());
    const std::uint64_t number = entry->second;
    if (!isNew) return number;
    if (depth_ == detail::greatestArchiveDepth) {
      raiseArchive("objects hold one another more than " + std::to_string(depth_) + " deep");
    }
    ++depth_;
    objects_.push_back(ref(object));
    bodies_.emplace_back();
    isComplete_ = false;  // for good, should an exception leave from here
    std::string body;
    writeBody(coder, body, object);
    bodies_[number] = std::move(body);
    isComplete_ = --depth_ == 0;
    return number;
  }

  void writeBody(NSCoder& coder, std::string& out, const NSObject& object) {
    if (const auto* array = dynamic_cast<const NSArray*>(&object)) {
      writeElements(coder, out, kindOf<NSMutableArray>(object, ArchiveKind::Array), *array);
    } else if (const auto* set = dynamic_cast<const NSSet*>(&object)) {
      writeElements(coder, out, kindOf<NSMutableSet>(object, ArchiveKind::Set), *set);
    } else if (const auto* dictionary = dynamic_cast<const NSDictionary*>(&object)) {
      writeByte(out, kindOf<NSMutableDictionary>(object, ArchiveKind::Dictionary));
      writeNumber(out, dictionary->count());
      for (const auto& [key, value] : *dictionary) {
        writeValue(coder, out, key);
        writeValue(coder, out, value);
      }
    } else if (const auto* data = dynamic_cast<const NSData*>(&object)) {
      writeByte(out, kindOf<NSMutableData>(object, ArchiveKind::Data));
      writeNumber(out, data->length());
      out += data->text();
    } else {
      writeCoded(coder, out, object);
    }
  }

  template <class Collection>
  void writeElements(NSCoder& coder, std::string& out, ArchiveKind kind, const Collection& elements) {
    writeByte(out, kind);
    writeNumber(out, elements.count());
    for (const Value& element : elements) writeValue(coder, out, element);
  }

  void writeCoded(NSCoder& coder, std::string& out, const NSObject& object) {
    const Class& theClass = object.classObject();
    const auto* coding = dynamic_cast<const NSCoding*>(&object);
    const Method* maker = theClass.classMethod(detail::makeForDecodingSelector);
    if (!coding || !maker || maker->owner != &theClass) {
      raiseArchive("an object of the class " + theClass.name() + ", which " +
                   (coding ? "does not state NK_CODING" : "does not implement NSCoding"));
    }
    writeByte(out, ArchiveKind::Coded);
    writeNumber(out, textNumber(theClass.name()));
    fields_.emplace_back();
    coding->encodeWithCoder(coder);
    writeFields(out, current());
    fields_.pop_back();
  }

  std::vector<NSString> texts_;
  std::unordered_map<NSString, std::uint64_t> numberOfText_;
  std::vector<Ref<NSObject>> objects_;  ///< kept, so that no other object gets the address of one of them
  std::unordered_map<const NSObject*, std::uint64_t> numberOfObject_;
  std::vector<std::string> bodies_;
  std::vector<Fields> fields_{1};  ///< of the archive itself, then of the objects being written
  unsigned depth_ = 0;
  bool isComplete_ = true;
};

NSKeyedArchiver::NSKeyedArchiver() : writer_(std::make_unique<Writer>()) {}
NSKeyedArchiver::~NSKeyedArchiver() = default;

Ref<NSData> NSKeyedArchiver::archivedDataWithRootObject(const Value& root) {
  const auto archiver = make<NSKeyedArchiver>();
  archiver->encodeObject(root, NSKeyedArchiveRootObjectKey);
  return archiver->encodedData();
}

void NSKeyedArchiver::encodeObject(const Value& value, const NSString& key) { writer_->encodeField(*this, value, key); }

Ref<NSData> NSKeyedArchiver::encodedData() const { return writer_->data(); }

bool NSKeyedArchiver::containsValueForKey(const NSString&) const { raiseArchive("an archiver does not read"); }

Value NSKeyedArchiver::decodeObjectForKey(const NSString&) { raiseArchive("an archiver does not read"); }

}  // namespace norvik

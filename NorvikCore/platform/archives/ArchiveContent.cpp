#include "NorvikCore/platform/archives/internal/ArchiveContent.h"

#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <bit>
#include <string>
#include <unordered_set>

namespace norvik::detail {
namespace {

/// The common part of the parsers of both kinds of archive. They differ in where texts and objects are, and in the
/// content of coded objects.
class Parser {
 public:
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

 protected:
  explicit Parser(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  virtual ~Parser() = default;

  /// The next text, and the number of the next object.
  virtual NSString text() = 0;
  virtual std::size_t object() = 0;
  virtual void parseCoded(ArchivedObject& object) = 0;

  void parseMark(std::string_view wanted) {
    const auto mark = take(std::min(wanted.size(), left()));
    if (!std::ranges::equal(mark, wanted, {}, {}, [](char c) { return static_cast<std::uint8_t>(c); })) {
      fail("it does not begin like an archive");
    }
  }

  [[noreturn]] void fail(const char* what) const {
    raiseUnarchive(std::string("the archive is damaged at byte ") + std::to_string(at_) + ": " + what);
  }

  [[nodiscard]] std::size_t left() const noexcept { return bytes_.size() - at_; }

  std::span<const std::uint8_t> take(std::size_t size) {
    if (size > left()) fail("it ends too early");
    at_ += size;
    return bytes_.subspan(at_ - size, size);
  }

  std::uint64_t number() {
    std::uint64_t result = 0;
    for (int shift = 0; shift < 64; shift += 7) {
      const std::uint8_t byte = take(1).front();
      const std::uint64_t digits = byte & 0x7Fu;
      if ((digits << shift) >> shift != digits) break;
      result |= digits << shift;
      if (byte < 0x80) {
        if (byte == 0 && shift > 0) fail("a number is longer than it needs to be");
        return result;
      }
    }
    fail("a number is too large");
  }

  /// The count of items that take at least one byte each. It is limited by the bytes left, so that no more memory is
  /// reserved than they can need.
  std::size_t count() {
    const std::uint64_t result = number();
    if (result > left()) fail("a count is larger than what follows");
    return static_cast<std::size_t>(result);
  }

  std::size_t numberBelow(std::size_t bound, const char* what) {
    const std::uint64_t result = number();
    if (result >= bound) fail(what);
    return static_cast<std::size_t>(result);
  }

  NSString parseCharacters() {
    if (const std::size_t size = count()) {
      const auto bytes = take(size);
      const auto parsed = NSString::fromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
      if (!parsed) fail("a text is not UTF-8");
      return *parsed;
    }
    const auto bytes = take(2 * count());
    std::u16string units;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
      units += static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8);
    }
    return NSString::fromUtf16(units);
  }

  double eightBytes() {
    std::uint64_t bits = 0;
    int shift = 0;
    for (const std::uint8_t byte : take(8)) {
      bits |= std::uint64_t{byte} << shift;
      shift += 8;
    }
    return std::bit_cast<double>(bits);
  }

  Decimal decimal() {
    const std::uint8_t flags = take(1).front();
    const std::int64_t exponent = unzigzag(number());
    Decimal::Parts parts;
    parts.mantissaHigh = number();
    parts.mantissaLow = number();
    if (flags > 2 || exponent < Decimal::minimumExponent || exponent > Decimal::maximumExponent) {
      fail("a decimal is out of range");
    }
    parts.exponent = static_cast<int>(exponent);
    parts.isNegative = (flags & 1) != 0;
    parts.isNaN = (flags & 2) != 0;
    const auto result = Decimal::fromParts(parts);
    if (!result) fail("a decimal is out of range");
    return *result;
  }

  ArchivedValue value() { return valueBehind(numberBelow(archiveValueTagCount, "there is no such kind of value")); }

  ArchivedValue valueBehind(std::uint64_t tag) {
    switch (static_cast<ArchiveTag>(tag)) {
      case ArchiveTag::Absent:
        return {};
      case ArchiveTag::Null:
        return {Value::null()};
      case ArchiveTag::False:
        return {Value(false)};
      case ArchiveTag::True:
        return {Value(true)};
      case ArchiveTag::Integer:
        return {Value(unzigzag(number()))};
      case ArchiveTag::Double:
        return {Value(eightBytes())};
      case ArchiveTag::Decimal:
        return {Value(decimal())};
      case ArchiveTag::Date:
        return {Value(Date::fromReferenceSeconds(eightBytes()))};
      case ArchiveTag::Text:
        return {Value(text())};
      case ArchiveTag::Object:
        return {Value(), object()};
      case ArchiveTag::Key:
      case ArchiveTag::End:
        break;
    }
    fail("there is no such kind of value");
  }

  ArchivedField parseField(std::unordered_set<NSString>& keys) {
    NSString key = text();
    if (!keys.insert(key).second) fail("a key is used twice for one object");
    return {std::move(key), value()};
  }

  void parseValues(std::vector<ArchivedValue>& values, std::size_t valuesAnElement) {
    const std::size_t elements = count();
    // Memory is reserved for the first elements only, because each of several nested objects may claim all bytes left.
    values.reserve(std::min<std::size_t>(elements, 64));
    for (std::size_t i = 0; i < elements * valuesAnElement; ++i) {
      values.push_back(value());
      if (values.back().value.isAbsent() && values.back().object == ArchivedValue::noObject) {
        fail("a collection holds an absent value");
      }
    }
  }

  void parseObject(ArchivedObject& object) {
    object.kind = static_cast<ArchiveKind>(numberBelow(archiveKindCount, "there is no such kind of object"));
    switch (object.kind) {
      case ArchiveKind::Coded:
        object.className = text();
        parseCoded(object);
        break;
      case ArchiveKind::Array:
      case ArchiveKind::MutableArray:
      case ArchiveKind::Set:
      case ArchiveKind::MutableSet:
        parseValues(object.values, 1);
        break;
      case ArchiveKind::Dictionary:
      case ArchiveKind::MutableDictionary:
        parseValues(object.values, 2);
        break;
      case ArchiveKind::Data:
      case ArchiveKind::MutableData:
        object.data = take(count());
        break;
    }
  }

  const std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
  std::vector<NSString> texts_;
};

class KeyedParser : public Parser {
 public:
  explicit KeyedParser(std::span<const std::uint8_t> bytes) : Parser(bytes) {}

  ArchiveContent parse() {
    parseMark(archiveMark);
    texts_.resize(count());
    for (NSString& text : texts_) text = parseCharacters();
    ArchiveContent content;
    objectCount_ = count();
    content.objects.resize(objectCount_);
    for (ArchivedObject& object : content.objects) parseObject(object);
    content.fields = parseFields();
    if (left() > 0) fail("bytes follow its end");
    return content;
  }

 private:
  NSString text() override { return texts_[numberBelow(texts_.size(), "there is no text of that number")]; }
  std::size_t object() override { return numberBelow(objectCount_, "there is no object of that number"); }
  void parseCoded(ArchivedObject& object) override { object.fields = parseFields(); }

  std::vector<ArchivedField> parseFields() {
    std::vector<ArchivedField> fields(count());
    std::unordered_set<NSString> keys;
    for (ArchivedField& field : fields) field = parseField(keys);
    return fields;
  }

  std::size_t objectCount_ = 0;
};

class SequentialParser : public Parser {
 public:
  explicit SequentialParser(std::span<const std::uint8_t> bytes) : Parser(bytes) {}

  ArchiveContent parse() {
    parseMark(sequentialArchiveMark);
    ArchiveContent content;
    std::unordered_set<NSString> keys;
    while (left() > 0) parseItem(number(), content.fields, content.values, keys);
    content.objects = std::move(objects_);
    return content;
  }

 private:
  NSString text() override {
    if (const std::size_t number = numberBelow(texts_.size() + 1, "there is no text of that number")) {
      return texts_[number - 1];
    }
    return texts_.emplace_back(parseCharacters());
  }

  std::size_t object() override {
    if (const std::size_t number = numberBelow(objects_.size() + 1, "there is no object of that number")) {
      return number - 1;
    }
    if (depth_ == greatestArchiveDepth) fail("objects are nested too deep");
    ++depth_;
    const std::size_t made = objects_.size();
    objects_.emplace_back();
    ArchivedObject object;
    parseObject(object);
    objects_[made] = std::move(object);
    --depth_;
    return made;
  }

  void parseCoded(ArchivedObject& object) override {
    std::unordered_set<NSString> keys;
    for (;;) {
      const std::uint64_t tag = number();
      if (tag == static_cast<std::uint64_t>(ArchiveTag::End)) return;
      parseItem(tag, object.fields, object.values, keys);
    }
  }

  void parseItem(std::uint64_t tag, std::vector<ArchivedField>& fields, std::vector<ArchivedValue>& values,
                 std::unordered_set<NSString>& keys) {
    if (tag == static_cast<std::uint64_t>(ArchiveTag::Key)) {
      fields.push_back(parseField(keys));
    } else if (tag < archiveValueTagCount) {
      values.push_back(valueBehind(tag));
    } else {
      fail("there is no such kind of value");
    }
  }

  std::vector<ArchivedObject> objects_;
  unsigned depth_ = 0;
};

}  // namespace

ArchiveContent parseKeyedArchive(std::span<const std::uint8_t> bytes) { return KeyedParser(bytes).parse(); }
ArchiveContent parseSequentialArchive(std::span<const std::uint8_t> bytes) { return SequentialParser(bytes).parse(); }

void raiseUnarchive(const NSString& reason) { NSException::raise(NSInvalidUnarchiveOperationException, reason); }

}  // namespace norvik::detail

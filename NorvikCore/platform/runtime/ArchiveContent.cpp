#include "NorvikCore/platform/runtime/internal/ArchiveContent.h"

#include "NorvikCore/platform/runtime/NSException.h"

#include <algorithm>
#include <bit>
#include <string>
#include <unordered_set>

namespace norvik::detail {
namespace {

class Parser {
 public:
  explicit Parser(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  ArchiveContent parse() {
    const auto mark = take(std::min(archiveMark.size(), left()));
    if (!std::ranges::equal(mark, archiveMark, {}, {}, [](char c) { return static_cast<std::uint8_t>(c); })) {
      fail("it does not begin as an archive does");
    }
    texts_.resize(count());
    for (NSString& text : texts_) text = parseText();
    ArchiveContent content;
    objectCount_ = count();
    content.objects.resize(objectCount_);
    for (ArchivedObject& object : content.objects) parseObject(object);
    content.fields = parseFields();
    if (left() > 0) fail("bytes follow its end");
    return content;
  }

 private:
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

  /// Of things that take at least one byte each, so that no more are made room for than there can be.
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

  const NSString& text() { return texts_[numberBelow(texts_.size(), "there is no text of that number")]; }

  NSString parseText() {
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

  ArchivedValue value() {
    switch (static_cast<ArchiveTag>(numberBelow(archiveTagCount, "there is no such kind of value"))) {
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
        return {Value(), numberBelow(objectCount_, "there is no object of that number")};
    }
    fail("there is no such kind of value");
  }

  std::vector<ArchivedField> parseFields() {
    std::vector<ArchivedField> fields(count());
    std::unordered_set<NSString> keys;
    for (ArchivedField& field : fields) {
      field.key = text();
      if (!keys.insert(field.key).second) fail("a key is used twice for one object");
      field.value = value();
    }
    return fields;
  }

  void parseValues(std::vector<ArchivedValue>& values, std::size_t valuesAnElement) {
    const std::size_t elements = count();
    values.reserve(elements);
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
        object.fields = parseFields();
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

  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
  std::vector<NSString> texts_;
  std::size_t objectCount_ = 0;
};

}  // namespace

ArchiveContent parseArchive(std::span<const std::uint8_t> bytes) { return Parser(bytes).parse(); }

void raiseUnarchive(const NSString& reason) { NSException::raise(NSInvalidUnarchiveOperationException, reason); }

}  // namespace norvik::detail

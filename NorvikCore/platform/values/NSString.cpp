#include "NorvikCore/platform/values/NSString.h"

#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/internal/StringHalves.h"
#include "NorvikCore/platform/values/internal/StringIndex.h"
#include "NorvikCore/platform/values/internal/StringUnits.h"
#include "NorvikCore/platform/values/internal/Utf8Words.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <ostream>

namespace norvik {
namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

using detail::isAsciiByWords, detail::isValidByWords;

/// New counted bytes followed by a NUL; their header precedes them.
char* newBytes(std::size_t size) {
  void* memory = ::operator new(sizeof(detail::StringStorage) + size + 1);
  new (memory) detail::StringStorage;
  char* bytes = static_cast<char*>(memory) + sizeof(detail::StringStorage);
  bytes[size] = '\0';
  return bytes;
}

inline void deleteStorage(detail::StringStorage* header) noexcept {
  header->~StringStorage();
  ::operator delete(header);
}

// Not inlined, so that the frequent cases save few registers.

[[gnu::noinline]] void assignBytes(NSString& text, std::string_view bytes) { text = NSString::fromBytes(bytes); }

[[gnu::noinline]] void deleteWithIndex(detail::StringStorage* header) noexcept {
  delete header->index.loadRelaxed();
  deleteStorage(header);
}

void appendHalf(std::string& out, char16_t half) { out += utf8::encode(half).view(); }

}  // namespace

NSString NSString::copying(std::string_view bytes) {
  if (bytes.empty()) return {};
  char* copy = newBytes(bytes.size());
  std::memcpy(copy, bytes.data(), bytes.size());
  return NSString(copy, bytes.size(), countedBit | flagsOf(bytes));
}

std::size_t NSString::flagsOf(std::string_view bytes) noexcept {
  return isAsciiByWords(bytes) ? asciiBit : detail::holdsHalves(bytes) ? halvesBit : 0;
}

void NSString::copyBytes(std::string_view bytes) {
  constexpr std::size_t longest = 128;
  if (bytes.size() - 1 > longest - 1) [[unlikely]]
    return assignBytes(*this, bytes);
  char* copy = newBytes(bytes.size());
  data_ = copy;
  bits_ = bytes.size() << sizeShift | countedBit | asciiBit;
  if (detail::copyingIsAscii(copy, bytes)) [[likely]]
    return;
  bits_ &= ~asciiBit;
  if (isValidByWords(bytes)) return;
  release();
  bits_ = 0;  // fromBytes may raise
  assignBytes(*this, bytes);
}

void NSString::raiseNullPointer() {
  NSException::raise(NSInvalidArgumentException, "NSString: the text is a null pointer");
}

void NSString::releaseStorage() noexcept {
  detail::StringStorage* const header = storage();
  // The only owner needs no locked subtraction, because no other thread can take a reference from it meanwhile.
  if (header->references.loadAcquire() != 1 && header->references.subtractAcquireRelease(1) != 1) return;
  if (header->index.loadRelaxed() != nullptr) [[unlikely]]
    return deleteWithIndex(header);
  deleteStorage(header);
}

std::optional<NSString> NSString::fromUtf8(std::string_view text) {
  if (!isValidByWords(text)) return std::nullopt;
  return NSString(text);
}

NSString NSString::fromBytes(std::string_view bytes) {
  if (isValidByWords(bytes)) return copying(bytes);
  std::string text;
  text.reserve(bytes.size() + 2 * detail::halfSize);
  while (!bytes.empty()) {
    const std::size_t size = utf8::validSequence(bytes);
    if (size == 0) {
      appendHalf(text, static_cast<char16_t>(0xDC00 + utf8::byteAt(bytes.data())));
    } else {
      text += bytes.substr(0, size);
    }
    bytes.remove_prefix(size == 0 ? 1 : size);
  }
  return copying(text);
}

NSString NSString::fromUtf16(std::u16string_view units) {
  std::string text;
  text.reserve(units.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t point = units[i];
    if (utf8::isHighHalf(point) && i + 1 < units.size() && utf8::isLowHalf(units[i + 1])) {
      point = utf8::joinHalves(point, units[++i]);
    }
    text += utf8::encode(point).view();
  }
  return copying(text);
}

NSString NSString::fromCodePoint(char32_t point) {
  if (point > 0x10FFFF) {
    NSException::raise(NSInvalidArgumentException, "NSString: no character has the number " + std::to_string(point));
  }
  return copying(utf8::encode(point).view());
}

NSString NSString::borrowing(std::string_view permanentText) {
  if (isAsciiByWords(permanentText)) return NSString(permanentText.data(), permanentText.size(), asciiBit);
  if (isValidByWords(permanentText)) return NSString(permanentText.data(), permanentText.size(), 0);
  return fromBytes(permanentText);
}

std::string NSString::utf8() const {
  if (isWellFormed()) return str();
  std::string text;
  for (const char32_t point : codePoints()) {
    text += utf8::isHalf(point) ? replacementCharacter : utf8::encode(point).view();
  }
  return text;
}

std::string NSString::bytes() const {
  if (isWellFormed()) return str();
  std::string bytes;
  for (const char32_t point : codePoints()) {
    if (point >= 0xDC80 && point <= 0xDCFF) {
      bytes += static_cast<char>(point - 0xDC00);
    } else {
      bytes += utf8::encode(point).view();
    }
  }
  return bytes;
}

std::u16string NSString::toUtf16() const {
  std::u16string units;
  units.reserve(isAscii() ? byteCount() : utf8::unitCount(view()));
  detail::StringUnits reader(view(), false);
  for (int unit = reader.next(); unit != reader.end; unit = reader.next()) units += static_cast<char16_t>(unit);
  return units;
}

const detail::StringIndex* NSString::index() const {
  if (isAscii() || byteCount() < detail::StringIndex::smallestIndexed) return nullptr;
  if ((bits_ & countedBit) == 0) return &detail::permanentIndex(view());
  auto& kept = storage()->index;
  const detail::StringIndex* index = kept.loadAcquire();
  if (index != nullptr) return index;
  auto made = std::make_unique<const detail::StringIndex>(view());
  // If another thread was faster, its index is kept and this one is destroyed.
  if (kept.compareExchange(index, made.get())) index = made.release();
  return index;
}

const detail::StringIndex* detail::stringIndexOf(const NSString& text) {
  const bool isCounted = (text.bits_ & NSString::countedBit) != 0;
  return isCounted ? text.storage()->index.loadAcquire() : nullptr;
}

detail::StringPlace NSString::place(std::size_t unit) const {
  if (isAscii()) return {unit, false};
  const detail::StringIndex* const known = index();
  return known != nullptr ? known->place(view(), unit) : detail::walkUnits(view(), {}, unit);
}

NSUInteger NSString::unitAtByte(std::size_t byte) const {
  if (isAscii()) return byte;
  const detail::StringIndex* const known = index();
  return known != nullptr ? known->unit(view(), byte) : utf8::unitCount(view().substr(0, byte));
}

NSUInteger NSString::length() const {
  if (isAscii()) return byteCount();
  const detail::StringIndex* const known = index();
  return known != nullptr ? known->length() : utf8::unitCount(view());
}

char16_t NSString::characterAtIndex(NSUInteger index) const {
  const detail::StringIndex* const known = isAscii() ? nullptr : this->index();
  if (index >= (known != nullptr ? known->length() : length())) raiseBeyondEnd("characterAtIndex", index);
  const detail::StringPlace at = known != nullptr ? known->place(view(), index) : place(index);
  const char32_t point = utf8::decode(data_ + at.byte).point;
  if (at.secondHalf) return utf8::lowHalf(point);
  return point < 0x10000 ? static_cast<char16_t>(point) : utf8::highHalf(point);
}

NSString NSString::substringFromIndex(NSUInteger from) const {
  const NSUInteger units = length();
  if (from > units) raiseBeyondEnd("substringFromIndex", from);
  return slice(from, units);
}

NSString NSString::substringToIndex(NSUInteger to) const {
  if (to > length()) raiseBeyondEnd("substringToIndex", to);
  return slice(0, to);
}

NSString NSString::substringWithRange(NSRange range) const {
  checkRange("substringWithRange", range);
  return slice(range.location, NSMaxRange(range));
}

NSString NSString::slice(std::size_t from, std::size_t to) const {
  if (from == to) return {};
  const detail::StringPlace first = place(from), last = place(to);
  if (first.byte == 0 && !first.secondHalf && last.byte == byteCount()) return *this;
  if (!first.secondHalf && !last.secondHalf) return sliceBytes(first.byte, last.byte);
  std::string part;
  if (first.secondHalf) appendHalf(part, utf8::lowHalf(utf8::decode(data_ + first.byte).point));
  const std::size_t whole = first.byte + (first.secondHalf ? 4 : 0);
  part += view().substr(whole, last.byte - whole);
  if (last.secondHalf) appendHalf(part, utf8::highHalf(utf8::decode(data_ + last.byte).point));
  return copying(part);
}

NSString NSString::sliceBytes(std::size_t from, std::size_t to) const {
  if (from == 0 && to == byteCount()) return *this;
  const std::string_view part = view().substr(from, to - from);
  // A part of a constant is borrowed too, unless it is so long that it could get a permanent index, which is never
  // freed.
  const bool isBorrowed = (bits_ & countedBit) == 0;
  if (isBorrowed && (isAscii() || part.size() < detail::StringIndex::smallestIndexed)) return borrowing(part);
  return copying(part);
}

void NSString::checkRange(const char* operation, NSRange range) const {
  const NSUInteger units = length();
  if (range.location <= units && range.length <= units - range.location) return;
  NSException::raise(NSRangeException, std::string(operation) + ": {" + std::to_string(range.location) + ", " +
                                           std::to_string(range.length) + "} is beyond the text of " +
                                           std::to_string(units) + " units");
}

void NSString::raiseBeyondEnd(const char* operation, NSUInteger index) const {
  NSException::raise(NSRangeException, std::string(operation) + ": " + std::to_string(index) +
                                           " is beyond the text of " + std::to_string(length()) + " units");
}

std::strong_ordering NSString::order(const NSString& other) const noexcept {
  if (!isWellFormed() || !other.isWellFormed()) return detail::compareUnits(view(), other.view(), false);
  const std::size_t common = byteCount() < other.byteCount() ? byteCount() : other.byteCount();
  const int bytes = std::memcmp(data_, other.data_, common);
  if (bytes == 0) return byteCount() <=> other.byteCount();
  if (isAscii() || other.isAscii()) return bytes <=> 0;
  // The bytes have the order of the units, except for pairs (lead byte 0xF0 and above), whose halves precede U+E000.
  std::size_t at = 0;
  while (data_[at] == other.data_[at]) ++at;
  const unsigned char left = utf8::byteAt(data_ + at), right = utf8::byteAt(other.data_ + at);
  const bool leftIsPair = left >= 0xF0, rightIsPair = right >= 0xF0;
  if (leftIsPair == rightIsPair || left < 0xEE || right < 0xEE) return left <=> right;
  return leftIsPair ? std::strong_ordering::less : std::strong_ordering::greater;
}

NSComparisonResult NSString::compare(const NSString& other, NSStringCompareOptions options) const noexcept {
  if ((options & NSCaseInsensitiveSearch) == 0) return comparisonResult(order(other));
  return comparisonResult(detail::compareUnits(view(), other.view(), true));
}

NSString NSString::concatenating(std::string_view a, std::string_view b) {
  const std::optional<utf8::Encoded> pair = detail::meetingHalves(a, b);
  const std::string_view joined = pair ? pair->view() : std::string_view();
  if (pair) {
    a.remove_suffix(detail::halfSize);
    b.remove_prefix(detail::halfSize);
  }
  char* bytes = newBytes(a.size() + joined.size() + b.size());
  char* end = bytes;
  for (const std::string_view piece : {a, joined, b}) {
    if (!piece.empty()) std::memcpy(end, piece.data(), piece.size());
    end += piece.size();
  }
  const std::string_view whole(bytes, static_cast<std::size_t>(end - bytes));
  return NSString(bytes, whole.size(), countedBit | flagsOf(whole));
}

NSString operator+(const NSString& a, const NSString& b) {
  if (a.empty()) return b;
  return b.empty() ? a : NSString::concatenating(a.view(), b.view());
}

NSString NSString::withAppended(std::string_view text) const {
  if (text.empty()) return *this;
  return isValidByWords(text) ? concatenating(view(), text) : *this + fromBytes(text);
}

NSString NSString::withPrepended(std::string_view text) const {
  if (text.empty()) return *this;
  return isValidByWords(text) ? concatenating(text, view()) : fromBytes(text) + *this;
}

std::ostream& operator<<(std::ostream& out, const NSString& text) {
  return text.isWellFormed() ? out << text.view() : out << text.utf8();
}

}  // namespace norvik

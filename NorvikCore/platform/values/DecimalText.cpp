#include "NorvikCore/platform/values/internal/DecimalText.h"

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/Decimal_charconv.h"
#include "NorvikCore/platform/values/internal/DecimalRounding.h"
#include "NorvikCore/platform/values/internal/EightDigits.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <ostream>

namespace norvik {
namespace detail {
namespace {

/// Writes the number in a word of digits without its leading zeros, with a point before the last `places`, fewer than
/// the word has. Returns its end. Writes one character more than the word has, so some after the end may change.
template <class Word>
inline char* writeInWord(char* out, Word digits, int places) noexcept {
  constexpr int width = sizeof(Word);
  const int skipped = std::min(bytesBelow(static_cast<Word>(digits & everyByteOf<Word> * 0x0F)), width - 1 - places);
  digits >>= 8 * skipped;
  char* const end = out + width - skipped;
  if (places == 0) {
    writeWord(out, digits);
    return end;
  }
  const Word point = Word{1} << 8 * (width - skipped - places);
  writeWord(out, static_cast<Word>((digits & (point - 1)) | point * '.' | (digits & (0 - point)) << 8));
  out[width] = static_cast<char>(digits >> 8 * (width - 1));
  return end + 1;
}

/// The digits of a number, with zeros before them.
class PaddedDigits {
 public:
  explicit PaddedDigits(UInt128 number) noexcept {
    char* p = std::end(text_);
    constexpr UInt128 limit = powersOfTen64[16];
    for (; number >= limit; p -= 16) {
      UInt128 lower;
      number = divideByPowerOfTen(number, 16, lower);
      writeWord(p - 16, sixteenDigits(low64(lower)));
    }
    writeWord(p - 16, sixteenDigits(low64(number)));
  }
  [[nodiscard]] const char* last(int count) const noexcept { return std::end(text_) - count; }

 private:
  char text_[48];
};

constexpr NSDecimalNumberHandler neverRaises(NSDecimalNumberHandler::Settings{.raiseOnOverflow = false,
                                                                              .raiseOnUnderflow = false});

bool digitAt(const char* p, const char* last) noexcept {
  return p != last && static_cast<unsigned char>(*p - '0') < 10;
}

/// The digits of a number that is being read: 38 are kept, and of the others only what rounding needs.
class Digits {
 public:
  /// Takes the digits at p, and returns their end.
  const char* takeRun(const char* p, const char* last) noexcept {
    for (;;) {
      const std::uint64_t digits = readWord(p, last - p) ^ everyByte * '0';
      const int length = bytesBelow(marksOfOthers(digits));
      if (length == 0) return p;
      if (count_ + length <= Decimal::maximumDigits) {
        const std::uint64_t number = numberOf(digits << 8 * (8 - length));
        count_ = mantissa_ == 0 ? digitCount(number) : count_ + length;
        mantissa_ = mantissa_ * powerOfTen64(length) + number;
        p += length;
      } else {
        for (const char* const end = p + length; p != end; ++p) take(static_cast<unsigned>(*p - '0'));
      }
      if (length < 8) return p;
    }
  }
  [[nodiscard]] UInt128 mantissa() const noexcept { return mantissa_; }
  [[nodiscard]] Tail tail() const noexcept { return tail_; }
  [[nodiscard]] std::int64_t dropped() const noexcept { return dropped_; }

 private:
  void take(unsigned digit) noexcept {
    if (count_ < Decimal::maximumDigits) {
      mantissa_ = mantissa_ * 10 + digit;
      ++count_;
      return;
    }
    if (dropped_ == 0) {
      tail_ = digit > 5 ? Tail::aboveHalf : digit == 5 ? Tail::half : digit > 0 ? Tail::belowHalf : Tail::none;
    } else if (digit != 0 && (tail_ == Tail::none || tail_ == Tail::half)) {
      tail_ = tail_ == Tail::none ? Tail::belowHalf : Tail::aboveHalf;
    }
    ++dropped_;
  }

  UInt128 mantissa_ = 0;
  int count_ = 0;  // without leading zeros
  std::int64_t dropped_ = 0;
  Tail tail_ = Tail::none;
};

/// Reads E[+-]digits if that is at p. A huge written exponent is limited, far beyond the range of any number.
const char* readExponent(const char* p, const char* last, std::int64_t& exponent) noexcept {
  const char* q = p + 1;
  const bool negative = q != last && *q == '-';
  if (q != last && (*q == '-' || *q == '+')) ++q;
  if (!digitAt(q, last)) return p;
  constexpr std::int64_t beyond = 1'000'000'000'000'000'000;
  std::int64_t written = 0;
  for (; digitAt(q, last); ++q) written = std::min(written * 10 + (*q - '0'), beyond / 10);
  exponent += negative ? -written : written;
  return q;
}

/// mantissa * 10^exponent, of at most eight digits.
struct ShortNumber {
  std::uint64_t mantissa;
  int exponent;
  bool isNegative;

  [[nodiscard]] Decimal value() const noexcept {
    return DecimalAccess::make(mantissa, exponent, isNegative & (mantissa != 0));  // not &&: signs are not predictable
  }
};

/// The fast path for most texts: true if the whole text is [-]digits[.digits] or [-].digits, of four to eight
/// characters after the sign. Gives the number in parts, so that they stay in registers.
[[gnu::always_inline]] inline bool readShort(const char* first, const char* last, ShortNumber& number) noexcept {
  if (first == last) return false;
  number.isNegative = *first == '-';
  const char* const p = first + static_cast<std::ptrdiff_t>(number.isNegative);
  if (static_cast<std::size_t>(last - p - 4) > 4u) return false;
  std::uint64_t digits = readDigits(p, last - p);
  number.exponent = 0;
  if (const std::uint64_t others = marksOfOthers(digits); others != 0) {
    const int place = highestByte(others);
    if ((others & (others - 1)) != 0 || last[place - 8] != '.') return false;
    number.exponent = place - 7;
    const std::uint64_t below = (others >> 7) - 1;
    digits = (digits & below) << 8 | (digits & ~below << 8);  // without the point
  }
  number.mantissa = numberOf(digits);
  return true;
}

constexpr std::ptrdiff_t longestPlain = 20;

/// The next path: [-]digits[.digits] with up to 18 digits and no E after them. Null for all others.
inline const char* readPlain(const char* first, const char* last, Decimal& value) noexcept {
  const char* p = first;
  const bool negative = p != last && *p == '-';
  if (negative) ++p;
  const char* const whole = p;
  std::uint64_t mantissa = 0;
  for (; digitAt(p, last); ++p) mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
  std::ptrdiff_t digits = p - whole, places = 0;
  if (digits == 0) return nullptr;
  if (p != last && *p == '.') {
    const char* const fraction = ++p;
    for (; digitAt(p, last); ++p) mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
    places = p - fraction;
    digits += places;
  }
  if (digits > 18 || (p != last && (*p == 'E' || *p == 'e'))) return nullptr;
  value = DecimalAccess::make(mantissa, static_cast<int>(-places), negative && mantissa != 0);
  return p;
}

/// The path for all texts, not inlined, so that the others use few registers.
[[gnu::noinline]] ReadResult readAny(const char* first, const char* last, Decimal& value) noexcept {
  const char* p = first;
  const bool negative = p != last && *p == '-';
  if (negative) ++p;
  if (last - p >= 3 && !negative && std::memcmp(p, "NaN", 3) == 0) {
    value = Decimal::notANumber();
    return {p + 3, ReadOutcome::number};
  }
  Digits digits;
  const char* const whole = p;
  p = digits.takeRun(p, last);
  std::int64_t exponent = 0;
  bool any = p != whole;
  if (p != last && *p == '.' && (any || digitAt(p + 1, last))) {
    const char* const fraction = p + 1;
    p = digits.takeRun(fraction, last);
    exponent = fraction - p;
    any = true;
  }
  if (!any) return {first, ReadOutcome::noNumber};
  exponent += digits.dropped();
  if (p != last && (*p == 'E' || *p == 'e')) p = readExponent(p, last, exponent);

  const UInt128 mantissa = digits.mantissa();
  if (digits.tail() == Tail::none && exponent >= Decimal::minimumExponent && exponent <= Decimal::maximumExponent) {
    value = DecimalAccess::make(mantissa, static_cast<int>(exponent), negative && mantissa != 0);
    return {p, ReadOutcome::number};
  }
  const auto held = static_cast<int>(std::clamp<std::int64_t>(exponent, -1'000'000, 1'000'000));
  const Decimal rounded = settle(mantissa, digits.tail(), held, negative, neverRaises);
  if (rounded.isNaN()) return {p, ReadOutcome::outOfRange};
  value = rounded;
  return {p, ReadOutcome::number};
}

/// True if the mantissa has at most eight digits, and the text has a digit before the point without added zeros.
inline bool isShort(const Decimal& value) noexcept {
  return DecimalAccess::mantissa(value) < powersOfTen64[8] && static_cast<unsigned>(-value.exponent()) <= 7u;
}

/// Writes the plain text of such a number, and at most ten characters.
inline char* writeShort(char* out, const Decimal& value) noexcept {
  *out = '-';
  return writeInWord(out + static_cast<std::ptrdiff_t>(value.isNegative()),
                     eightDigits(DecimalAccess::lowMantissa(value)), -value.exponent());
}

/// Not inlined, so that the path of eight digits uses few registers.
[[gnu::noinline]] char* writeAny(char* out, const Decimal& value) noexcept {
  if (value.isNaN()) {
    std::memcpy(out, "NaN", 3);
    return out + 3;
  }
  if (value.isNegative()) *out++ = '-';
  const UInt128 mantissa = DecimalAccess::mantissa(value);
  const int exponent = value.exponent(), places = -exponent;
  if (mantissa < powersOfTen64[16] && static_cast<unsigned>(places) <= 15u) {
    return writeInWord(out, sixteenDigits(low64(mantissa)), places);
  }
  const int count = std::max(1, digitCount(mantissa));
  const PaddedDigits padded(mantissa);
  const char* const digits = padded.last(count);
  if (exponent >= 0) return std::fill_n(std::copy_n(digits, count, out), value.isZero() ? 0 : exponent, '0');
  if (count > places) {
    out = std::copy_n(digits, count - places, out);
    *out++ = '.';
    return std::copy_n(digits + count - places, places, out);
  }
  std::memcpy(out, "0.", 2);
  return std::copy_n(digits, count, std::fill_n(out + 2, places - count, '0'));
}

}  // namespace

char* writeDigits(char* out, UInt128 n) noexcept {
  const int count = std::max(1, digitCount(n));
  std::memcpy(out, PaddedDigits(n).last(count), static_cast<std::size_t>(count));
  return out + count;
}

char* writeDecimal(char* out, const Decimal& value) noexcept {
  return isShort(value) ? writeShort(out, value) : writeAny(out, value);
}

ReadResult readDecimal(const char* first, const char* last, Decimal& value) noexcept {
  if (ShortNumber number; readShort(first, last, number)) {
    value = number.value();
    return {last, ReadOutcome::number};
  }
  if (const char* const end = readPlain(first, last, value)) return {end, ReadOutcome::number};
  return readAny(first, last, value);
}

}  // namespace detail

namespace {

inline std::string shortText(const Decimal& value) {
  std::string text("000000000000000", 15);  // not allocated, so that the digits are written in place
  text.resize(static_cast<std::size_t>(detail::writeShort(text.data(), value) - text.data()));
  return text;
}

[[gnu::noinline]] std::string longText(const Decimal& value) {
  char text[detail::longestText];
  return {text, detail::writeAny(text, value)};
}

/// Reads a whole text for which readShort() was false, with an optional plus sign; false if it is not a number.
[[gnu::noinline]] bool readWhole(std::string_view text, Decimal& value) noexcept {
  const char* first = text.data();
  const char* const last = first + text.size();
  if (first != last && *first == '+') {
    ++first;
    if (first != last && *first != '.' && !detail::digitAt(first, last)) return false;
  }
  if (last - first <= detail::longestPlain) {
    if (const char* const end = detail::readPlain(first, last, value)) return end == last;
  }
  const detail::ReadResult result = detail::readAny(first, last, value);
  return result.outcome == detail::ReadOutcome::number && result.end == last;
}

[[gnu::noinline]] Decimal longNumber(std::string_view text) noexcept {
  Decimal value;
  return readWhole(text, value) ? value : Decimal::notANumber();
}

}  // namespace

std::optional<Decimal> Decimal::parse(std::string_view text) noexcept {
  if (detail::ShortNumber number; detail::readShort(text.data(), text.data() + text.size(), number)) [[likely]]
    return number.value();
  std::optional<Decimal> value(std::in_place);
  if (!readWhole(text, *value)) value.reset();
  return value;
}

Decimal Decimal::decimalNumberWithString(std::string_view text) noexcept {
  if (detail::ShortNumber number; detail::readShort(text.data(), text.data() + text.size(), number)) [[likely]]
    return number.value();
  return longNumber(text);
}

std::string Decimal::stringValue() const { return detail::isShort(*this) ? shortText(*this) : longText(*this); }

std::from_chars_result from_chars(const char* first, const char* last, Decimal& value) noexcept {
  const detail::ReadResult result = detail::readDecimal(first, last, value);
  switch (result.outcome) {
    case detail::ReadOutcome::number:
      return {result.end, std::errc{}};
    case detail::ReadOutcome::outOfRange:
      return {result.end, std::errc::result_out_of_range};
    case detail::ReadOutcome::noNumber:
      break;
  }
  return {first, std::errc::invalid_argument};
}

std::to_chars_result to_chars(char* first, char* last, const Decimal& value) noexcept {
  char text[detail::longestText];
  const auto length = detail::writeDecimal(text, value) - text;
  if (last - first < length) return {last, std::errc::value_too_large};
  return {std::copy_n(text, length, first), std::errc{}};
}

std::to_chars_result to_chars(char* first, char* last, const Decimal& value, int fractionDigits) noexcept {
  const int places = std::max(fractionDigits, 0);
  const auto scale = static_cast<std::int16_t>(std::min(places, 200));
  const Decimal rounded = value.decimalNumberByRoundingAccordingToBehavior(
      NSDecimalNumberHandler({.scale = scale, .raiseOnOverflow = false}));
  const auto [end, error] = to_chars(first, last, rounded);
  if (error != std::errc{} || rounded.isNaN()) return {end, error};
  const int present = std::max(0, -rounded.exponent());
  const int missing = places - present, point = present == 0 && places > 0 ? 1 : 0;
  if (last - end < missing + point) return {last, std::errc::value_too_large};
  char* out = end;
  if (point != 0) *out++ = '.';
  return {std::fill_n(out, missing, '0'), std::errc{}};
}

std::ostream& operator<<(std::ostream& stream, const Decimal& value) {
  char text[detail::longestText];
  return stream << std::string_view(text, static_cast<std::size_t>(detail::writeDecimal(text, value) - text));
}

std::istream& operator>>(std::istream& stream, Decimal& value) {
  std::string word;
  if (!(stream >> word)) return stream;
  if (const auto number = Decimal::parse(word)) {
    value = *number;
  } else {
    stream.setstate(std::ios_base::failbit);
  }
  return stream;
}

}  // namespace norvik

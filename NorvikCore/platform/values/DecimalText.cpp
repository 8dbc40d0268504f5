#include "NorvikCore/platform/values/internal/DecimalText.h"

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/Decimal_charconv.h"
#include "NorvikCore/platform/values/internal/DecimalRounding.h"
#include "NorvikCore/platform/values/internal/DigitPairs.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <ostream>

namespace norvik {
namespace detail {
namespace {

/// Writes exactly `count` digits of n, with leading zeros, so that they end at `end`.
void writeBackwards(char* end, std::uint64_t n, int count) noexcept {
  for (; count >= 2; count -= 2) {
    end -= 2;
    writeDigitPair(end, n % 100);
    n /= 100;
  }
  if (count == 1) end[-1] = static_cast<char>('0' + n % 10);
}

constexpr NSDecimalNumberHandler neverRaises(NSDecimalNumberHandler::Settings{.raiseOnOverflow = false,
                                                                              .raiseOnUnderflow = false});

bool digitAt(const char* p, const char* last) noexcept {
  return p != last && static_cast<unsigned char>(*p - '0') < 10;
}

/// The digits of a number that is being read: 38 are kept, and of the others only what rounding needs.
class Digits {
 public:
  void take(unsigned digit) noexcept {
    if (count_ < 19) {
      head_ = head_ * 10 + digit;
      count_ += head_ != 0 ? 1 : 0;
    } else if (count_ < Decimal::maximumDigits) {
      rest_ = rest_ * 10 + digit;
      ++count_;
    } else {
      if (dropped_ == 0) {
        tail_ = digit > 5 ? Tail::aboveHalf : digit == 5 ? Tail::half : digit > 0 ? Tail::belowHalf : Tail::none;
      } else if (digit != 0 && (tail_ == Tail::none || tail_ == Tail::half)) {
        tail_ = tail_ == Tail::none ? Tail::belowHalf : Tail::aboveHalf;
      }
      ++dropped_;
    }
  }
  [[nodiscard]] UInt128 mantissa() const noexcept {
    return count_ <= 19 ? head_ : static_cast<UInt128>(head_) * powerOfTen64(count_ - 19) + rest_;
  }
  [[nodiscard]] Tail tail() const noexcept { return tail_; }
  [[nodiscard]] std::int64_t dropped() const noexcept { return dropped_; }

 private:
  std::uint64_t head_ = 0, rest_ = 0;
  int count_ = 0;
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

/// The fast path for most numbers: [-]digits[.digits] with up to 18 digits and no E after them. Null for all others.
const char* readShort(const char* first, const char* last, Decimal& value) noexcept {
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

}  // namespace

char* writeDigits(char* out, UInt128 n) noexcept {
  if (high64(n) == 0) {
    const int count = std::max(1, digitCount(n));
    writeBackwards(out + count, low64(n), count);
    return out + count;
  }
  UInt128 lower;
  const UInt128 upper = divideByPowerOfTen(n, 19, lower);
  out = writeDigits(out, upper);
  writeBackwards(out + 19, low64(lower), 19);
  return out + 19;
}

char* writeDecimal(char* out, const Decimal& value) noexcept {
  if (value.isNaN()) {
    std::memcpy(out, "NaN", 3);
    return out + 3;
  }
  if (value.isNegative()) *out++ = '-';
  const int exponent = value.exponent();
  char* const end = writeDigits(out, DecimalAccess::mantissa(value));
  if (exponent >= 0) {
    const int zeros = value.isZero() ? 0 : exponent;
    std::fill_n(end, zeros, '0');
    return end + zeros;
  }
  const auto length = static_cast<int>(end - out);
  if (length > -exponent) {
    std::memmove(end + exponent + 1, end + exponent, static_cast<std::size_t>(-exponent));
    end[exponent] = '.';
    return end + 1;
  }
  const int zeros = -exponent - length;
  std::memmove(out + 2 + zeros, out, static_cast<std::size_t>(length));
  std::memcpy(out, "0.", 2);
  std::fill_n(out + 2, zeros, '0');
  return out + 2 - exponent;
}

ReadResult readDecimal(const char* first, const char* last, Decimal& value) noexcept {
  if (const char* const end = readShort(first, last, value)) [[likely]]
    return {end, ReadOutcome::number};
  const char* p = first;
  const bool negative = p != last && *p == '-';
  if (negative) ++p;
  if (last - p >= 3 && !negative && std::memcmp(p, "NaN", 3) == 0) {
    value = Decimal::notANumber();
    return {p + 3, ReadOutcome::number};
  }
  Digits digits;
  const char* const whole = p;
  for (; digitAt(p, last); ++p) digits.take(static_cast<unsigned>(*p - '0'));
  std::int64_t exponent = 0;
  bool any = p != whole;
  if (p != last && *p == '.' && (any || digitAt(p + 1, last))) {
    const char* const fraction = ++p;
    for (; digitAt(p, last); ++p) digits.take(static_cast<unsigned>(*p - '0'));
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

}  // namespace detail

namespace {

/// Reads the whole text, with an optional plus sign; false if it is not a number.
bool readWhole(std::string_view text, Decimal& value) noexcept {
  const char* first = text.data();
  const char* const last = first + text.size();
  if (first != last && *first == '+') {
    ++first;
    if (first != last && *first != '.' && !detail::digitAt(first, last)) return false;
  }
  const detail::ReadResult result = detail::readDecimal(first, last, value);
  return result.outcome == detail::ReadOutcome::number && result.end == last;
}

}  // namespace

std::optional<Decimal> Decimal::parse(std::string_view text) noexcept {
  std::optional<Decimal> value(std::in_place);
  if (!readWhole(text, *value)) value.reset();
  return value;
}

Decimal Decimal::decimalNumberWithString(std::string_view text) noexcept {
  Decimal value;
  return readWhole(text, value) ? value : notANumber();
}

std::string Decimal::stringValue() const {
  char text[detail::longestText];
  return {text, detail::writeDecimal(text, *this)};
}

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

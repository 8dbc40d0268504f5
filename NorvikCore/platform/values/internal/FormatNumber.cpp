#include "NorvikCore/platform/values/internal/FormatNumber.h"

#include "NorvikCore/platform/values/Decimal_charconv.h"
#include "NorvikCore/platform/values/FormatDirective.h"
#include "NorvikCore/platform/values/internal/DigitPairs.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <string>
#include <system_error>
#include <type_traits>

namespace norvik::detail {
namespace {

__extension__ typedef unsigned __int128 UInt128;

/// Appends sign or prefix, zeros and digits, padded to the field.
void appendNumber(FormatBuffer& out, std::string_view prefix, std::size_t zeros, std::string_view digits,
                  bool fillWithZeros, const FormatField& field) {
  const std::size_t length = prefix.size() + zeros + digits.size();
  const auto width = static_cast<std::size_t>(field.width);
  const std::size_t fill = width > length ? width - length : 0;
  if (fill > 0 && !field.leftAlign && !fillWithZeros) out.append(fill, ' ');
  out.append(prefix);
  if (fill > 0 && !field.leftAlign && fillWithZeros) zeros += fill;
  if (zeros > 0) out.append(zeros, '0');
  out.append(digits);
  if (fill > 0 && field.leftAlign) out.append(fill, ' ');
}

std::string_view signText(bool isNegative, const FormatField& field) noexcept {
  return isNegative ? "-" : field.plusSign ? "+" : field.spaceSign ? " " : "";
}

/// Writes the decimal digits of `number` so that they end at `end`; returns their start.
inline char* decimalDigits(std::uint64_t number, char* end) noexcept {
  while (number >= 100) {
    writeDigitPair(end -= 2, number % 100);
    number /= 100;
  }
  if (number >= 10) {
    writeDigitPair(end -= 2, number);
  } else {
    *--end = static_cast<char>('0' + number);
  }
  return end;
}

char* powerOfTwoDigits(std::uint64_t number, unsigned shift, bool upperCase, char* end) noexcept {
  const char* digits = upperCase ? "0123456789ABCDEF" : "0123456789abcdef";
  do *--end = digits[number & ((1U << shift) - 1)];
  while ((number >>= shift) != 0);
  return end;
}

constexpr std::uint64_t powersOfTen[] = {1,       10,       100,       1000,       10000,       100000,
                                         1000000, 10000000, 100000000, 1000000000, 10000000000, 100000000000};

/// The digits of `magnitude` rounded to `places` decimals, exactly (ties to even, as in the default rounding mode).
/// False if they do not fit 64 bits. The digits of amounts fit; the general algorithm takes several times as long.
inline bool fixedDigits(double magnitude, int places, std::uint64_t& digits) noexcept {
  if (places >= static_cast<int>(std::size(powersOfTen))) return false;
  if (magnitude == 0) {
    digits = 0;
    return true;
  }
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  const int exponent = static_cast<int>(bits >> 52) - 1075;
  if (exponent < -1000 || exponent > 10) return false;
  const std::uint64_t mantissa = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
  const UInt128 product = static_cast<UInt128>(mantissa) * powersOfTen[places];
  UInt128 quotient;
  if (exponent >= 0) {
    quotient = product << exponent;
  } else if (exponent <= -128) {
    quotient = 0;  // the product has at most 90 bits: less than half
  } else {
    const int shift = -exponent;
    quotient = product >> shift;
    const UInt128 rest = product - (quotient << shift), half = static_cast<UInt128>(1) << (shift - 1);
    if (rest > half || (rest == half && (quotient & 1) != 0)) ++quotient;
  }
  if (quotient > std::numeric_limits<std::uint64_t>::max()) return false;
  digits = static_cast<std::uint64_t>(quotient);
  return true;
}

void appendFixed(FormatBuffer& out, std::string_view sign, std::uint64_t digits, int places, const FormatField& field) {
  char text[48];
  char* end = text + sizeof text;
  char* begin = end;
  if (places > 0) {
    const std::uint64_t power = powersOfTen[places];
    begin = decimalDigits(digits % power, end);
    while (end - begin < places) *--begin = '0';
    digits /= power;
  }
  if (places > 0 || field.alternate) *--begin = '.';
  begin = decimalDigits(digits, begin);
  appendNumber(out, sign, 0, {begin, static_cast<std::size_t>(end - begin)}, field.zeroPad, field);
}

/// The digits that %g shows of a number that is zero, or at least one and written without an exponent. `places` of them
/// are decimals, without trailing zeros.
inline bool shortGeneralDigits(double magnitude, int precision, std::uint64_t& digits, int& places) noexcept {
  if (precision >= static_cast<int>(std::size(powersOfTen))) return false;
  const auto limit = powersOfTen[precision];
  if ((magnitude < 1 && magnitude != 0) || magnitude >= static_cast<double>(limit)) return false;
  int whole = 1;
  while (magnitude >= static_cast<double>(powersOfTen[whole])) ++whole;
  places = precision - whole;
  if (!fixedDigits(magnitude, places, digits) || digits >= limit) return false;
  for (; places > 0 && digits % 10 == 0; --places) digits /= 10;
  return true;
}

/// The # flag: always a decimal point, and for %g the trailing zeros that are otherwise dropped.
void applyAlternate(std::string& text, char conversion, int precision) {
  const std::size_t exponent = text.find_first_of(conversion == 'a' ? "p" : "e");
  std::size_t end = exponent == std::string::npos ? text.size() : exponent;
  if (text.find('.') == std::string::npos) text.insert(end++, 1, '.');
  if (conversion != 'g') return;
  std::size_t significant = 0;
  bool leading = true;
  for (std::size_t i = 0; i < end; ++i) {
    if (text[i] == '.') continue;
    leading = leading && text[i] == '0';
    significant += leading ? 0 : 1;
  }
  if (significant == 0) significant = 1;  // zero has one significant digit
  const auto wanted = static_cast<std::size_t>(precision);
  if (significant < wanted) text.insert(end, wanted - significant, '0');
}

template <class Number>
std::string generalDigits(char conversion, Number magnitude, int precision) {
  const std::chars_format format = conversion == 'f'   ? std::chars_format::fixed
                                   : conversion == 'e' ? std::chars_format::scientific
                                   : conversion == 'g' ? std::chars_format::general
                                                       : std::chars_format::hex;
  std::string text(static_cast<std::size_t>(std::max(precision, 0)) + 64, '\0');
  for (;;) {
    const std::to_chars_result result =
        precision < 0 ? std::to_chars(text.data(), text.data() + text.size(), magnitude, format)
                      : std::to_chars(text.data(), text.data() + text.size(), magnitude, format, precision);
    if (result.ec == std::errc()) {
      text.resize(static_cast<std::size_t>(result.ptr - text.data()));
      return text;
    }
    text.resize(text.size() * 2 + std::numeric_limits<Number>::max_exponent10);
  }
}

template <class Number>
void appendFloatingNumber(FormatBuffer& out, char conversion, Number number, const FormatField& field) {
  const bool upperCase = conversion >= 'A' && conversion <= 'Z';
  const char lower = upperCase ? static_cast<char>(conversion - 'A' + 'a') : conversion;
  const bool isNegative = std::signbit(number);
  const Number magnitude = isNegative ? -number : number;
  if (!std::isfinite(number)) {
    const std::string_view text = std::isnan(number) ? upperCase ? "NAN" : "nan" : upperCase ? "INF" : "inf";
    return appendNumber(out, signText(isNegative, field), 0, text, false, field);
  }
  const int precision = lower == 'a'                           ? field.precision
                        : field.precision < 0                  ? 6
                        : lower == 'g' && field.precision == 0 ? 1
                                                               : field.precision;
  if constexpr (std::is_same_v<Number, double>) {
    std::uint64_t digits = 0;
    if (lower == 'f' && fixedDigits(magnitude, precision, digits)) {
      return appendFixed(out, signText(isNegative, field), digits, precision, field);
    }
    int places = 0;
    if (lower == 'g' && !field.alternate && shortGeneralDigits(magnitude, precision, digits, places)) {
      return appendFixed(out, signText(isNegative, field), digits, places, field);
    }
  }
  std::string text = generalDigits(lower, magnitude, precision);
  if (field.alternate) applyAlternate(text, lower, precision);
  std::string prefix(signText(isNegative, field));
  if (lower == 'a') prefix += "0x";
  if (upperCase) {
    for (std::string* part : {&text, &prefix}) {
      for (char& c : *part) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
  }
  appendNumber(out, prefix, 0, text, field.zeroPad, field);
}

}  // namespace

void appendInteger(FormatBuffer& out, char conversion, std::uint64_t bits, bool isNegative, unsigned bytes,
                   const FormatField& field) {
  char text[72];
  char* end = text + sizeof text;
  char* begin;
  std::string_view prefix;
  const bool isHexadecimal = conversion == 'x' || conversion == 'X', isOctal = conversion == 'o' || conversion == 'O';
  if (isHexadecimal || isOctal) {
    if (bytes < 8) bits &= (std::uint64_t{1} << (bytes * 8)) - 1;
    begin = powerOfTwoDigits(bits, isHexadecimal ? 4 : 3, conversion == 'X', end);
    if (isHexadecimal && field.alternate && bits != 0) prefix = conversion == 'X' ? "0X" : "0x";
  } else {
    begin = decimalDigits(isNegative ? 0 - bits : bits, end);
    prefix = signText(isNegative, field);
  }
  if (bits == 0 && field.precision == 0) begin = end;  // no digits at all
  auto count = static_cast<std::size_t>(end - begin);
  const std::size_t least = field.precision > 0 ? static_cast<std::size_t>(field.precision) : 0;
  std::size_t zeros = least > count ? least - count : 0;
  if (isOctal && field.alternate && zeros == 0 && (count == 0 || *begin != '0')) zeros = 1;
  appendNumber(out, prefix, zeros, {begin, count}, field.zeroPad && field.precision < 0, field);
}

void appendDecimal(FormatBuffer& out, std::uint64_t bits, bool isNegative) {
  char text[24];
  char* end = text + sizeof text;
  char* begin = decimalDigits(isNegative ? 0 - bits : bits, end);
  if (isNegative) *--begin = '-';
  out.append({begin, static_cast<std::size_t>(end - begin)});
}

void appendFixed(FormatBuffer& out, double number) {
  constexpr int places = 6;
  std::uint64_t digits = 0;
  if (!fixedDigits(std::fabs(number), places, digits)) return appendFloating(out, 'f', number, FormatField{});
  char text[32];
  char* end = text + sizeof text;
  char* begin = end;
  std::uint64_t fraction = digits % powersOfTen[places];
  for (int i = 0; i < places; i += 2, fraction /= 100) writeDigitPair(begin -= 2, fraction % 100);
  *--begin = '.';
  begin = decimalDigits(digits / powersOfTen[places], begin);
  if (std::signbit(number)) *--begin = '-';
  out.append({begin, static_cast<std::size_t>(end - begin)});
}

void appendAddress(FormatBuffer& out, const void* address, const FormatField& field) {
  char text[16];
  char* end = text + sizeof text;
  const char* begin = powerOfTwoDigits(reinterpret_cast<std::uintptr_t>(address), 4, false, end);
  appendNumber(out, "0x", 0, {begin, static_cast<std::size_t>(end - begin)}, field.zeroPad, field);
}

void appendFloating(FormatBuffer& out, char conversion, double number, const FormatField& field) {
  appendFloatingNumber(out, conversion, number, field);
}

void appendFloating(FormatBuffer& out, char conversion, long double number, const FormatField& field) {
  appendFloatingNumber(out, conversion, number, field);
}

void appendDecimalNumber(FormatBuffer& out, const Decimal& number, const FormatField& field) {
  constexpr int usualPlaces = 6;
  char text[longestDecimalText + 1 + formatFieldLimit + 1];
  char* end = to_chars(text, text + sizeof text, number, field.precision < 0 ? usualPlaces : field.precision).ptr;
  if (field.alternate && field.precision == 0 && !number.isNaN()) *end++ = '.';
  const bool isNegative = text[0] == '-';
  const char* begin = isNegative ? text + 1 : text;
  appendNumber(out, number.isNaN() ? std::string_view() : signText(isNegative, field), 0,
               {begin, static_cast<std::size_t>(end - begin)}, field.zeroPad && !number.isNaN(), field);
}

}  // namespace norvik::detail

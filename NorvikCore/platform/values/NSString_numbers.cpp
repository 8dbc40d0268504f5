// The number at the start of a text, read leniently and independent of the locale.
#include "NorvikCore/platform/values/NSString.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <system_error>

namespace norvik {
namespace {

bool isSpace(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

std::string_view withoutLeadingSpace(std::string_view text) noexcept {
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  return text;
}

/// Removes a sign from the text; true if it is a minus.
bool takeSign(std::string_view& text) noexcept {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
  const bool isMinus = text.front() == '-';
  text.remove_prefix(1);
  return isMinus;
}

template <class Integer>
Integer integerIn(std::string_view text) noexcept {
  text = withoutLeadingSpace(text);
  const bool isNegative = takeSign(text);
  Integer value = 0;
  for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) {
    const auto digit = static_cast<Integer>(text.front() - '0');
    // Negative numbers are accumulated downwards, because there is one more number below zero.
    const bool isTooLarge =
        __builtin_mul_overflow(value, Integer{10}, &value) ||
        (isNegative ? __builtin_sub_overflow(value, digit, &value) : __builtin_add_overflow(value, digit, &value));
    if (isTooLarge) return isNegative ? std::numeric_limits<Integer>::min() : std::numeric_limits<Integer>::max();
  }
  return value;
}

/// For digits that are out of the range of doubles: true if they are too large, false if they are too small.
bool isHuge(std::string_view digits) noexcept {
  long places = 0;  // digits before the point, from the first nonzero one; negative: zeros after the point
  bool seenPoint = false, seenDigit = false;
  std::size_t i = 0;
  for (; i < digits.size() && (isDigit(digits[i]) || digits[i] == '.'); ++i) {
    if (digits[i] == '.') {
      seenPoint = true;
    } else if (digits[i] != '0' || seenDigit) {
      seenDigit = true;
      if (!seenPoint) ++places;
    } else if (seenPoint) {
      --places;
    }
  }
  const std::string_view exponent = i < digits.size() ? digits.substr(i + 1) : std::string_view();
  return places + static_cast<long>(integerIn<int>(exponent)) > 0;
}

}  // namespace

int NSString::intValue() const noexcept { return integerIn<int>(view()); }

std::int64_t NSString::longLongValue() const noexcept { return integerIn<std::int64_t>(view()); }

double NSString::doubleValue() const noexcept {
  std::string_view text = withoutLeadingSpace(view());
  const bool isNegative = takeSign(text);
  const bool isNumber = !text.empty() && (isDigit(text[0]) || (text[0] == '.' && text.size() > 1 && isDigit(text[1])));
  double value = 0;
  if (isNumber) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
      const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.data()));
      value = isHuge(digits) ? std::numeric_limits<double>::infinity() : 0;
    }
  }
  return isNegative ? -value : value;
}

bool NSString::boolValue() const noexcept {
  std::string_view text = withoutLeadingSpace(view());
  takeSign(text);
  while (!text.empty() && text.front() == '0') text.remove_prefix(1);
  if (text.empty()) return false;
  const char first = text.front();
  return first == 'Y' || first == 'y' || first == 'T' || first == 't' || (first >= '1' && first <= '9');
}

}  // namespace norvik

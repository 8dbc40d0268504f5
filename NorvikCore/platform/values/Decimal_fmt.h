// NorvikCore/platform/values/Decimal_fmt.h - decimal numbers in {fmt} format strings. The user must have {fmt}.
//
//   fmt::format("{}", 1234.5_dec);             // "1234.5"
//   fmt::format("{:>10.2f}|", 1234.5_dec);     // "   1234.50|"
//   fmt::format("{:+08.1}", -2.25_dec);        // "-00002.3"
//   fmt::format("{:,.2f}", 1234567.5_dec);     // "1,234,567.50"
//
// [[fill]align][sign][0][width][,][.precision][f]: numbers are right-aligned by default. A comma separates thousands,
// and cannot be combined with 0. A precision rounds (a half away from zero) and pads with zeros; without a precision
// all digits are written.
#pragma once  // include time: <fmt/format.h> is the purpose of this header

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/Decimal_charconv.h"

#include <fmt/format.h>

#include <cstddef>
#include <string_view>  // std::copy, std::fill_n, std::min and std::max too, by the cheapest header

template <>
struct fmt::formatter<norvik::Decimal> {
 private:
  // Before parse(), because clang evaluates it at compile time before the class is complete.
  static constexpr int mostPlaces = 999;

  /// The number at p, or -1 if there is none.
  template <class Iterator>
  static constexpr int number(Iterator& p, Iterator end) {
    if (p == end || *p < '0' || *p > '9') return -1;
    int n = 0;
    for (; p != end && *p >= '0' && *p <= '9'; ++p) {
      n = n * 10 + (*p - '0');
      if (n > mostPlaces) throw fmt::format_error("width or precision of a decimal number above 999");
    }
    return n;
  }

 public:
  constexpr auto parse(fmt::format_parse_context& context) {
    auto p = context.begin();
    const auto end = context.end();
    const auto isAlign = [](char c) { return c == '<' || c == '>' || c == '^'; };
    if (end - p >= 2 && isAlign(p[1]) && *p != '{' && *p != '}') {
      fill_ = *p;
      align_ = p[1];
      p += 2;
    } else if (p != end && isAlign(*p)) {
      align_ = *p++;
    }
    if (p != end && (*p == '+' || *p == '-' || *p == ' ')) sign_ = *p++;
    if (p != end && *p == '0') {
      zeros_ = align_ == '\0';
      ++p;
    }
    width_ = static_cast<std::size_t>(std::max(0, number(p, end)));
    if (p != end && *p == ',') {
      if (zeros_) throw fmt::format_error("a decimal number has either leading zeros or separated thousands");
      isGrouped_ = true;
      ++p;
    }
    if (p != end && *p == '.') {
      precision_ = number(++p, end);
      if (precision_ < 0) throw fmt::format_error("missing precision of a decimal number");
    }
    if (p != end && *p == 'f') ++p;
    if (p != end && *p != '}') throw fmt::format_error("unknown format of a decimal number");
    return p;
  }

  template <class Context>
  auto format(const norvik::Decimal& value, Context& context) const {
    char text[longestText];
    char* const last = text + sizeof text;
    const auto end =
        precision_ < 0 ? norvik::to_chars(text, last, value).ptr : norvik::to_chars(text, last, value, precision_).ptr;
    const std::string_view digits(text, static_cast<std::size_t>(end - text));
    return value.isNaN() ? writeWord(digits, context) : writeDigits(digits, context);
  }

 protected:
  [[nodiscard]] bool showsAllDigits() const noexcept { return precision_ < 0 && !isGrouped_; }

  /// At most `longestText` characters.
  template <class Context>
  auto writeDigits(std::string_view digits, Context& context) const {
    char sign = sign_ == '-' ? '\0' : sign_;
    if (digits.front() == '-') {
      sign = '-';
      digits.remove_prefix(1);
    }
    char grouped[longestText / 3 * 4 + 1];
    if (isGrouped_) digits = withThousands(digits, grouped);
    return writePadded(sign, digits, zeros_, context);
  }
  /// Not-a-number and infinity: without sign, leading zeros and thousands.
  template <class Context>
  auto writeWord(std::string_view word, Context& context) const {
    return writePadded('\0', word, false, context);
  }

 private:
  static constexpr std::size_t longestText = norvik::longestDecimalText + 2 + mostPlaces;

  template <class Context>
  auto writePadded(char sign, std::string_view text, bool zeros, Context& context) const {
    const std::size_t length = text.size() + (sign != '\0' ? 1 : 0);
    const std::size_t padding = width_ > length ? width_ - length : 0;
    const std::size_t before = zeros || align_ == '<' ? 0 : align_ == '^' ? padding / 2 : padding;
    auto out = std::fill_n(context.out(), before, fill_);
    if (sign != '\0') *out++ = sign;
    if (zeros) out = std::fill_n(out, padding, '0');
    out = std::copy(text.begin(), text.end(), out);
    return zeros ? out : std::fill_n(out, padding - before, fill_);
  }

  static std::string_view withThousands(std::string_view digits, char* text) noexcept {
    const std::size_t whole = std::min(digits.find('.'), digits.size());
    char* out = text;
    for (std::size_t i = 0; i < digits.size(); ++i) {
      if (i > 0 && i < whole && (whole - i) % 3 == 0) *out++ = ',';
      *out++ = digits[i];
    }
    return {text, static_cast<std::size_t>(out - text)};
  }

  char fill_ = ' ', align_ = '\0', sign_ = '-';
  bool zeros_ = false, isGrouped_ = false;
  std::size_t width_ = 0;
  int precision_ = -1;
};

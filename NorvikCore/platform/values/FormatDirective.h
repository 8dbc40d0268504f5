// NorvikCore/platform/values/FormatDirective.h - a directive of the format language, and the check of a format.
//
//   std::size_t at = 1;  parseFormatDirective("%5.2f", at).width;      // 5, and `at` is 5, the end of the directive
//
// A directive is  % [n$] [flags] [width] [.precision] [length] conversion : flags are - + space # 0 ' , width and
// precision are numbers, * or *n$, and the conversions are
//
//   @                        any value or object of the library, text, and plain numbers as NSNumber shows them
//   d i u D U, x X o O       integers, booleans, characters, enumerations
//   c C                      a character, or an integer that is a code point
//   s S                      text
//   f F                      floating numbers, Decimal and NSNumber
//   e E g G a A              floating numbers
//   p                        pointers and objects
//   %                        nothing: a percent sign
//
// The flag ' (grouping) is accepted and has no effect: a formatter groups digits as the locale does. Length modifiers
// (h, hh, l, ll, q, L, z, t, j) are accepted and have no effect, because the argument's own type decides. Everything
// here is constexpr: the compiler parses a literal with the same code that parses a run-time format.
#pragma once

#include "NorvikCore/platform/export.h"  // rejects language versions below C++20 with one error

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace norvik::detail {

/// The kind of an argument, as conversions distinguish them.
enum class FormatKind : std::uint8_t {
  absent,     // an empty optional, reference or pointer in place of a value or object
  boolean,    // this and the next three kinds print as integers:
  character,  //   char, char16_t, char32_t, wchar_t
  signedInteger,
  unsignedInteger,
  floating,      // float, double
  longFloating,  // long double
  text,          // std::string, std::string_view
  cText,         // a NUL-terminated string; an array of char is bounded by its size
  string,        // NSString
  described,     // a value or object with a description
  decimal,       // Decimal
  number,        // NSNumber
  object,        // a counted object: a description and an address
  pointer,       // any other pointer
};

/// The widest field and the highest precision; larger numbers in a run-time format count as this one.
inline constexpr int formatFieldLimit = 4096;

struct FormatDirective {
  static constexpr int none = -1, next = 0;  // an argument is `next` or a position counted from 1

  char conversion = 0;  // 0 if the text after the percent sign is not a directive
  bool leftAlign = false, plusSign = false, spaceSign = false, alternate = false, zeroPad = false;
  int width = none, precision = none;
  int argument = next, widthArgument = none, precisionArgument = none;
};

/// Parses the number at `at` and moves `at` behind it; `none` if there is no digit. A number above formatFieldLimit
/// stops growing, so it cannot overflow.
constexpr int parseFormatNumber(std::string_view format, std::size_t& at) noexcept {
  int number = FormatDirective::none;
  for (; at < format.size() && format[at] >= '0' && format[at] <= '9'; ++at) {
    if (number < 0) number = 0;
    if (number <= formatFieldLimit) number = number * 10 + (format[at] - '0');
  }
  return number;
}

/// Parses a width or a precision: a number into `number`, or * and *n$ into `argument`. False if *n is not followed by
/// $.
constexpr bool parseFormatField(std::string_view format, std::size_t& at, int& number, int& argument) noexcept {
  if (at >= format.size() || format[at] != '*') {
    number = parseFormatNumber(format, at);
    return true;
  }
  ++at;
  argument = parseFormatNumber(format, at);
  if (argument == FormatDirective::none) {
    argument = FormatDirective::next;
    return true;
  }
  return argument > 0 && at < format.size() && format[at++] == '$';
}

constexpr bool parseFormatFlag(char c, FormatDirective& directive) noexcept {
  switch (c) {
    case '-':
      return directive.leftAlign = true;
    case '+':
      return directive.plusSign = true;
    case ' ':
      return directive.spaceSign = true;
    case '#':
      return directive.alternate = true;
    case '0':
      return directive.zeroPad = true;
    case '\'':
      return true;  // grouping: the plain numbers of this language have none
    default:
      return false;
  }
}

/// Parses the directive whose percent sign is just before `at`, and moves `at` behind it. If there is no directive,
/// `conversion` is 0 and `at` is behind the characters that were examined.
constexpr FormatDirective parseFormatDirective(std::string_view format, std::size_t& at) noexcept {
  FormatDirective directive;
  const std::size_t start = at;
  if (const int position = parseFormatNumber(format, at); position > 0 && at < format.size() && format[at] == '$') {
    directive.argument = position;
    ++at;
  } else {
    at = start;
  }
  while (at < format.size() && parseFormatFlag(format[at], directive)) ++at;
  if (!parseFormatField(format, at, directive.width, directive.widthArgument)) return directive;
  if (at < format.size() && format[at] == '.') {
    ++at;
    if (!parseFormatField(format, at, directive.precision, directive.precisionArgument)) return directive;
    if (directive.precision == FormatDirective::none && directive.precisionArgument == FormatDirective::none) {
      directive.precision = 0;  // a point alone
    }
  }
  while (at < format.size() && std::string_view("hlqLztj").find(format[at]) != std::string_view::npos) ++at;
  if (at >= format.size()) return directive;
  const char conversion = format[at];
  if (std::string_view("@diuDUxXoOcCsSfFeEgGaAp%").find(conversion) == std::string_view::npos) return directive;
  ++at;
  directive.conversion = conversion;
  return directive;
}

/// True if the conversion can show an argument of that kind.
constexpr bool formatAccepts(char conversion, FormatKind kind) noexcept {
  using enum FormatKind;
  switch (conversion) {
    case '@':
      return kind != character && kind != longFloating && kind != pointer;
    case 's':
    case 'S':
      return kind == absent || kind == text || kind == cText || kind == string;
    case 'c':
    case 'C':
      return kind == character || kind == signedInteger || kind == unsignedInteger;
    case 'p':
      return kind == absent || kind == pointer || kind == object || kind == cText;
    case 'f':
    case 'F':
      return kind == floating || kind == longFloating || kind == decimal || kind == number;
    case 'e':
    case 'E':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      return kind == floating || kind == longFloating;
    default:
      return kind == boolean || kind == character || kind == signedInteger || kind == unsignedInteger;
  }
}

/// True for the integer kinds that a * accepts.
constexpr bool formatAcceptsAsField(FormatKind kind) noexcept {
  return kind == FormatKind::signedInteger || kind == FormatKind::unsignedInteger;
}

enum class FormatFault : std::uint8_t {
  none,
  unknownDirective,  // a percent sign that starts no directive
  missingArgument,   // a directive or * without an argument
  wrongArgument,     // an argument of a kind its directive cannot show
  surplusArgument,   // an argument that no directive shows
  mixedPositions,    // %1$d beside %d
  fieldTooWide,      // a width or precision above formatFieldLimit
};

/// Checks a format against its arguments' kinds; at most 64 arguments.
constexpr FormatFault checkFormat(std::string_view format, const FormatKind* kinds, std::size_t count) noexcept {
  std::uint64_t used = 0;
  std::size_t following = 0;
  bool positional = false, sequential = false;
  FormatFault fault = FormatFault::none;
  const auto take = [&](int argument, auto accepts) {
    (argument == FormatDirective::next ? sequential : positional) = true;
    const std::size_t index = argument == FormatDirective::next ? following++ : static_cast<std::size_t>(argument) - 1;
    if (index >= count) {
      fault = FormatFault::missingArgument;
    } else if (!accepts(kinds[index])) {
      fault = FormatFault::wrongArgument;
    } else {
      used |= std::uint64_t{1} << index;
    }
    return fault == FormatFault::none;
  };
  for (std::size_t at = 0; at < format.size();) {
    if (format[at++] != '%') continue;
    const FormatDirective directive = parseFormatDirective(format, at);
    if (directive.conversion == 0) return FormatFault::unknownDirective;
    if (directive.width > formatFieldLimit || directive.precision > formatFieldLimit) return FormatFault::fieldTooWide;
    if (directive.widthArgument != FormatDirective::none && !take(directive.widthArgument, formatAcceptsAsField)) {
      return fault;
    }
    if (directive.precisionArgument != FormatDirective::none &&
        !take(directive.precisionArgument, formatAcceptsAsField)) {
      return fault;
    }
    if (directive.conversion == '%') continue;
    const char conversion = directive.conversion;
    if (!take(directive.argument, [conversion](FormatKind kind) { return formatAccepts(conversion, kind); })) {
      return fault;
    }
  }
  if (positional && sequential) return FormatFault::mixedPositions;
  const std::uint64_t all = count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
  return used == all ? FormatFault::none : FormatFault::surplusArgument;
}

/// True for a correct format that gives the same text with copies of its arguments. False if it shows an address, or if
/// a precision limits a text, because that text may have no terminating zero.
constexpr bool formatCanWait(std::string_view format) noexcept {
  for (std::size_t at = 0; at < format.size();) {
    if (format[at++] != '%') continue;
    const FormatDirective directive = parseFormatDirective(format, at);
    const bool isText = directive.conversion == 's' || directive.conversion == 'S';
    const bool isBounded =
        directive.precision != FormatDirective::none || directive.precisionArgument != FormatDirective::none;
    if (directive.conversion == 'p' || (isText && isBounded)) return false;
  }
  return true;
}

}  // namespace norvik::detail

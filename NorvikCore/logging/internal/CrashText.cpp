#include "NorvikCore/logging/internal/CrashText.h"

#include "NorvikCore/platform/values/CivilDate.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <iterator>

namespace norvik::detail {

void CrashText::append(std::string_view text) noexcept {
  const std::size_t count = std::min(text.size(), room());
  if (count > 0) std::memcpy(memory_ + size_, text.data(), count);
  size_ += count;
}

void CrashText::appendOnOneLine(std::string_view text) noexcept {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    append(byte < 0x20 || byte == 0x7F ? ' ' : c);
  }
}

void CrashText::appendNumber(std::uint64_t number, std::size_t digits) noexcept {
  char text[20];
  char* begin = std::end(text);
  do *--begin = static_cast<char>('0' + number % 10);
  while ((number /= 10) != 0);
  while (static_cast<std::size_t>(std::end(text) - begin) < std::min(digits, sizeof text)) *--begin = '0';
  append({begin, static_cast<std::size_t>(std::end(text) - begin)});
}

void CrashText::appendSigned(std::int64_t number) noexcept {
  if (number < 0) append('-');
  appendNumber(number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number));
}

void CrashText::appendHexadecimal(std::uint64_t number) noexcept {
  char text[16];
  char* begin = std::end(text);
  do *--begin = "0123456789abcdef"[number & 0xF];
  while ((number >>= 4) != 0);
  append("0x");
  append({begin, static_cast<std::size_t>(std::end(text) - begin)});
}

void CrashText::appendTime(std::int64_t nanoseconds) noexcept {
  using namespace std::chrono;
  const sys_time<milliseconds> when(milliseconds(nanoseconds / 1'000'000));
  const sys_days day = floor<days>(when);
  const year_month_day date(day);
  const hh_mm_ss time(when - day);
  appendNumber(static_cast<std::uint64_t>(std::max(static_cast<int>(date.year()), 0)), 4);
  append('-');
  appendNumber(static_cast<unsigned>(date.month()), 2);
  append('-');
  appendNumber(static_cast<unsigned>(date.day()), 2);
  append('T');
  appendNumber(static_cast<std::uint64_t>(time.hours().count()), 2);
  append(':');
  appendNumber(static_cast<std::uint64_t>(time.minutes().count()), 2);
  append(':');
  appendNumber(static_cast<std::uint64_t>(time.seconds().count()), 2);
  append('.');
  appendNumber(static_cast<std::uint64_t>(time.subseconds().count()), 3);
  append('Z');
}

void CrashText::appendFloating(double number, int places) noexcept {
  constexpr double most = 1e15;
  if (!(std::fabs(number) < most)) return append("(value)");
  std::uint64_t power = 1;
  for (int i = 0; i < places; ++i) power *= 10;
  const double magnitude = std::fabs(number);
  auto whole = static_cast<std::uint64_t>(magnitude);
  auto fraction =
      static_cast<std::uint64_t>((magnitude - static_cast<double>(whole)) * static_cast<double>(power) + 0.5);
  if (fraction >= power) {
    ++whole;
    fraction -= power;
  }
  if (std::signbit(number)) append('-');
  appendNumber(whole);
  if (places == 0) return;
  append('.');
  appendNumber(fraction, static_cast<std::size_t>(places));
}

void CrashText::appendArgument(const FormatArgument& argument, const FormatDirective& directive) noexcept {
  constexpr int usualPlaces = 6, mostPlaces = 9;
  const bool isHexadecimal = directive.conversion == 'x' || directive.conversion == 'X';
  switch (argument.kind()) {
    case FormatKind::absent:
      return append("(null)");
    case FormatKind::text:
      return append({static_cast<const char*>(argument.pointer), argument.length});
    case FormatKind::cText:
      return append({static_cast<const char*>(argument.pointer),
                     ::strnlen(static_cast<const char*>(argument.pointer), argument.length)});
    case FormatKind::string:
      return append(static_cast<const NSString*>(argument.pointer)->view());
    case FormatKind::character:
      if (argument.integer >= 0x20 && argument.integer < 0x7F) return append(static_cast<char>(argument.integer));
      [[fallthrough]];
    case FormatKind::boolean:
    case FormatKind::signedInteger:
      if (isHexadecimal) return appendHexadecimal(static_cast<std::uint64_t>(argument.integer));
      return appendSigned(argument.integer);
    case FormatKind::unsignedInteger:
      if (isHexadecimal) return appendHexadecimal(static_cast<std::uint64_t>(argument.integer));
      return appendNumber(static_cast<std::uint64_t>(argument.integer));
    case FormatKind::floating:
      return appendFloating(argument.floating,
                            directive.precision < 0 ? usualPlaces : std::min(directive.precision, mostPlaces));
    case FormatKind::pointer:
      return appendHexadecimal(reinterpret_cast<std::uintptr_t>(argument.pointer));
    case FormatKind::longFloating:
    case FormatKind::described:
    case FormatKind::decimal:
    case FormatKind::number:
    case FormatKind::object:
      break;
  }
  append("(value)");
}

void CrashText::appendFormatted(std::string_view format, FormatArguments arguments) noexcept {
  std::size_t next = 0;
  for (std::size_t at = 0; at < format.size();) {
    const std::size_t percent = std::min(format.find('%', at), format.size());
    append(format.substr(at, percent - at));
    if (percent == format.size()) return;
    at = percent + 1;
    const FormatDirective directive = parseFormatDirective(format, at);
    if (directive.conversion == 0 || directive.conversion == '%') {
      append('%');
      continue;
    }
    if (directive.widthArgument == FormatDirective::next) ++next;
    if (directive.precisionArgument == FormatDirective::next) ++next;
    const std::size_t index =
        directive.argument == FormatDirective::next ? next++ : static_cast<std::size_t>(directive.argument) - 1;
    if (index < arguments.size()) appendArgument(arguments.data()[index], directive);
  }
}

}  // namespace norvik::detail

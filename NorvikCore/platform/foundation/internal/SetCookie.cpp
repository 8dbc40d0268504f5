#include "NorvikCore/platform/foundation/internal/SetCookie.h"

#include "NorvikCore/platform/foundation/internal/HostName.h"
#include "NorvikCore/platform/values/CivilDate.h"

#include <algorithm>
#include <array>

namespace norvik::detail {
namespace {

std::string_view trimmed(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool isControl(char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == '\x7F'; }

/// Removes the text before the separator, or the whole text, and returns it.
std::string_view takeUntil(char separator, std::string_view& text) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return taken;
}

/// Absent if it is not a number; then the attribute is ignored.
std::optional<std::int64_t> readMaxAge(std::string_view text, std::int64_t now) {
  const bool isNegative = text.starts_with('-');
  const std::string_view digits = text.substr(isNegative ? 1 : 0);
  if (digits.empty() || !std::ranges::all_of(digits, isAsciiDigit)) return std::nullopt;
  if (isNegative) return 0;
  std::int64_t seconds = 0;
  for (const char digit : digits) seconds = std::min(seconds * 10 + (digit - '0'), lastExpiry);
  return seconds == 0 ? 0 : std::min(now + seconds, lastExpiry);
}

/// Removes a number of `least` to `most` digits from the beginning of the text; absent if more or fewer digits are
/// there.
std::optional<int> takeNumber(std::string_view& text, std::size_t least, std::size_t most) {
  std::size_t count = 0;
  int number = 0;
  for (; count < text.size() && isAsciiDigit(text[count]); ++count) {
    if (count == most) return std::nullopt;
    number = number * 10 + (text[count] - '0');
  }
  if (count < least) return std::nullopt;
  text.remove_prefix(count);
  return number;
}

struct Time {
  int hour, minute, second;
};

std::optional<Time> readTime(std::string_view token) {
  std::array<int, 3> numbers{};
  for (std::size_t i = 0; i < 3; ++i) {
    if (i > 0) {
      if (!token.starts_with(':')) return std::nullopt;
      token.remove_prefix(1);
    }
    const std::optional<int> number = takeNumber(token, 1, 2);
    if (!number) return std::nullopt;
    numbers[i] = *number;
  }
  return Time{numbers[0], numbers[1], numbers[2]};
}

std::optional<int> readMonth(std::string_view token) {
  constexpr std::string_view names = "janfebmaraprmayjunjulaugsepoctnovdec";
  if (token.size() < 3) return std::nullopt;
  const std::string beginning = asciiLower(token.substr(0, 3));
  for (std::size_t month = 0; month < 12; ++month) {
    if (names.substr(month * 3, 3) == beginning) return static_cast<int>(month) + 1;
  }
  return std::nullopt;
}

bool isDateSeparator(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte == 0x09 || (byte >= 0x20 && byte <= 0x2F) || (byte >= 0x3B && byte <= 0x40) ||
         (byte >= 0x5B && byte <= 0x60) || (byte >= 0x7B && byte <= 0x7E);
}

}  // namespace

bool isCookieText(std::string_view text) { return isCookiePath(text) && text.find(';') == text.npos; }

bool isCookiePath(std::string_view text) {
  return std::ranges::none_of(text, [](char c) { return isControl(c) || c == '\t'; });
}

std::optional<std::int64_t> readCookieDate(std::string_view text) {
  std::optional<Time> time;
  std::optional<int> day, month, year;
  for (std::size_t start = 0; start < text.size();) {
    std::size_t end = start;
    while (end < text.size() && !isDateSeparator(text[end])) ++end;
    const std::string_view token = text.substr(start, end - start);
    start = end + 1;
    if (token.empty()) continue;
    if (!time && (time = readTime(token))) continue;
    std::string_view rest = token;
    if (!day && (day = takeNumber(rest, 1, 2))) continue;
    if (!month && (month = readMonth(token))) continue;
    if (!year) year = takeNumber(rest = token, 2, 4);
  }
  if (!time || !day || !month || !year) return std::nullopt;
  if (*year <= 99) *year += *year >= 70 ? 1900 : 2000;
  if (*year < 1601 || time->hour > 23 || time->minute > 59 || time->second > 59) return std::nullopt;
  if (*day < 1 || *day > daysInMonth(*year, *month)) return std::nullopt;
  return referenceDay(*year, *month, *day) * 86400 + kernel::referenceDateInUnixSeconds + time->hour * 3600 +
         time->minute * 60 + time->second;
}

std::optional<SetCookie> readSetCookie(std::string_view line, std::int64_t now) {
  if (std::ranges::any_of(line, isControl)) return std::nullopt;
  std::string_view pair = takeUntil(';', line);
  const std::size_t equals = pair.find('=');
  if (equals == pair.npos) return std::nullopt;
  SetCookie cookie;
  cookie.name = trimmed(pair.substr(0, equals));
  cookie.value = trimmed(pair.substr(equals + 1));
  if (cookie.name.empty() || cookie.name.size() + cookie.value.size() > longestCookie || !isCookieText(cookie.name) ||
      !isCookieText(cookie.value)) {
    return std::nullopt;
  }
  std::optional<std::int64_t> maxAge;
  while (!line.empty()) {
    std::string_view attribute = takeUntil(';', line);
    const std::string name = asciiLower(trimmed(takeUntil('=', attribute)));
    const std::string_view value = trimmed(attribute);
    if (value.size() > longestAttribute) continue;
    if (name == "expires") {
      if (const auto date = readCookieDate(value)) cookie.expires = std::clamp<std::int64_t>(*date, 0, lastExpiry);
    } else if (name == "max-age") {
      if (const auto age = readMaxAge(value, now)) maxAge = age;
    } else if (name == "domain") {
      const std::string_view domain = value.substr(value.starts_with('.') ? 1 : 0);
      if (!domain.empty()) {
        cookie.domain = domain;
      } else if (!value.empty()) {
        cookie.domain.reset();
      }
    } else if (name == "path") {
      cookie.path = value.starts_with('/') && isCookiePath(value) ? std::optional<std::string>(value) : std::nullopt;
    } else if (name == "secure") {
      cookie.isSecure = true;
    } else if (name == "httponly") {
      cookie.isHttpOnly = true;
    }
  }
  if (maxAge) cookie.expires = maxAge;
  return cookie;
}

std::string defaultCookiePath(std::string_view path) {
  const std::size_t last = path.rfind('/');
  return path.starts_with('/') && last > 0 ? std::string(path.substr(0, last)) : "/";
}

bool pathMatches(std::string_view path, std::string_view cookiePath) {
  if (!path.starts_with(cookiePath)) return false;
  return path.size() == cookiePath.size() || cookiePath.ends_with('/') || path[cookiePath.size()] == '/';
}

bool domainMatches(std::string_view host, std::string_view domain) {
  if (host == domain) return true;
  return host.size() > domain.size() && host.ends_with(domain) && host[host.size() - domain.size() - 1] == '.' &&
         !isIpAddress(host);
}

}  // namespace norvik::detail

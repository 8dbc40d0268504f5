// NorvikCore/platform/foundation/internal/SetCookie.h - the content of a server's "Set-Cookie" line, by RFC 6265.
//
//   std::optional<SetCookie> cookie = readSetCookie("lang=en-GB; Path=/pay; Max-Age=3600", now);
//   cookie->name;         // "lang"
//   cookie->expires;      // now + 3600
//
// Only the line is read; whether it is acceptable depends on the URL that it came from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

constexpr std::size_t longestCookie = 4096;     ///< bytes of name and value together
constexpr std::size_t longestAttribute = 1024;  ///< bytes of an attribute's value; a longer one is ignored
/// 9999-12-31 23:59:59 UTC; later times are replaced by it. In seconds since 1970, like all times here.
constexpr std::int64_t lastExpiry = 253402300799;

struct SetCookie {
  std::string name, value;
  std::optional<std::int64_t> expires;  ///< from Max-Age, or else from Expires; 0 at the earliest
  std::optional<std::string> domain;    ///< as written, without a leading full stop; not empty
  std::optional<std::string> path;      ///< begins with '/'
  bool isSecure = false, isHttpOnly = false;
};

/// Absent if the line sets no cookie: if its first part has no '=', if the name is empty, if it has a control
/// character, if the name or the value has a tab within it, or if they are too long.
[[nodiscard]] std::optional<SetCookie> readSetCookie(std::string_view line, std::int64_t now);

/// Accepts any order and separators ("Wed, 09 Jun 2021 10:18:14 GMT", "Wednesday, 09-Jun-21 10:18:14 GMT", "Wed Jun  9
/// 10:18:14 2021"); the zone is always UTC. Absent if a part is missing or no such time exists.
[[nodiscard]] std::optional<std::int64_t> readCookieDate(std::string_view text);

/// False if a cookie's name or value cannot hold the text.
[[nodiscard]] bool isCookieText(std::string_view text);
/// The same for its path, which comes from a URL or a file and may hold ';'.
[[nodiscard]] bool isCookiePath(std::string_view text);

/// "/pay/slips" for the path "/pay/slips/april" of a URL; "/" if it has no other folder.
[[nodiscard]] std::string defaultCookiePath(std::string_view path);
/// Whether a cookie of `cookiePath` is sent to URLs with `path`.
[[nodiscard]] bool pathMatches(std::string_view path, std::string_view cookiePath);
/// Whether `host` is `domain` or below it. Both must be canonical.
[[nodiscard]] bool domainMatches(std::string_view host, std::string_view domain);

}  // namespace norvik::detail

// NorvikCore/platform/foundation/internal/SetCookie.h - what a server's "Set-Cookie" line says, by RFC 6265.
//
//   std::optional<SetCookie> cookie = readSetCookie("lang=en-GB; Path=/pay; Max-Age=3600", now);
//   cookie->name;         // "lang"
//   cookie->expires;      // now + 3600
//
// What the line says, not whether it may: acceptance needs the address that it came from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

constexpr std::size_t longestCookie = 4096;     ///< bytes of name and value together
constexpr std::size_t longestAttribute = 1024;  ///< bytes of an attribute's value; a longer one is left out
/// 9999-12-31 23:59:59 UTC, for all that lasts longer. Seconds since 1970, as all times here.
constexpr std::int64_t lastExpiry = 253402300799;

struct SetCookie {
  std::string name, value;
  std::optional<std::int64_t> expires;  ///< of Max-Age, or else of Expires; 0 at the earliest
  std::optional<std::string> domain;    ///< as written, without a full stop at its beginning; not empty
  std::optional<std::string> path;      ///< begins with '/'
  bool isSecure = false, isHttpOnly = false;
};

/// Absent where the line sets no cookie: without a '=' in its first part, without a name, with a control character, or
/// with a tab within the name or the value; also where these are too long.
[[nodiscard]] std::optional<SetCookie> readSetCookie(std::string_view line, std::int64_t now);

/// Any order and separators ("Wed, 09 Jun 2021 10:18:14 GMT", "Wednesday, 09-Jun-21 10:18:14 GMT", "Wed Jun  9
/// 10:18:14 2021"); the zone is always UTC. Absent where a part is missing or no such time exists.
[[nodiscard]] std::optional<std::int64_t> readCookieDate(std::string_view text);

/// False for what no cookie's name or value may hold.
[[nodiscard]] bool isCookieText(std::string_view text);
/// The same for its path, which is taken from an address or written in a file, and may hold ';'.
[[nodiscard]] bool isCookiePath(std::string_view text);

/// "/pay/slips" for the path "/pay/slips/april" of an address, and "/" where it has no other folder.
[[nodiscard]] std::string defaultCookiePath(std::string_view path);
/// Whether a cookie of `cookiePath` goes to what is at `path`.
[[nodiscard]] bool pathMatches(std::string_view path, std::string_view cookiePath);
/// Whether `host` is `domain` or below it. Both canonical.
[[nodiscard]] bool domainMatches(std::string_view host, std::string_view domain);

}  // namespace norvik::detail

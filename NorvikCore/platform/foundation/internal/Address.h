// NorvikCore/platform/foundation/internal/Address.h - parses the text of a URL and forms it again.
//
//   std::optional<Address> address = readAddress("HTTPS://Pay.Example.com:443/a/../slips?month=4");
//   address->host;      // "pay.example.com"
//   address->text();    // "https://pay.example.com/slips?month=4"
//
// The grammar is that of RFC 3986, parsed by uriparser. Where browsers and libcurl differ in practice, the rules of
// WHATWG are used; NSURL.h lists them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

/// The host is canonical and the scheme is in lower case. All other parts are as they were written.
struct Address {
  std::optional<std::string> scheme;    ///< absent from a relative reference
  std::optional<std::string> userInfo;  ///< the part before '@'
  std::optional<std::string> host;      ///< without the brackets of IPv6; may be empty ("file:///")
  std::optional<std::uint16_t> port;
  std::string path;
  std::optional<std::string> query, fragment;

  [[nodiscard]] std::string text() const;
};

/// Absent if the text is not a URL.
[[nodiscard]] std::optional<Address> readAddress(std::string_view text);
/// Resolves a reference against `base`. Absent if the text is not a reference or `base` has no scheme.
[[nodiscard]] std::optional<Address> resolveAddress(const Address& base, std::string_view reference);

/// The text without control characters and spaces at its ends, without tabs and line ends, and with slashes for the
/// backslashes that mean slashes.
[[nodiscard]] std::string tidiedAddress(std::string_view text);

}  // namespace norvik::detail

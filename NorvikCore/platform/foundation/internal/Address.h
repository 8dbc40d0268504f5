// NorvikCore/platform/foundation/internal/Address.h - the text of an address, taken apart and put together again.
//
//   std::optional<Address> address = readAddress("HTTPS://Pay.Example.com:443/a/../slips?month=4");
//   address->host;      // "pay.example.com"
//   address->text();    // "https://pay.example.com/slips?month=4"
//
// The grammar is RFC 3986's, read by uriparser. What browsers and libcurl do differently in practice is done as WHATWG
// says; NSURL.h lists it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

/// Everything but the host, which is canonical, and the scheme, in lower case, is as it was written.
struct Address {
  std::optional<std::string> scheme;    ///< absent from a relative reference
  std::optional<std::string> userInfo;  ///< what is before the '@'
  std::optional<std::string> host;      ///< without the brackets of IPv6; may be empty ("file:///")
  std::optional<std::uint16_t> port;
  std::string path;
  std::optional<std::string> query, fragment;

  [[nodiscard]] std::string text() const;
};

/// Absent where the text is no address.
[[nodiscard]] std::optional<Address> readAddress(std::string_view text);
/// Of a reference to what is seen from `base`; absent where it is no reference or `base` has no scheme.
[[nodiscard]] std::optional<Address> resolveAddress(const Address& base, std::string_view reference);

/// Without the control characters and spaces at its ends, and the tabs and line ends within it; with slashes for the
/// backslashes that mean them.
[[nodiscard]] std::string tidiedAddress(std::string_view text);

}  // namespace norvik::detail

// NorvikCore/platform/foundation/internal/HostName.h - the canonical form in which the host of a URL is stored and
// compared.
//
//   canonicalHost("WWW.Example.COM.");       // "www.example.com."
//   canonicalHost("b%C3%BCcher.example");    // "xn--bcher-kva.example"
//   canonicalHost("0x7F.1");                 // "127.0.0.1"
//
// The rules are WHATWG's: escapes are decoded, letters become lower case, international names their ASCII form (by ICU,
// UTS #46), and a name whose last label is a number is read as an IPv4 address in one of its old forms. A full stop at
// the end stays.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

/// The canonical form of a name or an IPv4 address, as RFC 3986 lets it be written; bytes beyond ASCII are read as
/// UTF-8. Absent if it is not a host: if it has a character that no name has, an invalid escape, an international name
/// that is not allowed, or a number that is not an address.
[[nodiscard]] std::optional<std::string> canonicalHost(std::string_view written);

/// The canonical form of an IPv6 address: "2001:db8::1", without the longest run of zeros, without dotted numbers.
[[nodiscard]] std::string ipv6Text(const std::array<unsigned char, 16>& address);

/// True for an IPv4 or IPv6 address in canonical form.
[[nodiscard]] bool isIpAddress(std::string_view canonicalHost);

/// Decodes each escape ("%20"); a '%' without two digits stays.
[[nodiscard]] std::string percentDecoded(std::string_view text);

/// Writes every byte for which `isKept` is false as '%' and two hexadecimal digits.
template <class IsKept>
[[nodiscard]] std::string percentEncoded(std::string_view bytes, IsKept isKept) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(bytes.size());
  for (const char c : bytes) {
    if (isKept(c)) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += {'%', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return encoded;
}

[[nodiscard]] constexpr bool isAsciiDigit(char c) noexcept { return c >= '0' && c <= '9'; }
[[nodiscard]] constexpr bool isAsciiLetter(char c) noexcept { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
[[nodiscard]] constexpr char asciiLower(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
[[nodiscard]] std::string asciiLower(std::string_view text);

}  // namespace norvik::detail

#include "NorvikCore/platform/foundation/internal/HostName.h"

#include "NorvikCore/platform/foundation/internal/IcuText.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/Utf8.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <unicode/idna.h>

#include <algorithm>

namespace norvik::detail {
namespace {

constexpr std::size_t longestHost =
    1024;  // host names have 253 bytes at most, and reading an international name takes quadratic time

int hexadecimal(char c) noexcept {
  if (isAsciiDigit(c)) return c - '0';
  const char lower = asciiLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

const icu::IDNA& internationalNames() {
  return kernel::madeOnce([]() -> const icu::IDNA* {
    UErrorCode status = U_ZERO_ERROR;
    const icu::IDNA* names = icu::IDNA::createUTS46Instance(
        UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ | UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_NONTRANSITIONAL_TO_UNICODE,
        status);
    if (U_FAILURE(status))
      NSException::raise(NSGenericException, "international host names cannot be read without ICU's data");
    return names;
  });
}

std::optional<std::string> asciiName(const std::string& name) {
  icu::UnicodeString result;
  icu::IDNAInfo info;
  UErrorCode status = U_ZERO_ERROR;
  internationalNames().nameToASCII(icuString(std::string_view(name)), result, info, status);
  constexpr std::uint32_t harmless = UIDNA_ERROR_EMPTY_LABEL | UIDNA_ERROR_LABEL_TOO_LONG |
                                     UIDNA_ERROR_DOMAIN_NAME_TOO_LONG | UIDNA_ERROR_LEADING_HYPHEN |
                                     UIDNA_ERROR_TRAILING_HYPHEN | UIDNA_ERROR_HYPHEN_3_4;
  if (U_FAILURE(status) || (info.getErrors() & ~harmless) != 0) return std::nullopt;
  return utf8FromIcu(result);
}

/// The characters of RFC 3986, so that the URL with the name can be read again. WHATWG allows a few more, which no name
/// has.
bool isAllowed(char c) {
  return isAsciiLetter(c) || isAsciiDigit(c) || std::string_view("-._~!$&'()*+,;=").find(c) != std::string_view::npos;
}

/// The last label, apart from an empty one at the end, is decimal, or hexadecimal after "0x".
bool endsInANumber(std::string_view name) {
  if (name.ends_with('.')) name.remove_suffix(1);
  const std::string_view label = name.substr(name.rfind('.') + 1);
  if (label.empty()) return false;
  if (std::ranges::all_of(label, isAsciiDigit)) return true;
  return label.starts_with("0x") && std::ranges::all_of(label.substr(2), [](char c) { return hexadecimal(c) >= 0; });
}

std::optional<std::string> ipv4(std::string name) {
  if (name.ends_with('.')) name.pop_back();
  if (name.ends_with("0x")) name += '0';  // WHATWG reads "0x" as 0
  in_addr address{};
  char text[INET_ADDRSTRLEN];
  if (inet_aton(name.c_str(), &address) == 0) return std::nullopt;
  return inet_ntop(AF_INET, &address, text, sizeof text);
}

}  // namespace

std::string asciiLower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = asciiLower(c);
  return lower;
}

std::string percentDecoded(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = i + 2 < text.size() && text[i] == '%' ? hexadecimal(text[i + 1]) : -1;
    const int low = high >= 0 ? hexadecimal(text[i + 2]) : -1;
    if (low >= 0) {
      decoded += static_cast<char>(high << 4 | low);
      i += 2;
    } else {
      decoded += text[i];
    }
  }
  return decoded;
}

std::optional<std::string> canonicalHost(std::string_view written) {
  if (written.size() > longestHost) return std::nullopt;
  std::string name = percentDecoded(written);
  if (!utf8::isAscii(name)) {
    if (!utf8::isValid(name)) return std::nullopt;
    std::optional<std::string> ascii = asciiName(name);
    if (!ascii) return std::nullopt;
    name = std::move(*ascii);
  }
  name = asciiLower(name);
  if (!std::ranges::all_of(name, isAllowed)) return std::nullopt;
  return endsInANumber(name) ? ipv4(std::move(name)) : std::optional(std::move(name));
}

std::string ipv6Text(const std::array<unsigned char, 16>& address) {
  std::array<unsigned, 8> groups{};
  for (std::size_t i = 0; i < 8; ++i) groups[i] = static_cast<unsigned>(address[2 * i] << 8 | address[2 * i + 1]);
  std::size_t longest = 8, length = 1;  // a single zero group is not left out
  for (std::size_t i = 0; i < 8;) {
    std::size_t end = i;
    while (end < 8 && groups[end] == 0) ++end;
    if (end - i > length) {
      longest = i;
      length = end - i;
    }
    i = end + 1;
  }
  std::string text;
  for (std::size_t i = 0; i < 8; ++i) {
    if (i == longest) {
      text += i == 0 ? "::" : ":";
      i += length - 1;
      continue;
    }
    constexpr std::string_view digits = "0123456789abcdef";
    for (int shift = 12; shift >= 0; shift -= 4) {
      if (shift == 0 || groups[i] >> shift != 0) text += digits[groups[i] >> shift & 15];
    }
    if (i != 7) text += ':';
  }
  return text;
}

bool isIpAddress(std::string_view canonicalHost) {
  return canonicalHost.find(':') != canonicalHost.npos || endsInANumber(canonicalHost);
}

}  // namespace norvik::detail

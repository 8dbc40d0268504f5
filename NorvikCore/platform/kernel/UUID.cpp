#include "NorvikCore/platform/kernel/UUID.h"

#include <errno.h>
#include <sys/random.h>

#include <cstdlib>

namespace norvik::kernel {
namespace {

constexpr bool dashBefore(std::size_t byte) noexcept { return byte == 4 || byte == 6 || byte == 8 || byte == 10; }

int digitOf(char character) noexcept {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  return -1;
}

}  // namespace

std::string UUID::text() const {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string result;
  result.reserve(36);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (dashBefore(i)) result += '-';
    result += digits[bytes[i] >> 4U];
    result += digits[bytes[i] & 15U];
  }
  return result;
}

UUID makeUUID() noexcept {
  UUID uuid;
  // So few bytes are returned completely or not at all. The call fails only if the kernel forbids it, and there is no
  // substitute for it.
  while (getrandom(uuid.bytes.data(), uuid.bytes.size(), 0) < 0) {
    if (errno != EINTR) std::abort();
  }
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0FU) | 0x40U);
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3FU) | 0x80U);
  return uuid;
}

std::optional<UUID> parseUUID(std::string_view text) noexcept {
  if (text.size() != 36) return std::nullopt;
  UUID uuid;
  std::size_t at = 0;
  for (std::size_t i = 0; i < uuid.bytes.size(); ++i) {
    if (dashBefore(i) && text[at++] != '-') return std::nullopt;
    const int high = digitOf(text[at]), low = digitOf(text[at + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    uuid.bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    at += 2;
  }
  return uuid;
}

}  // namespace norvik::kernel

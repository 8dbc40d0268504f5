// NorvikCore/platform/kernel/UUID.h - unique identifiers: 122 random bits from the kernel.
//
//   kernel::makeUUID().text();    // "3F2504E0-4F89-41D3-9A0C-0305E82C3301"
//
// Safe on any thread and in a forked child. Each costs one system call.
#pragma once  // include time: <string> and <optional> are result types

#include "NorvikCore/platform/export.h"

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::kernel {

struct UUID {
  std::array<std::uint8_t, 16> bytes{};

  /// 36 characters, upper-case hexadecimal.
  [[nodiscard]] NK_EXPORT std::string text() const;
  auto operator<=>(const UUID&) const = default;
};

/// A new UUID: version 4, variant 1 of RFC 4122.
[[nodiscard]] NK_EXPORT UUID makeUUID() noexcept;

/// Reads the 36 characters in either case; empty for any other text.
[[nodiscard]] NK_EXPORT std::optional<UUID> parseUUID(std::string_view text) noexcept;

}  // namespace norvik::kernel

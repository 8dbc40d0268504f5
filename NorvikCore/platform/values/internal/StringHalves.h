// NorvikCore/platform/values/internal/StringHalves.h - lone surrogate halves in the bytes of a text.
#pragma once

#include "NorvikCore/platform/values/Utf8.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

/// The number of bytes of a lone half.
inline constexpr std::size_t halfSize = 3;

[[nodiscard]] inline bool beginsWithHalf(std::string_view text) noexcept {
  return text.size() >= halfSize && utf8::byteAt(text.data()) == 0xED && utf8::byteAt(text.data() + 1) >= 0xA0;
}

[[nodiscard]] inline bool endsWithHalf(std::string_view text) noexcept {
  return text.size() >= halfSize && beginsWithHalf(text.substr(text.size() - halfSize));
}

[[nodiscard]] inline bool holdsHalves(std::string_view text) noexcept {
  for (std::size_t at = text.find('\xED'); at != text.npos; at = text.find('\xED', at + 1)) {
    if (beginsWithHalf(text.substr(at))) return true;
  }
  return false;
}

/// The character that is formed if `head` ends with a high half and `tail` begins with a low one.
[[nodiscard]] inline std::optional<utf8::Encoded> meetingHalves(std::string_view head, std::string_view tail) noexcept {
  if (!endsWithHalf(head) || !beginsWithHalf(tail)) return std::nullopt;
  const char32_t high = utf8::decode(head.data() + head.size() - halfSize).point;
  const char32_t low = utf8::decode(tail.data()).point;
  if (!utf8::isHighHalf(high) || !utf8::isLowHalf(low)) return std::nullopt;
  return utf8::encode(utf8::joinHalves(high, low));
}

inline void appendJoining(std::string& head, std::string_view tail) {
  if (const auto pair = meetingHalves(head, tail)) {
    head.resize(head.size() - halfSize);
    head += pair->view();
    tail.remove_prefix(halfSize);
  }
  head += tail;
}

}  // namespace norvik::detail

#include "Characters.h"

#include <cstdint>
#include <cstring>

#include "NorvikCore/platform/values/Utf8.h"

namespace payrun {

std::size_t firstInvalidUtf8(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    std::uint64_t eight = 0;
    if (text.size() - i >= sizeof eight) {
      std::memcpy(&eight, text.data() + i, sizeof eight);
      if ((eight & 0x8080808080808080U) == 0) {
        i += sizeof eight;
        continue;
      }
    }
    const std::size_t length = norvik::utf8::validSequence(text.substr(i));
    if (length == 0) return i;
    i += length;
  }
  return std::string_view::npos;
}

std::size_t controlCharacter(std::string_view text) {
  if (text.empty()) return 0;
  const auto byte = static_cast<unsigned char>(text[0]);
  if (byte < 0x20 || byte == 0x7F) return 1;
  return byte == 0xC2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0 ? 2 : 0;
}

bool hasControlCharacter(std::string_view text) {
  for (; !text.empty(); text.remove_prefix(1)) {
    if (controlCharacter(text) != 0) return true;
  }
  return false;
}

std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < text.size(); ++count) {
    const std::size_t length = norvik::utf8::validSequence(text.substr(i));
    i += length == 0 ? 1 : length;
  }
  return count;
}

std::size_t columnCount(std::string_view text) {
  constexpr std::string_view firstAccent = "\xCC\x80", lastAccent = "\xCD\xAF";  // U+0300 to U+036F
  std::size_t accents = 0;
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    const std::string_view two = text.substr(i, 2);
    if (firstAccent <= two && two <= lastAccent) ++accents;
  }
  return characterCount(text) - accents;
}

}  // namespace payrun

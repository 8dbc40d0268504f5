#include "Characters.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "NorvikCore/platform/foundation/TerminalCells.h"
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
  if (byte == 0xC2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0) return 2;
  if (byte != 0xE2 || text.size() < 3) return 0;
  const std::string_view three = text.substr(0, 3);
  const bool isControl =
      (three >= "\xE2\x80\xA8" && three <= "\xE2\x80\xAE") || (three >= "\xE2\x81\xA6" && three <= "\xE2\x81\xA9");
  return isControl ? 3 : 0;
}

bool hasControlCharacter(std::string_view text) {
  for (; !text.empty(); text.remove_prefix(1)) {
    if (controlCharacter(text) != 0) return true;
  }
  return false;
}

bool isDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return '0' <= c && c <= '9'; });
}

std::size_t countOf(char byte, std::string_view text) {
  constexpr std::size_t step = 128;  // compilers turn an inner loop of constant length into vector instructions
  std::size_t count = 0;
  for (; text.size() >= step; text.remove_prefix(step)) {
    unsigned char found = 0;
    for (std::size_t i = 0; i < step; ++i) found = static_cast<unsigned char>(found + (text[i] == byte));
    count += found;
  }
  return count + static_cast<std::size_t>(std::count(text.begin(), text.end(), byte));
}

std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < text.size(); ++count) {
    const std::size_t length = norvik::utf8::validSequence(text.substr(i));
    i += length == 0 ? 1 : length;
  }
  return count;
}

std::size_t cellCount(std::string_view text) {
  std::size_t count = 0;
  while (!text.empty()) {
    if (' ' <= text.front() && text.front() <= '~') {
      ++count;
      text.remove_prefix(1);
      continue;
    }
    const std::size_t length = norvik::utf8::validSequence(text);
    count += length == 0 ? 1 : norvik::terminalCells(norvik::utf8::decode(text.data()).point);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return count;
}

std::string oneLine(std::string_view text, std::size_t longest) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string result;
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); ++characters) {
    if (characters == longest) {
      result += "...";
      break;
    }
    const std::size_t length = norvik::utf8::validSequence(text.substr(i)),
                      hidden = length == 0 ? 1 : controlCharacter(text.substr(i));
    for (std::size_t j = 0; j < hidden; ++j) {
      const auto byte = static_cast<unsigned char>(text[i + j]);
      result += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
    }
    if (hidden == 0) result += text.substr(i, length);
    i += std::max(length, hidden);
  }
  return result;
}

}  // namespace payrun

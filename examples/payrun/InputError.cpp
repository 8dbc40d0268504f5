#include "InputError.h"

#include <algorithm>

#include "Characters.h"
#include "NorvikCore/platform/values/Utf8.h"

namespace payrun {

InputError::InputError(const std::string& file, Place place, const std::string& problem)
    : std::runtime_error(file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " +
                         problem) {}

std::string quoted(std::string_view text) {
  constexpr std::size_t longest = 60;
  constexpr char digits[] = "0123456789ABCDEF";
  std::string result = "\"";
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
  return result + "\"";
}

}  // namespace payrun

#include "NorvikCore/platform/foundation/NSCharacterClass.h"

#include <unicode/uchar.h>

namespace norvik {

bool isUppercaseLetter(char32_t character) noexcept {
  const int type = u_charType(static_cast<UChar32>(character));
  return type == U_UPPERCASE_LETTER || type == U_TITLECASE_LETTER;
}

bool isWhitespace(char32_t character) noexcept {
  if (character < 0x80) return character == ' ' || character == '\t';
  return u_charType(static_cast<UChar32>(character)) == U_SPACE_SEPARATOR;
}

bool isLineBreak(char32_t character) noexcept {
  return (character >= 0x0A && character <= 0x0D) || character == 0x85 || character == 0x2028 || character == 0x2029;
}

}  // namespace norvik

#include "NorvikCore/platform/foundation/TerminalCells.h"

#include <unicode/uchar.h>

namespace norvik {

namespace {

bool isZeroWidth(UChar32 character) {
  constexpr UChar32 softHyphen = 0xAD;
  switch (u_charType(character)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_CONTROL_CHAR:
    case U_LINE_SEPARATOR:
    case U_PARAGRAPH_SEPARATOR:
      return true;
    case U_FORMAT_CHAR:  // a few are visible, such as the Arabic number sign
      return character != softHyphen && !u_hasBinaryProperty(character, UCHAR_PREPENDED_CONCATENATION_MARK);
    default:
      break;
  }
  // Vowels and final consonants of Korean are drawn into the cell of the consonant before them.
  const int hangul = u_getIntPropertyValue(character, UCHAR_HANGUL_SYLLABLE_TYPE);
  return hangul == U_HST_VOWEL_JAMO || hangul == U_HST_TRAILING_JAMO;
}

}  // namespace

std::size_t terminalCells(char32_t character) noexcept {
  if (character < 0x7F) return character >= 0x20 ? 1 : 0;
  const auto point = static_cast<UChar32>(character);
  if (isZeroWidth(point)) return 0;
  const int width = u_getIntPropertyValue(point, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

std::size_t terminalCells(const NSString& text) noexcept {
  std::size_t cells = 0;
  for (const char32_t character : text.codePoints()) cells += terminalCells(character);
  return cells;
}

}  // namespace norvik

#include "NorvikCore/platform/values/Utf8.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace norvik {
namespace {

static_assert(utf8::isValid("\xF0\x9F\x92\xB7") && !utf8::isValid("\xFF"));

TEST(Utf8, HeaderExample) {
  EXPECT_EQ(utf8::validSequence("\xC2\xA3"), 2u);
  EXPECT_EQ(utf8::unitCount("\xF0\x9F\x92\xB7"), 2u);
}

TEST(Utf8, AcceptsTheFirstAndLastOfEachLengthAndNothingAround) {
  const struct {
    const char* why;
    std::string bytes;
    std::size_t size;
  } rows[] = {
      {"U+0000", std::string(1, '\0'), 1},
      {"U+007F", "\x7F", 1},
      {"a continuation byte", "\x80", 0},
      {"overlong, 2 bytes", "\xC1\xBF", 0},
      {"U+0080", "\xC2\x80", 2},
      {"U+07FF", "\xDF\xBF", 2},
      {"2 bytes, cut", "\xC2", 0},
      {"2 bytes, no continuation", "\xC2\x41", 0},
      {"overlong, 3 bytes", "\xE0\x9F\xBF", 0},
      {"U+0800", "\xE0\xA0\x80", 3},
      {"U+D7FF", "\xED\x9F\xBF", 3},
      {"U+D800", "\xED\xA0\x80", 0},
      {"U+DFFF", "\xED\xBF\xBF", 0},
      {"U+E000", "\xEE\x80\x80", 3},
      {"U+FFFF", "\xEF\xBF\xBF", 3},
      {"3 bytes, cut", "\xEF\xBF", 0},
      {"3 bytes, last no continuation", "\xEF\xBF\x41", 0},
      {"overlong, 4 bytes", "\xF0\x8F\xBF\xBF", 0},
      {"U+10000", "\xF0\x90\x80\x80", 4},
      {"U+10FFFF", "\xF4\x8F\xBF\xBF", 4},
      {"U+110000", "\xF4\x90\x80\x80", 0},
      {"lead byte F5", "\xF5\x80\x80\x80", 0},
      {"4 bytes, last no continuation", "\xF0\x90\x80\x41", 0},
      {"nothing", "", 0},
  };
  for (const auto& row : rows) EXPECT_EQ(utf8::validSequence(row.bytes), row.size) << row.why;
}

TEST(Utf8, EveryCharacterGoesThereAndBack) {
  for (char32_t point = 0; point <= 0x10FFFF; ++point) {
    const utf8::Encoded bytes = utf8::encode(point);
    const utf8::Character character = utf8::decode(bytes.bytes);
    ASSERT_EQ(character.point, point);
    ASSERT_EQ(character.size, bytes.size);
    ASSERT_EQ(utf8::isValid(bytes.view()), point < 0xD800 || point > 0xDFFF) << static_cast<std::uint32_t>(point);
    ASSERT_EQ(utf8::unitCount(bytes.view()), point > 0xFFFF ? 2u : 1u) << static_cast<std::uint32_t>(point);
  }
}

TEST(Utf8, HalvesMakeAPair) {
  EXPECT_EQ(utf8::highHalf(0x1F4B7), 0xD83D);
  EXPECT_EQ(utf8::lowHalf(0x1F4B7), 0xDCB7);
  EXPECT_EQ(utf8::joinHalves(0xD83D, 0xDCB7), U'\U0001F4B7');
  EXPECT_EQ(utf8::joinHalves(0xDBFF, 0xDFFF), U'\U0010FFFF');
}

}  // namespace
}  // namespace norvik

// How far a look-up walks, counted in bytes; time is not measured.
#include "NorvikCore/platform/values/NSString.h"
#include "NorvikCore/platform/values/internal/StringIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace norvik {
namespace {

/// 3 units, 6 bytes: "é" (1 unit), "💷" (2 units).
std::string repeated(std::size_t times) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i) text += "\u00E9\U0001F4B7";
  return text;
}

TEST(NSStringIndex, EveryLookUpWalksAtMostOneStrideHoweverLongTheText) {
  for (const std::size_t times : {100u, 10'000u, 300'000u}) {
    const std::string text = repeated(times);
    const detail::StringIndex index(text);
    ASSERT_EQ(index.length(), 3 * times);
    std::size_t longest = 0;
    for (std::size_t unit = 0; unit <= index.length(); unit += 97) {
      std::size_t steps = 0;
      (void)index.place(text, unit, &steps);
      longest = std::max(longest, steps);
    }
    EXPECT_LE(longest, 48u) << times << ", 16 units of three bytes";
  }
}

/// Each unit's place and each character's unit, counted one character at a time.
void expectTheSameAsCounting(const std::string& text) {
  const detail::StringIndex index(text);
  std::size_t unit = 0;
  for (std::size_t byte = 0; byte < text.size();) {
    const utf8::Character character = utf8::decode(text.data() + byte);
    for (const std::size_t half : {0u, 1u}) {
      if (half == 1 && character.point < 0x10000) continue;
      for (const detail::StringPlace place :
           {index.place(text, unit + half), detail::walkUnits(text, {}, unit + half)}) {
        ASSERT_EQ(place.byte, byte) << unit + half;
        ASSERT_EQ(place.secondHalf, half == 1) << unit + half;
      }
    }
    ASSERT_EQ(index.unit(text, byte), unit);
    byte += character.size;
    unit += character.point < 0x10000 ? 1 : 2;
  }
  EXPECT_EQ(index.length(), unit);
  EXPECT_EQ(index.unit(text, text.size()), unit);
  EXPECT_EQ(index.place(text, unit).byte, text.size());
  EXPECT_FALSE(index.place(text, unit).secondHalf);
}

TEST(NSStringIndex, FindsEveryUnitInAnyMixOfCharacters) {
  const std::string_view characters[] = {"a", "é", "€", "💷", "í ½", "í²·"};
  std::mt19937 random(1);
  for (const std::size_t count : {0u, 1u, 7u, 8u, 9u, 15u, 16u, 17u, 300u, 1000u}) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += characters[random() % std::size(characters)];
    expectTheSameAsCounting(text);
  }
}

TEST(NSStringIndex, FindsEveryUnitBesideTheEdgesOfItsBlocks) {
  for (const std::string_view each : {"€", "💷", "é"}) {  // three bytes a unit are the longest distance
    for (const std::string_view first : {"", "a"}) {     // with "a", blocks begin within a pair
      std::string text(first);
      while (text.size() < 3 * 2 * 8192 + 100) text += each;
      expectTheSameAsCounting(text);
    }
  }
}

TEST(NSStringIndex, GivesThePlaceOfEveryUnitAndTheUnitOfEveryCharacter) {
  const std::string text = repeated(500);
  const detail::StringIndex index(text);
  for (std::size_t i = 0; i < 500; ++i) {
    const detail::StringPlace accented = index.place(text, 3 * i), first = index.place(text, 3 * i + 1),
                              second = index.place(text, 3 * i + 2);
    ASSERT_EQ(accented.byte, 6 * i);
    ASSERT_EQ(first.byte, 6 * i + 2);
    ASSERT_EQ(second.byte, 6 * i + 2);
    ASSERT_FALSE(accented.secondHalf || first.secondHalf);
    ASSERT_TRUE(second.secondHalf);
    ASSERT_EQ(index.unit(text, 6 * i), 3 * i);
    ASSERT_EQ(index.unit(text, 6 * i + 2), 3 * i + 1);
  }
  EXPECT_EQ(index.place(text, 1500).byte, 3000u);
  EXPECT_EQ(index.unit(text, 3000), 1500u);
}

TEST(NSStringIndex, WalkingCountsItsSteps) {
  std::size_t steps = 0;
  (void)detail::walkUnits(repeated(1000), {}, 2999, &steps);
  EXPECT_EQ(steps, 5996u);  // six bytes per three units; the last pair is entered but not passed
}

TEST(NSStringIndex, TextUsesOneIndexForAllItsCopies) {
  const NSString text = repeated(1000);
  const NSString copy = text;
  EXPECT_EQ(detail::stringIndexOf(text), nullptr);
  EXPECT_EQ(text.characterAtIndex(2999), 0xDCB7);
  const detail::StringIndex* const index = detail::stringIndexOf(text);
  ASSERT_NE(index, nullptr);
  EXPECT_EQ(copy.characterAtIndex(2998), 0xD83D);
  EXPECT_EQ(detail::stringIndexOf(copy), index);
}

TEST(NSStringIndex, AsciiAndShortTextNeedNone) {
  const NSString ascii = std::string(100'000, 'a'), brief = repeated(10);
  EXPECT_EQ(ascii.characterAtIndex(99'999), u'a');
  EXPECT_EQ(brief.characterAtIndex(29), 0xDCB7);
  EXPECT_EQ(detail::stringIndexOf(ascii), nullptr);
  EXPECT_EQ(detail::stringIndexOf(brief), nullptr);
}

TEST(NSStringIndex, BorrowedTextHasOneForGoodAndItsLongPartsAreCopies) {
  static const std::string& permanent = *new std::string(repeated(1000));
  const NSString text = NSString::borrowing(permanent);
  EXPECT_EQ(text.view().data(), permanent.data());
  EXPECT_EQ(text.length(), 3000u);
  EXPECT_EQ(text.characterAtIndex(2998), 0xD83D);
  EXPECT_EQ(&detail::permanentIndex(text.view()), &detail::permanentIndex(permanent));
  const NSString part = text.substringToIndex(1500);
  EXPECT_NE(part.view().data(), permanent.data());
  EXPECT_EQ(part.view(), repeated(500));
}

}  // namespace
}  // namespace norvik

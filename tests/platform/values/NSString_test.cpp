#include "NorvikCore/platform/values/NSString.h"

#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/NSString_fmt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <sstream>
#include <unordered_set>

namespace norvik {
namespace {

using testing::ElementsAre;

constexpr NSString constantName = "Zo\u00EB";
constinit const NSString constantTown = "Leeds";

static_assert(sizeof(NSString) == 16);
static_assert(std::is_nothrow_copy_constructible_v<NSString> && std::is_nothrow_move_constructible_v<NSString>);
static_assert(!std::is_constructible_v<NSString, std::nullptr_t>);
static_assert(!std::is_convertible_v<NSString, bool>);
static_assert("caf\u00E9"_ns.view().size() == 5);

/// The reason of the NSException of that name that the call raises; "nothing" if it raises none.
template <class Call>
std::string raised(const char* name, Call call) {
  try {
    call();
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), name);
    return exception.reason().str();
  }
  return "nothing";
}

TEST(NSString, HeaderExample) {
  NSString name = "Zo\u00EB Smith";
  EXPECT_EQ(name.length(), 9u);
  EXPECT_EQ(name.view().size(), 10u);
  EXPECT_EQ(name.substringFromIndex(4), "Smith");
  EXPECT_EQ(name.rangeOfString("smith", NSCaseInsensitiveSearch), (NSRange{4, 5}));
  EXPECT_EQ("Payslip of " + name, "Payslip of Zo\u00EB Smith");
  EXPECT_EQ(std::string(name), "Zo\u00EB Smith");
  EXPECT_EQ(std::string_view(name), "Zo\u00EB Smith");
  int points = 0;
  for (char32_t each : name.codePoints()) points += each != 0 ? 1 : 0;
  EXPECT_EQ(points, 9);
  name += ", Leeds";
  EXPECT_EQ(name.size(), 16u);
}

TEST(NSString, ConvertsFromEveryTextOfCpp) {
  const auto same = [](const NSString& text) { return text == "Zo\u00EB"; };  // every argument converts implicitly
  EXPECT_TRUE(same("Zo\u00EB"));
  EXPECT_TRUE(same(std::string("Zo\u00EB")));
  EXPECT_TRUE(same(std::string_view("Zo\u00EB")));
  EXPECT_TRUE(same(u"Zo\u00EB"));
  EXPECT_TRUE(same(std::u16string(u"Zo\u00EB")));
  EXPECT_TRUE(same(std::u16string_view(u"Zo\u00EB!").substr(0, 3)));
  EXPECT_TRUE(same(u8"Zo\u00EB"));
  EXPECT_TRUE(same(std::u8string(u8"Zo\u00EB")));
  const NSString name = "Zo\u00EB";
  EXPECT_TRUE(name == u"Zo\u00EB" && u8"Zo\u00EB" == name && name < u"Zp" && name != std::u16string(u"Zoe"));
  EXPECT_EQ(name + u" Smith", "Zo\u00EB Smith");
  EXPECT_EQ(NSString(u"\U0001F4B7"), "\U0001F4B7");
  const char16_t half[] = {u'a', 0xD83D, 0};
  EXPECT_FALSE(NSString(half).isWellFormed());
  EXPECT_EQ(NSString(half).length(), 2u);
  // What would copy, or could dangle, is written out.
  EXPECT_EQ(std::string(name), "Zo\u00EB");
  EXPECT_EQ(std::string_view(name).data(), name.view().data());
  static_assert(!std::is_convertible_v<NSString, std::string> && !std::is_convertible_v<NSString, std::string_view>);
  static_assert(!std::is_constructible_v<NSString, const wchar_t*> &&
                !std::is_constructible_v<NSString, const char32_t*>);
}

TEST(NSString, CodePointsAndUnitsAreViewsThatCanBeReversed) {
  static_assert(std::ranges::view<NSString::CodePoints> && std::ranges::bidirectional_range<NSString::CodePoints>);
  static_assert(std::ranges::view<NSString::Units> && std::ranges::bidirectional_range<NSString::Units>);
  const NSString text = NSString("a\u00A3\u20AC\U0001F4B7z") + NSString::fromCodePoint(0xDC80);
  std::u32string backwards;
  std::ranges::reverse_copy(text.codePoints(), std::back_inserter(backwards));
  EXPECT_EQ(backwards, (std::u32string{0xDC80, U'z', 0x1F4B7, 0x20AC, 0xA3, U'a'}));
  std::u16string units;
  std::ranges::reverse_copy(text.units(), std::back_inserter(units));
  EXPECT_EQ(units, (std::u16string{0xDC80, u'z', 0xDCB7, 0xD83D, 0x20AC, 0xA3, u'a'}));
  EXPECT_EQ(std::ranges::count_if((text + text).codePoints(), [](char32_t each) { return each > 0x7F; }), 8);
  auto unit = text.units().begin();
  ++ ++ ++ ++unit;  // the low half
  EXPECT_EQ(*unit--, 0xDCB7);
  EXPECT_EQ(*unit, 0xD83D);
}

TEST(NSString, IsAppendedTo) {
  NSString text = "Zo\u00EB";
  const NSString before = text;
  text += " Smith";
  text += std::string(", ");
  text += std::string_view("Leeds");
  text += NSString("!");
  EXPECT_EQ(text, "Zo\u00EB Smith, Leeds!");
  EXPECT_EQ(before, "Zo\u00EB");
  text = "ab";
  text += text;
  EXPECT_EQ(text, "abab");
  NSString halves = NSString::fromCodePoint(0xD83D);
  halves += NSString::fromCodePoint(0xDCB7);
  EXPECT_EQ(halves, "\U0001F4B7") << "halves that meet are one character";
}

TEST(NSString, ItsSizeCountsUnits) {
  EXPECT_EQ(NSString().size(), 0u);
  EXPECT_EQ(NSString("Zo\u00EB").size(), 3u);
  EXPECT_EQ(NSString("\U0001F4B7").size(), 2u);
  EXPECT_EQ(std::size(NSString("pay")), 3u);
}

TEST(NSString, ConvertsToAViewOnRequestOnly) {
  const NSString text = "Zo\u00EB";
  const auto view = static_cast<std::string_view>(text);
  EXPECT_EQ(view.data(), text.view().data());
  EXPECT_EQ(view, "Zo\u00EB");
  static_assert(!std::is_convertible_v<NSString, std::string_view> && !std::is_convertible_v<NSString, std::string>);
}

TEST(NSString, ItsUnitsAreARange) {
  static_assert(std::ranges::forward_range<NSString::Units> && std::ranges::forward_range<NSString::CodePoints>);
  const NSString text = NSString("a\u00E9\u20AC\U0001F4B7b") + NSString::fromCodePoint(0xDC80);
  std::u16string units;
  for (const char16_t unit : text.units()) units += unit;
  EXPECT_EQ(units, text.toUtf16());
  EXPECT_EQ(units.size(), text.size());
  EXPECT_EQ(std::ranges::distance(text.units()), 7);
  EXPECT_EQ(std::ranges::count(text.units(), u'b'), 1);
  EXPECT_TRUE(NSString().units().begin() == NSString().units().end());
  const auto range = NSString("kept").units();  // the text itself is destroyed
  EXPECT_EQ(std::u16string(range.begin(), range.end()), u"kept");
}

TEST(NSString, ConstantsAreBorrowedFromTheirLiterals) {
  EXPECT_EQ(constantName.length(), 3u);
  EXPECT_EQ(constantTown.view(), "Leeds");
  EXPECT_TRUE(constantTown.isAscii());
  EXPECT_FALSE(constantName.isAscii());
}

TEST(NSString, IsMadeFromEveryKindOfPlainText) {
  char buffer[16] = "pay";
  const char* const pointer = buffer;
  EXPECT_EQ(NSString(buffer).view(), "pay");
  EXPECT_EQ(NSString(pointer).view(), "pay");
  EXPECT_EQ(NSString(std::string("pay")).view(), "pay");
  EXPECT_EQ(NSString(std::string_view("payday").substr(0, 3)).view(), "pay");
  EXPECT_EQ("a\0b"_ns.length(), 3u);
  EXPECT_EQ(NSString("a\0b").length(), 1u);
}

TEST(NSString, RefusesANullPointer) {
  const char* const none = nullptr;
  EXPECT_EQ(raised("NSInvalidArgumentException", [&] { return NSString(none); }),
            "NSString: the text is a null pointer");
}

TEST(NSString, IsMadeFromTextOfAnyLength) {
  for (std::size_t size = 0; size <= 300; ++size) {
    const std::string plain(size, 'a');
    EXPECT_EQ(NSString(plain.c_str()).view(), plain);
    EXPECT_TRUE(NSString(plain.c_str()).isAscii());
    const NSString before = "\u00E9" + plain, after = plain + "\u00E9", refused = plain + "\xE9";
    EXPECT_EQ(before.view(), "\u00E9" + plain);
    EXPECT_EQ(after.view(), plain + "\u00E9");
    EXPECT_FALSE(before.isAscii() || after.isAscii());
    EXPECT_TRUE(before.isWellFormed() && after.isWellFormed());
    EXPECT_EQ(after.length(), size + 1);
    EXPECT_EQ(refused.view(), plain + "\xED\xB3\xA9") << "U+DCE9 for the byte E9";
    EXPECT_FALSE(refused.isWellFormed());
  }
}

TEST(NSString, KeepsItsOwnCopyOfWhatItIsMadeFrom) {
  std::string source = "before";
  const NSString text = source;
  source = "after!";
  EXPECT_EQ(text, "before");
}

TEST(NSString, CopiesAreIdenticalAndTextsMadeSeparatelyAreNot) {
  const NSString text = std::string("gross pay");
  const NSString copy = text, again = std::string("gross pay");
  EXPECT_TRUE(copy.isIdenticalTo(text));
  EXPECT_EQ(again, text);
  EXPECT_FALSE(again.isIdenticalTo(text));
  EXPECT_TRUE(text.substringFromIndex(0).isIdenticalTo(text));
  EXPECT_TRUE(NSString().isIdenticalTo(NSString(std::string())));
}

TEST(NSString, IsEmptyAfterBeingMovedFrom) {
  NSString from = std::string("moved");
  const NSString to = std::move(from);
  EXPECT_EQ(to, "moved");
  EXPECT_TRUE(from.empty());  // NOLINT(bugprone-use-after-move): that is the subject
  NSString target = std::string("old"), source = std::string("new");
  target = std::move(source);
  EXPECT_EQ(target, "new");
  EXPECT_TRUE(source.empty());  // NOLINT(bugprone-use-after-move): that is the subject
}

TEST(NSString, SurvivesAssignmentToItself) {
  NSString text = std::string("self");
  const NSString& same = text;
  text = same;
  EXPECT_EQ(text, "self");
  NSString& moved = text;
  text = std::move(moved);
  EXPECT_EQ(text, "self");  // NOLINT(bugprone-use-after-move): that is the subject
}

TEST(NSString, CountsAndReadsUtf16Units) {
  const NSString text = "a\u00A3\u20AC\U0001F4B7z";
  ASSERT_EQ(text.length(), 6u);
  const char16_t expected[] = {u'a', 0x00A3, 0x20AC, 0xD83D, 0xDCB7, u'z'};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(text.characterAtIndex(i), expected[i]) << i;
}

TEST(NSString, RaisesForPositionsBeyondTheText) {
  const NSString text = "pay\u00E9";
  EXPECT_EQ(raised("NSRangeException", [&] { (void)text.characterAtIndex(4); }),
            "characterAtIndex: 4 is beyond the text of 4 units");
  EXPECT_EQ(raised("NSRangeException", [&] { (void)text.substringFromIndex(5); }),
            "substringFromIndex: 5 is beyond the text of 4 units");
  EXPECT_EQ(raised("NSRangeException", [&] { (void)text.substringToIndex(5); }),
            "substringToIndex: 5 is beyond the text of 4 units");
  EXPECT_EQ(raised("NSRangeException",
                   [&] {
                     (void)text.substringWithRange({2, 3});
                   }),
            "substringWithRange: {2, 3} is beyond the text of 4 units");
  EXPECT_EQ(raised("NSRangeException",
                   [&] {
                     (void)text.substringWithRange({NSNotFound, UINT64_MAX});
                   }),
            "substringWithRange: {9223372036854775807, 18446744073709551615} is beyond the text of 4 units");
  EXPECT_EQ(raised("NSRangeException", [&] { (void)NSString().characterAtIndex(0); }),
            "characterAtIndex: 0 is beyond the text of 0 units");
}

TEST(NSString, CutsUpToBothEnds) {
  const NSString text = "pay\u00E9";
  EXPECT_EQ(text.substringFromIndex(4), "");
  EXPECT_EQ(text.substringToIndex(0), "");
  EXPECT_EQ(text.substringToIndex(4), "pay\u00E9");
  EXPECT_EQ(text.substringWithRange({2, 2}), "y\u00E9");
  EXPECT_EQ(text.substringWithRange({4, 0}), "");
}

TEST(NSString, HalvesOfACharacterSurviveCuttingAndRejoin) {
  const NSString text = "a\U0001F4B7b";
  const NSString head = text.substringToIndex(2), tail = text.substringFromIndex(2);
  EXPECT_EQ(head.toUtf16(), (std::u16string{u'a', 0xD83D}));
  EXPECT_EQ(tail.toUtf16(), (std::u16string{0xDCB7, u'b'}));
  EXPECT_FALSE(head.isWellFormed());
  EXPECT_EQ(head + tail, text);
  EXPECT_EQ((head + tail).view(),
            "a\xF0\x9F\x92\xB7"
            "b");
  EXPECT_NE(tail + head, text);
}

TEST(NSStringFmt, HeaderExample) {
  const NSString name = "Ann";
  EXPECT_EQ(fmt::format("{:<6}|", name), "Ann   |");
}

TEST(NSString, LoneHalvesPrintAsTheReplacementCharacter) {
  const NSString half = NSString::fromUtf16(std::u16string{u'a', 0xD83D});
  EXPECT_EQ(half.utf8(), "a\xEF\xBF\xBD");
  std::ostringstream out;
  out << half << '|' << NSString("\u00E9");
  EXPECT_EQ(out.str(), "a\xEF\xBF\xBD|\xC3\xA9");
  EXPECT_EQ(fmt::format("{:>4}|{}", NSString("ab"), half), "  ab|a\xEF\xBF\xBD");
}

TEST(NSString, BytesThatAreNotUtf8BecomeLowHalvesAndComeBack) {
  const struct {
    const char* why;
    std::string bytes;
    std::u16string units;
  } rows[] = {
      {"a stray continuation byte", "a\x80z", {u'a', 0xDC80, u'z'}},
      {"Latin-1 text", "caf\xE9", {u'c', u'a', u'f', 0xDCE9}},
      {"a character cut short", "\xE2\x82", {0xDCE2, 0xDC82}},
      {"an overlong form", "\xC0\x80", {0xDCC0, 0xDC80}},
      {"a surrogate half", "\xED\xA0\x80", {0xDCED, 0xDCA0, 0xDC80}},
      {"above U+10FFFF", "\xF4\x90\x80\x80", {0xDCF4, 0xDC90, 0xDC80, 0xDC80}},
      {"byte FF between good text", "\xC3\xA9\xFFx", {0x00E9, 0xDCFF, u'x'}},
  };
  for (const auto& row : rows) {
    const NSString text = NSString::fromBytes(row.bytes);
    EXPECT_EQ(text.toUtf16(), row.units) << row.why;
    EXPECT_EQ(text.bytes(), row.bytes) << row.why;
    EXPECT_EQ(NSString(row.bytes), text) << row.why;
    EXPECT_FALSE(NSString::fromUtf8(row.bytes).has_value()) << row.why;
  }
}

TEST(NSString, StrictReadingAcceptsUtf8) {
  EXPECT_EQ(NSString::fromUtf8("\xC2\xA3\x31"), std::optional<NSString>("\u00A31"));
  EXPECT_EQ(NSString::fromUtf8(""), std::optional<NSString>(""));
}

TEST(NSString, ComparesWithPlainTextAsIfItWereMadeFromIt) {
  const NSString text = "pay";
  EXPECT_TRUE(text == "pay" && "pay" == text && text == std::string("pay") && text == std::string_view("pay"));
  EXPECT_TRUE(text != "Pay" && text < "payday" && "pax" < text);
  const NSString escaped = NSString::fromBytes("\xE9");
  EXPECT_TRUE(escaped == "\xE9");
  EXPECT_FALSE(escaped == escaped.view());  // read as text, those three bytes are three escapes
}

TEST(NSString, OrderIsByUtf16UnitsNotByCharacters) {
  const NSString high = NSString::fromUtf16(std::u16string{0xD83D});
  const NSString ordered[] = {"", "a", "ab", "b", "\u00E9", "\uD7FF", high, "\U0001F4B7", "\uE000", "\uFFFD"};
  for (std::size_t i = 0; i < std::size(ordered); ++i) {
    for (std::size_t j = 0; j < std::size(ordered); ++j) {
      EXPECT_EQ(ordered[i] <=> ordered[j], i <=> j) << i << ' ' << j;
    }
  }
  EXPECT_EQ(NSString("a").compare("b"), NSOrderedAscending);
  EXPECT_EQ(NSString("B").compare("a"), NSOrderedAscending);
  EXPECT_EQ(NSString("b").compare("b"), NSOrderedSame);
}

TEST(NSString, CaseInsensitiveComparisonFoldsLettersOneForOne) {
  EXPECT_EQ(NSString("GROSS").caseInsensitiveCompare("gross"), NSOrderedSame);
  EXPECT_EQ(NSString("\u00C9t\u00E9").caseInsensitiveCompare("\u00E9T\u00C9"), NSOrderedSame);
  EXPECT_EQ(NSString("a").caseInsensitiveCompare("B"), NSOrderedAscending);
  EXPECT_EQ(NSString("stra\u00DFe").caseInsensitiveCompare("strasse"), NSOrderedDescending);
}

TEST(NSString, EqualTextsHashAlikeHoweverTheyWereMade) {
  const NSString whole = "a\U0001F4B7";
  const NSString joined = whole.substringToIndex(2) + whole.substringFromIndex(2);
  EXPECT_EQ(std::hash<NSString>{}(joined), std::hash<NSString>{}(whole));
  const std::unordered_set<NSString> names{"Ann", std::string("Ann"), "Bob"};
  EXPECT_EQ(names.size(), 2u);
}

TEST(NSString, JoinsWithPlainTextOnEitherSide) {
  const NSString text = "b";
  EXPECT_EQ("a" + text + std::string("c") + std::string_view("d"), "abcd");
  EXPECT_EQ(text.stringByAppendingString("\u00E9"), "b\u00E9");
  EXPECT_EQ((text + "\xFF").bytes(), "b\xFF");
  EXPECT_TRUE((text + "").isIdenticalTo(text));
}

TEST(NSString, CodePointsComeInOrder) {
  std::vector<char32_t> points;
  for (const char32_t point : NSString("a\u00E9\U0001F4B7").codePoints()) points.push_back(point);
  EXPECT_THAT(points, ElementsAre(U'a', U'\u00E9', U'\U0001F4B7'));
}

TEST(NSString, IsMadeFromOneCharacter) {
  EXPECT_EQ(NSString::fromCodePoint(0x1F4B7), "\U0001F4B7");
  EXPECT_EQ(NSString::fromCodePoint(0xD83D) + NSString::fromCodePoint(0xDCB7), "\U0001F4B7");
  EXPECT_EQ(raised("NSInvalidArgumentException", [] { return NSString::fromCodePoint(0x110000); }),
            "NSString: no character has the number 1114112");
}

TEST(NSString, UnitsGoThereAndBack) {
  const std::u16string units{u'a', 0xDCB7, 0xD83D, 0xD83D, 0xDCB7, 0xFFFF, 0xD83D};
  EXPECT_EQ(NSString::fromUtf16(units).toUtf16(), units);
  EXPECT_EQ(NSString::fromUtf16(units).length(), 7u);
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/platform/values/internal/TextSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace norvik::detail {
namespace {

std::vector<TextMatch> all(std::string_view text, std::string_view wanted, SearchManner manner) {
  std::vector<TextMatch> found;
  TextSearch search(text, wanted, manner);
  while (const auto match = search.next()) found.push_back(*match);
  EXPECT_EQ(search.next(), std::nullopt);
  return found;
}

TEST(TextSearch, HeaderExample) {
  TextSearch search("banana", "ana", {});
  EXPECT_EQ(search.next(), (TextMatch{1, 4}));
  EXPECT_EQ(search.next(), (TextMatch{3, 6}));
  EXPECT_EQ(search.next(), std::nullopt);
}

TEST(TextSearch, FoldedLettersMayTakeOtherBytes) {
  EXPECT_EQ(all("\u212Akk", "kK", {.ignoresCase = true}), (std::vector<TextMatch>{{0, 4}, {3, 5}}));
  EXPECT_EQ(all("k\u212Ak", "Kk", {.ignoresCase = true, .backwards = true}), (std::vector<TextMatch>{{1, 5}, {0, 4}}));
}

TEST(TextSearch, AnEmptyTextOccursBetweenAllCharacters) {
  EXPECT_EQ(all("a\u00E9", "", {}), (std::vector<TextMatch>{{0, 0}, {1, 1}, {3, 3}}));
  EXPECT_EQ(all("a\u00E9", "", {.backwards = true}), (std::vector<TextMatch>{{3, 3}, {1, 1}, {0, 0}}));
  EXPECT_EQ(all("", "", {}), (std::vector<TextMatch>{{0, 0}}));
}

TEST(TextSearch, TheEdgesAreLookedAtAlone) {
  EXPECT_EQ(matchAtEdge("Zo\u00CBx", "zo\u00EB", {.ignoresCase = true}), (TextMatch{0, 4}));
  EXPECT_EQ(matchAtEdge("xZo\u00CB", "zo\u00EB", {.ignoresCase = true, .backwards = true}), (TextMatch{1, 5}));
  EXPECT_EQ(matchAtEdge("xZo\u00CB", "zo\u00EB", {.ignoresCase = true}), std::nullopt);
  EXPECT_EQ(matchAtEdge("pay", "payday", {}), std::nullopt);
  EXPECT_EQ(matchAtEdge("day", "payday", {.ignoresCase = true, .backwards = true}), std::nullopt);
  EXPECT_EQ(matchAtEdge("payday", "day", {.backwards = true}), (TextMatch{3, 6}));
}

/// Texts of few letters that are long enough for the table: compares with a search that tries every position.
TEST(TextSearch, FindsEveryOccurrenceInRepetitiveText) {
  std::mt19937 random(11);
  const auto upTo = [&](std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(random); };
  std::size_t found = 0;
  for (int round = 0; round < 400; ++round) {
    std::string block, text;
    for (std::size_t left = 1 + upTo(6); left > 0; --left) block += "abAB"[upTo(round % 2 == 0 ? 1 : 3)];
    while (text.size() < 4'000) {
      text += block;
      if (upTo(200) == 0) text += "abAB"[upTo(3)];
    }
    std::string wanted = text.substr(upTo(text.size() - 1), 1 + upTo(round % 4 == 0 ? 20 : 900));
    if (round % 3 == 0) wanted[upTo(wanted.size() - 1)] = 'a';
    for (const bool ignoresCase : {false, true}) {
      const auto same = [&](char a, char b) { return ignoresCase ? (a | 0x20) == (b | 0x20) : a == b; };
      std::vector<TextMatch> expected;
      for (std::size_t at = 0; at + wanted.size() <= text.size(); ++at) {
        if (std::equal(wanted.begin(), wanted.end(), text.begin() + static_cast<std::ptrdiff_t>(at), same))
          expected.push_back({at, at + wanted.size()});
      }
      found += expected.size();
      ASSERT_EQ(all(text, wanted, {.ignoresCase = ignoresCase}), expected) << wanted << " in " << text;
      std::reverse(expected.begin(), expected.end());
      ASSERT_EQ(all(text, wanted, {.ignoresCase = ignoresCase, .backwards = true}), expected)
          << wanted << " in " << text;
    }
  }
  EXPECT_GT(found, 100'000u);
}

}  // namespace
}  // namespace norvik::detail

#include "NorvikCore/Categories/NSArray+Norvik.h"

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace norvik {
namespace {

Ref<NSArray> abc() { return NSArray::arrayWithObjects("a", "b", "c"); }

Ref<NSDictionary> options(std::initializer_list<NSDictionary::Entry> entries) {
  return NSDictionary::dictionaryWith(entries);
}

/// Joined step by step.
std::string modelJoined(const std::vector<std::string>& parts, const std::string& separator, const std::string& suffix,
                        const std::string& last, bool skips) {
  std::string text;
  std::size_t count = 0;
  for (const std::string& part : parts) {
    if (skips && part.find_first_not_of(" \n") == std::string::npos) continue;
    std::string component = part + suffix;
    if (count != 0) component = (count == parts.size() - 1 ? last : separator) + component;
    text += component;
    count += 1;
  }
  return text;
}

}  // namespace

TEST(NSArrayNorvik, HeaderExample) {
  const auto names = NSArray::arrayWithObjects("Ann", "Bob", "Zoe");
  EXPECT_EQ(nk_componentsJoinedByString(*names, ", ", NSDictionary::dictionaryWithObject(" and ", "joinLastWith")),
            "Ann, Bob and Zoe");
  EXPECT_TRUE(nk_moveItemsToStart(*names, *NSArray::arrayWithObjects("Zoe"))
                  ->isEqual(*NSArray::arrayWithObjects("Zoe", "Ann", "Bob")));
}

TEST(NSArrayNorvik, JoinsWithASuffixAndAnotherLastSeparator) {
  EXPECT_EQ(nk_componentsJoinedByString(*abc(), ", "), "a, b, c");
  EXPECT_EQ(nk_componentsJoinedByString(*abc(), ", ", options({{"joinLastWith", " and "}})), "a, b and c");
  EXPECT_EQ(nk_componentsJoinedByString(*abc(), ", ", options({{"suffix", "!"}, {"joinLastWith", " & "}})),
            "a!, b! & c!");
  EXPECT_EQ(nk_componentsJoinedByString(*abc(), ""), "abc");
  EXPECT_EQ(nk_componentsJoinedByString(*NSArray::array(), ", ", options({{"suffix", "!"}})), "");
  EXPECT_EQ(nk_componentsJoinedByString(*NSArray::arrayWithObjects("a"), ", ", options({{"joinLastWith", "&"}})), "a");
  EXPECT_EQ(nk_componentsJoinedByString(*NSArray::arrayWithObjects("a", "b"), ", ", options({{"joinLastWith", "&"}})),
            "a&b");
}

// What looks like a mistake: once an element is left out, the last separator is the plain one.
TEST(NSArrayNorvik, AfterASkippedElementTheLastSeparatorIsThePlainOne) {
  const auto list = NSArray::arrayWithObjects("a", " ", "c");
  const auto skipping = options({{"skipEmptyComponents", true}, {"joinLastWith", " and "}});
  EXPECT_EQ(nk_componentsJoinedByString(*list, ", ", skipping), "a, c");
  EXPECT_EQ(nk_componentsJoinedByString(*abc(), ", ", skipping), "a, b and c");
  EXPECT_EQ(nk_componentsJoinedByString(*list, ", ", options({{"joinLastWith", " and "}})), "a,   and c");
}

TEST(NSArrayNorvik, JoinsDescriptionsOfAnything) {
  const auto list = NSArray::arrayWith({1, Value::null(), 2.5, "x"});
  EXPECT_EQ(nk_componentsJoinedByString(*list, "|", options({{"skipEmptyComponents", true}})), "1|<null>|2.5|x");
}

TEST(NSArrayNorvik, OptionsThatAreNullAreMissingAndOthersRaise) {
  EXPECT_EQ(nk_componentsJoinedByString(*abc(), "-",
                                        options({{"suffix", Value::null()},
                                                 {"joinLastWith", Value::null()},
                                                 {"skipEmptyComponents", Value::null()}})),
            "a-b-c");
  EXPECT_RAISES((void)nk_componentsJoinedByString(*abc(), "-", options({{"suffix", 7}})), "NSInvalidArgumentException");
}

TEST(NSArrayNorvik, JoinsAsTheModelDoes) {
  std::mt19937 engine(3);
  const auto upTo = [&](std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(engine); };
  const std::string texts[] = {"", " ", "\n", "a", "bc"};
  for (int round = 0; round < 20'000; ++round) {
    std::vector<std::string> parts;
    for (std::size_t i = upTo(5); i > 0; --i) parts.push_back(texts[upTo(4)]);
    const std::string separator = texts[upTo(4)], suffix = texts[upTo(4)], last = texts[upTo(4)];
    const bool skips = upTo(1) == 1;
    ASSERT_EQ(nk_componentsJoinedByString(
                  *NSArray::arrayFrom(parts), separator,
                  options({{"suffix", suffix}, {"joinLastWith", last}, {"skipEmptyComponents", skips}})),
              modelJoined(parts, separator, suffix, last, skips));
  }
}

TEST(NSArrayNorvik, GivesAPartOfAtMostSoMany) {
  EXPECT_TRUE(nk_subarrayFromIndex(*abc(), 1, 1)->isEqual(*NSArray::arrayWithObjects("b")));
  EXPECT_TRUE(nk_subarrayFromIndex(*abc(), 1, 2)->isEqual(*NSArray::arrayWithObjects("b", "c")));
  EXPECT_TRUE(nk_subarrayFromIndex(*abc(), 1, 3)->isEqual(*NSArray::arrayWithObjects("b", "c")));
  EXPECT_TRUE(nk_subarrayFromIndex(*abc(), 1, SIZE_MAX)->isEqual(*NSArray::arrayWithObjects("b", "c")));
  EXPECT_EQ(nk_subarrayFromIndex(*abc(), 0, 0)->count(), 0u);
  EXPECT_EQ(nk_subarrayFromIndex(*abc(), 3, 1)->count(), 0u);
  EXPECT_EQ(nk_subarrayFromIndex(*abc(), 4, 1)->count(), 0u);
  EXPECT_EQ(nk_subarrayFromIndex(*abc(), SIZE_MAX, SIZE_MAX)->count(), 0u);
}

TEST(NSArrayNorvik, FiltersByElementAndIndexUntilItIsStopped) {
  const auto odd =
      nk_filteredArrayUsingBlock(*abc(), [](const Value&, std::size_t index, bool&) { return index % 2 == 0; });
  EXPECT_TRUE(odd->isEqual(*NSArray::arrayWithObjects("a", "c")));
  const auto stopped = nk_filteredArrayUsingBlock(*abc(), [](const Value& element, std::size_t, bool& stop) {
    stop = element == Value("b");
    return true;
  });
  EXPECT_TRUE(stopped->isEqual(*NSArray::arrayWithObjects("a", "b")));
  const auto refused = nk_filteredArrayUsingBlock(*abc(), [](const Value& element, std::size_t, bool& stop) {
    stop = element == Value("b");
    return !stop;
  });
  EXPECT_TRUE(refused->isEqual(*NSArray::arrayWithObjects("a")));
}

TEST(NSArrayNorvik, LeavesOutNullMarkersInACopyThatCanChange) {
  const auto list = NSArray::arrayWith({Value::null(), 0, "", Value::null()});
  const Ref<NSMutableArray> kept = nk_removeNulls(*list);
  EXPECT_TRUE(kept->isEqual(*NSArray::arrayWith({0, ""})));
  kept->addObject("x");
  EXPECT_EQ(list->count(), 4u);
}

TEST(NSArrayNorvik, PutsItemsFirst) {
  const auto list = NSArray::arrayWith({1, 2, 3, 2});
  EXPECT_TRUE(nk_moveItemsToStart(*list, *NSArray::arrayWith({3, 2.0, 9}))->isEqual(*NSArray::arrayWith({3, 2, 9, 1})));
  EXPECT_TRUE(nk_moveItemsToStart(*list, *NSArray::array())->isEqual(*list));
  EXPECT_TRUE(
      nk_moveItemsToStart(*list, *NSArray::arrayWith({5, 5}))->isEqual(*NSArray::arrayWith({5, 5, 1, 2, 3, 2})));
}

TEST(NSArrayNorvik, TheUpperHalfHasTheOddElement) {
  const auto five = NSArray::arrayWith({1, 2, 3, 4, 5});
  EXPECT_TRUE(nk_splitLower(*five)->isEqual(*NSArray::arrayWith({1, 2})));
  EXPECT_TRUE(nk_splitUpper(*five)->isEqual(*NSArray::arrayWith({3, 4, 5})));
  EXPECT_EQ(nk_splitLower(*NSArray::arrayWith({1}))->count(), 0u);
  EXPECT_EQ(nk_splitUpper(*NSArray::arrayWith({1}))->count(), 1u);
  EXPECT_EQ(nk_splitUpper(*NSArray::array())->count(), 0u);
}

}  // namespace norvik

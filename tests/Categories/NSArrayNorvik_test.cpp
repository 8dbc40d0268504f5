// Joining, cutting and filtering arrays. NORVIK_TEXT_INPUTS is the number of joins compared with a model
// (tests/support/RandomTexts.h).
#include "NorvikCore/Categories/NSArray+Norvik.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/RandomTexts.h"

#include <gtest/gtest.h>

#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace norvik {
namespace {

Ref<NSArray> abc() { return NSArray::arrayWithObjects("a", "b", "c"); }

Ref<NSDictionary> options(std::initializer_list<NSDictionary::Entry> entries) {
  return NSDictionary::dictionaryWith(entries);
}

/// Empties the list when it is hashed or described.
class Emptying : public NSObject {
  NK_OBJECT(Emptying, NSObject)
  [[nodiscard]] std::size_t hash() const override {
    empty();
    return 0;
  }
  [[nodiscard]] NSString description() const override {
    empty();
    return "emptying";
  }
  NSMutableArray* list = nullptr;

 private:
  void empty() const { list->removeAllObjects(); }
};

using Units = std::u16string;

/// Joins step by step.
Units modelJoined(const std::vector<Units>& parts, const Units& separator, const Units& suffix, const Units& last,
                  bool skips) {
  constexpr std::u16string_view blanksAndBreaks = u" \t\n\r\u00A0\u2028\u3000";
  Units text;
  std::size_t count = 0;
  for (const Units& part : parts) {
    if (skips && part.find_first_not_of(blanksAndBreaks) == Units::npos) continue;
    Units component = part + suffix;
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

// Looks like a mistake but is deliberate: after an element is left out, the last separator is the plain one.
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
  static const Units texts[] = {u"",       u" ",        u"\n\t", u"\u00A0\u2028", u"\u200B", u"\xD83D",
                                u"\xDCB7", u"\u3000\r", u"a",    u"b\u00E9"};
  test::RandomTexts random(3, 20'000);
  const auto text = [&] { return texts[random.upTo(std::size(texts) - 1)]; };
  for (int i = 0; i < random.inputs(); ++i) {
    std::vector<Units> parts(random.upTo(5));
    std::vector<NSString> elements;
    for (Units& part : parts) elements.push_back(NSString::fromUtf16(part = text()));
    const Units separator = text(), suffix = text(), last = text();
    const bool skips = random.upTo(1) == 1, hasSuffix = random.upTo(3) > 0, hasLast = random.upTo(3) > 0;
    const auto given = NSMutableDictionary::dictionary();
    given->setObject(skips, "skipEmptyComponents");
    if (hasSuffix) given->setObject(NSString::fromUtf16(suffix), "suffix");
    if (hasLast) given->setObject(NSString::fromUtf16(last), "joinLastWith");
    ASSERT_EQ(
        nk_componentsJoinedByString(*NSArray::arrayFrom(elements), NSString::fromUtf16(separator), given).toUtf16(),
        modelJoined(parts, separator, hasSuffix ? suffix : u"", hasLast ? last : separator, skips))
        << random.at(i);
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

TEST(NSArrayNorvik, APredicateTakesAnElementAsWhatItIs) {
  const auto texts =
      nk_filteredArrayUsingBlock(*abc(), [](const NSString& name, std::size_t, bool&) { return name.hasPrefix("b"); });
  EXPECT_TRUE(texts->isEqual(*NSArray::arrayWithObjects("b")));
  const auto lists =
      nk_filteredArrayUsingBlock(*NSArray::arrayWithObjects(abc(), NSArray::array()),
                                 [](const NSArray& list, std::size_t, bool&) { return list.count() > 0; });
  EXPECT_TRUE(lists->isEqual(*NSArray::arrayWithObjects(abc())));
  EXPECT_RAISES((void)nk_filteredArrayUsingBlock(*NSArray::arrayWith({1}),
                                                 [](const NSString&, std::size_t, bool&) { return true; }),
                "NSInvalidArgumentException");
  const auto generic =
      nk_filteredArrayUsingBlock(*abc(), [](const auto& element, auto, auto&) { return element == Value("c"); });
  EXPECT_TRUE(generic->isEqual(*NSArray::arrayWithObjects("c")));
}

TEST(NSArrayNorvik, AnArrayThatItsPredicateChangesRaises) {
  const auto list = NSMutableArray::arrayWithObjects("a", "b", "c");
  int asked = 0;
  EXPECT_RAISES((void)nk_filteredArrayUsingBlock(*list,
                                                 [&](const Value&, std::size_t, bool& stop) {
                                                   ++asked;
                                                   list->removeAllObjects();
                                                   stop = true;
                                                   return true;
                                                 }),
                "NSGenericException");
  EXPECT_EQ(asked, 1);
}

TEST(NSArrayNorvik, APredicateMayReleaseTheArray) {
  Ref<NSArray> list = NSArray::arrayWithObjects(NSArray::arrayWithObjects("a"), "b");
  const auto kept = nk_filteredArrayUsingBlock(*list, [&](const Value&, std::size_t, bool&) {
    list = nullptr;
    return true;
  });
  EXPECT_EQ(kept->count(), 2u);
  EXPECT_EQ(kept->objectAtIndex(1), Value("b"));
}

TEST(NSArrayNorvik, WhatAPredicateThrowsPasses) {
  const auto list = abc();
  EXPECT_THROW((void)nk_filteredArrayUsingBlock(
                   *list, [](const Value&, std::size_t, bool&) -> bool { throw std::runtime_error("no"); }),
               std::runtime_error);
  EXPECT_EQ(list->count(), 3u);
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

TEST(NSArrayNorvik, AnArrayThatItsElementsChangeRaises) {
  const auto list = make<NSMutableArray>();
  const auto emptying = make<Emptying>();
  emptying->list = list.get();
  for (int i = 0; i < 3; ++i) list->addObject(emptying);
  EXPECT_RAISES((void)nk_moveItemsToStart(*list, *NSArray::arrayWithObjects("Zoe")), "NSGenericException");
  for (int i = 0; i < 3; ++i) list->addObject(emptying);
  EXPECT_RAISES((void)nk_componentsJoinedByString(*list, ", "), "NSGenericException");
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

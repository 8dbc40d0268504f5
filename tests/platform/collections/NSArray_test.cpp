#include "NorvikCore/platform/collections/NSArray.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/NumbersIn.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace norvik {
namespace {

using norvik::test::nameOfWhatIsRaised;
using norvik::test::numbersIn;

class Item : public NSObject {
  NK_OBJECT(Item, NSObject)
  explicit Item(int number = 0) : number_(number) {}
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

class SpecialItem : public Item {
  NK_OBJECT(SpecialItem, Item)
  using Item::Item;
};

TEST(NSArray, HeaderExample) {
  Ref<NSArray> pay = NSArray::arrayWithObjects(1200_dec, 950.50_dec, "unpaid");
  EXPECT_EQ(pay->count(), 3u);
  NSString listed;
  for (const Value& each : *pay) listed = listed + each.description() + ";";
  EXPECT_EQ(listed, "1200;950.50;unpaid;");
  auto sorted = NSArray::arrayWithObjects(3, 1, 2)->sortedArrayUsingComparator(
      [](const Value& a, const Value& b) { return a.compare(b); });
  EXPECT_EQ(numbersIn(*sorted), (std::vector{1, 2, 3}));
}

TEST(NSArray, IsMadeInEveryNaturalForm) {
  const std::vector<NSString> texts{"a", "b"};
  EXPECT_EQ(NSArray::array()->count(), 0u);
  EXPECT_EQ(NSArray::arrayWith({1, "b"})->count(), 2u);
  EXPECT_EQ(NSArray::arrayWithObjects(1, true, 2.5, Date())->count(), 4u);
  EXPECT_EQ(NSArray::arrayFrom(texts)->objectAtIndex(1), Value("b"));
  EXPECT_EQ(make<NSArray>(std::vector<Value>{7})->firstObject(), Value(7));
  EXPECT_EQ(NSArray::arrayWithArray(*NSMutableArray::arrayWith({1, 2}))->count(), 2u);
}

TEST(NSArray, AnAbsentElementRaises) {
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)NSArray::arrayWith({1, Value()}); }), "NSInvalidArgumentException");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)NSArray::array()->arrayByAddingObject({}); }), "NSInvalidArgumentException");
  EXPECT_EQ(NSArray::arrayWith({Value::null()})->count(), 1u);
}

TEST(NSArray, AnIndexBeyondTheEndRaisesAndSaysWhatThereIs) {
  const auto array = NSArray::arrayWith({1, 2});
  EXPECT_EQ(array->objectAtIndex(1), Value(2));
  EXPECT_EQ((*array)[0], Value(1));
  try {
    (void)array->objectAtIndex(2);
    FAIL();
  } catch (const NSException& e) {
    EXPECT_EQ(e.name(), NSRangeException);
    EXPECT_EQ(e.reason(), "-[NSArray objectAtIndex]: index 2 beyond bounds [0 .. 1]");
  }
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)NSArray::array()->objectAtIndex(0); }), "NSRangeException");
}

TEST(NSArray, FirstAndLastAreAbsentWhereThereAreNone) {
  EXPECT_TRUE(NSArray::array()->firstObject().isAbsent());
  EXPECT_TRUE(NSArray::array()->lastObject().isAbsent());
  EXPECT_EQ(NSArray::arrayWith({1, 2})->firstObject(), Value(1));
  EXPECT_EQ(NSArray::arrayWith({1, 2})->lastObject(), Value(2));
}

TEST(NSArray, FindsByEqualityAndByIdentity) {
  const auto item = make<Item>(1);
  const auto array = NSArray::arrayWithObjects(5, 5.00_dec, item, make<Item>(1));
  EXPECT_EQ(array->indexOfObject(5.0), 0u);
  EXPECT_EQ(array->indexOfObjectIdenticalTo(5.00_dec), 1u);
  EXPECT_EQ(array->indexOfObject(item), 2u);
  EXPECT_EQ(array->indexOfObject("five"), NSNotFound);
  EXPECT_EQ(array->indexOfObjectIdenticalTo(5.000_dec), NSNotFound);
  EXPECT_TRUE(array->containsObject(5));
  EXPECT_FALSE(array->containsObject(Value()));
}

TEST(NSArray, ASubarrayMayBeEmptyAtTheEndButNotReachBeyond) {
  const auto array = NSArray::arrayWith({1, 2, 3});
  EXPECT_EQ(numbersIn(*array->subarrayWithRange({1, 2})), (std::vector{2, 3}));
  EXPECT_EQ(array->subarrayWithRange({3, 0})->count(), 0u);
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)array->subarrayWithRange({2, 2}); }), "NSRangeException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)array->subarrayWithRange({4, 0}); }), "NSRangeException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)array->subarrayWithRange({1, NSNotFound}); }), "NSRangeException");
}

TEST(NSArray, AddingGivesANewArrayAndLeavesTheOldOne) {
  const auto array = NSArray::arrayWith({1});
  EXPECT_EQ(numbersIn(*array->arrayByAddingObject(2)), (std::vector{1, 2}));
  EXPECT_EQ(numbersIn(*array->arrayByAddingObjectsFromArray(*array)), (std::vector{1, 1}));
  EXPECT_EQ(numbersIn(*array), (std::vector{1}));
}

TEST(NSArray, SortingKeepsTheOrderOfEqualElements) {
  const auto array = NSArray::arrayWithObjects("bb", "a", "cc", "dd", "e");
  const auto byLength = array->sortedArrayUsingComparator([](const Value& a, const Value& b) {
    return a.string()->length() < b.string()->length() ? NSOrderedAscending : NSOrderedSame;
  });
  EXPECT_EQ(byLength->componentsJoinedByString(" "), "a e bb cc dd");
  EXPECT_EQ(array->componentsJoinedByString(" "), "bb a cc dd e");
}

TEST(NSArray, SortsByAFreeFunctionToo) {
  struct Descending {
    static NSComparisonResult compare(const Value& a, const Value& b) { return b.compare(a); }
  };
  EXPECT_EQ(numbersIn(*NSArray::arrayWith({1, 3, 2})->sortedArrayUsingComparator(Descending::compare)),
            (std::vector{3, 2, 1}));
}

TEST(NSArray, SortingWhatCannotBeComparedRaises) {
  EXPECT_EQ(nameOfWhatIsRaised([] {
              (void)NSArray::arrayWith({1, "a"})->sortedArray();
            }),
            "NSInvalidArgumentException");
}

TEST(NSArray, JoinsDescriptionsAndHalvesOfCharactersMeet) {
  EXPECT_EQ(NSArray::arrayWith({1, "b", 2.50_dec})->componentsJoinedByString(", "), "1, b, 2.50");
  EXPECT_EQ(NSArray::array()->componentsJoinedByString(", "), "");
  const NSString smile = NSString::fromCodePoint(0x1F600);
  const auto halves = NSArray::arrayWithObjects(smile.substringToIndex(1), smile.substringFromIndex(1));
  EXPECT_EQ(halves->componentsJoinedByString(""), smile);
}

TEST(NSArray, ElementsAsTheirClass) {
  const auto array = NSArray::arrayWithObjects(make<Item>(1), make<SpecialItem>(2));
  int sum = 0;
  for (Item& item : array->as<Item>()) sum += item.number();
  EXPECT_EQ(sum, 3);
  for (const Item& item : array->as<const Item>()) sum += item.number();
  EXPECT_EQ(sum, 6);
}

TEST(NSArray, ElementsAsValues) {
  Decimal sum = 0;
  for (const Decimal& amount : NSArray::arrayWithObjects(1.50_dec, 2, 0.25)->as<Decimal>()) sum += amount;
  EXPECT_EQ(sum, 3.75_dec);
}

TEST(NSArray, AnElementOfAnotherClassRaisesWhenItIsReached) {
  const auto array = NSArray::arrayWithObjects(make<SpecialItem>(1), make<Item>(2), "text");
  int reached = 0;
  EXPECT_EQ(nameOfWhatIsRaised([&] {
              for (SpecialItem& item : array->as<SpecialItem>()) reached = item.number();
            }),
            "NSInvalidArgumentException");
  EXPECT_EQ(reached, 1);
}

TEST(NSArray, ACopyOfAnArrayThatDoesNotChangeIsItself) {
  const auto array = NSArray::arrayWith({1});
  EXPECT_EQ(array->copy(), array);
  const auto mutableArray = array->mutableCopy();
  mutableArray->addObject(2);
  EXPECT_EQ(array->count(), 1u);
  const Ref<NSArray> copy = mutableArray->copy();
  EXPECT_EQ(copy->classObject().name(), "NSArray");
  mutableArray->addObject(3);
  EXPECT_EQ(numbersIn(*copy), (std::vector{1, 2}));
}

TEST(NSArray, EqualityLooksAtElementsAndOrder) {
  EXPECT_TRUE(NSArray::arrayWith({1, "a"})->isEqualToArray(*NSMutableArray::arrayWith({1.0, "a"})));
  EXPECT_FALSE(NSArray::arrayWith({1, 2})->isEqualToArray(*NSArray::arrayWith({2, 1})));
  EXPECT_FALSE(NSArray::arrayWith({1})->isEqualToArray(*NSArray::arrayWith({1, 1})));
  EXPECT_EQ(Value(NSArray::arrayWith({1, 2})), Value(NSArray::arrayWith({1, 2})));
  EXPECT_FALSE(NSArray::array()->isEqual(*make<Item>()));
}

TEST(NSArray, EqualArraysHaveOneHash) {
  EXPECT_EQ(NSArray::arrayWith({1, "a"})->hash(), NSMutableArray::arrayWith({1.00_dec, "a"})->hash());
  EXPECT_NE(NSArray::arrayWith({1, 2})->hash(), NSArray::arrayWith({2, 1})->hash());
}

TEST(NSArray, DescribesItsElementsLineByLine) {
  EXPECT_EQ(NSArray::array()->description(), "(\n)");
  EXPECT_EQ(NSArray::arrayWithObjects(1, "Ann", "two words", "a\"b\n", "", Value::null())->description(),
            "(\n    1,\n    Ann,\n    \"two words\",\n    \"a\\\"b\\n\",\n    \"\",\n    <null>\n)");
  EXPECT_EQ(NSArray::arrayWithObjects(NSArray::arrayWith({1}), 2)->description(),
            "(\n    (\n        1\n    ),\n    2\n)");
}

TEST(NSArray, AnArrayThatHoldsItselfHasAnEndingTextAndAHash) {
  const auto array = NSMutableArray::array();
  array->addObject(array);
  EXPECT_EQ(array->description(), "(\n    <NSMutableArray: ...>\n)");
  EXPECT_EQ(array->hash(), array->hash());
  array->removeAllObjects();
}

TEST(NSArray, ArraysThatHoldThemselvesCanBeCompared) {
  const auto a = NSMutableArray::array(), b = NSMutableArray::array();
  a->addObject(a);
  b->addObject(b);
  EXPECT_TRUE(a->isEqualToArray(*b));
  b->addObject(1);
  a->addObject(2);
  EXPECT_FALSE(a->isEqualToArray(*b));
  a->removeAllObjects();
  b->removeAllObjects();
}

TEST(NSArray, WhatIsSharedIsComparedOnce) {
  Ref<NSArray> a = NSArray::arrayWith({1}), b = NSArray::arrayWith({1}), c = NSArray::arrayWith({2});
  for (int level = 0; level < 100; ++level) {
    a = NSArray::arrayWithObjects(a, a);
    b = NSArray::arrayWithObjects(b, b);
    c = NSArray::arrayWithObjects(c, c);
  }
  EXPECT_TRUE(a->isEqualToArray(*b));
  EXPECT_FALSE(a->isEqualToArray(*c));
}

TEST(NSArray, ALongChainOfArraysGoesWithoutExhaustingTheStack) {
  Weak<NSArray> innermost;
  {
    Ref<NSArray> chain = NSArray::array();
    innermost = chain;
    for (int i = 0; i < 300'000; ++i) chain = NSArray::arrayWith({Value(chain)});
    EXPECT_TRUE(innermost.lock());
  }
  EXPECT_FALSE(innermost.lock());
}

TEST(NSArray, WorksWithStandardAlgorithms) {
  const auto array = NSArray::arrayWith({1, 2, 3});
  EXPECT_EQ(std::count_if(array->begin(), array->end(), [](const Value& v) { return v.as<int>() > 1; }), 2);
  EXPECT_EQ(std::ranges::find(*array, Value(2))->as<int>(), 2);
}

}  // namespace
}  // namespace norvik

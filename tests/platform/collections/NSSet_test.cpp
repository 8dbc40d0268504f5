#include "NorvikCore/platform/collections/NSSet.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

using norvik::test::nameOfWhatIsRaised;

std::string elements(const NSSet& set) { return set.allObjects()->componentsJoinedByString(",").str(); }

TEST(NSSet, HeaderExample) {
  Ref<NSSet> codes = NSSet::setWithObjects("1257L", "BR", "BR");
  EXPECT_EQ(codes->count(), 2u);
  EXPECT_TRUE(codes->containsObject("BR"));
  NSString listed;
  for (const Value& code : *codes) listed = listed + code.description() + ";";
  EXPECT_EQ(listed, "1257L;BR;");
}

TEST(NSSet, OfEqualElementsTheFirstIsKept) {
  const auto set = NSSet::setWith({5.00_dec, 5, 5.0});
  EXPECT_EQ(set->count(), 1u);
  EXPECT_EQ(set->anyObject().kind(), Value::Kind::Decimal);
  EXPECT_EQ(set->member(5).description(), "5.00");
  EXPECT_TRUE(set->member(6).isAbsent());
  EXPECT_TRUE(NSSet::set()->anyObject().isAbsent());
}

TEST(NSSet, AnAbsentElementRaises) {
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)NSSet::setWith({Value()}); }), "NSInvalidArgumentException");
  auto set = NSMutableSet::set();
  EXPECT_EQ(nameOfWhatIsRaised([&] { set->addObject({}); }), "NSInvalidArgumentException");
  EXPECT_EQ(set->count(), 0u);
}

TEST(NSSet, ComparesWithOtherSets) {
  const auto small = NSSet::setWith({1, 2});
  const auto large = NSSet::setWith({3, 2, 1});
  EXPECT_TRUE(small->isSubsetOfSet(*large));
  EXPECT_FALSE(large->isSubsetOfSet(*small));
  EXPECT_TRUE(small->intersectsSet(*large));
  EXPECT_FALSE(small->intersectsSet(*NSSet::setWith({7})));
  EXPECT_TRUE(small->isEqualToSet(*NSMutableSet::setWith({2.0, 1})));
  EXPECT_EQ(small->hash(), NSMutableSet::setWith({2.0, 1})->hash());
  EXPECT_FALSE(small->isEqualToSet(*large));
}

TEST(NSSet, AddingGivesANewSet) {
  const auto set = NSSet::setWith({1});
  EXPECT_EQ(elements(*set->setByAddingObject(2)), "1,2");
  EXPECT_EQ(elements(*set->setByAddingObjectsFromArray(*NSArray::arrayWith({1, 3}))), "1,3");
  EXPECT_EQ(elements(*set->setByAddingObjectsFromSet(*NSSet::setWith({4, 1}))), "1,4");
  EXPECT_EQ(elements(*set), "1");
}

TEST(NSSet, ACopyOfASetThatDoesNotChangeIsItself) {
  const auto set = NSSet::setWith({1});
  EXPECT_EQ(set->copy(), set);
  auto changed = set->mutableCopy();
  changed->addObject(2);
  EXPECT_EQ(changed->copy()->classObject().name(), "NSSet");
  EXPECT_EQ(elements(*changed->copy()), "1,2");
  EXPECT_EQ(elements(*set), "1");
}

TEST(NSSet, DescribesItsElements) {
  EXPECT_EQ(NSSet::setWith({1, "two words"})->description(), "{(\n    1,\n    \"two words\"\n)}");
}

TEST(NSSet, ElementsAsValues) {
  int sum = 0;
  for (int number : NSSet::setWith({1, 2, 3})->as<int>()) sum += number;
  EXPECT_EQ(sum, 6);
}

TEST(NSMutableSet, HeaderExample) {
  auto seen = NSMutableSet::set();
  seen->addObject("BR");
  seen->addObject("BR");
  EXPECT_EQ(seen->count(), 1u);
  seen->minusSet(*NSSet::setWithObjects("BR"));
  EXPECT_EQ(seen->count(), 0u);
}

TEST(NSMutableSet, SetAlgebraAlsoWithItself) {
  auto set = NSMutableSet::setWith({1, 2, 3});
  set->unionSet(*NSSet::setWith({3, 4}));
  EXPECT_EQ(elements(*set), "1,2,3,4");
  set->minusSet(*NSSet::setWith({1}));
  EXPECT_EQ(elements(*set), "2,3,4");
  set->intersectSet(*NSSet::setWith({4, 2, 9}));
  EXPECT_EQ(elements(*set), "2,4");
  set->unionSet(*set);
  set->intersectSet(*set);
  set->setSet(*set);
  EXPECT_EQ(elements(*set), "2,4");
  set->minusSet(*set);
  EXPECT_EQ(set->count(), 0u);
}

TEST(NSMutableSet, ChangesUnderALoopRaiseAndNoChangesDoNot) {
  auto set = NSMutableSet::setWith({1, 2});
  int rounds = 0;
  for ([[maybe_unused]] const Value& each : *set) {
    set->addObject(1);
    set->removeObject(9);
    ++rounds;
  }
  EXPECT_EQ(rounds, 2);
  EXPECT_EQ(nameOfWhatIsRaised([&] {
              for ([[maybe_unused]] const Value& each : *set) set->removeObject(2);
            }),
            "NSGenericException");
  EXPECT_EQ(nameOfWhatIsRaised([&] {
              for ([[maybe_unused]] const Value& each : *set) set->addObject(7);
            }),
            "NSGenericException");
}

TEST(NSMutableSet, KeepsTheOrderWhileManyComeAndGo) {
  auto set = NSMutableSet::set();
  for (int i = 0; i < 1000; ++i) set->addObject(i);
  for (int i = 0; i < 1000; ++i) {
    if (i % 100 != 0) set->removeObject(i);
  }
  EXPECT_EQ(elements(*set), "0,100,200,300,400,500,600,700,800,900");
  EXPECT_TRUE(set->containsObject(900));
  EXPECT_FALSE(set->containsObject(901));
}

// Removing the element 0 leaves a gap, and the hash of 0 equals that of the absent value.
TEST(NSMutableSet, TheAbsentValueIsNotFoundWhereAnElementWasRemoved) {
  for (const int others : {1, 5, 50}) {
    const auto set = NSMutableSet::setWithObjects(0);
    for (int i = 1; i <= others; ++i) set->addObject(i);
    set->removeObject(0);
    EXPECT_FALSE(set->containsObject(Value())) << others;
    EXPECT_TRUE(set->member(Value()).isAbsent());
    set->removeObject(Value());
    EXPECT_EQ(set->count(), static_cast<std::size_t>(others));
  }
}

TEST(NSMutableSet, RemovingTheAbsentValueRemovesNothing) {
  const auto set = NSMutableSet::setWithObjects(0, 12345);
  set->removeObject(0);
  set->removeObject(Value());
  EXPECT_EQ(set->count(), 1U);
  EXPECT_TRUE(set->containsObject(12345));
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/platform/collections/NSMutableArray.h"

#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/NumbersIn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <random>
#include <vector>

namespace norvik {
namespace {

using norvik::test::nameOfWhatIsRaised;
using norvik::test::numbersIn;

Ref<NSMutableArray> oneTwoThree() { return NSMutableArray::arrayWith({1, 2, 3}); }

TEST(NSMutableArray, HeaderExample) {
  auto names = NSMutableArray::arrayWithObjects("Zoe", "Ann");
  names->addObject("Bob");
  names->sort();
  EXPECT_EQ(names->componentsJoinedByString(", "), "Ann, Bob, Zoe");
  names->removeObject("Bob");
  EXPECT_EQ(names->componentsJoinedByString(", "), "Ann, Zoe");
}

TEST(NSMutableArray, AddsAndInserts) {
  auto array = NSMutableArray::arrayWithCapacity(4);
  array->addObject(2);
  array->insertObject(1, 0);
  array->insertObject(3, 2);
  EXPECT_EQ(numbersIn(*array), (std::vector{1, 2, 3}));
  array->addObjectsFromArray(*NSArray::arrayWith({4, 5}));
  EXPECT_EQ(numbersIn(*array), (std::vector{1, 2, 3, 4, 5}));
}

TEST(NSMutableArray, AddsItselfToItself) {
  auto array = oneTwoThree();
  array->addObjectsFromArray(*array);
  EXPECT_EQ(numbersIn(*array), (std::vector{1, 2, 3, 1, 2, 3}));
}

TEST(NSMutableArray, AddsItsOwnElement) {
  auto array = oneTwoThree();
  for (int i = 0; i < 20; ++i) array->addObject(array->objectAtIndex(0));
  EXPECT_EQ(array->lastObject(), Value(1));
}

TEST(NSMutableArray, RefusesAbsentValuesAndStaysAsItWas) {
  auto array = oneTwoThree();
  EXPECT_EQ(nameOfWhatIsRaised([&] { array->addObject({}); }), "NSInvalidArgumentException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { array->insertObject({}, 0); }), "NSInvalidArgumentException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { array->replaceObjectAtIndex(0, {}); }), "NSInvalidArgumentException");
  EXPECT_EQ(numbersIn(*array), (std::vector{1, 2, 3}));
}

TEST(NSMutableArray, RefusesIndexesBeyondTheEnd) {
  auto array = oneTwoThree();
  EXPECT_EQ(nameOfWhatIsRaised([&] { array->insertObject(1, 4); }), "NSRangeException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { array->replaceObjectAtIndex(3, 1); }), "NSRangeException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { array->removeObjectAtIndex(3); }), "NSRangeException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { array->exchangeObjectAtIndex(0, 3); }), "NSRangeException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { array->removeObjectsInRange({2, 2}); }), "NSRangeException");
  EXPECT_EQ(numbersIn(*array), (std::vector{1, 2, 3}));
}

TEST(NSMutableArray, ReplacesAndExchanges) {
  auto array = oneTwoThree();
  array->replaceObjectAtIndex(1, 20);
  array->exchangeObjectAtIndex(0, 2);
  EXPECT_EQ(numbersIn(*array), (std::vector{3, 20, 1}));
  array->setArray(*NSArray::arrayWith({9}));
  EXPECT_EQ(numbersIn(*array), (std::vector{9}));
}

TEST(NSMutableArray, RemovesByIndexRangeEqualityAndIdentity) {
  auto array = NSMutableArray::arrayWith({1, 2, 1, 3, 1});
  array->removeObject(1);
  EXPECT_EQ(numbersIn(*array), (std::vector{2, 3}));
  array->removeObjectAtIndex(0);
  EXPECT_EQ(numbersIn(*array), (std::vector{3}));
  array->removeLastObject();
  array->removeLastObject();
  EXPECT_EQ(array->count(), 0u);

  auto exact = NSMutableArray::arrayWithObjects(5, 5.0_dec);
  exact->removeObjectIdenticalTo(5.0_dec);
  EXPECT_EQ(exact->count(), 1u);
  EXPECT_EQ(exact->firstObject().kind(), Value::Kind::Integer);

  auto range = NSMutableArray::arrayWith({1, 2, 3, 4});
  range->removeObjectsInRange({1, 2});
  EXPECT_EQ(numbersIn(*range), (std::vector{1, 4}));
}

// With quadratic time this would take an hour.
TEST(NSMutableArray, TheFirstElementIsRemovedWithoutMovingTheOthers) {
  constexpr int count = 1'000'000;
  auto queue = NSMutableArray::arrayWithCapacity(count);
  for (int i = 0; i < count; ++i) queue->addObject(i);
  std::int64_t sum = 0;
  for (; queue->count() > 0; queue->removeObjectAtIndex(0)) sum += queue->firstObject().as<int>();
  EXPECT_EQ(sum, std::int64_t{count} * (count - 1) / 2);
}

TEST(NSMutableArray, IsWhatADequeIsAfterAnyChanges) {
  std::mt19937 engine(5);
  const auto upTo = [&](std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(engine); };
  for (int round = 0; round < 200; ++round) {
    auto array = NSMutableArray::array();
    std::deque<int> model;
    for (int change = 0; change < 200; ++change) {
      const std::size_t at = model.empty() ? 0 : upTo(model.size() - 1), other = model.empty() ? 0 : upTo(at);
      const auto place = model.begin() + static_cast<std::ptrdiff_t>(at);
      switch (const std::size_t kind = upTo(12); model.empty() ? 0 : kind) {
        case 0:
        case 1:
        case 2:
          array->addObject(change);
          model.push_back(change);
          break;
        case 3:
        case 4:
        case 5:
          array->removeObjectAtIndex(0);
          model.pop_front();
          break;
        case 6:
          array->removeLastObject();
          model.pop_back();
          break;
        case 7:
          array->insertObject(change, at);
          model.insert(place, change);
          break;
        case 8:
          array->replaceObjectAtIndex(at, change);
          *place = change;
          break;
        case 9:
          array->exchangeObjectAtIndex(at, other);
          std::swap(model[at], model[other]);
          break;
        case 10:
          array->removeObjectsInRange({other, at - other});
          model.erase(model.begin() + static_cast<std::ptrdiff_t>(other), place);
          break;
        case 11:
          array->removeObjectAtIndex(at);
          model.erase(place);
          break;
        default:
          array->addObjectsFromArray(*NSArray::arrayWithObjects(change, -change));
          model.insert(model.end(), {change, -change});
          break;
      }
      const std::vector<int> expected(model.begin(), model.end());
      ASSERT_EQ(numbersIn(*array), expected) << "round " << round << ", change " << change;
      ASSERT_EQ(array->count(), expected.size());
      ASSERT_EQ(numbersIn(*array->copy()), expected);
      ASSERT_EQ(numbersIn(*array->mutableCopy()), expected);
      ASSERT_TRUE(array->isEqual(*NSArray::arrayFrom(expected)));
      ASSERT_EQ(array->hash(), NSArray::arrayFrom(expected)->hash());
      if (expected.empty()) continue;
      ASSERT_EQ(array->firstObject(), Value(expected.front()));
      ASSERT_EQ(array->lastObject(), Value(expected.back()));
      ASSERT_EQ((*array)[expected.size() / 2], Value(expected[expected.size() / 2]));
      ASSERT_EQ(array->indexOfObject(expected.back()),
                static_cast<std::size_t>(std::ranges::find(expected, expected.back()) - expected.begin()));
      ASSERT_THROW((void)array->objectAtIndex(expected.size()), NSException);
    }
    array->sort();
    std::ranges::sort(model);
    ASSERT_EQ(numbersIn(*array), std::vector<int>(model.begin(), model.end()));
  }
}

TEST(NSMutableArray, AnObjectThatGoesWithTheFirstElementSeesTheOthers) {
  auto array = NSMutableArray::array();
  std::vector<int> seen;
  struct Last : NSObject {
    std::function<void()> atEnd;
    ~Last() override { atEnd(); }
  };
  auto first = make<Last>();
  first->atEnd = [&] { seen = numbersIn(*array); };
  array->addObject(first);
  for (const int each : {1, 2, 3}) array->addObject(each);
  first = nullptr;
  array->removeObjectAtIndex(0);
  EXPECT_EQ(seen, (std::vector{1, 2, 3}));
}

TEST(NSMutableArray, RemovesAnElementNamedByAReferenceIntoItself) {
  auto array = NSMutableArray::arrayWithObjects("a", "b", "a");
  array->removeObject(array->objectAtIndex(0));
  EXPECT_EQ(array->componentsJoinedByString(","), "b");
}

TEST(NSMutableArray, RemovesAnotherArraysElementsAndItsOwn) {
  auto array = oneTwoThree();
  array->removeObjectsInArray(*NSArray::arrayWith({3, 1, 7}));
  EXPECT_EQ(numbersIn(*array), (std::vector{2}));
  array->removeObjectsInArray(*array);
  EXPECT_EQ(array->count(), 0u);
}

TEST(NSMutableArray, RemovesWhatATestPicks) {
  auto array = NSMutableArray::arrayWith({1, 2, 3, 4});
  EXPECT_EQ(array->removeObjectsPassingTest([](const Value& v) { return v.as<int>() % 2 == 0; }), 2u);
  EXPECT_EQ(numbersIn(*array), (std::vector{1, 3}));
}

TEST(NSMutableArray, AComparatorThatRaisesLeavesTheArrayAsItWas) {
  auto array = NSMutableArray::arrayWithObjects(3, 1, "x");
  EXPECT_EQ(nameOfWhatIsRaised([&] { array->sort(); }), "NSInvalidArgumentException");
  EXPECT_EQ(array->componentsJoinedByString(","), "3,1,x");
}

TEST(NSMutableArray, EveryKindOfChangeUnderALoopRaisesAndNamesTheCollection) {
  const struct {
    const char* what;
    void (*change)(NSMutableArray&);
  } rows[] = {
      {"add", [](NSMutableArray& a) { a.addObject(4); }},
      {"add several", [](NSMutableArray& a) { a.addObjectsFromArray(*NSArray::arrayWith({4})); }},
      {"insert", [](NSMutableArray& a) { a.insertObject(0, 0); }},
      {"replace", [](NSMutableArray& a) { a.replaceObjectAtIndex(0, 1); }},
      {"exchange", [](NSMutableArray& a) { a.exchangeObjectAtIndex(0, 1); }},
      {"remove at", [](NSMutableArray& a) { a.removeObjectAtIndex(2); }},
      {"remove last", [](NSMutableArray& a) { a.removeLastObject(); }},
      {"remove equal", [](NSMutableArray& a) { a.removeObject(3); }},
      {"remove range",
       [](NSMutableArray& a) {
         a.removeObjectsInRange({0, 3});
       }},
      {"remove all", [](NSMutableArray& a) { a.removeAllObjects(); }},
      {"set", [](NSMutableArray& a) { a.setArray(*NSArray::array()); }},
      {"sort", [](NSMutableArray& a) { a.sort(); }},
  };
  for (const auto& row : rows) {
    auto array = oneTwoThree();
    int rounds = 0;
    try {
      for ([[maybe_unused]] const Value& each : *array) {
        ++rounds;
        row.change(*array);
      }
      ADD_FAILURE() << row.what;
    } catch (const NSException& e) {
      EXPECT_EQ(e.name(), NSGenericException) << row.what;
      EXPECT_TRUE(e.reason().hasPrefix("<NSMutableArray> was changed while it was enumerated")) << e.reason();
    }
    EXPECT_EQ(rounds, 1) << row.what;
  }
}

TEST(NSMutableArray, ALoopThatEndsAfterItsChangeDoesNotRaise) {
  auto array = oneTwoThree();
  for (const Value& each : *array) {
    if (each == Value(2)) {
      array->removeObject(2);
      break;
    }
  }
  EXPECT_EQ(numbersIn(*array), (std::vector{1, 3}));
}

TEST(NSMutableArray, WhatFindsNothingToDoIsNoChange) {
  auto array = oneTwoThree();
  int rounds = 0;
  for ([[maybe_unused]] const Value& each : *array) {
    array->removeObject(7);
    array->addObjectsFromArray(*NSArray::array());
    array->removeObjectsInRange({1, 0});
    ++rounds;
  }
  EXPECT_EQ(rounds, 3);
}

TEST(NSMutableArray, ATypedLoopNoticesChangesToo) {
  auto array = oneTwoThree();
  EXPECT_EQ(nameOfWhatIsRaised([&] {
              for ([[maybe_unused]] int each : array->as<int>()) array->addObject(1);
            }),
            "NSGenericException");
}

class ArrayCaller : public NSObject {
  NK_OBJECT(ArrayCaller, NSObject)
  explicit ArrayCaller(NSMutableArray& array) : array_(&array) {}
  ~ArrayCaller() override { array_->addObject("called back"); }

 private:
  NSMutableArray* array_;
};

TEST(NSMutableArray, AnObjectThatGoesMayChangeTheArrayItWasIn) {
  auto array = NSMutableArray::array();
  array->addObject(make<ArrayCaller>(*array));
  array->removeAllObjects();
  EXPECT_EQ(array->componentsJoinedByString(","), "called back");
  array->replaceObjectAtIndex(0, make<ArrayCaller>(*array));
  array->removeObjectAtIndex(0);
  EXPECT_EQ(array->componentsJoinedByString(","), "called back");
}

}  // namespace
}  // namespace norvik

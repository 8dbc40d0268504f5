// Stacks, queues, arrays without null markers and several objects under one key.
#include "NorvikCore/Categories/NSMutableArray+Norvik.h"

#include "NorvikCore/Categories/NSArray+Norvik.h"
#include "NorvikCore/Categories/NSMutableArray+Queue.h"
#include "NorvikCore/Categories/NSMutableArray+Stack.h"
#include "NorvikCore/Categories/NSMutableDictionary+Norvik.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/values/NSException.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace norvik {
namespace {

bool areEqual(const NSArray& array, const Ref<NSArray>& expected) { return array.isEqualToArray(*expected); }

TEST(NSMutableArrayStack, HeaderExample) {
  const auto open = NSMutableArray::arrayWithObjects("a");
  push(*open, "b");
  EXPECT_EQ(pop(*open), Value("b"));
}

TEST(NSMutableArrayStack, TheLastPushedIsTheFirstPopped) {
  auto stack = NSMutableArray::array();
  push(*stack, "a");
  push(*stack, "b");
  EXPECT_EQ(stackPeek(*stack), Value("b"));
  EXPECT_EQ(stack->count(), 2u);
  EXPECT_EQ(pop(*stack), Value("b"));
  EXPECT_EQ(pop(*stack), Value("a"));
  EXPECT_EQ(stack->count(), 0u);
}

TEST(NSMutableArrayStack, AnEmptyOneGivesNothing) {
  auto stack = NSMutableArray::array();
  EXPECT_TRUE(pop(*stack).isAbsent());
  EXPECT_TRUE(stackPeek(*stack).isAbsent());
  EXPECT_EQ(stack->count(), 0u);
  EXPECT_THROW(push(*stack, Value()), NSException);
  EXPECT_EQ(stack->count(), 0u);
  push(*stack, Value::null());
  EXPECT_TRUE(pop(*stack).isNull());
}

TEST(NSMutableArrayQueue, HeaderExample) {
  const auto waiting = NSMutableArray::array();
  enqueue(*waiting, "a");
  EXPECT_EQ(dequeue(*waiting), Value("a"));
}

TEST(NSMutableArrayQueue, TheFirstEnqueuedIsTheFirstDequeued) {
  auto queue = NSMutableArray::array();
  enqueue(*queue, "a");
  enqueue(*queue, "b");
  EXPECT_EQ(queuePeek(*queue), Value("a"));
  EXPECT_EQ(dequeue(*queue), Value("a"));
  EXPECT_TRUE(areEqual(*queue, NSArray::arrayWithObjects("b")));
  EXPECT_EQ(dequeue(*queue), Value("b"));
}

TEST(NSMutableArrayQueue, AnEmptyOneGivesNothing) {
  auto queue = NSMutableArray::array();
  EXPECT_TRUE(dequeue(*queue).isAbsent());
  EXPECT_TRUE(queuePeek(*queue).isAbsent());
  EXPECT_EQ(queue->count(), 0u);
  EXPECT_THROW(enqueue(*queue, Value()), NSException);
}

TEST(NSMutableArrayQueue, ItsCursorDoesNotFollowIt) {
  auto queue = NSMutableArray::arrayWithObjects("a", "b");
  auto cursor = queueCursor(*queue);
  enqueue(*queue, "c");
  EXPECT_EQ(cursor->count(), 2);
  EXPECT_EQ(cursor->index(), 0);
}

TEST(NSMutableArrayNorvik, HeaderExample) {
  const auto fields = NSMutableArray::arrayWithObjects(Value::null(), "a");
  nk_removeNulls(*fields);
  EXPECT_TRUE(areEqual(*fields, NSArray::arrayWithObjects("a")));
  fields->addObject(Value::null());
  const NSArray& kept = *fields;
  Ref<NSMutableArray> copy = nk_removeNulls(kept);
  EXPECT_TRUE(areEqual(*copy, NSArray::arrayWithObjects("a")));
  EXPECT_TRUE(areEqual(*fields, NSArray::arrayWithObjects("a", Value::null())));
}

TEST(NSMutableArrayNorvik, RemoveNullsTakesTheMarkersOut) {
  auto fields = NSMutableArray::arrayWithObjects(Value::null(), "a", Value::null(), "", 0, Value::null());
  nk_removeNulls(*fields);
  EXPECT_TRUE(areEqual(*fields, NSArray::arrayWithObjects("a", "", 0)));
  auto empty = NSMutableArray::array();
  nk_removeNulls(*empty);
  EXPECT_EQ(empty->count(), 0u);
}

TEST(NSMutableArrayNorvik, RemoveNullsChangesWhatMayBeChangedAndCopiesWhatMayNot) {
  const auto fields = NSMutableArray::arrayWithObjects(Value::null(), "a");
  const NSMutableArray& readOnly = *fields;
  const Ref<NSMutableArray> copyOfReadOnly = nk_removeNulls(readOnly);
  NSArray& plain = *fields;
  const Ref<NSMutableArray> copyOfPlain = nk_removeNulls(plain);
  const Ref<NSArray> kept = fields;
  const Ref<NSMutableArray> copyOfKept = nk_removeNulls(*kept);
  for (const auto& copy : {copyOfReadOnly, copyOfPlain, copyOfKept}) {
    EXPECT_NE(copy, fields);
    EXPECT_TRUE(areEqual(*copy, NSArray::arrayWithObjects("a")));
  }
  EXPECT_TRUE(areEqual(*fields, NSArray::arrayWithObjects(Value::null(), "a")));

  static_assert(std::is_void_v<decltype(nk_removeNulls(*fields))>, "the array itself is changed");
  nk_removeNulls(*fields);
  EXPECT_TRUE(areEqual(*fields, NSArray::arrayWithObjects("a")));
  fields->addObject(Value::null());
  const auto owner = [&] { return fields; };
  nk_removeNulls(*owner());
  EXPECT_TRUE(areEqual(*fields, NSArray::arrayWithObjects("a")));
}

class Listener : public NSObject {
  NK_OBJECT(Listener, NSObject)
  void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange&, void*) override { ++heard; }
  int heard = 0;
};

TEST(NSMutableDictionaryNorvik, HeaderExample) {
  const auto lines = NSMutableDictionary::dictionary();
  setArrayValue(*lines, "Basic pay", "April");
  setArrayValue(*lines, "Bonus", "April");
  EXPECT_EQ(lines->count(), 1u);
  EXPECT_EQ(lines->objectForKey("April"), Value(NSArray::arrayWithObjects("Basic pay", "Bonus")));
}

TEST(NSMutableDictionaryNorvik, SetArrayValueKeepsTheOrderOfTheCalls) {
  auto lines = NSMutableDictionary::dictionary();
  auto listener = make<Listener>();
  lines->addObserver(*listener, "April", NSKeyValueObservingOptions(0));
  setArrayValue(*lines, "Basic pay", "April");
  setArrayValue(*lines, "Bonus", "April");
  setArrayValue(*lines, Value::null(), "May");
  EXPECT_TRUE(
      areEqual(*lines->objectForKey("April").as<Ref<NSArray>>(), NSArray::arrayWithObjects("Basic pay", "Bonus")));
  EXPECT_TRUE(areEqual(*lines->objectForKey("May").as<Ref<NSArray>>(), NSArray::arrayWithObjects(Value::null())));
  EXPECT_EQ(listener->heard, 1) << "of the new array";
  lines->removeObserver(*listener, "April");
}

TEST(NSMutableDictionaryNorvik, SetArrayValueRefusesWhatIsNoMutableArray) {
  auto lines = NSMutableDictionary::dictionaryWith({{"text", "x"}, {"fixed", NSArray::arrayWithObjects(1)}});
  EXPECT_THROW(setArrayValue(*lines, 1, "text"), NSException);
  EXPECT_THROW(setArrayValue(*lines, 1, "fixed"), NSException);
  EXPECT_THROW(setArrayValue(*lines, Value(), "new"), NSException);
  EXPECT_EQ(lines->count(), 2u);
  EXPECT_TRUE(areEqual(*lines->objectForKey("fixed").as<Ref<NSArray>>(), NSArray::arrayWithObjects(1)));
}

}  // namespace
}  // namespace norvik

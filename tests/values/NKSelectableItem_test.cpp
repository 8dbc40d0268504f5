#include "NorvikCore/values/NKSelectableItem.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/ExpectRaises.h"

namespace norvik {
namespace {

Ref<NSArray> taken(std::initializer_list<Value> entries) {
  return NKSelectableItem::takeSelectedItemsFrom(*NSArray::arrayWith(entries));
}

TEST(NKSelectableItem, HeaderExample) {
  auto list = NSArray::arrayWithObjects(NKSelectableItem::selectableItem("April", true),
                                        NKSelectableItem::selectableItem("May", false));
  EXPECT_EQ(Value(NKSelectableItem::takeSelectedItemsFrom(*list)), Value(NSArray::arrayWithObjects("April")));
}

TEST(NKSelectableItem, HasItemAndFlag) {
  auto item = NKSelectableItem::selectableItem(5, true);
  EXPECT_EQ(item->item(), Value(5));
  EXPECT_TRUE(item->selected());
  item->setValue_forKey(false, "selected");
  item->setItem("June");
  EXPECT_FALSE(item->selected());
  EXPECT_EQ(item->valueForKey("item"), Value("June"));
}

TEST(NKSelectableItem, SelectedItemsKeepTheirOrder) {
  EXPECT_EQ(Value(taken({NKSelectableItem::selectableItem("c", true), NKSelectableItem::selectableItem("b", false),
                         NKSelectableItem::selectableItem("a", true), NKSelectableItem::selectableItem("c", true)})),
            Value(NSArray::arrayWithObjects("c", "a", "c")));
}

TEST(NKSelectableItem, NothingGivesNothing) {
  EXPECT_EQ(taken({})->count(), 0U);
  EXPECT_EQ(taken({NKSelectableItem::selectableItem("a", false)})->count(), 0U);
}

TEST(NKSelectableItem, AnAbsentItemIsTakenAsTheNullMarker) {
  EXPECT_EQ(Value(taken({NKSelectableItem::selectableItem(Value(), true)})),
            Value(NSArray::arrayWithObjects(Value::null())));
}

TEST(NKSelectableItem, AnEntryOfAnotherKindRaises) { EXPECT_RAISES(taken({"a"}), "NSInvalidArgumentException"); }

TEST(NKSelectableItem, DescribesItemAndFlag) {
  EXPECT_EQ(NKSelectableItem::selectableItem("April", true)->description(), "April, selected : Yes");
  EXPECT_EQ(NKSelectableItem::selectableItem(4, false)->description(), "4, selected : No");
  EXPECT_EQ(NKSelectableItem::selectableItem(Value(), false)->description(), "(null), selected : No");
}

TEST(NKSelectableItemThreads, ItemAndFlagAreReadAndSetOnSeveralThreads) {
  auto list = NSArray::arrayWithObjects(NKSelectableItem::selectableItem("April", false));
  const auto item = list->objectAtIndex(0).as<Ref<NKSelectableItem>>();
  const auto setAndTake = [&](bool selects) {
    for (int i = 0; i < 500; ++i) {
      item->setSelected(selects);
      item->setItem(selects ? "a text that does not fit into the object itself" : "May");
      static_cast<void>(NKSelectableItem::takeSelectedItemsFrom(*list)->count());
      static_cast<void>(item->description());
    }
  };
  { std::jthread one(setAndTake, true), two(setAndTake, false); }
  EXPECT_TRUE(item->item() == Value("May") || item->item() == Value("a text that does not fit into the object itself"));
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/platform/appkit/NSDictionaryController.h"

#include <gtest/gtest.h>

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "tests/platform/appkit/BindingModels.h"
#include "tests/support/ExpectRaises.h"

namespace norvik::test {
namespace {

using Entry = NSDictionaryControllerKeyValuePair;

struct Rates {
  Ref<NSMutableDictionary> content =
      NSMutableDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}, {"top", 0.45_dec}});
  Ref<NSDictionaryController> controller = make<NSDictionaryController>();
  Rates() { controller->setContentDictionary(content); }

  [[nodiscard]] Ref<Entry> entry(std::size_t index) const {
    return controller->arrangedObjects()->objectAtIndex(index).as<Ref<Entry>>();
  }
  [[nodiscard]] NSString keys() const { return keysOf(*controller->arrangedObjects()); }
  [[nodiscard]] NSString selected() const { return keysOf(*controller->selectedObjects()); }
  static NSString keysOf(const NSArray& entries) {
    return entries.valueForKey("key").as<Ref<NSArray>>()->componentsJoinedByString(" ");
  }
};

TEST(NSDictionaryController, HeaderExample) {
  const Rates rates;
  NSString shown;
  const Ref<NSArray> entries = rates.controller->arrangedObjects();
  for (const auto& entry : entries->as<Entry>()) shown = shown + entry.key().description() + ";";
  EXPECT_EQ(shown, "basic;higher;top;");
  rates.controller->setSelectedObjects(NSArray::arrayWithObjects(entries->firstObject()));
  EXPECT_EQ(rates.selected(), "basic");
}

TEST(NSDictionaryControllerKeyValuePair, HeaderExample) {
  const Rates rates;
  const Ref<Entry> entry = rates.entry(0);
  auto field = make<BoundField>();
  bind_toObject_withKeyPath_options(*field, NSValueBinding, *entry, "value", nullptr);
  EXPECT_EQ(entry->key(), Value("basic"));
  entry->setValue(0.25_dec);
  EXPECT_EQ(rates.content->objectForKey("basic"), Value(0.25_dec));
  EXPECT_EQ(field->value(), Value(0.25_dec));
}

TEST(NSDictionaryController, WithoutContentThereIsNothing) {
  auto controller = make<NSDictionaryController>();
  EXPECT_EQ(controller->arrangedObjects()->count(), 0U);
  EXPECT_EQ(controller->selectedObjects()->count(), 0U);
  EXPECT_FALSE(controller->contentDictionary());
}

TEST(NSDictionaryController, EntriesHaveKeyAndValue) {
  const Rates rates;
  EXPECT_EQ(rates.entry(1)->valueForKey("key"), Value("higher"));
  EXPECT_EQ(rates.entry(1)->valueForKey("value"), Value(0.40_dec));
}

TEST(NSDictionaryController, TheContentIsReadEachTime) {
  const Rates rates;
  const Ref<Entry> higher = rates.entry(1);
  rates.content->setObject(0.42_dec, "higher");
  EXPECT_EQ(higher->value(), Value(0.42_dec));
  rates.content->setObject(0.10_dec, "starter");
  rates.content->removeObjectForKey("basic");
  EXPECT_EQ(rates.keys(), "higher top starter");
  EXPECT_EQ(rates.entry(0), higher);
}

TEST(NSDictionaryController, AnEntryWritesToTheContent) {
  const Rates rates;
  rates.entry(0)->setValue(0.25_dec);
  EXPECT_EQ(rates.content->objectForKey("basic"), Value(0.25_dec));
  rates.entry(0)->setValue_forKey(0.30_dec, "value");
  EXPECT_EQ(rates.content->objectForKey("basic"), Value(0.30_dec));
}

TEST(NSDictionaryController, AnEntrySetToNothingGoes) {
  const Rates rates;
  const Ref<Entry> basic = rates.entry(0);
  basic->setValue(Value());
  EXPECT_EQ(rates.keys(), "higher top");
  EXPECT_TRUE(basic->value().isAbsent());
}

TEST(NSDictionaryController, AnEntryOfADictionaryThatDoesNotChangeRaises) {
  auto controller = make<NSDictionaryController>();
  controller->setContentDictionary(NSDictionary::dictionaryWith({{"basic", 1}, {"a.b", 2}}));
  for (auto& entry : controller->arrangedObjects()->as<Entry>()) {
    EXPECT_NE(nameOfWhatIsRaised([&] { entry.setValue(3); }), "") << entry.key();
  }
}

TEST(NSDictionaryController, ObserversOfAnEntryHearOfChangesByEntryAndByKey) {
  const Rates rates;
  auto watcher = make<CallingObserver>(nullptr);
  const Ref<Entry> basic = rates.entry(0);
  basic->addObserver(*watcher, "value", NSKeyValueObservingOptionNew);
  basic->setValue(0.21_dec);
  EXPECT_EQ(watcher->calls, 1);
  rates.content->setValue_forKey(0.22_dec, "basic");
  EXPECT_EQ(watcher->calls, 2);
  basic->removeObserver(*watcher, "value");
}

TEST(NSDictionaryController, KeysThatAreNoPlainTextWorkThroughTheirEntry) {
  auto content = NSMutableDictionary::dictionaryWith({{"a.b", 1}, {7, 2}, {"@sum", 3}, {"", 4}});
  auto controller = make<NSDictionaryController>();
  controller->setContentDictionary(content);
  auto watcher = make<CallingObserver>(nullptr);
  for (auto& entry : controller->arrangedObjects()->as<Entry>()) {
    entry.addObserver(*watcher, "value", NSKeyValueObservingOptionNew);
    entry.setValue(10);
    entry.removeObserver(*watcher, "value");
  }
  EXPECT_EQ(watcher->calls, 4);
  EXPECT_EQ(content->allValues()->valueForKeyPath("@sum.intValue"), Value(40));
}

TEST(NSDictionaryController, AViewIsBoundToAnEntry) {
  const Rates rates;
  auto field = make<BoundField>();
  bind(*field, *rates.entry(0), "value");
  EXPECT_EQ(field->value(), Value(0.20_dec));
  rates.content->setValue_forKey(0.22_dec, "basic");
  EXPECT_EQ(field->value(), Value(0.22_dec));
  field->setValue(0.23_dec);
  EXPECT_EQ(rates.content->objectForKey("basic"), Value(0.23_dec));
}

// Selection.

TEST(NSDictionaryController, TheSelectionIsInArrangedOrderWithoutStrangersAndRepeats) {
  const Rates rates;
  EXPECT_TRUE(rates.controller->setSelectedObjects(
      NSArray::arrayWithObjects(rates.entry(2), rates.entry(0), rates.entry(2), "basic", rates.content)));
  EXPECT_EQ(rates.selected(), "basic top");
}

TEST(NSDictionaryController, SettingTheSameSelectionChangesNothing) {
  const Rates rates;
  auto watcher = make<CallingObserver>(nullptr);
  rates.controller->addObserver(*watcher, "selectedObjects", NSKeyValueObservingOptionNew);
  EXPECT_TRUE(rates.controller->setSelectedObjects(NSArray::arrayWithObjects(rates.entry(0))));
  EXPECT_FALSE(rates.controller->setSelectedObjects(NSArray::arrayWithObjects(rates.entry(0))));
  EXPECT_EQ(watcher->calls, 1);
  EXPECT_TRUE(rates.controller->setSelectedObjects(nullptr));
  EXPECT_FALSE(rates.controller->setSelectedObjects(NSArray::array()));
  EXPECT_EQ(watcher->calls, 2);
  rates.controller->removeObserver(*watcher, "selectedObjects");
}

TEST(NSDictionaryController, AKeyThatGoesIsSelectedNoMore) {
  const Rates rates;
  rates.controller->setSelectedObjects(NSArray::arrayWithObjects(rates.entry(0), rates.entry(1)));
  rates.content->removeObjectForKey("basic");
  EXPECT_EQ(rates.selected(), "higher");
  rates.content->setObject(0.20_dec, "basic");
  EXPECT_EQ(rates.selected(), "higher");
}

TEST(NSDictionaryController, AnotherContentEmptiesTheSelection) {
  const Rates rates;
  const Ref<Entry> former = rates.entry(0);
  rates.controller->setSelectedObjects(NSArray::arrayWithObjects(former));
  rates.controller->setContentDictionary(rates.content->mutableCopy());
  EXPECT_EQ(rates.keys(), "basic higher top");
  EXPECT_EQ(rates.selected(), "");
  EXPECT_NE(rates.entry(0), former);
  EXPECT_FALSE(rates.content->isObserved());
}

// Observers of the lists.

TEST(NSDictionaryController, ObserversHearOfContentRemovalsAndRearranging) {
  const Rates rates;
  auto watcher = make<CallingObserver>(nullptr);
  rates.controller->addObserver(*watcher, "arrangedObjects", NSKeyValueObservingOptionNew);
  rates.content->setValue_forKey(Value(), "top");
  EXPECT_EQ(watcher->calls, 1);
  rates.entry(0)->setValue(Value());
  EXPECT_EQ(watcher->calls, 2);
  rates.content->setObject(1, "new");
  EXPECT_EQ(watcher->calls, 2);
  rates.controller->rearrangeObjects();
  EXPECT_EQ(watcher->calls, 3);
  rates.controller->setContentDictionary(nullptr);
  EXPECT_EQ(watcher->calls, 4);
  rates.controller->removeObserver(*watcher, "arrangedObjects");
}

TEST(NSDictionaryController, ObserversGetTheListAsItWasAndAsItIs) {
  class Recorder : public NSObject {
   public:
    void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange& change, void*) override {
      was = Rates::keysOf(*change.oldValue().as<Ref<NSArray>>());
      is = Rates::keysOf(*change.newValue().as<Ref<NSArray>>());
    }
    NSString was, is;
  };
  const Rates rates;
  EXPECT_EQ(rates.keys(), "basic higher top");
  auto recorder = make<Recorder>();
  rates.controller->addObserver(*recorder, "arrangedObjects",
                                NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew);
  rates.content->removeObjectForKey("higher");
  rates.controller->rearrangeObjects();
  EXPECT_EQ(recorder->was, "basic higher top");
  EXPECT_EQ(recorder->is, "basic top");
  rates.controller->removeObserver(*recorder, "arrangedObjects");
}

// Lifetimes.

TEST(NSDictionaryController, TheControllerGoesAndItsEntriesStayUsable) {
  Rates rates;
  const Ref<Entry> basic = rates.entry(0);
  rates.controller = nullptr;
  EXPECT_FALSE(rates.content->isObserved());
  basic->setValue(0.5_dec);
  EXPECT_EQ(rates.content->objectForKey("basic"), Value(0.5_dec));
  basic->setValue(Value());
  EXPECT_TRUE(basic->value().isAbsent());
}

TEST(NSDictionaryController, TheControllerIsLetGoInACallback) {
  Rates rates;
  auto watcher = make<CallingObserver>([&] { rates.controller = nullptr; });
  rates.controller->addObserver(*watcher, "arrangedObjects", NSKeyValueObservingOptionNew);
  static_cast<void>(rates.keys());
  rates.content->setValue_forKey(Value(), "basic");
  EXPECT_FALSE(rates.controller);
  EXPECT_FALSE(rates.content->isObserved());
}

TEST(NSDictionaryController, TheControllerIsLetGoBeforeAChangeItWasToldOf) {
  Rates rates;
  const Ref<Entry> basic = rates.entry(0);
  auto watcher = make<CallingObserver>([&] { rates.controller = nullptr; });
  basic->addObserver(*watcher, "value", NSKeyValueObservingOptionPrior);
  rates.content->setValue_forKey(0.9_dec, "basic");
  EXPECT_EQ(basic->value(), Value(0.9_dec));
  EXPECT_EQ(watcher->calls, 2);  // once before, and once when the controller was destroyed
  EXPECT_FALSE(rates.content->isObserved());
  basic->removeObserver(*watcher, "value");
}

TEST(NSDictionaryController, AnEntryRemovedInACallbackOfItsOwnGoes) {
  const Rates rates;
  auto watcher = make<CallingObserver>([&] { rates.content->removeAllObjects(); });
  const Ref<Entry> basic = rates.entry(0);
  basic->addObserver(*watcher, "value", NSKeyValueObservingOptionNew);
  basic->setValue(1);
  EXPECT_EQ(rates.keys(), "");
  basic->removeObserver(*watcher, "value");
}

}  // namespace
}  // namespace norvik::test

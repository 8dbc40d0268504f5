#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "NorvikCore/Categories/NSDictionaryController+Norvik.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/kernel/SystemLog.h"

namespace norvik {
namespace {

struct Rates {
  Ref<NSMutableDictionary> content =
      NSMutableDictionary::dictionaryWith({{7, 1}, {"basic", 0.20_dec}, {"higher", 0.40_dec}});
  Ref<NSDictionaryController> controller = make<NSDictionaryController>();
  Rates() { controller->setContentDictionary(content); }
  [[nodiscard]] NSString selected() const {
    return controller->valueForKeyPath("selectedObjects.key").as<Ref<NSArray>>()->componentsJoinedByString(" ");
  }
};

TEST(NSDictionaryControllerNorvik, HeaderExample) {
  const Rates rates;
  nk_selectObjectWithKey(*rates.controller, "higher");
  nk_arrangedObjectWithKey(*rates.controller, "higher")->setValue(0.42_dec);
  EXPECT_EQ(rates.selected(), "higher");
  EXPECT_EQ(rates.content->objectForKey("higher"), Value(0.42_dec));
}

TEST(NSDictionaryControllerNorvik, OnlyAnEqualTextFindsAnEntry) {
  const Rates rates;
  EXPECT_EQ(nk_arrangedObjectWithKey(*rates.controller, "basic")->value(), Value(0.20_dec));
  EXPECT_FALSE(nk_arrangedObjectWithKey(*rates.controller, "Basic"));
  EXPECT_FALSE(nk_arrangedObjectWithKey(*rates.controller, "7"));
  EXPECT_FALSE(nk_arrangedObjectWithKey(*make<NSDictionaryController>(), "basic"));
}

TEST(NSDictionaryControllerNorvik, TheEntryBecomesTheOnlySelectedOne) {
  const Rates rates;
  rates.controller->setSelectedObjects(rates.controller->arrangedObjects());
  nk_selectObjectWithKey(*rates.controller, "basic");
  EXPECT_EQ(rates.selected(), "basic");
}

TEST(NSDictionaryControllerNorvik, WithoutAnEntryTheSelectionStaysAndTheConsoleSaysSo) {
  const kernel::SystemLogCapture console;
  const Rates rates;
  nk_selectObjectWithKey(*rates.controller, "basic");
  nk_selectObjectWithKey(*rates.controller, "top");
  EXPECT_EQ(rates.selected(), "basic");
  EXPECT_THAT(console.lines(), ::testing::ElementsAre("Object for Key : not found in -[NSDictionaryController(Norvik) "
                                                      "nk_selectObjectWithKey:]"));
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/Categories/NSFormatter+Norvik.h"

#include "NorvikCore/formatters/NKDecimalFormatter.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

#include <gtest/gtest.h>

using namespace norvik;

namespace {

class Counter : public NSObject {
  NK_OBJECT(Counter, NSObject)
  void observeValueForKeyPath(const NSString& path, NSObject&, const KeyValueChange& change, void*) override {
    ++(change.isPrior() ? prior : after);
    lastPath = path;
    lastNew = change.newValue();
  }
  int prior = 0, after = 0;
  NSString lastPath;
  Value lastNew;
};

Ref<NSDictionary> red() { return NSDictionary::dictionaryWithObject("red", "colour"); }

}  // namespace

TEST(NSFormatterNorvik, HeaderExample) {
  const auto formatter = make<NKDecimalFormatter>();
  setNk_additionalAttributes(*formatter, NSDictionary::dictionaryWith({{NSForegroundColorAttributeName, "red"}}));
  const auto text = NSAttributedString::attributedStringWithString("1,234.50");
  const Ref<NSAttributedString> shown = nk_customAttributedString(*formatter, text);
  EXPECT_NE(shown, text);
  EXPECT_EQ(shown->attributesAtIndex(7)->objectForKey(NSForegroundColorAttributeName), Value("red"));
}

TEST(NSFormatterNorvik, HasNoAdditionalAttributesUntilTheyAreSet) {
  const auto formatter = make<NKDecimalFormatter>();
  EXPECT_FALSE(nk_additionalAttributes(*formatter));
  const auto attributes = red();
  setNk_additionalAttributes(*formatter, attributes);
  EXPECT_EQ(nk_additionalAttributes(*formatter), attributes);
  setNk_additionalAttributes(*formatter, nullptr);
  EXPECT_FALSE(nk_additionalAttributes(*formatter));
}

TEST(NSFormatterNorvik, WithoutAttributesItGivesTheVeryTextItWasGiven) {
  const auto formatter = make<NKDecimalFormatter>();
  const auto text = NSAttributedString::attributedStringWithString("5.00");
  EXPECT_EQ(nk_customAttributedString(*formatter, text), text);
  setNk_additionalAttributes(*formatter, NSDictionary::dictionary());
  EXPECT_EQ(nk_customAttributedString(*formatter, text), text);
  setNk_additionalAttributes(*formatter, red());
  EXPECT_FALSE(nk_customAttributedString(*formatter, nullptr));
}

TEST(NSFormatterNorvik, AttributesGoOverACopyAndReplaceTheSameNamed) {
  const auto formatter = make<NKDecimalFormatter>();
  setNk_additionalAttributes(*formatter, red());
  const auto text = NSAttributedString::attributedStringWithString(
      "5.00", NSDictionary::dictionaryWith({{"colour", "black"}, {"size", 12}}));
  const auto custom = nk_customAttributedString(*formatter, text);
  EXPECT_NE(custom, text);
  EXPECT_EQ(text->attribute_atIndex("colour", 0), Value("black"));
  NSRange run;
  EXPECT_EQ(custom->attributesAtIndex(0, &run)->objectForKey("colour"), Value("red"));
  EXPECT_EQ(run, (NSRange{0, 4}));
  EXPECT_EQ(custom->attribute_atIndex("size", 0), Value(12));
}

TEST(NSFormatterNorvik, ObserversOfTheKeyAreToldBeforeAndAfter) {
  const auto formatter = make<NKDecimalFormatter>();
  const auto counter = make<Counter>();
  formatter->addObserver(*counter, "nk_additionalAttributes",
                         NSKeyValueObservingOptionNew | NSKeyValueObservingOptionPrior);
  const auto attributes = red();
  setNk_additionalAttributes(*formatter, attributes);
  EXPECT_EQ(counter->prior, 1);
  EXPECT_EQ(counter->after, 1);
  EXPECT_EQ(counter->lastPath, "nk_additionalAttributes");
  EXPECT_EQ(counter->lastNew, Value(attributes));
  formatter->setValue_forKey(Value(), "nk_additionalAttributes");
  EXPECT_EQ(counter->after, 2);
  EXPECT_FALSE(nk_additionalAttributes(*formatter));
}

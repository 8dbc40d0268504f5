#include "NorvikCore/values/NKKeyValuePair.h"

#include "NorvikCore/Categories/NSArray+NKKeyValuePair.h"
#include "NorvikCore/Categories/NSDictionary+Norvik.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "NorvikCore/platform/values/NSException.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace norvik {
namespace {

class OwnPair : public NKKeyValuePair {
  NK_OBJECT(OwnPair, NKKeyValuePair)
};

class Numbered : public NSObject {
  NK_OBJECT(Numbered, NSObject)
  [[nodiscard]] int intValue() const { return 17; }
  NK_METHOD(intValue)
};

std::string text(const NSArray& pairs) {
  std::string all;
  for (const Value& pair : pairs) all += (all.empty() ? "" : ", ") + pair.description().utf8();
  return all;
}

std::int32_t idOf(const Value& key) { return NKKeyValuePair::pairWithKey(key, "x")->id(); }

TEST(NKKeyValuePair, HeaderExample) {
  Ref<NSMutableArray> months = NKKeyValuePair::pairsFromDictionary(*NSDictionary::dictionaryWith({{4, "April"}}));
  EXPECT_EQ(NKKeyValuePair::pairWithId(4, *months)->name(), Value("April"));
}

TEST(NSArrayNKKeyValuePair, HeaderExample) {
  const auto months = NKKeyValuePair::pairsFromDictionary(*NSDictionary::dictionaryWith({{4, "April"}, {5, "May"}}));
  EXPECT_EQ(nk_pairNameWithId(*months, 4), Value("April"));
}

TEST(NSDictionaryNorvik, HeaderExample) {
  const auto months = NSDictionary::dictionaryWith({{5, "May"}, {4, "April"}});
  EXPECT_EQ(text(*keyValuePairs(*months)), "5 : May, 4 : April");
}

TEST(NKKeyValuePair, HoldsAKeyAndAValue) {
  auto pair = NKKeyValuePair::pairWithKey(4, "April");
  EXPECT_EQ(pair->key(), Value(4));
  EXPECT_EQ(pair->value(), Value("April"));
  EXPECT_EQ(pair->name(), Value("April"));
  EXPECT_EQ(pair->description(), "4 : April");
  pair->setKey("5");
  pair->setValue("May");
  EXPECT_EQ(pair->id(), 5);
  EXPECT_EQ(pair->valueForKey("id"), Value(5));
  EXPECT_EQ(pair->valueForKey("name"), Value("May"));
  EXPECT_EQ(make<NKKeyValuePair>()->description(), "(null) : (null)");
}

TEST(NKKeyValuePair, TheIdIsTheKeysIntegerOf32Bits) {
  EXPECT_EQ(idOf("12"), 12);
  EXPECT_EQ(idOf("abc"), 0);
  EXPECT_EQ(idOf("12 April"), 12) << "the number that the text begins with";
  EXPECT_EQ(idOf("-7"), -7);
  EXPECT_EQ(idOf(""), 0);
  EXPECT_EQ(idOf(12.9_dec), 12);
  EXPECT_EQ(idOf(-2.5), -2);
  EXPECT_EQ(idOf(true), 1);
  EXPECT_EQ(idOf(2147483647), 2147483647);
  EXPECT_EQ(idOf(2147483648), 2147483647) << "the nearest end of the range";
  EXPECT_EQ(idOf(-2147483649), -2147483648);
  EXPECT_EQ(idOf("99999999999"), 2147483647);
  EXPECT_EQ(idOf("-99999999999"), -2147483648);
  EXPECT_EQ(idOf(Value()), 0);
  EXPECT_EQ(idOf(Value::null()), 0);
  EXPECT_EQ(idOf(Date()), 0);
  EXPECT_EQ(idOf(NKKeyValuePair::pairWithKey(1, 2)), 0);
  EXPECT_EQ(idOf(make<Numbered>()), 17);
}

TEST(NKKeyValuePair, PairsFromAnArrayHaveTheElementTwice) {
  const Ref<NSMutableArray> pairs = NKKeyValuePair::pairsFromArray(*NSArray::arrayWithObjects("A", "B"));
  EXPECT_EQ(text(*pairs), "A : A, B : B");
  EXPECT_EQ(NKKeyValuePair::pairsFromArray(*NSArray::array())->count(), 0u);
}

TEST(NKKeyValuePair, PairsFromADictionaryKeepItsOrder) {
  auto months = NSDictionary::dictionaryWith({{5, "May"}, {4, "April"}});
  EXPECT_EQ(text(*NKKeyValuePair::pairsFromDictionary(*months)), "5 : May, 4 : April");
  EXPECT_EQ(text(*keyValuePairs(*months)), "5 : May, 4 : April");
  EXPECT_EQ(keyValuePairs(*NSDictionary::dictionary())->count(), 0u);
}

TEST(NKKeyValuePair, NewPairsAreOfTheReceivingClass) {
  const Ref<OwnPair> pair = NKKeyValuePair::pairWithKey<OwnPair>(1, "a");
  EXPECT_EQ(pair->description(), "1 : a");
  const Class& own = OwnPair::staticClass();
  EXPECT_EQ(NKKeyValuePair::pairWithKey(own, 1, "a")->classObject(), own);
  auto letters = NSArray::arrayWithObjects("A");
  auto entries = NSDictionary::dictionaryWith({{"A", 1}});
  EXPECT_EQ(NKKeyValuePair::pairsFromArray<OwnPair>(*letters)->objectAtIndex(0).classObject(), own);
  EXPECT_EQ(NKKeyValuePair::pairsFromArray(own, *letters)->objectAtIndex(0).classObject(), own);
  EXPECT_EQ(NKKeyValuePair::pairsFromDictionary<OwnPair>(*entries)->objectAtIndex(0).classObject(), own);
  EXPECT_EQ(NKKeyValuePair::pairsFromDictionary(own, *entries)->objectAtIndex(0).classObject(), own);
  EXPECT_THROW(static_cast<void>(NKKeyValuePair::pairWithKey(NSArray::staticClass(), 1, 2)), NSException);
}

TEST(NKKeyValuePair, TheFirstPairWithAnIdIsFound) {
  auto pairs =
      NSArray::arrayWithObjects(NKKeyValuePair::pairWithKey("12", "a"), NKKeyValuePair::pairWithKey("abc", "b"),
                                NKKeyValuePair::pairWithKey(0, "c"), NKKeyValuePair::pairWithKey(12, "d"));
  EXPECT_EQ(NKKeyValuePair::pairWithId(12, *pairs)->name(), Value("a"));
  EXPECT_EQ(NKKeyValuePair::pairWithId(0, *pairs)->name(), Value("b")) << "the first key that is no number";
  EXPECT_EQ(NKKeyValuePair::pairWithId(1, *pairs), nullptr);
  EXPECT_EQ(nk_keyValuePairWithId(*pairs, 12)->name(), Value("a"));
  EXPECT_EQ(nk_keyValuePairWithId(*pairs, 1), nullptr);
  EXPECT_EQ(nk_pairNameWithId(*pairs, 0), Value("b"));
  EXPECT_TRUE(nk_pairNameWithId(*pairs, 1).isAbsent());
  auto mixed = NSArray::arrayWithObjects(NKKeyValuePair::pairWithKey(1, "a"), "no pair");
  EXPECT_EQ(nk_pairNameWithId(*mixed, 1), Value("a"));
  EXPECT_THROW(static_cast<void>(nk_pairNameWithId(*mixed, 2)), NSException);
}

TEST(NKKeyValuePair, IsReadWhileAnotherThreadSetsIt) {
  auto pair = NKKeyValuePair::pairWithKey("a long first text", "a long first text");
  std::thread writer([&] {
    for (int i = 0; i < 1000; ++i) {
      pair->setKey(i % 2 ? "a long second text" : "a long first text");
      pair->setValue(i % 2 ? "a long second text" : "a long first text");
    }
  });
  for (int i = 0; i < 1000; ++i) {
    const NSString key = pair->key().as<NSString>();
    EXPECT_TRUE(key == "a long first text" || key == "a long second text");
  }
  writer.join();
}

}  // namespace
}  // namespace norvik

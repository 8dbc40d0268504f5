#include "NorvikCore/platform/collections/NSDictionary.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

namespace norvik {
namespace {

using norvik::test::nameOfWhatIsRaised;

std::string keys(const NSDictionary& dictionary) { return dictionary.allKeys()->componentsJoinedByString(",").str(); }

TEST(NSDictionary, HeaderExample) {
  Ref<NSDictionary> rates = NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}});
  EXPECT_EQ(rates->objectForKey("basic").as<Decimal>(), 0.20_dec);
  EXPECT_TRUE(rates->objectForKey("top").isAbsent());
  NSString listed;
  for (const auto& [band, rate] : *rates) listed = listed + band.description() + "=" + rate.description() + ";";
  EXPECT_EQ(listed, "basic=0.20;higher=0.40;");
  Decimal sum;
  for (auto [band, rate] : rates->as<NSString, Decimal>()) sum += rate;
  EXPECT_EQ(sum, 0.60_dec);
}

TEST(NSDictionary, FindsByLiteralTextAndEqualNumber) {
  const auto dictionary = NSDictionary::dictionaryWith({{"a", 1}, {5, "five"}, {Value::null(), "null"}});
  EXPECT_EQ((*dictionary)["a"], Value(1));
  EXPECT_EQ((*dictionary)[NSString("a")], Value(1));
  EXPECT_EQ(dictionary->objectForKey(std::string("a")), Value(1));
  EXPECT_EQ((*dictionary)[5.00_dec], Value("five"));
  EXPECT_EQ(dictionary->objectForKey(Value::null()), Value("null"));
  EXPECT_TRUE(dictionary->objectForKey(Value()).isAbsent());
  EXPECT_EQ(dictionary->find("b"), nullptr);
  EXPECT_EQ(*dictionary->find("a"), Value(1));
}

TEST(NSDictionary, OfEqualKeysTheFirstPlaceAndTheLastValueStay) {
  const auto dictionary = NSDictionary::dictionaryWith({{"a", 1}, {"b", 2}, {"a", 3}});
  EXPECT_EQ(keys(*dictionary), "a,b");
  EXPECT_EQ((*dictionary)["a"], Value(3));
}

TEST(NSDictionary, IsMadeFromObjectsAndKeys) {
  const auto dictionary =
      NSDictionary::dictionaryWithObjects(*NSArray::arrayWith({1, 2}), *NSArray::arrayWith({"a", "b"}));
  EXPECT_EQ((*dictionary)["b"], Value(2));
  EXPECT_EQ(NSDictionary::dictionaryWithObject("value", "key")->objectForKey("key"), Value("value"));
  EXPECT_EQ(nameOfWhatIsRaised(
                [] { (void)NSDictionary::dictionaryWithObjects(*NSArray::arrayWith({1}), *NSArray::array()); }),
            "NSInvalidArgumentException");
}

TEST(NSDictionary, AnAbsentKeyOrValueRaises) {
  EXPECT_EQ(nameOfWhatIsRaised([] {
              (void)NSDictionary::dictionaryWith({{Value(), 1}});
            }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfWhatIsRaised([] {
              (void)NSDictionary::dictionaryWith({{"a", Value()}});
            }),
            "NSInvalidArgumentException");
  auto dictionary = NSMutableDictionary::dictionaryWith({{"a", 1}});
  EXPECT_EQ(nameOfWhatIsRaised([&] { dictionary->setObject({}, "a"); }), "NSInvalidArgumentException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { dictionary->setObject(1, {}); }), "NSInvalidArgumentException");
  EXPECT_EQ((*dictionary)["a"], Value(1));
}

TEST(NSDictionary, GivesKeysAndValuesInOrder) {
  const auto dictionary = NSDictionary::dictionaryWith({{"z", 1}, {"a", 2}, {"m", 1}});
  EXPECT_EQ(keys(*dictionary), "z,a,m");
  EXPECT_EQ(dictionary->allValues()->componentsJoinedByString(","), "1,2,1");
  EXPECT_EQ(dictionary->allKeysForObject(1)->componentsJoinedByString(","), "z,m");
  EXPECT_EQ(dictionary->objectsForKeys(*NSArray::arrayWith({"a", "x"}), "none")->componentsJoinedByString(","),
            "2,none");
}

TEST(NSDictionary, EqualityIgnoresTheOrder) {
  const auto a = NSDictionary::dictionaryWith({{"a", 1}, {"b", 2}});
  const auto b = NSMutableDictionary::dictionaryWith({{"b", 2.0}, {"a", 1}});
  EXPECT_TRUE(a->isEqualToDictionary(*b));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_FALSE(a->isEqualToDictionary(*NSDictionary::dictionaryWith({{"a", 1}, {"c", 2}})));
  EXPECT_FALSE(a->isEqualToDictionary(*NSDictionary::dictionaryWith({{"a", 1}, {"b", 3}})));
  EXPECT_FALSE(a->isEqualToDictionary(*NSDictionary::dictionaryWith({{"a", 1}})));
}

TEST(NSDictionary, DescribesItsEntriesLineByLine) {
  EXPECT_EQ(NSDictionary::dictionary()->description(), "{\n}");
  EXPECT_EQ(NSDictionary::dictionaryWith({{"name", "Ann Lee"}, {"hours", NSArray::arrayWith({7, 8})}})->description(),
            "{\n    name = \"Ann Lee\";\n    hours = (\n        7,\n        8\n    );\n}");
}

TEST(NSDictionary, ACopyOfADictionaryThatDoesNotChangeIsItself) {
  const auto dictionary = NSDictionary::dictionaryWith({{"a", 1}});
  EXPECT_EQ(dictionary->copy(), dictionary);
  const auto changed = dictionary->mutableCopy();
  changed->setObject(2, "b");
  EXPECT_EQ(dictionary->count(), 1u);
  const auto copy = changed->copy();
  changed->removeAllObjects();
  EXPECT_EQ(copy->classObject().name(), "NSDictionary");
  EXPECT_EQ(keys(*copy), "a,b");
}

TEST(NSMutableDictionary, HeaderExample) {
  auto totals = NSMutableDictionary::dictionary();
  totals->setObject(1200_dec, "Sales");
  totals->setObject(900_dec, "Stores");
  totals->setObject(1350_dec, "Sales");
  EXPECT_EQ(keys(*totals), "Sales,Stores");
  EXPECT_EQ((*totals)["Sales"], Value(1350));
  totals->removeObjectForKey("Sales");
  EXPECT_EQ(keys(*totals), "Stores");
}

TEST(NSMutableDictionary, AKeyThatComesBackComesLast) {
  auto dictionary = NSMutableDictionary::dictionaryWith({{"a", 1}, {"b", 2}});
  dictionary->removeObjectForKey("a");
  dictionary->removeObjectForKey("x");
  dictionary->setObject(3, "a");
  EXPECT_EQ(keys(*dictionary), "b,a");
}

TEST(NSMutableDictionary, AddsSetsAndRemovesSeveral) {
  auto dictionary = NSMutableDictionary::dictionaryWithCapacity(2);
  dictionary->addEntriesFromDictionary(*NSDictionary::dictionaryWith({{"a", 1}, {"b", 2}, {"c", 3}}));
  dictionary->addEntriesFromDictionary(*dictionary);
  dictionary->removeObjectsForKeys(*NSArray::arrayWith({"a", "c"}));
  EXPECT_EQ(keys(*dictionary), "b");
  dictionary->setDictionary(*dictionary);
  EXPECT_EQ(keys(*dictionary), "b");
  dictionary->setDictionary(*NSDictionary::dictionaryWith({{"z", 1}}));
  EXPECT_EQ(keys(*dictionary), "z");
}

TEST(NSMutableDictionary, ChangesUnderALoopRaise) {
  const struct {
    const char* what;
    void (*change)(NSMutableDictionary&);
  } rows[] = {
      {"new key", [](NSMutableDictionary& d) { d.setObject(1, "new"); }},
      {"value replaced", [](NSMutableDictionary& d) { d.setObject(1, "a"); }},
      {"removed", [](NSMutableDictionary& d) { d.removeObjectForKey("b"); }},
      {"all removed", [](NSMutableDictionary& d) { d.removeAllObjects(); }},
  };
  for (const auto& row : rows) {
    auto dictionary = NSMutableDictionary::dictionaryWith({{"a", 1}, {"b", 2}});
    EXPECT_EQ(nameOfWhatIsRaised([&] {
                for ([[maybe_unused]] const auto& entry : *dictionary) row.change(*dictionary);
              }),
              "NSGenericException")
        << row.what;
  }
}

// Removing the key 0 leaves a gap, and the hash of 0 equals that of the absent key.
TEST(NSMutableDictionary, TheAbsentKeyIsNotFoundWhereAnEntryWasRemoved) {
  for (const int others : {1, 5, 50}) {
    const auto dictionary = NSMutableDictionary::dictionaryWith({{0, "a"}});
    for (int i = 1; i <= others; ++i) dictionary->setObject("b", i);
    dictionary->removeObjectForKey(0);
    EXPECT_EQ(dictionary->find(Value()), nullptr) << others;
    EXPECT_TRUE(dictionary->objectForKey(Value()).isAbsent());
    EXPECT_EQ(nameOfWhatIsRaised([&] { dictionary->setObject("c", Value()); }), "NSInvalidArgumentException");
    EXPECT_EQ(dictionary->count(), static_cast<std::size_t>(others));
  }
}

TEST(NSMutableDictionary, RemovingTheAbsentKeyRemovesNothing) {
  const auto dictionary = NSMutableDictionary::dictionaryWith({{0, "a"}, {12345, "b"}});
  dictionary->removeObjectForKey(0);  // leaves a gap, whose hash equals that of the absent key
  dictionary->removeObjectForKey(Value());
  EXPECT_EQ(dictionary->count(), 1U);
  EXPECT_EQ(dictionary->objectForKey(12345), Value("b"));
  for (const auto& [key, object] : *dictionary) EXPECT_EQ(key, Value(12345));
}

TEST(NSMutableDictionary, RemovingWhatIsNotThereUnderALoopIsNoChange) {
  auto dictionary = NSMutableDictionary::dictionaryWith({{"a", 1}, {"b", 2}});
  int rounds = 0;
  for ([[maybe_unused]] const auto& entry : *dictionary) {
    dictionary->removeObjectForKey("x");
    ++rounds;
  }
  EXPECT_EQ(rounds, 2);
}

TEST(NSMutableDictionary, AgreesWithAModelAfterAnySteps) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::mt19937 random(seed);
    const auto upTo = [&](unsigned bound) { return static_cast<int>(random() % bound); };
    const unsigned range = seed % 4 == 0 ? 2000u : seed % 4 == 1 ? 6u : 40u;
    auto dictionary = NSMutableDictionary::dictionary();
    std::vector<std::pair<int, int>> model;
    const auto inModel = [&](int key) {
      return std::find_if(model.begin(), model.end(), [&](const auto& entry) { return entry.first == key; });
    };
    for (int step = 0; step < 3000; ++step) {
      const int key = upTo(range), value = upTo(100);
      const auto found = inModel(key);
      if (upTo(5) < 3) {
        dictionary->setObject(value, key);
        if (found == model.end()) {
          model.emplace_back(key, value);
        } else {
          found->second = value;
        }
      } else {
        dictionary->removeObjectForKey(key);
        if (found != model.end()) model.erase(found);
      }
      if (step == 2000) {
        while (model.size() > 3) {
          dictionary->removeObjectForKey(model.front().first);
          model.erase(model.begin());
        }
      }
    }
    ASSERT_EQ(dictionary->count(), model.size());
    std::size_t position = 0;
    for (const auto& [key, value] : *dictionary) {
      ASSERT_LT(position, model.size());
      ASSERT_EQ(key.as<int>(), model[position].first);
      ASSERT_EQ(value.as<int>(), model[position].second);
      ++position;
    }
    ASSERT_EQ(position, model.size());
    for (int key = 0; key < static_cast<int>(range); ++key) {
      const auto found = inModel(key);
      const Value* value = dictionary->find(key);
      ASSERT_EQ(value != nullptr, found != model.end());
    }
  }
}

class BadHash : public NSObject {
  NK_OBJECT(BadHash, NSObject)
  explicit BadHash(int number = 0) : number_(number) {}
  bool isEqual(const NSObject& other) const override {
    const auto* same = dynamic_cast<const BadHash*>(&other);
    return same && same->number_ == number_;
  }
  std::size_t hash() const override { return 1; }

 private:
  int number_;
};

TEST(NSMutableDictionary, KeysWithOneHashAreToldApart) {
  auto dictionary = NSMutableDictionary::dictionary();
  for (int i = 0; i < 100; ++i) dictionary->setObject(i, make<BadHash>(i));
  for (int i = 0; i < 100; i += 2) dictionary->removeObjectForKey(make<BadHash>(i));
  EXPECT_EQ(dictionary->count(), 50u);
  EXPECT_EQ(dictionary->objectForKey(make<BadHash>(77)), Value(77));
  EXPECT_TRUE(dictionary->objectForKey(make<BadHash>(76)).isAbsent());
}

}  // namespace
}  // namespace norvik

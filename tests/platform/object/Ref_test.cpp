#include "NorvikCore/platform/object/Ref.h"

#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/SEL.h"
#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSRange.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace norvik {
namespace {

class KeyedPayslip : public NSObject {
  NK_OBJECT(KeyedPayslip, NSObject)
  explicit KeyedPayslip(int number = 0) noexcept : number_(number) {}
  [[nodiscard]] bool isEqual(const NSObject& other) const override {
    const auto* slip = dynamic_cast<const KeyedPayslip*>(&other);
    return slip && slip->number_ == number_;
  }
  [[nodiscard]] std::size_t hash() const override { return static_cast<std::size_t>(number_); }

 private:
  int number_;
};

class KeyedOther : public NSObject {
  NK_OBJECT(KeyedOther, NSObject)
};

TEST(Ref, HeaderExample) {
  Ref<KeyedPayslip> slip = make<KeyedPayslip>();
  Ref<NSObject> same = slip;
  EXPECT_EQ(slip, same);
}

TEST(Ref, IsAKeyByIdentity) {
  const auto a = make<KeyedPayslip>(7), equal = make<KeyedPayslip>(7);
  ASSERT_TRUE(a->isEqual(*equal));
  std::map<Ref<KeyedPayslip>, int> ordered{{a, 1}, {equal, 2}, {nullptr, 3}};
  std::unordered_map<Ref<KeyedPayslip>, int> hashed{{a, 1}, {equal, 2}, {nullptr, 3}};
  EXPECT_EQ(ordered.size(), 3u);
  EXPECT_EQ(hashed.size(), 3u);
  EXPECT_EQ(ordered.begin()->first, nullptr) << "an empty Ref is the first";
  EXPECT_EQ(ordered.at(equal), 2);
  EXPECT_EQ(hashed.at(equal), 2);
  // A Value is a key by isEqual.
  EXPECT_EQ((std::unordered_set<Value>{a, equal}.size()), 1u);
  // A Ref may be a part of a key.
  const std::set<std::tuple<Ref<KeyedPayslip>, int>> parts{{a, 1}, {a, 2}, {a, 1}};
  EXPECT_EQ(parts.size(), 2u);
}

TEST(Ref, RefsOfRelatedClassesAreInOneOrder) {
  const Ref<KeyedPayslip> slip = make<KeyedPayslip>();
  const Ref<NSObject> object = slip, other = make<KeyedOther>();
  EXPECT_TRUE((slip <=> object) == 0);
  EXPECT_EQ(slip < other, object < other);
  EXPECT_NE(slip<other, slip> other);
  const std::set<Ref<NSObject>, std::less<>> refs{object};
  EXPECT_TRUE(refs.contains(slip));
}

template <class A, class B>
concept Ordered = requires(const A& a, const B& b) {
  a < b;
};
template <class A, class B>
concept Equated = requires(const A& a, const B& b) {
  a == b;
};

TEST(Ref, UnrelatedTypesDoNotCompare) {
  static_assert(Ordered<Ref<KeyedPayslip>, Ref<NSObject>> && Ordered<Ref<const NSObject>, Ref<KeyedPayslip>>);
  static_assert(!Ordered<Ref<KeyedPayslip>, Ref<KeyedOther>> && !Equated<Ref<KeyedPayslip>, Ref<KeyedOther>>);
  static_assert(!Ordered<Ref<KeyedPayslip>, Value> && !Ordered<Value, Value> && !Ordered<Value, int>);
  static_assert(!Ordered<Ref<KeyedPayslip>, KeyedPayslip*> && !Ordered<Ref<KeyedPayslip>, std::nullptr_t>);
  static_assert(!Ordered<SEL, NSRange> && !Ordered<Weak<KeyedPayslip>, Weak<KeyedOther>>);
  static_assert(!Ordered<Block<void()>, Block<int()>> && !Equated<Block<void()>, Block<int()>>);
}

/// Each of the keys is found, in both maps, by an equal one and by no other.
template <class Key, std::size_t N>
void expectKeys(const Key (&different)[N], const Key& equalToFirst) {
  ASSERT_TRUE(different[0] == equalToFirst);
  EXPECT_EQ(std::hash<Key>()(different[0]), std::hash<Key>()(equalToFirst));
  std::unordered_map<Key, std::size_t> hashed;
  for (std::size_t i = 0; i < N; ++i) EXPECT_TRUE(hashed.emplace(different[i], i).second) << i;
  EXPECT_EQ(hashed.at(equalToFirst), 0u);
  if constexpr (Ordered<Key, Key>) {
    std::map<Key, std::size_t> ordered;
    for (std::size_t i = 0; i < N; ++i) EXPECT_TRUE(ordered.emplace(different[i], i).second) << i;
    EXPECT_EQ(ordered.at(equalToFirst), 0u);
    for (std::size_t i = 0; i < N; ++i) EXPECT_EQ(ordered.at(different[i]), i);
  }
}

TEST(Keys, EveryValueTypeIsAKey) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  expectKeys<Decimal>({5_dec, -5_dec, 0_dec, Decimal::notANumber(), 1E100_dec}, 5.00_dec);
  expectKeys<Decimal>({Decimal::notANumber(), 0_dec}, Decimal::notANumber());
  expectKeys<Date>({Date::fromReferenceSeconds(0.0), Date::fromReferenceSeconds(1), Date::fromReferenceSeconds(nan)},
                   Date::fromReferenceSeconds(-0.0));
  expectKeys<Date>({Date::fromReferenceSeconds(nan), Date()}, Date::fromReferenceSeconds(-nan));
  expectKeys<NSString>({"Zo\u00EB", "", "Zoe\u0308"}, NSString::fromUtf16(u"Zo\u00EB"));
  expectKeys<NSRange>({NSRange{1, 2}, NSRange{2, 1}, NSRange{}}, NSRange{1, 2});
  expectKeys<NSNumber>({1, 0, -1, 0.1, nan, std::numeric_limits<std::uint64_t>::max()}, true);
  expectKeys<NSNumber>({0.1, 0.1000000000000000001_dec}, 0.10_dec);
  expectKeys<SEL>({SEL("run:"), SEL("run"), SEL()}, SEL(std::string("run:")));
  expectKeys<Value>({Value(5), Value("5"), Value(Date()), Value(), Value::null()}, Value(5.00_dec));
}

TEST(Keys, WeakReferencesAndBlocksAreKeysByIdentity) {
  auto slip = make<KeyedPayslip>(1);
  const auto other = make<KeyedPayslip>(1);
  const Weak<KeyedPayslip> weak = slip;
  expectKeys<Weak<KeyedPayslip>>({weak, Weak<KeyedPayslip>(other), Weak<KeyedPayslip>()}, Weak<KeyedPayslip>(slip));
  std::map<Weak<KeyedPayslip>, int> notes{{weak, 1}, {other, 2}};
  slip = nullptr;
  EXPECT_EQ(notes.at(weak), 1) << "also once the object is destroyed";
  EXPECT_TRUE(notes.find(weak)->first.isGone());

  const Block<void()> block = [] {}, another = [] {};
  expectKeys<Block<void()>>({block, another, Block<void()>()}, Block<void()>(block));
}

TEST(Keys, TheOrderOfKeysAgreesWithTheirEquality) {
  const std::vector<NSNumber> numbers{1,
                                      true,
                                      1.0,
                                      1.00_dec,
                                      0.1,
                                      0.1_dec,
                                      -3,
                                      1e300,
                                      std::numeric_limits<double>::quiet_NaN(),
                                      -std::numeric_limits<double>::infinity(),
                                      Decimal::notANumber()};
  for (const NSNumber& a : numbers) {
    for (const NSNumber& b : numbers) {
      EXPECT_EQ(a == b, !(a < b) && !(b < a)) << a << " " << b;
      if (a == b) {
        EXPECT_EQ(a.hash(), b.hash()) << a << " " << b;
      }
    }
  }
}

}  // namespace
}  // namespace norvik

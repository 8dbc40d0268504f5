// Chains of queries. A chain must have the same result as its queries called one after the other.
#include "NorvikCore/linq/Chain.h"

#include "NorvikCore/linq/LINQ.h"

#include "Payslips.h"

#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

namespace norvik {
namespace {

const auto isPositive = [](const Decimal& number) { return number > 0; };

struct Line {
  NSString name;
  Decimal amount;
  bool isPaid = true;
  [[nodiscard]] Decimal doubled() const { return amount + amount; }
};

std::vector<Line> lines() { return {{"Basic", 10.10_dec}, {"Bonus", 20.20_dec, false}, {"Extra", 30.30_dec}}; }

Ref<NSArray> slips() {
  return NSArray::arrayWithObjects(linqPayslip("Ann", "Works", 10.10_dec), linqPayslip("Bob", "Sales", {}),
                                   linqPayslip("Cid", "Works", 20.20_dec), linqPayslip("Dan", "Sales", 5_dec));
}
const auto isPaid = [](const LinqPayslip& slip) { return slip.netPay().has_value(); };

TEST(Chain, ReadsFromLeftToRight) {
  const Ref<NSArray> payslips = slips();
  EXPECT_EQ(payslips | linq_where(isPaid) | linq_select(&LinqPayslip::netPay) | linq_sum(), Value(35.30_dec));
  EXPECT_EQ(*payslips | linq_where(isPaid) | linq_select(&LinqPayslip::netPay) | linq_max(), Value(20.20_dec));
  EXPECT_EQ(slips() | linq_where(isPaid) | linq_select(&LinqPayslip::netPay) | linq_min(), Value(5));
  EXPECT_EQ(*slips() | linq_where(isPaid) | linq_select(&LinqPayslip::name) | linq_count(nullptr), 3u);
  const Decimal average = payslips | linq_where(isPaid) | linq_select(&LinqPayslip::netPay) | linq_avg();
  EXPECT_EQ(average, Decimal(35.30_dec) / 3_dec);
}

TEST(Chain, EndsInTheCollectionThatTheLastQueryGives) {
  const Ref<NSArray> payslips = slips();
  const Ref<NSMutableArray> paid = payslips | linq_where(isPaid);
  EXPECT_EQ(text(paid), "[Ann, Cid, Dan]");
  const Ref<NSArray> alsoPaid = payslips | linq_where(isPaid);
  EXPECT_TRUE(isMutable(alsoPaid));
  const Ref<NSArray> names = payslips | linq_where(isPaid) | linq_select(&LinqPayslip::name);
  EXPECT_EQ(text(names), "[Ann, Cid, Dan]");
  EXPECT_FALSE(isMutable(names));
  EXPECT_EQ(text(payslips | linq_select(&LinqPayslip::name) | linq_toArray()), "[Ann, Bob, Cid, Dan]");
  EXPECT_EQ(text(payslips | linq_where(isPaid) | linq_groupBy(&LinqPayslip::department)),
            "{Works: [Ann, Cid], Sales: [Dan]}");
  EXPECT_EQ(text(payslips | linq_orderByKey("netPay", false) | linq_select(&LinqPayslip::name) | linq_toArray()),
            "[Cid, Ann, Dan, Bob]");
  EXPECT_EQ(text(payslips | linq_toDictionaryWithKeyBlock(&LinqPayslip::name, &LinqPayslip::netPay)),
            "{Ann: 10.10, Bob: <null>, Cid: 20.20, Dan: 5}");
  EXPECT_EQ(text(payslips | linq_toDictionaryWithKeyBlock(&LinqPayslip::department)), "{Works: Cid, Sales: Dan}");
  EXPECT_EQ(text(payslips | linq_select(&LinqPayslip::name) | linq_toDictionary()), "{0: Ann, 1: Bob, 2: Cid, 3: Dan}");
}

TEST(Chain, EveryQueryOverArraysIsAStep) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(3, 1, 2, 3), other = NSArray::arrayWithObjects(3, 9);
  EXPECT_EQ(text(numbers | linq_distinct()), "[3, 1, 2]");
  EXPECT_EQ(text(numbers | linq_distinctWithBlock([](int each) { return each % 2; })), "[3, 2]");
  EXPECT_EQ(text(numbers | linq_except(other)), "[1, 2]");
  EXPECT_EQ(text(numbers | linq_intersect(other)), "[3]");
  EXPECT_EQ(text(numbers | linq_union(other)), "[3, 1, 2, 9]");
  EXPECT_EQ(text(numbers | linq_orderByAscending()), "[1, 2, 3, 3]");
  EXPECT_EQ(text(numbers | linq_orderByDescending()), "[3, 3, 2, 1]");
  EXPECT_EQ(text(numbers | linq_reverse()), "[3, 2, 1, 3]");
  EXPECT_EQ(text(numbers | linq_skip(1) | linq_toArray()), "[1, 2, 3]");
  EXPECT_EQ(text(numbers | linq_take(3)), "[3, 1, 2]");
  EXPECT_EQ(text(numbers | linq_take(4)), "[]") << "deliberate";
  EXPECT_EQ(text(numbers | linq_where(isPositive) | linq_take(4)), "[]") << "deliberate";
  EXPECT_EQ(text(numbers | linq_where(isPositive) | linq_take(3)), "[3, 1, 2]");
  EXPECT_EQ(text(numbers | linq_selectMany([](int each) { return linq_from(0, each); }) | linq_toArray()),
            "[0, 1, 2, 3, 0, 1, 0, 1, 2, 0, 1, 2, 3]");
  EXPECT_EQ(text(numbers | linq_toLookup([](int each) { return each * 2; }) | linq_lookup(6)), "[{6: 3}, {6: 3}]");
  EXPECT_TRUE(numbers | linq_all(isPositive));
  EXPECT_FALSE(numbers | linq_any([](int each) { return each > 3; }));
  EXPECT_EQ(numbers | linq_firstOrNil([](int each) { return each < 3; }), Value(1));
  EXPECT_EQ(numbers | linq_count([](int each) { return each == 3; }), 2u);
  EXPECT_EQ(numbers | linq_where([](int each) { return each == 3; }) | linq_count(), 2u);
  EXPECT_EQ(numbers | linq_aggregate([](int next, int running) { return running * 10 + next; }), Value(3123));
  EXPECT_EQ(text(NSArray::arrayWithObjects(1, "a") | linq_ofType<NSString>() | linq_toArray()), "[a]");
  const Ref<NSArray> payslips = slips();
  EXPECT_EQ(payslips | linq_where(isPaid) | linq_sumForKey("netPay"), 35.30_dec);
  EXPECT_EQ(payslips | linq_skip(3) | linq_avgForKey("netPay"), 5_dec);
  EXPECT_EQ(payslips | linq_maxForKey("netPay"), Value(20.20_dec));
  EXPECT_EQ(payslips | linq_minForKey("netPay"), Value(5));
}

TEST(Chain, EveryQueryOverDictionariesIsAStep) {
  const Ref<NSDictionary> rates = NSDictionary::dictionaryWith({{"a", 1}, {"b", 2}, {"c", 2}, {"d", 4}});
  const Ref<NSDictionary> other = NSDictionary::dictionaryWith({{"a", 2}, {"z", 3}});
  EXPECT_EQ(rates | linq_where([](const NSString& key, int) { return key != "d"; }) | linq_sum(), Value(5));
  EXPECT_EQ(text(*rates | linq_whereKey([](const NSString& key) { return key == "a"; })), "{a: 1}");
  EXPECT_EQ(text(rates | linq_whereValue([](int value) { return value == 2; })), "{b: 2, c: 2}");
  EXPECT_EQ(text(rates | linq_ofTypeKey<NSString>() | linq_ofTypeValue<NSString>()), "{}");
  EXPECT_EQ(text(rates | linq_distinct()), "{a: 1, b: 2, d: 4}");
  EXPECT_EQ(text(rates | linq_except(other)), "{a: 1, d: 4}");
  EXPECT_EQ(text(rates | linq_intersect(other)), "{b: 2}");
  EXPECT_EQ(text(rates | linq_merge(other)), "{a: 1, b: 2, c: 2, d: 4, z: 3}");
  EXPECT_EQ(text(rates | linq_skip(1) | linq_take(2)), "{b: 2, c: 2}");
  EXPECT_EQ(text(rates | linq_toArray() | linq_distinct()), "[1, 2, 4]");
  EXPECT_EQ(text(rates | linq_toArrayWhereKey([](const NSString& key) { return key < "c"; })), "[1, 2]");
  EXPECT_EQ(text(rates | linq_toArrayWhereValue([](int value) { return value > 1; })), "[2, 2, 4]");
  EXPECT_EQ(text(rates | linq_toArrayWhereKeyValue([](const Value&, int value) { return value > 2; })), "[4]");
  EXPECT_TRUE(rates | linq_all([](const Value&, int value) { return value > 0; }));
  EXPECT_TRUE(rates | linq_any([](const Value&, int value) { return value == 4; }));
  EXPECT_EQ(rates | linq_count([](int value) { return value == 2; }), 2u);
  EXPECT_EQ(rates | linq_avg(), 2.25_dec);
  EXPECT_EQ(rates | linq_max(), Value(4));
  EXPECT_EQ(rates | linq_min(), Value(1));
  EXPECT_EQ(rates | linq_aggregate([](int next, int running) { return next + running; }), Value(9));
}

TEST(Chain, KeepsTheIdentityOfTheReceiver) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(1, 2);
  const Block<bool(const Value&)> none;
  EXPECT_EQ(numbers | linq_where(nullptr), numbers);
  EXPECT_EQ(numbers | linq_where(none) | linq_where(nullptr), numbers);
  EXPECT_EQ(numbers | linq_intersect(nullptr), numbers);
  EXPECT_EQ(numbers | linq_union(NSArray::array()), numbers);
  EXPECT_TRUE((numbers | linq_aggregate(nullptr)).isIdenticalTo(numbers));
  EXPECT_EQ(NSArray::array() | linq_union(nullptr), nullptr);
  EXPECT_EQ((numbers->mutableCopy() | linq_select(nullptr))->classObject(), NSMutableArray::staticClass());
}

TEST(Chain, BeginsWithTheArrayThatAValueHolds) {
  const Ref<NSArray> payslips = slips();
  std::string found;
  const Ref<NSDictionary> groups = linq_groupBy(*payslips, &LinqPayslip::department);
  for (const auto& [department, group] : *groups) {
    found += text(department) + " " + text(group | linq_where(isPaid) | linq_sumForKey("netPay")) + "; ";
  }
  EXPECT_EQ(found, "Works 30.30; Sales 5; ");
  EXPECT_EQ(Value(payslips) | linq_where(nullptr), payslips);
  for (const Value& none : {Value(), Value::null(), Value("a"), Value(NSDictionary::dictionary())}) {
    EXPECT_EQ(nameOfRaised([&] { static_cast<void>(none | linq_sum()); }), "NSInvalidArgumentException");
  }
}

TEST(Chain, AnEmptyRefRaises) {
  const Ref<NSArray> none;
  const Ref<NSDictionary> noDictionary;
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(none | linq_sum()); }), "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(none | linq_where(isPositive) | linq_sum()); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(noDictionary | linq_sum()); }), "NSInvalidArgumentException");
}

TEST(Chain, ASingleElementIsItsOwnSum) {
  EXPECT_EQ((NSArray::arrayWithObjects(5) | linq_where(isPositive) | linq_sum()).kind(), Value::Kind::Integer);
  EXPECT_EQ(NSArray::arrayWithObjects("a") | linq_where([](const Value&) { return true; }) | linq_sum(), Value("a"));
  EXPECT_EQ((NSArray::arrayWithObjects(5) | linq_select([](int) { return 2.5; }) | linq_sum()).kind(),
            Value::Kind::Double);
  EXPECT_EQ((NSArray::array() | linq_where(isPositive) | linq_sum()).kind(), Value::Kind::Decimal);
  EXPECT_EQ(text(NSArray::arrayWithObjects(1) | linq_select([](int) { return 1.50_dec; }) | linq_sum()), "1.50");
}

TEST(Chain, NothingIsTheNullMarkerForTheStepsBehind) {
  const Ref<NSArray> payslips = slips();
  EXPECT_EQ(text(payslips | linq_select(&LinqPayslip::netPay) | linq_toArray()), "[10.10, <null>, 20.20, 5]");
  EXPECT_EQ(payslips | linq_select(&LinqPayslip::netPay) | linq_count([](const Value& pay) { return pay.isNull(); }),
            1u);
  EXPECT_EQ(payslips | linq_select([](const Value&) { return nullptr; }) |
                linq_where([](const auto& each) { return each.isNull(); }) | linq_count(nullptr),
            4u);
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(payslips | linq_select(&LinqPayslip::netPay) | linq_sum()); }),
            "NSInvalidArgumentException");
}

TEST(Chain, AClosureGetsWhatItAsksForWhateverTheStepBeforeGave) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(1, 2);
  EXPECT_EQ(text(numbers | linq_select([](int each) { return each * 1.5; }) |
                 linq_where([](const Decimal& each) { return each == 1.5_dec; }) | linq_toArray()),
            "[1.5]");
  EXPECT_EQ(text(numbers | linq_select([](int each) { return each * 1.5; }) |
                 linq_select([](std::int64_t each) { return each; }) | linq_toArray()),
            "[1, 3]");
  EXPECT_EQ(nameOfRaised([&] {
              static_cast<void>(numbers | linq_select([](int) { return 1e300; }) |
                                linq_select([](int each) { return each; }) | linq_toArray());
            }),
            "NSInvalidArgumentException")
      << "as the query has it, not as C++ converts";
  EXPECT_EQ(text(numbers | linq_select([](int each) { return std::string(static_cast<std::size_t>(each), 'x'); }) |
                 linq_select([](const NSString& each) { return each.length(); }) | linq_toArray()),
            "[1, 2]");
}

TEST(Chain, CallsEachClosureForTheElementsThatTheQueriesWould) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(1, 2, 3, 4, 5);
  std::string asked, made, looked;
  EXPECT_EQ(numbers | linq_where([&](int each) { return asked += std::to_string(each), each != 2; }) |
                linq_select([&](int each) { return made += std::to_string(each), each * 2; }) |
                linq_firstOrNil([&](int each) { return looked += std::to_string(each), each >= 6; }),
            Value(6));
  EXPECT_EQ(asked, "12345");
  EXPECT_EQ(made, "1345") << "the step that found what it looked for does not end those before it";
  EXPECT_EQ(looked, "26");
  asked.clear();
  EXPECT_EQ(numbers | linq_skip(1) | linq_firstOrNil([&](int each) { return asked += std::to_string(each), true; }),
            Value(2));
  EXPECT_EQ(asked, "2");
}

TEST(Chain, TheExceptionThatLeavesItIsTheOneOfTheFirstStepThatRaises) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(1, 2, 3);
  const auto raise = [](const char* name) -> bool { throw NSException(name, ""); };
  int calls = 0;
  EXPECT_EQ(nameOfRaised([&] {
              static_cast<void>(numbers | linq_where([&](int each) { return ++calls, each < 3 || raise("first"); }) |
                                linq_select([&](int each) { return each == 1 ? raise("second") : each > 0; }) |
                                linq_count([&](const Value&) { return raise("third"); }));
            }),
            "first");
  EXPECT_EQ(calls, 3);
  calls = 0;
  EXPECT_EQ(nameOfRaised([&] {
              static_cast<void>(numbers | linq_where([&](int) { return ++calls > 0; }) |
                                linq_select([&](int each) { return each == 1 ? raise("second") : each > 0; }) |
                                linq_toArray());
            }),
            "second");
  EXPECT_EQ(calls, 3) << "the first step ends before the second one's exception is noticed";
}

TEST(Chain, AClosureThatChangesTheArrayRaises) {
  for (int position = 1; position <= 3; ++position) {
    auto numbers = NSMutableArray::arrayWithObjects(1, 2, 3);
    const auto change = [&](const Value& each) {
      if (each == Value(position)) numbers->setArray(*NSArray::arrayWithObjects("a longer text than fits"));
      return true;
    };
    EXPECT_EQ(nameOfRaised([&] { static_cast<void>(numbers | linq_where(change) | linq_count(nullptr)); }),
              "NSGenericException");
    numbers = NSMutableArray::arrayWithObjects(1, 2, 3);
    EXPECT_EQ(nameOfRaised([&] { static_cast<void>(numbers | linq_skip(0) | linq_firstOrNil(change)); }),
              position == 1 ? "NSGenericException" : "nothing raised");
    numbers = NSMutableArray::arrayWithObjects(1, 2, 3);
    EXPECT_EQ(nameOfRaised([&] {
                static_cast<void>(numbers | linq_skip(0) | linq_where([](const Value&) { return true; }) |
                                  linq_where(change) | linq_toArray());
              }),
              "NSGenericException")
        << "also in a later step";
  }
}

TEST(Chain, KeepsTheArrayItBeganWith) {
  auto numbers = NSMutableArray::arrayWithObjects(1, 2, 3);
  const NSArray& receiver = *numbers;
  EXPECT_EQ(text(receiver | linq_where([&](const Value&) {
                   numbers = nullptr;
                   return true;
                 }) |
                 linq_toArray()),
            "[1, 2, 3]");
}

TEST(ChainOverRanges, TheElementsAreTheRangesOwn) {
  const std::vector<Line> all = lines();
  EXPECT_EQ(all | linq_where(&Line::isPaid) | linq_select(&Line::amount) | linq_sum(), Value(40.40_dec));
  EXPECT_EQ(all | linq_where([](const Line& line) { return line.name != "Basic"; }) | linq_select(&Line::doubled) |
                linq_avg(),
            50.50_dec);
  EXPECT_EQ(all | linq_count([](const auto& line) { return line.amount > 15; }), 2u);
  EXPECT_TRUE(all | linq_any([](const Line& line) { return line.name == "Bonus"; }));
  EXPECT_FALSE(all | linq_all(&Line::isPaid));
  const std::vector<Line> paid = all | linq_where(&Line::isPaid);
  ASSERT_EQ(paid.size(), 2u);
  EXPECT_EQ(paid[1].name, "Extra");
  const std::optional<Line> bonus = all | linq_firstOrNil([](const Line& line) { return !line.isPaid; });
  ASSERT_TRUE(bonus);
  EXPECT_EQ(bonus->name, "Bonus");
  EXPECT_FALSE(all | linq_firstOrNil([](const Line& line) { return line.name.empty(); }));
}

TEST(ChainOverRanges, AnyRangeBegins) {
  const int numbers[] = {3, 1, 2};
  EXPECT_EQ(numbers | linq_max(), Value(3));
  EXPECT_EQ(std::vector<Decimal>({0.10_dec, 0.20_dec}) | linq_sum(), Value(0.30_dec));
  EXPECT_EQ(std::list<NSString>({"b", "a"}) | linq_min(), Value("a"));
  EXPECT_EQ(text(lines() | linq_select(&Line::name) | linq_orderByDescending()), "[Extra, Bonus, Basic]");
  EXPECT_EQ(std::vector<bool>({true, false, true}) | linq_count([](bool each) { return each; }), 2u);
  EXPECT_EQ(std::vector<Ref<LinqPayslip>>({linqPayslip("Ann", "Works", 5_dec)}) | linq_where(isPaid) |
                linq_select(&LinqPayslip::netPay) | linq_sum(),
            Value(5));
  const Ref<NSArray> payslips = slips();
  EXPECT_EQ(text(payslips->as<LinqPayslip>() | linq_where(isPaid) | linq_toArray()), "[Ann, Cid, Dan]");
  std::vector<std::string> words = {"a", "bb"};
  EXPECT_EQ(words | linq_where([](std::string_view word) { return word.size() > 1; }) |
                linq_select([](const std::string& word) { return word + "!"; }) |
                linq_where([](const std::string& word) { return word == "bb!"; }) | linq_count(nullptr),
            1u);
}

TEST(ChainOverRanges, GroupsElementsThatAreNoValues) {
  std::vector<Line> all = lines();
  all.push_back({"Bonus", 5_dec});
  std::string found;
  for (const auto& [name, group] : all | linq_groupBy(&Line::name)) {
    found += text(name) + " " + text(group | linq_select(&Line::amount) | linq_sum()) + "; ";
  }
  EXPECT_EQ(found, "Basic 10.10; Bonus 25.20; Extra 30.30; ");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(all | linq_groupBy([](const Line&) { return nullptr; })); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(all | linq_groupBy(Block<Value(const Line&)>())); }),
            "NSInvalidArgumentException");
  const std::vector<Line> first = all | linq_distinctWithBlock(&Line::name);
  EXPECT_EQ(first.size(), 3u);
  EXPECT_EQ(first[1].amount, 20.20_dec);
  EXPECT_EQ(all | linq_distinctWithBlock([](const Line&) { return nullptr; }) | linq_count(nullptr), 0u);
}

TEST(ChainOverRanges, MeansWhatItMeansOverArrays) {
  const std::vector<int> numbers = {1, 2, 3};
  EXPECT_EQ(text(numbers | linq_take(3) | linq_toArray()), "[]") << "deliberate";
  EXPECT_EQ(text(numbers | linq_take(2) | linq_toArray()), "[1, 2]");
  EXPECT_EQ(text(numbers | linq_take(0) | linq_toArray()), "[]");
  EXPECT_EQ(text(numbers | linq_skip(1) | linq_take(1) | linq_toArray()), "[2]");
  const std::vector<Line> all = lines();
  EXPECT_EQ((all | linq_take(2) | linq_where(&Line::isPaid) | linq_count(nullptr)), 1u);
  EXPECT_EQ(std::vector<Line>(all | linq_take(3)).size(), 0u);
  const Block<bool(const Value&)> none;
  EXPECT_EQ(text(numbers | linq_where(nullptr) | linq_where(none) | linq_toArray()), "[1, 2, 3]");
  EXPECT_EQ(text(numbers | linq_select(Block<Value(const Value&)>()) | linq_toArray()), "[]");
  EXPECT_TRUE(numbers | linq_all(nullptr));
  EXPECT_FALSE(numbers | linq_any(nullptr));
  EXPECT_TRUE((numbers | linq_where(nullptr) | linq_firstOrNil(nullptr)) == std::nullopt);
  EXPECT_EQ((std::vector<int>{5} | linq_sum()).kind(), Value::Kind::Integer) << "a single element is its own sum";
  EXPECT_EQ((numbers | linq_sum()).kind(), Value::Kind::Decimal);
  EXPECT_EQ((std::vector<int>() | linq_sum()).kind(), Value::Kind::Decimal);
  EXPECT_EQ(std::vector<double>({0.1, 0.2}) | linq_sum(), Value(0.3_dec)) << "never in binary";
  EXPECT_EQ(
      text(numbers | linq_select([](int each) { return each == 2 ? std::optional<int>() : each; }) | linq_toArray()),
      "[1, <null>, 3]");
  EXPECT_EQ(text(numbers | linq_groupBy([](int each) { return each % 2; })), "{1: [1, 3], 0: [2]}");
}

}  // namespace
}  // namespace norvik

// Queries over dictionaries, with one suite for each group of operations.
#include "NorvikCore/linq/LINQ.h"

#include "Payslips.h"

#include <limits>

namespace norvik {
namespace {

const Block<bool(const Value&)> noPredicate;
const Block<bool(const Value&, const Value&)> noEntryPredicate;

class LinqOwnDictionary : public NSDictionary {
  NK_OBJECT(LinqOwnDictionary, NSDictionary)
};
class LinqOwnMutableDictionary : public NSMutableDictionary {
  NK_OBJECT(LinqOwnMutableDictionary, NSMutableDictionary)
};

Ref<NSDictionary> rates() {
  return NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}, {"none", 0}, {7, "seven"}});
}

TEST(NSDictionaryLINQ_Filtering, WhereAsksForKeyAndValue) {
  auto bands = NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}, {"none", 0}});
  const Ref<NSMutableDictionary> chosen =
      linq_where(*bands, [](const NSString& band, const Decimal& rate) { return rate > 0 && band != "basic"; });
  EXPECT_EQ(text(chosen), "{higher: 0.40}");
  EXPECT_EQ(text(linq_where(*bands, [](const Value&, const Value& rate) { return rate != Value(0.40_dec); })),
            "{basic: 0.20, none: 0}");
  EXPECT_EQ(linq_where(*bands, nullptr), bands);
  EXPECT_EQ(linq_where(*bands, noEntryPredicate), bands);
  EXPECT_EQ(text(linq_where(*NSDictionary::dictionary(), [](const Value&, const Value&) { return true; })), "{}");
}

TEST(NSDictionaryLINQ_Filtering, WhereKeyAndWhereValueAskForOne) {
  auto entries = rates();
  EXPECT_EQ(text(linq_whereKey(*entries, [](const Value& key) { return key.isNumber(); })), "{7: seven}");
  EXPECT_EQ(text(linq_whereValue(*entries, [](const Value& value) { return value.isNumber(); })),
            "{basic: 0.20, higher: 0.40, none: 0}");
  EXPECT_FALSE(isMutable(linq_whereKey(*entries, [](const Value&) { return true; })));
  EXPECT_EQ(linq_whereKey(*entries, nullptr), entries);
  EXPECT_EQ(linq_whereKey(*entries, noPredicate), entries);
  EXPECT_EQ(linq_whereValue(*entries, nullptr), entries);
  EXPECT_EQ(linq_whereValue(*entries, noPredicate), entries);
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_whereKey(*entries, [](const NSString&) { return true; })); }),
            "NSInvalidArgumentException")
      << "a key of another type";
}

TEST(NSDictionaryLINQ_Filtering, OfTypeGoesByTheClassAndThoseBelow) {
  auto entries = rates();
  EXPECT_EQ(text(linq_ofTypeKey<NSString>(*entries)), "{basic: 0.20, higher: 0.40, none: 0}");
  EXPECT_EQ(text(linq_ofTypeKey(*entries, *Class::named("NSNumber"))), "{7: seven}");
  EXPECT_EQ(text(linq_ofTypeValue<Decimal>(*entries)), "{basic: 0.20, higher: 0.40}");
  EXPECT_EQ(text(linq_ofTypeValue<NSNumber>(*entries)), "{basic: 0.20, higher: 0.40, none: 0}");
  EXPECT_EQ(text(linq_ofTypeValue(*entries, *Class::named("NSString"))), "{7: seven}");
}

TEST(NSDictionaryLINQ_Filtering, AClosureThatChangesTheReceiverRaises) {
  for (int position = 0; position < 3; ++position) {
    auto entries = NSMutableDictionary::dictionaryWith({{0, "a"}, {1, "b"}, {2, "c"}});
    const auto change = [&](const Value& key, const Value&) {
      if (key == Value(position)) {
        for (int i = 10; i < 100; ++i) entries->setObject("x", i);
      }
      return true;
    };
    EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_where(*entries, change)); }), "NSGenericException") << position;
  }
  auto entries = NSMutableDictionary::dictionaryWith({{0, 5}, {1, 6}, {2, 7}});
  const auto clear = [&](const Value&, const Value& running) {
    entries->removeAllObjects();
    return running;
  };
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_aggregate(*entries, clear)); }), "NSGenericException");
}

TEST(NSDictionaryLINQ_Converting, ToArrayGivesTheValuesInOrder) {
  auto entries = rates();
  EXPECT_EQ(text(linq_toArray(*entries)), "[0.20, 0.40, 0, seven]");
  EXPECT_EQ(text(linq_toArray(*NSDictionary::dictionary())), "[]");
  const Ref<NSMutableArray> values = linq_toArray(*entries);
  values->addObject(1);
  EXPECT_EQ(entries->count(), 4u);
  EXPECT_EQ(text(linq_toArrayWhereKey(*entries, [](const Value& key) { return key.isString(); })), "[0.20, 0.40, 0]");
  EXPECT_EQ(text(linq_toArrayWhereValue(*entries, [](const Value& value) { return value.isString(); })), "[seven]");
  EXPECT_EQ(
      text(linq_toArrayWhereKeyValue(
          *entries, [](const Value& key, const Value& value) { return key == Value("none") || value == Value(0.2); })),
      "[0.20, 0]");
}

TEST(NSDictionaryLINQ_Converting, WithNoPredicateAllValuesPass) {
  auto entries = rates();
  EXPECT_EQ(text(linq_toArrayWhereKey(*entries, nullptr)), "[0.20, 0.40, 0, seven]");
  EXPECT_EQ(text(linq_toArrayWhereKey(*entries, noPredicate)), "[0.20, 0.40, 0, seven]");
  EXPECT_EQ(text(linq_toArrayWhereValue(*entries, nullptr)), "[0.20, 0.40, 0, seven]");
  EXPECT_EQ(text(linq_toArrayWhereValue(*entries, noPredicate)), "[0.20, 0.40, 0, seven]");
  EXPECT_EQ(text(linq_toArrayWhereKeyValue(*entries, nullptr)), "[0.20, 0.40, 0, seven]");
  EXPECT_EQ(text(linq_toArrayWhereKeyValue(*entries, noEntryPredicate)), "[0.20, 0.40, 0, seven]");
}

TEST(NSDictionaryLINQ_Quantifier, AllAndAnyStopAtTheFirstThatDecides) {
  auto entries = rates();
  int calls = 0;
  EXPECT_FALSE(linq_all(*entries, [&](const Value& key, const Value&) { return ++calls, key != Value("higher"); }));
  EXPECT_EQ(calls, 2);
  calls = 0;
  EXPECT_TRUE(linq_any(*entries, [&](const Value& key, const Value&) { return ++calls, key == Value("higher"); }));
  EXPECT_EQ(calls, 2);
  EXPECT_TRUE(linq_all(*entries, [](const Value&, const Value& value) { return !value.isNull(); }));
  EXPECT_FALSE(linq_any(*entries, [](const Value&, const Value& value) { return value.isNull(); }));
  const auto empty = NSDictionary::dictionary();
  EXPECT_TRUE(linq_all(*empty, [](const Value&, const Value&) { return false; }));
  EXPECT_FALSE(linq_any(*empty, [](const Value&, const Value&) { return true; }));
  EXPECT_TRUE(linq_all(*entries, nullptr));
  EXPECT_TRUE(linq_all(*entries, noEntryPredicate));
  EXPECT_FALSE(linq_any(*entries, nullptr));
  EXPECT_FALSE(linq_any(*entries, noEntryPredicate));
}

TEST(NSDictionaryLINQ_Sets, DistinctKeepsTheFirstKeyOfEachValue) {
  auto codes = NSDictionary::dictionaryWith({{"a", 1}, {"b", 1}, {"c", 2}});
  EXPECT_EQ(text(linq_distinct(*codes)), "{a: 1, c: 2}");
  EXPECT_TRUE(isMutable(linq_distinct(*codes)));
  EXPECT_EQ(text(linq_distinct(*NSDictionary::dictionaryWith({{"a", 1.50_dec}, {"b", 1.5}}))), "{a: 1.50}");
  const Ref<NSDictionary> empty = NSDictionary::dictionary();
  EXPECT_EQ(linq_distinct(*empty), empty);
}

TEST(NSDictionaryLINQ_Sets, KeysBehindTheFirstOfAValueAreLost) {
  const Ref<NSDictionary> codes = NSDictionary::dictionaryWith({{"a", 1.5_dec}, {"b", 1.50_dec}, {"c", 2}, {"d", 3}});
  const Ref<NSDictionary> other = NSDictionary::dictionaryWith({{"x", 2.0}});
  EXPECT_EQ(text(linq_except(*codes, other)), "{a: 1.5, d: 3}") << "deliberate: b is lost, and a keeps its own value";
  EXPECT_EQ(text(linq_intersect(*codes, NSDictionary::dictionaryWith({{"x", 3}, {"y", 1.500_dec}, {"z", 9}}))),
            "{a: 1.5, d: 3}");
  EXPECT_EQ(text(linq_intersect(*codes, NSDictionary::dictionaryWith({{"a", 9}}))), "{}");
  EXPECT_TRUE(isMutable(linq_except(*codes, other)));
  EXPECT_TRUE(isMutable(linq_intersect(*codes, other)));
}

TEST(NSDictionaryLINQ_Sets, BesideNothingTheReceiverIsReturnedItself) {
  const Ref<NSDictionary> codes = NSDictionary::dictionaryWith({{"a", 1}, {"b", 1}}),
                          empty = NSDictionary::dictionary();
  EXPECT_EQ(linq_except(*codes, empty), codes) << "with its repeats";
  EXPECT_EQ(linq_except(*codes, nullptr), codes);
  EXPECT_EQ(linq_except(*empty, codes), empty);
  EXPECT_EQ(linq_intersect(*codes, empty), codes) << "deliberate";
  EXPECT_EQ(linq_intersect(*codes, nullptr), codes);
  EXPECT_EQ(linq_intersect(*empty, codes), empty);
}

TEST(NSDictionaryLINQ_Sets, MergeKeepsTheReceiversValues) {
  const Ref<NSDictionary> chosen = NSDictionary::dictionaryWith({{"a", 1}});
  const Ref<NSDictionary> defaults = NSDictionary::dictionaryWith({{"a", 2}, {"b", 3}});
  EXPECT_EQ(text(linq_merge(*chosen, defaults)), "{a: 1, b: 3}");
  EXPECT_TRUE(isMutable(linq_merge(*chosen, defaults)));
  EXPECT_EQ(text(chosen), "{a: 1}");
  const Ref<NSDictionary> empty = NSDictionary::dictionary(), otherEmpty = NSDictionary::dictionary();
  EXPECT_EQ(linq_merge(*empty, defaults), defaults);
  EXPECT_EQ(linq_merge(*empty, nullptr), nullptr);
  EXPECT_EQ(linq_merge(*empty, otherEmpty), otherEmpty) << "the first rule counts";
  EXPECT_EQ(linq_merge(*chosen, empty), chosen);
  EXPECT_EQ(linq_merge(*chosen, nullptr), chosen);
}

TEST(NSDictionaryLINQ_Partitioning, TakingAsManyAsThereAreGivesNothing) {
  auto two = NSDictionary::dictionaryWith({{"a", 1}, {"b", 2}});
  EXPECT_EQ(text(linq_take(*two, 0)), "{}");
  EXPECT_EQ(text(linq_take(*two, 1)), "{a: 1}");
  EXPECT_EQ(text(linq_take(*two, 2)), "{}") << "deliberate";
  EXPECT_EQ(text(linq_take(*two, std::numeric_limits<std::size_t>::max())), "{}") << "deliberate";
  EXPECT_EQ(text(linq_skip(*two, 0)), "{a: 1, b: 2}");
  EXPECT_EQ(text(linq_skip(*two, 1)), "{b: 2}");
  EXPECT_EQ(text(linq_skip(*two, 2)), "{}");
  EXPECT_EQ(text(linq_skip(*NSDictionary::dictionary(), 0)), "{}");
}

TEST(NSDictionaryLINQ_Partitioning, TheResultIsOfTheReceiversClass) {
  auto entries = NSMutableDictionary::dictionaryWith({{"a", 1}, {"b", 2}, {"c", 3}});
  entries->removeObjectForKey("a");
  EXPECT_EQ(text(linq_skip(*entries, 1)), "{c: 3}") << "positions do not count what was removed";
  EXPECT_EQ(linq_skip(*entries, 1)->classObject(), NSMutableDictionary::staticClass());
  EXPECT_EQ(linq_take(*entries, 9)->classObject(), NSMutableDictionary::staticClass());
  EXPECT_EQ(linq_take(*rates(), 1)->classObject(), NSDictionary::staticClass());
  auto own = make<LinqOwnMutableDictionary>();
  own->setObject(1, "a");
  own->setObject(2, "b");
  EXPECT_EQ(linq_take(*own, 1)->classObject(), LinqOwnMutableDictionary::staticClass());
  EXPECT_EQ(linq_take(*own, 1)->objectForKey("a"), Value(1)) << "found by its key too";
  EXPECT_EQ(linq_skip(*make<LinqOwnDictionary>(), 0)->classObject(), LinqOwnDictionary::staticClass());
}

TEST(NSDictionaryLINQ_Generation, KeysAreTheNumbersFromZero) {
  EXPECT_EQ(text(linq_from<NSDictionary>(5, 7)), "{0: 5, 1: 6, 2: 7}");
  EXPECT_EQ(text(linq_from<NSDictionary>(1, -1)), "{0: 1, 1: 0, 2: -1}");
  EXPECT_EQ(text(linq_from<NSDictionary>(2, 2)), "{}") << "deliberate";
  EXPECT_EQ(text(linq_repeat<NSDictionary>("x", 2)), "{0: x, 1: x}");
  EXPECT_EQ(text(linq_repeat<NSDictionary>("x", 0)), "{}");
  EXPECT_EQ(text(linq_repeat<NSDictionary>("x", -1)), "{}");
  EXPECT_EQ(text(linq_repeat<NSDictionary>(Value(), 2)), "{}");
  EXPECT_EQ(linq_from<NSDictionary>(5, 7)->objectForKey(2), Value(7));
}

TEST(NSDictionaryLINQ_Generation, TheResultIsOfTheReceivingClass) {
  const Ref<NSMutableDictionary> empty = linq_empty<NSMutableDictionary>();
  EXPECT_EQ(text(empty), "{}");
  const Ref<LinqOwnDictionary> own = linq_from<LinqOwnDictionary>(1, 2);
  EXPECT_EQ(text(own), "{0: 1, 1: 2}");
  EXPECT_EQ(linq_empty<NSDictionary>(LinqOwnDictionary::staticClass())->classObject(),
            LinqOwnDictionary::staticClass());
  EXPECT_EQ(linq_repeat<NSDictionary>(NSMutableDictionary::staticClass(), 1, 1)->classObject(),
            NSMutableDictionary::staticClass());
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_from<NSDictionary>(NSArray::staticClass(), 1, 2)); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_empty<NSMutableDictionary>(NSDictionary::staticClass())); }),
            "NSInvalidArgumentException");
}

TEST(NSDictionaryLINQ_Aggregation, ReducesTheValuesInOrder) {
  auto texts = NSDictionary::dictionaryWith({{2, "a"}, {1, "b"}, {3, "c"}});
  EXPECT_EQ(linq_aggregate(*texts, [](const NSString& next, const NSString& running) { return running + next; }),
            Value("abc"));
  EXPECT_TRUE(linq_aggregate(*NSDictionary::dictionary(), nullptr).isAbsent());
  const Ref<NSDictionary> same = texts;
  EXPECT_TRUE(linq_aggregate(*texts, nullptr).isIdenticalTo(same));
  EXPECT_TRUE(linq_aggregate(*texts, Block<Value(const Value&, const Value&)>()).isIdenticalTo(same));
}

TEST(NSDictionaryLINQ_Aggregation, SumsAreExactAndASingleValueIsItsOwn) {
  EXPECT_EQ(text(linq_sum(*NSDictionary::dictionaryWith({{"a", 0.10_dec}, {"b", 0.20_dec}}))), "0.30");
  EXPECT_EQ(linq_sum(*NSDictionary::dictionaryWith({{"a", 5}})).kind(), Value::Kind::Integer);
  const auto empty = NSDictionary::dictionary();
  EXPECT_EQ(linq_sum(*empty).kind(), Value::Kind::Decimal);
  EXPECT_EQ(linq_avg(*empty), 0_dec);
  EXPECT_EQ(linq_max(*empty).kind(), Value::Kind::Decimal);
  EXPECT_EQ(linq_min(*empty).kind(), Value::Kind::Decimal);
  EXPECT_EQ(linq_avg(*NSDictionary::dictionaryWith({{"a", 1}, {"b", 2}})), 1.5_dec);
}

TEST(NSDictionaryLINQ_Aggregation, OfEqualValuesTheEarlierIsTheGreatestAndTheLeast) {
  auto codes = NSDictionary::dictionaryWith(
      {{1, linqCode(5, "a")}, {2, linqCode(2, "a")}, {3, linqCode(5, "b")}, {4, linqCode(2, "b")}});
  EXPECT_EQ(text(linq_max(*codes)), "5a");
  EXPECT_EQ(text(linq_min(*codes)), "2a");
}

TEST(NSDictionaryLINQ_Aggregation, CountsAndKeysGoByTheValues) {
  auto slips =
      NSDictionary::dictionaryWith({{"x", linqPayslip("Ann", {}, 2_dec)}, {"y", linqPayslip("Bob", {}, 3_dec)}});
  EXPECT_EQ(linq_count(*slips, [](const LinqPayslip& slip) { return slip.netPay() == 3_dec; }), 1u);
  EXPECT_EQ(linq_count(*slips, nullptr), 2u);
  EXPECT_EQ(linq_count(*slips, noPredicate), 2u);
  EXPECT_EQ(linq_sumForKey(*slips, "netPay"), 5_dec);
  EXPECT_EQ(linq_avgForKey(*slips, "netPay"), 2.5_dec);
  EXPECT_EQ(text(linq_maxForKey(*slips, "netPay")), "3");
  EXPECT_EQ(text(linq_minForKey(*slips, "netPay")), "2");
  EXPECT_EQ(linq_sumForKey(*NSDictionary::dictionary(), "netPay"), 0_dec);
}

}  // namespace
}  // namespace norvik

// Queries over arrays, with one suite for each group of operations.
#include "NorvikCore/linq/LINQ.h"

#include "Payslips.h"

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace norvik {
namespace {

const auto isPositive = [](const Decimal& number) { return number > 0; };

bool isText(const Value& value) { return value.isString(); }

/// Can only be created with arguments, so no empty array of this class can be created.
class LinqNamedArray : public NSArray {
  NK_OBJECT(LinqNamedArray, NSArray)
  explicit LinqNamedArray(int) {}
};

class LinqOwnArray : public NSArray {
  NK_OBJECT(LinqOwnArray, NSArray)
};

TEST(NSArrayLINQ_Filtering, WhereKeepsWhatPassesInOrderInANewMutableArray) {
  auto numbers = NSArray::arrayWithObjects(3, -1, 0, 2.5_dec, 7.0);
  const Ref<NSMutableArray> passed = linq_where(*numbers, isPositive);
  EXPECT_EQ(text(passed), "[3, 2.5, 7]");
  passed->addObject(1);
  EXPECT_EQ(text(numbers), "[3, -1, 0, 2.5, 7]");
  EXPECT_EQ(text(linq_where(*numbers, [](const Value&) { return false; })), "[]");
  EXPECT_EQ(text(linq_where(*NSArray::array(), isPositive)), "[]");
}

TEST(NSArrayLINQ_Filtering, WhereWithNoPredicateIsTheReceiverItself) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(3, -1);
  const Block<bool(const Value&)> none;
  const std::function<bool(const Value&)> nothing;
  bool (*const noFunction)(const Value&) = nullptr;
  EXPECT_EQ(linq_where(*numbers, nullptr), numbers);
  EXPECT_EQ(linq_where(*numbers, none), numbers);
  EXPECT_EQ(linq_where(*numbers, nothing), numbers);
  EXPECT_EQ(linq_where(*numbers, noFunction), numbers);
  const Ref<NSMutableArray> empty = NSMutableArray::array();
  EXPECT_EQ(linq_where(*empty, nullptr), empty);
}

TEST(NSArrayLINQ_Filtering, AClosureMayBeAnyCallableAndTakeTheElementAsWhatItIs) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", "Sales", 10_dec), linqPayslip("Bob", "Works", 0_dec));
  EXPECT_EQ(text(linq_where(*slips, [](const LinqPayslip& slip) { return slip.name() == "Ann"; })), "[Ann]");
  EXPECT_EQ(text(linq_where(*slips, [](LinqPayslip& slip) { return slip.netPay() == 0_dec; })), "[Bob]");
  EXPECT_EQ(text(linq_where(*slips, [](const Ref<LinqPayslip>& slip) { return slip->name() == "Bob"; })), "[Bob]");
  EXPECT_EQ(text(linq_where(*slips, [](const auto& value) { return value.isObject(); })), "[Ann, Bob]");
  EXPECT_EQ(text(linq_where(*slips, isText)), "[]");
  auto mixed = NSArray::arrayWithObjects("a", 1, "b");
  EXPECT_EQ(text(linq_where(*mixed, isText)), "[a, b]");
  EXPECT_EQ(text(linq_where(*mixed, Block<bool(const Value&)>(isText))), "[a, b]");
  EXPECT_EQ(text(linq_where(*mixed, std::function<bool(const Value&)>(isText))), "[a, b]");
  int calls = 0;
  EXPECT_EQ(text(linq_where(*mixed, [&calls](const Value&) mutable { return ++calls == 2; })), "[1]");
  EXPECT_EQ(calls, 3);
}

TEST(NSArrayLINQ_Filtering, AnElementOfAnotherTypeRaises) {
  auto mixed = NSArray::arrayWithObjects("a", Value::null(), linqCode(1));
  const auto none = [](const auto& take) { return nameOfRaised([&] { static_cast<void>(take()); }); };
  EXPECT_EQ(none([&] { return linq_where(*mixed, [](const LinqPayslip&) { return true; }); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(none([&] { return linq_where(*mixed, [](const Decimal&) { return true; }); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(none([&] { return linq_where(*mixed, [](const NSString&) { return true; }); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(none([&] { return linq_where(*mixed, [](std::int64_t) { return true; }); }), "NSInvalidArgumentException");
  EXPECT_EQ(none([&] { return linq_firstOrNil(*mixed, [](const NSString&) { return true; }); }), "nothing raised");
}

TEST(NSArrayLINQ_Filtering, AClosureThatChangesTheReceiverRaises) {
  for (int position = 0; position < 3; ++position) {
    auto numbers = NSMutableArray::arrayWithObjects(1, 2, 3);
    const auto change = [&](const Value& each) {
      if (each == Value(position + 1)) numbers->setArray(*NSArray::arrayWithObjects("x"));
      return true;
    };
    EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_where(*numbers, change)); }), "NSGenericException") << position;
    EXPECT_EQ(text(numbers), "[x]");
  }
  auto numbers = NSMutableArray::arrayWithObjects(1, 2, 3);
  const auto grow = [&](const Value&) {
    for (int i = 0; i < 100; ++i) numbers->addObject(i);
    return Value(1);
  };
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_select(*numbers, grow)); }), "NSGenericException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_groupBy(*numbers, grow)); }), "NSGenericException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_distinctWithBlock(*numbers, grow)); }), "NSGenericException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_toDictionaryWithKeyBlock(*numbers, grow)); }),
            "NSGenericException");
  EXPECT_EQ(nameOfRaised([&] {
              static_cast<void>(linq_aggregate(*numbers, [&](const Value& each, const Value&) { return grow(each); }));
            }),
            "NSGenericException");
}

TEST(NSArrayLINQ_Filtering, TheReceiverLivesUntilTheQueryEnds) {
  auto numbers = NSMutableArray::arrayWithObjects(1, 2, 3);
  const NSArray& receiver = *numbers;
  EXPECT_EQ(text(linq_where(receiver,
                            [&](const Value& each) {
                              numbers = nullptr;
                              return each != Value(2);
                            })),
            "[1, 3]");
}

TEST(NSArrayLINQ_Filtering, OfTypeGoesByTheClassAndThoseBelow) {
  auto slip = linqPayslip("Ann", "Sales", 1_dec);
  auto last = make<LinqFinalPayslip>();
  last->setName("last");
  auto mixed = NSArray::arrayWithObjects("a", 1, 2.5, 2.5_dec, true, Value::null(), slip, last, linqCode(1));
  EXPECT_EQ(text(linq_ofType<LinqPayslip>(*mixed)), "[Ann, last]");
  EXPECT_EQ(text(linq_ofType(*mixed, LinqFinalPayslip::staticClass())), "[last]");
  EXPECT_EQ(text(linq_ofType<NSString>(*mixed)), "[a]");
  EXPECT_EQ(text(linq_ofType<Decimal>(*mixed)), "[2.5]");
  EXPECT_EQ(text(linq_ofType<NSNumber>(*mixed)), "[1, 2.5, 2.5, 1]") << "a Decimal and a boolean are numbers";
  EXPECT_EQ(text(linq_ofType<Date>(*mixed)), "[]");
  EXPECT_EQ(text(linq_ofType(*mixed, *Class::named("NSNull"))), "[<null>]");
  EXPECT_EQ(linq_ofType(*mixed, NSObject::staticClass())->count(), 9u);
  EXPECT_FALSE(isMutable(linq_ofType<NSString>(*mixed)));
}

TEST(NSArrayLINQ_Filtering, FirstOrNilStopsAtTheFirstThatPasses) {
  auto numbers = NSArray::arrayWithObjects(1, 5, 7);
  int calls = 0;
  EXPECT_EQ(linq_firstOrNil(*numbers, [&](int each) { return ++calls, each > 2; }), Value(5));
  EXPECT_EQ(calls, 2);
  EXPECT_TRUE(linq_firstOrNil(*numbers, [](int each) { return each > 7; }).isAbsent());
  EXPECT_TRUE(linq_firstOrNil(*numbers, nullptr).isAbsent());
  EXPECT_TRUE(linq_firstOrNil(*numbers, Block<bool(const Value&)>()).isAbsent());
  EXPECT_TRUE(linq_firstOrNil(*NSArray::array(), isPositive).isAbsent());
}

TEST(NSArrayLINQ_Projection, SelectGivesWhatTheSelectorMakesOfEachElement) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", "Sales", 10.50_dec), linqPayslip("Bob", "Works", {}));
  EXPECT_EQ(text(linq_select(*slips, &LinqPayslip::name)), "[Ann, Bob]");
  EXPECT_EQ(text(linq_select(*slips, &LinqPayslip::netPay)), "[10.50, <null>]");
  EXPECT_EQ(text(linq_select(*slips, [](const LinqPayslip& slip) { return slip.name().length() * 2; })), "[6, 6]");
  EXPECT_EQ(text(linq_select(*slips, [](const LinqPayslip& slip) { return slip.name().str(); })), "[Ann, Bob]");
  const Ref<NSArray> same = linq_select(*slips, [](const LinqPayslip& slip) -> const LinqPayslip& { return slip; });
  EXPECT_TRUE(same->objectAtIndex(0).isIdenticalTo(slips->objectAtIndex(0)));
  EXPECT_FALSE(isMutable(same));
  EXPECT_EQ(text(linq_select(*NSArray::array(), &LinqPayslip::name)), "[]");
}

TEST(NSArrayLINQ_Projection, APointerToAMemberThatIsNullRaises) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", "Sales", {}));
  const NSString& (LinqPayslip::*const none)() const = nullptr;
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_select(*slips, none)); }), "NSInvalidArgumentException");
}

TEST(NSArrayLINQ_Projection, NothingBecomesTheNullMarker) {
  auto numbers = NSArray::arrayWithObjects(1, 2, 3);
  const Ref<NSArray> nulls = linq_select(*numbers, [](const Value&) { return Value(); });
  EXPECT_EQ(text(nulls), "[<null>, <null>, <null>]");
  for (const Value& each : *nulls) EXPECT_TRUE(each.isNull());
  EXPECT_EQ(text(linq_select(*numbers, [](const Value&) { return nullptr; })), "[<null>, <null>, <null>]");
  EXPECT_EQ(text(linq_select(*numbers, [](const Value&) { return Ref<NSObject>(); })), "[<null>, <null>, <null>]");
  EXPECT_EQ(text(linq_select(*numbers, [](const Value&) { return std::optional<int>(); })), "[<null>, <null>, <null>]");
}

TEST(NSArrayLINQ_Projection, WithNoSelectorItIsAnEmptyArrayOfTheReceiversClass) {
  const Block<Value(const Value&)> none;
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(1, 2);
  EXPECT_EQ(linq_select(*numbers, nullptr)->classObject(), NSArray::staticClass());
  EXPECT_EQ(linq_select(*numbers, none)->count(), 0u);
  EXPECT_EQ(linq_select(*numbers->mutableCopy(), nullptr)->classObject(), NSMutableArray::staticClass());
  EXPECT_EQ(linq_select(*make<LinqOwnArray>(), nullptr)->classObject(), LinqOwnArray::staticClass());
  EXPECT_EQ(linq_select(*make<LinqNamedArray>(1), nullptr)->classObject(), NSArray::staticClass());
  EXPECT_EQ(linq_selectMany(*numbers->mutableCopy(), nullptr)->classObject(), NSMutableArray::staticClass());
  EXPECT_EQ(linq_selectMany(*numbers, none)->count(), 0u);
}

TEST(NSArrayLINQ_Projection, SelectManyPutsOneArrayBehindTheOther) {
  auto ann = linqPayslip("Ann", "Sales", {}), bob = linqPayslip("Bob", "Works", {}), cid = linqPayslip("Cid", {}, {});
  ann->setLines(NSArray::arrayWithObjects(1, 2));
  cid->setLines(NSArray::arrayWithObjects(3));
  auto slips = NSArray::arrayWithObjects(ann, bob, cid);
  EXPECT_EQ(text(linq_selectMany(*slips, &LinqPayslip::lines)), "[1, 2, 3]") << "no array contributes nothing";
  EXPECT_EQ(text(linq_selectMany(*slips, [](const Value&) { return Value::null(); })), "[]");
  EXPECT_EQ(text(linq_selectMany(*slips, [](const Value&) { return nullptr; })), "[]");
  EXPECT_EQ(text(linq_selectMany(*slips, [](const Value&) { return std::vector<int>{7, 8}; })), "[7, 8, 7, 8, 7, 8]");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_selectMany(*slips, &LinqPayslip::name)); }),
            "NSInvalidArgumentException")
      << "a text is no array";
}

TEST(NSArrayLINQ_Partitioning, SkipGivesWhatIsBehindTheFirst) {
  auto numbers = NSArray::arrayWithObjects(1, 2, 3);
  EXPECT_EQ(text(linq_skip(*numbers, 0)), "[1, 2, 3]");
  EXPECT_NE(linq_skip(*numbers, 0), numbers);
  EXPECT_EQ(text(linq_skip(*numbers, 2)), "[3]");
  EXPECT_EQ(text(linq_skip(*numbers, 3)), "[]");
  EXPECT_EQ(text(linq_skip(*numbers, std::numeric_limits<std::size_t>::max())), "[]");
  EXPECT_EQ(text(linq_skip(*NSArray::array(), 0)), "[]");
}

TEST(NSArrayLINQ_Partitioning, TakingAsManyAsThereAreGivesNothing) {
  auto numbers = NSArray::arrayWithObjects(1, 2, 3);
  EXPECT_EQ(text(linq_take(*numbers, 0)), "[]");
  EXPECT_EQ(text(linq_take(*numbers, 1)), "[1]");
  EXPECT_EQ(text(linq_take(*numbers, 2)), "[1, 2]");
  EXPECT_EQ(text(linq_take(*numbers, 3)), "[]") << "deliberate";
  EXPECT_EQ(text(linq_take(*numbers, 4)), "[]") << "deliberate";
  EXPECT_EQ(text(linq_take(*numbers, std::numeric_limits<std::size_t>::max())), "[]");
}

TEST(NSArrayLINQ_Quantifier, AllStopsAtTheFirstThatFails) {
  auto numbers = NSArray::arrayWithObjects(1, -1, 2);
  int calls = 0;
  EXPECT_FALSE(linq_all(*numbers, [&](int each) { return ++calls, each > 0; }));
  EXPECT_EQ(calls, 2);
  EXPECT_TRUE(linq_all(*numbers, [](int each) { return each < 3; }));
  EXPECT_TRUE(linq_all(*NSArray::array(), isPositive));
  EXPECT_TRUE(linq_all(*numbers, nullptr));
  EXPECT_TRUE(linq_all(*numbers, Block<bool(const Value&)>()));
}

TEST(NSArrayLINQ_Quantifier, AnyStopsAtTheFirstThatPasses) {
  auto numbers = NSArray::arrayWithObjects(1, -1, Value::null());
  int calls = 0;
  EXPECT_TRUE(linq_any(*numbers, [&](int each) { return ++calls, each < 0; }));
  EXPECT_EQ(calls, 2);
  EXPECT_TRUE(linq_any(*numbers, [](const Value& each) { return each.isNull(); }));
  EXPECT_FALSE(linq_any(*numbers, [](const Value& each) { return each.isString(); }));
  EXPECT_FALSE(linq_any(*NSArray::array(), isPositive));
  EXPECT_FALSE(linq_any(*numbers, nullptr));
  EXPECT_FALSE(linq_any(*numbers, Block<bool(const Value&)>()));
}

TEST(NSArrayLINQ_Sets, DistinctKeepsTheFirstOfEqualElements) {
  auto codes = NSArray::arrayWithObjects(linqCode(1, "a"), linqCode(2, "a"), linqCode(1, "b"), linqCode(2, "b"));
  EXPECT_EQ(text(linq_distinct(*codes)), "[1a, 2a]");
  EXPECT_EQ(text(linq_distinct(*NSArray::arrayWithObjects(1.5_dec, 1.50_dec, 1.5, "1.5"))), "[1.5, 1.5]");
  EXPECT_EQ(text(linq_distinct(*NSArray::arrayWithObjects(1.50_dec, 1.5_dec))), "[1.50]")
      << "the first, with its digits";
  EXPECT_EQ(text(linq_distinct(*NSArray::arrayWithObjects(true, 1, 0, false, Value::null(), Value::null()))),
            "[1, 0, <null>]");
  EXPECT_TRUE(isMutable(linq_distinct(*codes)));
  const Ref<NSArray> empty = NSArray::array();
  EXPECT_EQ(linq_distinct(*empty), empty);
  const Ref<NSArray> one = NSArray::arrayWithObjects(1);
  EXPECT_NE(linq_distinct(*one), one);
}

TEST(NSArrayLINQ_Sets, DistinctWithBlockLeavesElementsWithoutAKeyOut) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", "Sales", {}), linqPayslip("Bob", {}, {}),
                                         linqPayslip("Cid", "Sales", {}), linqPayslip("Dan", Value::null(), {}),
                                         linqPayslip("Eve", Value::null(), {}), linqPayslip("Fay", "Works", {}));
  EXPECT_EQ(text(linq_distinctWithBlock(*slips, &LinqPayslip::department)), "[Ann, Dan, Fay]");
  EXPECT_TRUE(isMutable(linq_distinctWithBlock(*slips, &LinqPayslip::name)));
  const Block<Value(const Value&)> none;
  const Ref<NSArray> empty = NSArray::array();
  EXPECT_EQ(linq_distinctWithBlock(*empty, none), empty);
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_distinctWithBlock(*slips, none)); }),
            "NSInvalidArgumentException");
}

TEST(NSArrayLINQ_Sets, ExceptRemovesAllThatTheOtherHolds) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(1, 2, 2, 3, 1, 4);
  EXPECT_EQ(text(linq_except(*numbers, NSArray::arrayWithObjects(1.0, 3.00_dec, 9))), "[2, 2, 4]");
  EXPECT_EQ(text(linq_except(*numbers, numbers)), "[]");
  EXPECT_TRUE(isMutable(linq_except(*numbers, NSArray::arrayWithObjects(9))));
  EXPECT_EQ(linq_except(*numbers, NSArray::array()), numbers);
  EXPECT_EQ(linq_except(*numbers, nullptr), numbers);
  const Ref<NSArray> empty = NSArray::array();
  EXPECT_EQ(linq_except(*empty, numbers), empty);
}

TEST(NSArrayLINQ_Sets, IntersectKeepsWhatBothHoldOnce) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(4, 2, 1, 2, 3);
  EXPECT_EQ(text(linq_intersect(*numbers, NSArray::arrayWithObjects(2, 4, 9, 2))), "[4, 2]");
  EXPECT_EQ(text(linq_intersect(*numbers, NSArray::arrayWithObjects(9))), "[]");
  EXPECT_TRUE(isMutable(linq_intersect(*numbers, NSArray::arrayWithObjects(2))));
}

TEST(NSArrayLINQ_Sets, IntersectWithNothingIsTheReceiverItself) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(2, 2);
  EXPECT_EQ(linq_intersect(*numbers, NSArray::array()), numbers) << "deliberate";
  EXPECT_EQ(linq_intersect(*numbers, nullptr), numbers) << "deliberate";
  EXPECT_EQ(text(numbers), "[2, 2]");
  const Ref<NSArray> empty = NSArray::array();
  EXPECT_EQ(linq_intersect(*empty, numbers), empty);
}

TEST(NSArrayLINQ_Sets, UnionHoldsTheDistinctElementsOfBoth) {
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(1, 2, 1), other = NSArray::arrayWithObjects(3, 2.0, 3);
  EXPECT_EQ(text(linq_union(*numbers, other)), "[1, 2, 3]");
  EXPECT_TRUE(isMutable(linq_union(*numbers, other)));
  EXPECT_EQ(linq_union(*numbers, NSArray::array()), numbers) << "with its repeats";
  EXPECT_EQ(linq_union(*numbers, nullptr), numbers);
  const Ref<NSArray> empty = NSArray::array(), otherEmpty = NSArray::array();
  EXPECT_EQ(linq_union(*empty, other), other) << "with its repeats";
  EXPECT_EQ(linq_union(*empty, otherEmpty), otherEmpty) << "the first rule counts";
  EXPECT_EQ(linq_union(*empty, nullptr), nullptr);
}

TEST(NSArrayLINQ_Generation, FromToGoesUpwardsAndDownwards) {
  EXPECT_EQ(text(linq_from(1, 3)), "[1, 2, 3]");
  EXPECT_EQ(text(linq_from(3, 1)), "[3, 2, 1]");
  EXPECT_EQ(text(linq_from(-1, 1)), "[-1, 0, 1]");
  EXPECT_EQ(text(linq_from(2, 2)), "[]") << "deliberate";
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min(), greatest = -(least + 1);
  EXPECT_EQ(text(linq_from(greatest - 1, greatest)), "[9223372036854775806, 9223372036854775807]");
  EXPECT_EQ(text(linq_from(least + 1, least)), "[-9223372036854775807, -9223372036854775808]");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_from(least, greatest)); }), "NSRangeException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_from(greatest, least)); }), "NSRangeException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_repeat(1, greatest)); }), "NSRangeException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_with([](int i) { return i; }, greatest)); }), "NSRangeException");
}

TEST(NSArrayLINQ_Generation, TheResultIsOfTheReceivingClass) {
  EXPECT_EQ(linq_empty()->classObject(), NSArray::staticClass());
  const Ref<NSMutableArray> empty = linq_empty<NSMutableArray>();
  EXPECT_EQ(empty->count(), 0u);
  const Ref<NSMutableArray> numbers = linq_from<NSMutableArray>(1, 2);
  EXPECT_EQ(text(numbers), "[1, 2]");
  const Ref<LinqOwnArray> repeats = linq_repeat<LinqOwnArray>("x", 2);
  EXPECT_EQ(text(repeats), "[x, x]");
  EXPECT_EQ(linq_empty(LinqOwnArray::staticClass())->classObject(), LinqOwnArray::staticClass());
  EXPECT_EQ(linq_from(NSMutableArray::staticClass(), 1, 2)->classObject(), NSMutableArray::staticClass());
  EXPECT_EQ(text(linq_with(
                LinqOwnArray::staticClass(), [](int i) { return i; }, 2)),
            "[0, 1]");
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_empty(LinqNamedArray::staticClass())); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_empty(NSDictionary::staticClass())); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_empty<NSMutableArray>(NSArray::staticClass())); }),
            "NSInvalidArgumentException");
}

TEST(NSArrayLINQ_Generation, RepeatAndWithAreEmptyBelowOneAndOfNothing) {
  EXPECT_EQ(text(linq_repeat("x", 3)), "[x, x, x]");
  EXPECT_EQ(text(linq_repeat(Value::null(), 1)), "[<null>]");
  EXPECT_EQ(text(linq_repeat("x", 0)), "[]");
  EXPECT_EQ(text(linq_repeat("x", -1)), "[]");
  EXPECT_EQ(text(linq_repeat(Value(), 3)), "[]");
  EXPECT_EQ(text(linq_with([](const Value& index) { return index.as<int>() * 2; }, 3)), "[0, 2, 4]");
  EXPECT_EQ(text(linq_with([](int index) { return index == 1 ? Value() : Value(index); }, 3)), "[0, <null>, 2]");
  EXPECT_EQ(text(linq_with([](int index) { return index; }, 0)), "[]");
  EXPECT_EQ(text(linq_with([](int index) { return index; }, -1)), "[]");
  EXPECT_EQ(text(linq_with(nullptr, 3)), "[]");
  EXPECT_EQ(text(linq_with(Block<Value(const Value&)>(), 3)), "[]");
}

TEST(NSArrayLINQ_Sorting, AscendingIsTheElementsOwnOrderAndStable) {
  EXPECT_EQ(text(linq_orderByAscending(*NSArray::arrayWithObjects(3, 1.5_dec, 2.0))), "[1.5, 2, 3]");
  auto codes = NSArray::arrayWithObjects(linqCode(2, "a"), linqCode(1, "a"), linqCode(2, "b"), linqCode(1, "b"));
  EXPECT_EQ(text(linq_orderByAscending(*codes)), "[1a, 1b, 2a, 2b]");
  EXPECT_EQ(text(codes), "[2a, 1a, 2b, 1b]");
  EXPECT_EQ(text(linq_orderByAscending(*NSArray::array())), "[]");
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_orderByAscending(*NSArray::arrayWithObjects(1, "a"))); }),
            "NSInvalidArgumentException");
}

TEST(NSArrayLINQ_Sorting, DescendingReversesEqualElementsToo) {
  auto codes = NSArray::arrayWithObjects(linqCode(2, "a"), linqCode(1, "a"), linqCode(2, "b"), linqCode(1, "b"));
  EXPECT_EQ(text(linq_orderByDescending(*codes)), "[2b, 2a, 1b, 1a]") << "deliberate";
}

TEST(NSArrayLINQ_Sorting, ByKeyEqualElementsKeepTheirOrderInBothDirections) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", "Works", 2_dec), linqPayslip("Bob", "Sales", 1_dec),
                                         linqPayslip("Cid", "Works", 1.00_dec), linqPayslip("Dan", "Sales", 2_dec));
  EXPECT_EQ(text(linq_orderByKey(*slips, "netPay", true)), "[Bob, Cid, Ann, Dan]");
  EXPECT_EQ(text(linq_orderByKey(*slips, "netPay", false)), "[Ann, Dan, Bob, Cid]");
  EXPECT_EQ(text(linq_orderByKey(*slips, "department", true)), "[Bob, Dan, Ann, Cid]");
  EXPECT_EQ(text(linq_orderByKey(*slips, "department", false)), "[Ann, Cid, Bob, Dan]");
  EXPECT_EQ(text(linq_orderByKey(*slips, "name.length", true)), "[Ann, Bob, Cid, Dan]");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_orderByKey(*slips, "nettPay", true)); }),
            "NSUnknownKeyException");
}

TEST(NSArrayLINQ_Sorting, ByKeyWhatHasNoValueIsTheLeast) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", {}, 2_dec), linqPayslip("Bob", Value::null(), {}),
                                         linqPayslip("Cid", 5, 1_dec), Value::null(), linqPayslip("Dan", 3.5_dec, {}));
  EXPECT_EQ(text(linq_orderByKey(*slips, "netPay", true)), "[Bob, <null>, Dan, Cid, Ann]");
  EXPECT_EQ(text(linq_orderByKey(*slips, "netPay", false)), "[Ann, Cid, Bob, <null>, Dan]");
  EXPECT_EQ(text(linq_orderByKey(*slips, "department", true)), "[Ann, Bob, <null>, Dan, Cid]");
}

TEST(NSArrayLINQ_Sorting, ByKeyTheElementsMayBeOfSeveralClasses) {
  auto slip = linqPayslip("Zoe", {}, {});
  auto last = make<LinqFinalPayslip>();
  last->setName("Moe");
  auto entry = NSDictionary::dictionaryWith({{"name", "Ann"}});
  auto mixed = NSArray::arrayWithObjects(slip, entry, last, slip);
  EXPECT_EQ(text(linq_orderByKey(*mixed, "name", true)), "[{name: Ann}, Moe, Zoe, Zoe]");
  EXPECT_EQ(text(linq_orderByKey(*NSArray::arrayWithObjects("ccc", "a", "bb"), "length", true)), "[a, bb, ccc]");
}

TEST(NSArrayLINQ_Sorting, ReverseIsAMutableArray) {
  const Ref<NSMutableArray> reversed = linq_reverse(*NSArray::arrayWithObjects(1, 2, 3));
  EXPECT_EQ(text(reversed), "[3, 2, 1]");
  EXPECT_EQ(text(linq_reverse(*NSArray::array())), "[]");
}

TEST(NSArrayLINQ_Grouping, GroupByKeepsTheOrderOfTheKeysAndOfTheElements) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", "Works", {}), linqPayslip("Bob", "Sales", {}),
                                         linqPayslip("Cid", "Works", {}), linqPayslip("Dan", Value::null(), {}));
  const Ref<NSMutableDictionary> groups = linq_groupBy(*slips, &LinqPayslip::department);
  EXPECT_EQ(text(groups), "{Works: [Ann, Cid], Sales: [Bob], <null>: [Dan]}");
  EXPECT_TRUE(isMutable(groups->objectForKey("Sales").as<Ref<NSArray>>()));
  EXPECT_EQ(
      text(linq_groupBy(*NSArray::arrayWithObjects(1.50_dec, 2, 1.5, 2.0), [](const Value& each) { return each; })),
      "{1.50: [1.50, 1.5], 2: [2, 2]}");
  EXPECT_EQ(text(linq_groupBy(*NSArray::array(), &LinqPayslip::department)), "{}");
}

TEST(NSArrayLINQ_Grouping, TheReceiverLivesUntilItsElementsAreInTheirGroups) {
  auto names = NSMutableArray::arrayWithObjects(linqPayslip("Ann", "Works", {}), linqPayslip("Bob", "Sales", {}));
  const NSArray& receiver = *names;
  EXPECT_EQ(text(linq_groupBy(receiver,
                              [&](const LinqPayslip& each) {
                                names = nullptr;
                                return each.department();
                              })),
            "{Works: [Ann], Sales: [Bob]}");
}

TEST(NSArrayLINQ_Grouping, TextsAreOneKeyByWhatTheySayWhereverTheirBytesAre) {
  std::vector<NSString> shared;
  for (int i = 0; i < 3000; ++i) shared.emplace_back("Department " + std::to_string(i));
  std::vector<Value> numbers;
  for (int i = 0; i < 9000; ++i) numbers.emplace_back(i);
  const auto groups = linq_groupBy(*make<NSArray>(numbers), [&](std::int64_t each) -> NSString {
    const auto department = static_cast<std::size_t>(each % 3000);
    return each < 6000 ? shared[department] : NSString("Department " + std::to_string(department));
  });
  ASSERT_EQ(groups->count(), 3000u);
  std::int64_t department = 0;
  for (const auto& [key, group] : *groups) {
    EXPECT_EQ(key, Value(shared[static_cast<std::size_t>(department)]));
    EXPECT_EQ(group, Value(NSArray::arrayWithObjects(department, department + 3000, department + 6000)));
    ++department;
  }
  const auto mixed = linq_groupBy(*NSArray::arrayWithObjects("5", 5, "", Value::null(), "5", 5.0, ""),
                                  [](const Value& each) { return each; });
  EXPECT_EQ(mixed->count(), 4u);
  EXPECT_EQ(mixed->objectForKey("5"), Value(NSArray::arrayWithObjects("5", "5")));
  EXPECT_EQ(mixed->objectForKey(5), Value(NSArray::arrayWithObjects(5, 5.0)));
  EXPECT_EQ(mixed->objectForKey(""), Value(NSArray::arrayWithObjects("", "")));
}

TEST(NSArrayLINQ_Grouping, AnElementWithoutAKeyRaisesRatherThanGetLost) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", "Works", {}), linqPayslip("Bob", {}, {}));
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_groupBy(*slips, &LinqPayslip::department)); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_toLookup(*slips, &LinqPayslip::department)); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_toDictionaryWithKeyBlock(*slips, &LinqPayslip::department)); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([&] {
              static_cast<void>(linq_toDictionaryWithKeyBlock(*slips, &LinqPayslip::department, &LinqPayslip::name));
            }),
            "NSInvalidArgumentException");
  const Block<Value(const Value&)> none;
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_groupBy(*slips, none)); }), "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_toLookup(*slips, none)); }), "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_toDictionaryWithKeyBlock(*slips, none)); }),
            "NSInvalidArgumentException");
}

TEST(NSArrayLINQ_Grouping, ALookupHasADictionaryForEachElement) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", "Works", {}), linqPayslip("Bob", "Sales", {}),
                                         linqPayslip("Cid", "Works", {}));
  const Ref<NSArray> lookup = linq_toLookup(*slips, &LinqPayslip::department);
  EXPECT_EQ(text(lookup), "[{Works: Ann}, {Sales: Bob}, {Works: Cid}]");
  const Ref<NSMutableArray> found = linq_lookup(*lookup, "Works");
  EXPECT_EQ(text(found), "[{Works: Ann}, {Works: Cid}]");
  EXPECT_EQ(text(linq_lookup(*lookup, "Board")), "[]");
  EXPECT_EQ(text(linq_lookup(*lookup, Value())), "[]");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_lookup(*slips, "Works")); }), "NSInvalidArgumentException");
}

TEST(NSArrayLINQ_Converting, ToDictionaryGoesFromTheIndexes) {
  EXPECT_EQ(text(linq_toDictionary(*NSArray::arrayWithObjects("a", "b"))), "{0: a, 1: b}");
  EXPECT_EQ(text(linq_toDictionary(*NSArray::array())), "{}");
  EXPECT_FALSE(isMutable(linq_toDictionary(*NSArray::arrayWithObjects("a"))));
}

TEST(NSArrayLINQ_Converting, OfEqualKeysTheLastValueStaysUnderTheFirstKey) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", 1.50_dec, 1_dec), linqPayslip("Bob", 2, {}),
                                         linqPayslip("Cid", 1.5, 3_dec));
  EXPECT_EQ(text(linq_toDictionaryWithKeyBlock(*slips, &LinqPayslip::department)), "{1.50: Cid, 2: Bob}");
  EXPECT_FALSE(isMutable(linq_toDictionaryWithKeyBlock(*slips, &LinqPayslip::department)));
  const Ref<NSMutableDictionary> pay =
      linq_toDictionaryWithKeyBlock(*slips, &LinqPayslip::department, &LinqPayslip::netPay);
  EXPECT_EQ(text(pay), "{1.50: 3, 2: <null>}");
}

TEST(NSArrayLINQ_Converting, WithoutSelectorsTheIndexIsTheKeyAndTheElementTheValue) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", 1, {}), linqPayslip("Bob", 1, {}));
  const Block<Value(const Value&)> none;
  EXPECT_EQ(text(linq_toDictionaryWithKeyBlock(*slips, nullptr, &LinqPayslip::department)), "{0: 1, 1: 1}");
  EXPECT_EQ(text(linq_toDictionaryWithKeyBlock(*slips, none, &LinqPayslip::department)), "{0: 1, 1: 1}");
  EXPECT_EQ(text(linq_toDictionaryWithKeyBlock(*slips, &LinqPayslip::name, nullptr)), "{Ann: Ann, Bob: Bob}");
  EXPECT_EQ(text(linq_toDictionaryWithKeyBlock(*slips, &LinqPayslip::name, none)), "{Ann: Ann, Bob: Bob}");
  EXPECT_EQ(text(linq_toDictionaryWithKeyBlock(*slips, nullptr, nullptr)), "{0: Ann, 1: Bob}");
}

TEST(NSArrayLINQ_Aggregation, AggregateBeginsWithTheFirstElement) {
  auto texts = NSArray::arrayWithObjects("a", "b", "c");
  const auto join = [](const NSString& next, const NSString& running) { return running + "+" + next; };
  EXPECT_EQ(linq_aggregate(*texts, join), Value("a+b+c"));
  EXPECT_EQ(linq_aggregate(*NSArray::arrayWithObjects("a"), join), Value("a"));
  int calls = 0;
  EXPECT_EQ(linq_aggregate(*NSArray::arrayWithObjects(7), [&](int, int) { return ++calls; }), Value(7));
  EXPECT_EQ(calls, 0) << "the first element is taken as it is";
  EXPECT_TRUE(linq_aggregate(*texts, [](const Value&, const Value&) { return nullptr; }).isAbsent());
  EXPECT_EQ(linq_aggregate(*texts,
                           [](const Value& next, const Value& running) { return running.isAbsent() ? next : Value(); }),
            Value("c"))
      << "the running result may be nothing on the way";
}

TEST(NSArrayLINQ_Aggregation, AggregateOfNothingIsNothingAndWithoutAnAccumulatorTheReceiver) {
  const auto fails = [](const Value&, const Value&) -> Value { throw NSException("x", "y"); };
  EXPECT_TRUE(linq_aggregate(*NSArray::array(), fails).isAbsent());
  const Ref<NSArray> numbers = NSArray::arrayWithObjects(1, 2);
  EXPECT_TRUE(linq_aggregate(*numbers, nullptr).isIdenticalTo(numbers));
  EXPECT_TRUE(linq_aggregate(*numbers, Block<Value(const Value&, const Value&)>()).isIdenticalTo(numbers));
  EXPECT_TRUE(linq_aggregate(*NSArray::array(), nullptr).isAbsent()) << "the first rule counts";
}

TEST(NSArrayLINQ_Aggregation, SumsAreExact) {
  EXPECT_EQ(text(linq_sum(*NSArray::arrayWithObjects(0.10_dec, 0.20_dec))), "0.30");
  EXPECT_EQ(text(linq_sum(*NSArray::arrayWithObjects(0.1, 0.2))), "0.3") << "doubles by their decimal values";
  EXPECT_EQ(text(linq_sum(*NSArray::arrayWithObjects(1, 0.5_dec, true))), "2.5");
  const Value zero = linq_sum(*NSArray::array());
  EXPECT_EQ(zero.kind(), Value::Kind::Decimal);
  EXPECT_EQ(zero, Value(0));
  EXPECT_EQ(text(linq_sum(*NSArray::arrayWithObjects(9007199254740993, 0.01_dec))), "9007199254740993.01");
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_sum(*NSArray::arrayWithObjects(1, "2"))); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_sum(*NSArray::arrayWithObjects(Value::null(), 1))); }),
            "NSInvalidArgumentException");
}

TEST(NSArrayLINQ_Aggregation, ASingleElementIsItsOwnSum) {
  EXPECT_EQ(linq_sum(*NSArray::arrayWithObjects(5)).kind(), Value::Kind::Integer);
  EXPECT_EQ(linq_sum(*NSArray::arrayWithObjects(0.5)).kind(), Value::Kind::Double);
  EXPECT_EQ(text(linq_sum(*NSArray::arrayWithObjects(1.50_dec))), "1.50");
  EXPECT_EQ(linq_sum(*NSArray::arrayWithObjects("a text")), Value("a text"));
  EXPECT_EQ(linq_sum(*NSArray::arrayWithObjects(2, 3)).kind(), Value::Kind::Decimal);
}

TEST(NSArrayLINQ_Aggregation, AveragesAreDecimals) {
  EXPECT_EQ(linq_avg(*NSArray::arrayWithObjects(1, 2)), 1.5_dec);
  EXPECT_EQ(linq_avg(*NSArray::arrayWithObjects(0.1)), 0.1_dec);
  EXPECT_EQ(linq_avg(*NSArray::array()), 0_dec);
  EXPECT_EQ(linq_avg(*NSArray::arrayWithObjects(1, 0, 0)), 0.33333333333333333333333333333333333333_dec);
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_avg(*NSArray::arrayWithObjects("a text"))); }),
            "NSInvalidArgumentException");
}

TEST(NSArrayLINQ_Aggregation, OfEqualElementsTheFirstIsTheGreatestAndTheLeast) {
  auto codes = NSArray::arrayWithObjects(linqCode(2), linqCode(5, "a"), linqCode(5, "b"), linqCode(2, "b"));
  EXPECT_TRUE(linq_max(*codes).isIdenticalTo(codes->objectAtIndex(1)));
  EXPECT_TRUE(linq_min(*codes).isIdenticalTo(codes->objectAtIndex(0)));
  EXPECT_EQ(text(linq_max(*NSArray::arrayWithObjects(2, 5.0_dec, 5))), "5.0");
  EXPECT_EQ(linq_max(*NSArray::array()).kind(), Value::Kind::Decimal);
  EXPECT_EQ(linq_min(*NSArray::array()), Value(0));
  EXPECT_TRUE(linq_max(*NSArray::arrayWithObjects(Value::null())).isNull()) << "nothing to compare with";
  EXPECT_EQ(nameOfRaised([] { static_cast<void>(linq_min(*NSArray::arrayWithObjects(1, "a"))); }),
            "NSInvalidArgumentException");
}

TEST(NSArrayLINQ_Aggregation, CountGoesByThePredicate) {
  auto numbers = NSArray::arrayWithObjects(1, -1, 2);
  EXPECT_EQ(linq_count(*numbers, isPositive), 2u);
  EXPECT_EQ(linq_count(*numbers, nullptr), 3u);
  EXPECT_EQ(linq_count(*numbers, Block<bool(const Value&)>()), 3u);
  EXPECT_EQ(linq_count(*NSArray::array(), isPositive), 0u);
}

TEST(NSArrayLINQ_Aggregation, ForKeyAsksTheCollectionOperators) {
  auto slips = NSArray::arrayWithObjects(linqPayslip("Ann", {}, 2.20_dec), linqPayslip("Bob", {}, {}),
                                         linqPayslip("Cid", {}, 4_dec), linqPayslip("Dan", {}, 4.00_dec));
  EXPECT_EQ(linq_sumForKey(*slips, "netPay"), 10.20_dec);
  EXPECT_EQ(linq_avgForKey(*slips, "netPay"), 2.55_dec) << "by the number of all elements";
  EXPECT_EQ(text(linq_maxForKey(*slips, "netPay")), "4");
  EXPECT_EQ(text(linq_minForKey(*slips, "netPay")), "2.20");
  EXPECT_EQ(linq_sumForKey(*slips, "name.length"), 12_dec);
  EXPECT_EQ(linq_sumForKey(*NSArray::array(), "netPay"), 0_dec);
  EXPECT_EQ(linq_avgForKey(*NSArray::array(), "netPay"), 0_dec);
  EXPECT_TRUE(linq_maxForKey(*NSArray::array(), "netPay").isAbsent());
  EXPECT_TRUE(linq_minForKey(*NSArray::array(), "netPay").isAbsent());
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_sumForKey(*slips, "")); }), "NSInvalidArgumentException");
  EXPECT_EQ(nameOfRaised([&] { static_cast<void>(linq_sumForKey(*slips, "name")); }), "NSInvalidArgumentException");
  auto nested = NSArray::arrayWithObjects(slips, NSArray::array(), slips);
  EXPECT_EQ(linq_sumForKey(*nested, "@sum.netPay"), 20.40_dec);
  EXPECT_EQ(text(linq_maxForKey(*nested, "@count")), "4");
}

}  // namespace
}  // namespace norvik

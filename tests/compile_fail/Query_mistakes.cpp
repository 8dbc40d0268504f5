// Each mistake in a query is refused, and the compiler says the sentence after its number.
#include "NorvikCore/linq/LINQ.h"

using namespace norvik;

struct Line {
  NSString kind;
  int pence = 0;
};
struct Money {
  int pence;
};
class Slip : public NSObject {
  NK_OBJECT(Slip, NSObject)
  NK_PROPERTY(Decimal, netPay, setNetPay)
};

void mistake(const Ref<NSArray>& array, const std::vector<Line>& lines) {
  [[maybe_unused]] const auto isText = [](const Value& each) { return each.isString(); };
  [[maybe_unused]] const auto kind = [](const Line& line) { return line.kind; };
  // clang-format off
#ifndef SHOULD_NOT_COMPILE
  const Ref<NSArray> texts = array | linq_where(isText);
  const Ref<NSMutableDictionary> kinds = lines | linq_select(kind) | linq_groupBy([](const NSString& each) { return each; });
#elif SHOULD_NOT_COMPILE == 1  // a chain is evaluated in the statement in which it is written
  auto chain = array | linq_where(isText);
  const Ref<NSArray> texts = chain;
#elif SHOULD_NOT_COMPILE == 2  // a chain is evaluated in the statement in which it is written
  auto chain = array | linq_where(isText);
  chain | linq_sum();
#elif SHOULD_NOT_COMPILE == 3  // a predicate answers with a bool
  const Ref<NSArray> texts = linq_where(*array, [](const Value& each) { return each; });
#elif SHOULD_NOT_COMPILE == 4  // this query needs elements that convert to Value: convert them by linq_select first
  const Ref<NSArray> kinds = lines | linq_orderByAscending();
#elif SHOULD_NOT_COMPILE == 5  // linq_groupBy needs a closure
  const Ref<NSMutableDictionary> kinds = linq_groupBy(*array, nullptr);
#elif SHOULD_NOT_COMPILE == 6  // the result of a query's closure must convert to Value: return an object by its Ref
  const Ref<NSArray> money = linq_select(*array, [](const Value&) { return Money{1}; });
#elif SHOULD_NOT_COMPILE == 7  // the query calls this closure with another number of arguments
  const Ref<NSArray> texts = linq_where(*array, [](const Value&, const Value&) { return true; });
#elif SHOULD_NOT_COMPILE == 8  // a predicate answers with a bool
  const Ref<NSArray> texts = linq_where(*array, [](const Value&) { return std::optional<bool>(false); });
#elif SHOULD_NOT_COMPILE == 9  // a chain cannot be iterated over: keep its result, as a Ref, and iterate over that
  for (const Value& each : array | linq_where(isText)) static_cast<void>(each);
#elif SHOULD_NOT_COMPILE == 10  // a chain is no array yet: keep its result, as a Ref<NSArray>, and use that
  static_cast<void>((array | linq_where(isText))->count());
#elif SHOULD_NOT_COMPILE == 11  // linq_max compares the elements themselves: write linq_select(...) | linq_max()
  static_cast<void>(array | linq_max(&Slip::netPay));
#elif SHOULD_NOT_COMPILE == 12  // this compares the elements themselves: write linq_orderByKey(keyPath<&Payslip::netPay>(), true)
  static_cast<void>(array | linq_orderByAscending([](const Value& each) { return each; }));
#endif
}

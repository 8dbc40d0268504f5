// Each mistake with amounts, dates, texts and collections is refused, and the compiler says the sentence after its
// number.
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/object/Value_fmt.h"
#include "NorvikCore/platform/values/Date_fmt.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/Decimal_fmt.h"
#include "NorvikCore/platform/values/NSNumber_fmt.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <ranges>
#include <string>

using namespace norvik;

class Slip : public NSObject {
  NK_OBJECT(Slip, NSObject)
  NK_PROPERTY(Decimal, netPay, setNetPay)
};
class Person : public NSObject {
  NK_OBJECT(Person, NSObject)
};

void take(Date date);
void take(const NSString& text, const std::string& copy);

void mistake(Decimal amount, Date payday, const NSString& name, const Value& value, const Ref<NSArray>& slips,
             const Ref<Slip>& slip, const Ref<Person>& person, std::chrono::steady_clock::time_point tick) {
  // clang-format off
#ifndef SHOULD_NOT_COMPILE
  NSLog("%.2f %9.2f %@", amount, NSNumber(5), amount);
  static_assert(1.50_dec * 2 + 1 == 4_dec);
  static_cast<void>(fmt::format("{:,.2f} {:%Y-%m-%d} {} {} {:.1f}", amount, payday, value, slip, NSNumber(5)));
  take(std::chrono::system_clock::now());
  take(u"Smith", std::string(name));
  std::map<Ref<Slip>, Decimal> owed{{slip, amount}};
  static_cast<void>(std::ranges::count(slips->as<Slip>(), 5, &Slip::netPay));
#elif SHOULD_NOT_COMPILE == 1  // formatArgumentDoesNotFitItsDirective
  NSLog("%d", amount);
#elif SHOULD_NOT_COMPILE == 2  // formatArgumentDoesNotFitItsDirective
  NSLog("%.2e", amount);
#elif SHOULD_NOT_COMPILE == 3  // formatArgumentDoesNotFitItsDirective
  NSLog("%.2f", value);
#elif SHOULD_NOT_COMPILE == 4  // thisConstantNeedsMoreThan38DigitsOrAnExponentOutOfRange
  static_assert(1E30_dec + 1E-30_dec > 0);
#elif SHOULD_NOT_COMPILE == 5  // thisConstantNeedsMoreThan38DigitsOrAnExponentOutOfRange
  constexpr Decimal product = 1E100_dec * 1E100_dec;
#elif SHOULD_NOT_COMPILE == 6  // unknown format of a decimal number
  static_cast<void>(fmt::format("{:.2x}", amount));
#elif SHOULD_NOT_COMPILE == 7  // a date has no such field: see NorvikCore/platform/values/Date_fmt.h
  static_cast<void>(fmt::format("{:%Q}", payday));
#elif SHOULD_NOT_COMPILE == 8  // a date with a pattern has a width that is a number, and no precision
  static_cast<void>(fmt::format("{:.3%Y}", payday));
#elif SHOULD_NOT_COMPILE == 9  // could not convert | no matching function for call to
  take(tick);
#elif SHOULD_NOT_COMPILE == 10  // no matching function for call to | cannot bind | invalid initialization of reference
  take(name, name);
#elif SHOULD_NOT_COMPILE == 11  // conversion from | no viable conversion from
  const std::string_view view = name;
#elif SHOULD_NOT_COMPILE == 12  // NotAllValuesHaveAnOrder_CallCompareOrUseAnUnorderedMap
  static_cast<void>(value < value);
#elif SHOULD_NOT_COMPILE == 13  // no match for | invalid operands to binary expression
  static_cast<void>(slip < person);
#elif SHOULD_NOT_COMPILE == 14  // a Value gives text as NSString: as<NSString>().str() is a std::string
  for (const std::string& each : slips->as<std::string>()) NSLog("%@", each);
#elif SHOULD_NOT_COMPILE == 15  // a Value cannot be converted to this type
  static_cast<void>(std::ranges::count_if(slips->as<std::tm>(), [](const std::tm&) { return true; }));
#elif SHOULD_NOT_COMPILE == 16  // dangling | borrowed_iterator_t
  NSLog("%@", std::ranges::max_element(slips->as<Slip>(), {}, &Slip::netPay)->netPay());
#elif SHOULD_NOT_COMPILE == 18  // months and years differ in length: use nk_addMonths() or nk_addYears()
  take(payday + std::chrono::months(1));
#elif SHOULD_NOT_COMPILE == 19  // months and years differ in length: use nk_addMonths() or nk_addYears()
  payday -= std::chrono::years(1);
#elif SHOULD_NOT_COMPILE == 17  // ADoubleIsNotExact_WriteALiteralLike_1_50_dec
  static_cast<void>(amount * 0.2);
#elif SHOULD_NOT_COMPILE == 20  // ADoubleIsNotExact_WriteALiteralLike_1_50_dec
  static_cast<void>(1.5 + amount);
#elif SHOULD_NOT_COMPILE == 21  // ADoubleIsNotExact_WriteALiteralLike_1_50_dec
  static_cast<void>(amount == 1.5);
#elif SHOULD_NOT_COMPILE == 22  // make() creates objects, of classes derived from NSObject
  static_cast<void>(make<NSString>("net"));
#elif SHOULD_NOT_COMPILE == 23  // a Ref holds an object, of a complete class derived from NSObject
  const Ref<NSString> held;
#elif SHOULD_NOT_COMPILE == 24  // ATextIsReadBy_Decimal_parse
  static_cast<void>(Decimal{"12.34"});
#elif SHOULD_NOT_COMPILE == 25  // ATextIsReadBy_Decimal_parse
  static_cast<void>(Decimal(name));
#endif
}

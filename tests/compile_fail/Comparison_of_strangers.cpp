// Two values of different types compare only where one converts to the other: that each could become a Value does not
// make them comparable, whatever headers are included.
using namespace norvik;

enum class Frequency { weekly, monthly };

bool compare(Date payday, Decimal rate, const NSNumber& hours, const NSString& name, const Ref<NSArray>& slips,
             const Ref<NSDictionary>& totals, const Block<void()>& pay, const Block<bool(const Value&)>& test,
             NSRange range, SEL selector, std::optional<Date> paid, std::optional<Decimal> bonus,
             const std::string& text, const Value& value) {
  // clang-format off
#ifndef SHOULD_NOT_COMPILE
  return value == payday && value == rate && rate == value && value == 0.1 && value == "x" && "x" == value && value == text &&
         value == name && value == hours && value == slips && slips == value && value == pay && value == paid &&
         value == true && value != 3 && rate == 3 && 3 < rate && rate == hours && hours == 0.1 && hours < rate &&
         hours == true && name == "x" && name == text && text < name && name == std::string_view("x") && bonus == rate &&
         bonus == 3 && paid == payday && slips == nullptr && pay == nullptr && test == nullptr && selector == "pay" &&
         range == NSMakeRange(0, 1) && rate + 1 == 2 * rate;
#elif SHOULD_NOT_COMPILE == 1
  return payday == "2024-04-30";
#elif SHOULD_NOT_COMPILE == 2
  return rate == payday;
#elif SHOULD_NOT_COMPILE == 3
  return rate == "0.1";
#elif SHOULD_NOT_COMPILE == 4
  return rate == 0.1;
#elif SHOULD_NOT_COMPILE == 5
  return 0.1 != rate;
#elif SHOULD_NOT_COMPILE == 6
  return rate < 0.1f;
#elif SHOULD_NOT_COMPILE == 7
  return rate * 0.2 == rate;
#elif SHOULD_NOT_COMPILE == 8
  return rate == true;
#elif SHOULD_NOT_COMPILE == 9
  return rate == 'x';
#elif SHOULD_NOT_COMPILE == 10
  return rate == name;
#elif SHOULD_NOT_COMPILE == 11
  return payday == 3;
#elif SHOULD_NOT_COMPILE == 12
  return payday < "2024-04-30";
#elif SHOULD_NOT_COMPILE == 13
  return payday == name;
#elif SHOULD_NOT_COMPILE == 14
  return hours == "1";
#elif SHOULD_NOT_COMPILE == 15
  return hours == name;
#elif SHOULD_NOT_COMPILE == 16
  return hours == 'x';
#elif SHOULD_NOT_COMPILE == 17
  return (hours <=> payday) == 0;
#elif SHOULD_NOT_COMPILE == 18
  return name == 5;
#elif SHOULD_NOT_COMPILE == 19
  return name == 'x';
#elif SHOULD_NOT_COMPILE == 20
  return slips == name;
#elif SHOULD_NOT_COMPILE == 21
  return slips == 5;
#elif SHOULD_NOT_COMPILE == 22
  return slips == totals;
#elif SHOULD_NOT_COMPILE == 23
  return slips == pay;
#elif SHOULD_NOT_COMPILE == 24
  return pay == "x";
#elif SHOULD_NOT_COMPILE == 25
  return test == "x";
#elif SHOULD_NOT_COMPILE == 26
  return test == pay;
#elif SHOULD_NOT_COMPILE == 27
  return range == 5;
#elif SHOULD_NOT_COMPILE == 28
  return selector == 5;
#elif SHOULD_NOT_COMPILE == 29
  return paid == "2024-04-30";
#elif SHOULD_NOT_COMPILE == 30
  return paid == rate;
#elif SHOULD_NOT_COMPILE == 31
  return bonus == 0.1;
#elif SHOULD_NOT_COMPILE == 32
  return bonus == name;
#elif SHOULD_NOT_COMPILE == 33
  return text == payday;
#elif SHOULD_NOT_COMPILE == 34
  return value == 'x';
#elif SHOULD_NOT_COMPILE == 35
  return value < 5;
#elif SHOULD_NOT_COMPILE == 36
  return rate == Frequency::weekly;
#endif
}

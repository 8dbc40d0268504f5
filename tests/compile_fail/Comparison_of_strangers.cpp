// Values of different types can be compared only if one converts to the other. It is not enough that each of them
// converts to a Value. The included headers make no difference.
using namespace norvik;

enum class Frequency { weekly, monthly };

bool compare(Date payday, Decimal rate, const NSNumber& hours, const NSString& name, const Ref<NSArray>& slips,
             const Ref<NSDictionary>& totals, const Block<void()>& pay, const Block<bool(const Value&)>& test,
             NSRange range, SEL selector, std::optional<Date> paid, std::optional<Decimal> bonus,
             const std::string& text, const Value& value) {
  // clang-format off
#ifndef SHOULD_NOT_COMPILE
  return value == payday && value == rate && rate == value && value == 0.1 && value == 0.5f && value == "x" && "x" == value && value == text &&
         value == name && value == hours && value == slips && slips == value && value == pay && value == paid &&
         value == true && value != 3 && rate == 3 && 3 < rate && rate == hours && hours == 0.1 && hours < rate &&
         hours == true && name == "x" && name == text && text < name && name == std::string_view("x") && bonus == rate &&
         bonus == 3 && paid == payday && slips == nullptr && pay == nullptr && test == nullptr && selector == "pay" &&
         range == NSMakeRange(0, 1) && rate + 1 == 2 * rate;
#else
  static_cast<void>(payday == "2024-04-30");  // refused
  static_cast<void>(rate == payday);  // refused
  static_cast<void>(rate == "0.1");  // refused
  static_cast<void>(rate == 0.1);  // refused
  static_cast<void>(0.1 != rate);  // refused
  static_cast<void>(rate < 0.1f);  // refused
  static_cast<void>(rate * 0.2 == rate);  // refused
  static_cast<void>(rate == true);  // refused
  static_cast<void>(rate == 'x');  // refused
  static_cast<void>(rate == name);  // refused
  static_cast<void>(payday == 3);  // refused
  static_cast<void>(payday < "2024-04-30");  // refused
  static_cast<void>(payday == name);  // refused
  static_cast<void>(hours == "1");  // refused
  static_cast<void>(hours == name);  // refused
  static_cast<void>(hours == 'x');  // refused
  static_cast<void>((hours <=> payday) == 0);  // refused
  static_cast<void>(name == 5);  // refused
  static_cast<void>(name == 'x');  // refused
  static_cast<void>(slips == name);  // refused
  static_cast<void>(slips == 5);  // refused
  static_cast<void>(slips == totals);  // refused
  static_cast<void>(slips == pay);  // refused
  static_cast<void>(pay == "x");  // refused
  static_cast<void>(test == "x");  // refused
  static_cast<void>(test == pay);  // refused
  static_cast<void>(range == 5);  // refused
  static_cast<void>(selector == 5);  // refused
  static_cast<void>(paid == "2024-04-30");  // refused
  static_cast<void>(paid == rate);  // refused
  static_cast<void>(bonus == 0.1);  // refused
  static_cast<void>(bonus == name);  // refused
  static_cast<void>(text == payday);  // refused
  static_cast<void>(value == 'x');  // refused
  static_cast<void>(value == 1.1L);  // refused
  static_cast<void>(1.1L != value);  // refused
  static_cast<void>(value == std::optional<long double>(1.1L));  // refused
  static_cast<void>(value == nullptr);  // refused
  static_cast<void>(value == u8"x");  // refused
  static_cast<void>(value == u"x");  // refused
  static_cast<void>(value == L"x");  // refused
  static_cast<void>(value == &payday);  // refused
  static_cast<void>(value == Frequency::weekly);  // refused
  static_cast<void>(hours == 1.1L);  // refused
  static_cast<void>(rate == 1.1L);  // refused
  static_cast<void>(value < 5);  // refused
  static_cast<void>(rate == Frequency::weekly);  // refused
  return false;
#endif
}

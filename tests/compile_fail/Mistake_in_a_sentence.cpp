// Each common mistake is refused, and the compiler says the sentence after its number.
using namespace norvik;

struct Money {
  int pence;
};

std::optional<std::vector<NSString>> names();
Ref<NSArray> slips();

void mistake(const std::string& text, const char* pattern, const NSString& name, const Value& value, Money money,
             const Ref<NSArray>& array, const Ref<NSMutableArray>& changing, std::optional<Ref<NSArray>> perhaps) {
  // clang-format off
#ifndef SHOULD_NOT_COMPILE
  if (const auto found = names()) for (const NSString& each : *found) NSLog("%@", each);
  if (perhaps) for (const Value& each : **perhaps) NSLog("%@", each);
  for (const Value& each : *array) NSLog("%@", each);
  for (const char32_t each : name.codePoints()) NSLog("%C", each);
  DDLogInfo("%@ %s", text, pattern);
  DDLogInfo(runtimeFormat(text), value);
  NSLog("%@", value.as<NSString>().str());
  NSLog("%@ %@", value.as<Ref<NSArray>>(), value.as<std::optional<Decimal>>());
  changing->addObject(array);
  NSLog("%@ %d", NSArray::arrayWithObjects(money.pence), money.pence);
#elif SHOULD_NOT_COMPILE == 1  // AnOptionalIsNotARange_TestItAndLoopOverWhatItHolds
  for (const NSString& each : names()) NSLog("%@", each);
#elif SHOULD_NOT_COMPILE == 2  // AnOptionalIsNotARange_TestItAndLoopOverWhatItHolds
  for (const Value& each : perhaps) NSLog("%@", each);
#elif SHOULD_NOT_COMPILE == 3  // ARefIsNotARange_LoopOverTheObjectItHolds
  for (const Value& each : array) NSLog("%@", each);
#elif SHOULD_NOT_COMPILE == 4  // AValueIsNotARange_LoopOverTheCollectionItHolds
  for (const Value& each : value) NSLog("%@", each);
#elif SHOULD_NOT_COMPILE == 5  // ATextIsNotARange_LoopOverItsCodePoints
  for (const char32_t each : name) NSLog("%C", each);
#elif SHOULD_NOT_COMPILE == 6  // ATemporaryRefEndsBeforeTheLoop_KeepItInAVariable
  for (const Value& each : *slips()) NSLog("%@", each);
#elif SHOULD_NOT_COMPILE == 7  // a format is a literal
  DDLogInfo(text);
#elif SHOULD_NOT_COMPILE == 8  // a format is a literal
  DDLogWarn(pattern);
#elif SHOULD_NOT_COMPILE == 9  // a format is a literal
  DDLogError(name, 5);
#elif SHOULD_NOT_COMPILE == 10  // a format is a literal
  DDLogError(value);
#elif SHOULD_NOT_COMPILE == 11  // a format is a literal
  NSLog(text);
#elif SHOULD_NOT_COMPILE == 12  // a Value gives text as NSString: as<NSString>().str() is a std::string
  NSLog("%@", value.as<std::string>());
#elif SHOULD_NOT_COMPILE == 13  // a Value gives text as NSString
  NSLog("%@", value.as<std::string_view>());
#elif SHOULD_NOT_COMPILE == 14  // a Value gives text as NSString
  NSLog("%s", value.as<const char*>());
#elif SHOULD_NOT_COMPILE == 15  // a Value cannot be converted to this type: specialise norvik::ValueConversion for it
  NSLog("%p", value.as<int*>());
#elif SHOULD_NOT_COMPILE == 16  // a Value cannot be converted to this type
  NSLog("%d", value.as<Money>().pence);
#elif SHOULD_NOT_COMPILE == 17  // a Value gives an object by its Ref
  NSLog("%@", value.as<NSArray>().description());
#elif SHOULD_NOT_COMPILE == 18  // a Value gives an object by its Ref
  NSLog("%@", value.as<NSArray*>());
#elif SHOULD_NOT_COMPILE == 19  // a Value cannot be converted to this type
  NSLog("%@", value.as<std::optional<std::string>>());
#elif SHOULD_NOT_COMPILE == 20  // a Value gives text as NSString
  for (const std::string& each : array->as<std::string>()) NSLog("%@", each);
#elif SHOULD_NOT_COMPILE == 21  // a Value gives an object by its Ref
  for (const NSArray* each : array->as<NSArray*>()) NSLog("%@", each);
#elif SHOULD_NOT_COMPILE == 22  // a collection holds Values, and this type does not convert to Value: pass an object by its Ref
  NSLog("%@", NSArray::arrayWithObjects(1, money));
#elif SHOULD_NOT_COMPILE == 23  // a collection holds Values
  NSLog("%@", NSArray::arrayFrom(std::vector<Money>{money}));
#elif SHOULD_NOT_COMPILE == 24  // a collection holds Values
  NSLog("%@", NSSet::setWithObjects(*array));
#elif SHOULD_NOT_COMPILE == 25  // an object becomes a value by its Ref: ref(object)
  changing->addObject(*array);
#elif SHOULD_NOT_COMPILE == 26  // formatNeedsAnotherArgument
  DDLogInfo("%@");
#elif SHOULD_NOT_COMPILE == 27  // this type cannot be formatted: it has no description()
  DDLogInfo("%@", money);
#elif SHOULD_NOT_COMPILE == 28  // no matching function for call to | no matching constructor for initialization of
  NSLog("%@", make<NSArray>(5, 6));
#endif
}

// A character becomes neither a number nor a value by itself: 'x' as an amount is a slip, and as a value it could mean
// a text too. A boolean is no amount.
using namespace norvik;

void take(const Decimal& amount);
void takeValue(const Value& value);

void convert(char letter, char32_t point) {
  // clang-format off
#ifndef SHOULD_NOT_COMPILE
  const Decimal code(int{letter});
  const NSNumber number(letter), wide(point);
  const std::int8_t small = 5;
  const Decimal five = small;
  const Value text = "x", truth = true, count = small, ofNumber = number;
  take(code + five);
#elif SHOULD_NOT_COMPILE == 1
  const Decimal y = 'x';
#elif SHOULD_NOT_COMPILE == 2
  const Decimal y('x');
#elif SHOULD_NOT_COMPILE == 3
  const Decimal y = L'x';
#elif SHOULD_NOT_COMPILE == 4
  const Decimal y = u8'x';
#elif SHOULD_NOT_COMPILE == 5
  const Decimal y = point;
#elif SHOULD_NOT_COMPILE == 6
  const Decimal y = true;
#elif SHOULD_NOT_COMPILE == 7
  take(letter);
#elif SHOULD_NOT_COMPILE == 8
  Decimal y; y += 'x';
#elif SHOULD_NOT_COMPILE == 9
  const NSNumber y = 'x';
#elif SHOULD_NOT_COMPILE == 10
  const NSNumber y = point;
#elif SHOULD_NOT_COMPILE == 11
  const Value y = 'x';
#elif SHOULD_NOT_COMPILE == 12
  const Value y('x');
#elif SHOULD_NOT_COMPILE == 13
  takeValue(u'x');
#elif SHOULD_NOT_COMPILE == 14
  const std::optional<Decimal> y = 'x';
#endif
}

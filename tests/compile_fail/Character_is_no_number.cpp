// A character does not convert to a number or to a value. 'x' as an amount is a mistake, and 'x' as a value could also
// mean a text. A boolean is not an amount.
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
  const Date payday, next = payday + 86'400, before = 0.5 + payday - 1u;
  const NSTimeInterval seconds = next - before;
  take(Decimal(seconds));
#else
  const Decimal y1 = 'x';  // refused
  const Decimal y2('x');  // refused
  const Decimal y3 = L'x';  // refused
  const Decimal y4 = u8'x';  // refused
  const Decimal y5 = point;  // refused
  const Decimal y6 = true;  // refused
  take(letter);  // refused
  Decimal y8; y8 += 'x';  // refused
  const NSNumber y9 = 'x';  // refused
  const NSNumber y10 = point;  // refused
  const Value y11 = 'x';  // refused
  const Value y12('x');  // refused
  takeValue(u'x');  // refused
  const std::optional<Decimal> y14 = 'x';  // refused
  const Date y15 = Date() + 'x';  // refused
  const Date y16 = Date() - true;  // refused
  const Date y17 = Date() + Date();  // refused
  const Date y18 = Date() + five;  // refused
  const Decimal y19 = Decimal(7) % 'x';  // refused
#endif
}

// Compares Decimal's texts and arithmetic with a model of calculation by hand.
//
// An input that starts with '=' is a text to read. Any other input is an operation: operator (+ - * / or r to round),
// mode (0 to 3), scale, and two numbers such as -123E-2, separated by spaces: "/0 2 100E-2 3E0". Each operation runs
// once with a handler that raises an exception for no error, and once with a handler that raises one for every error.

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/DecimalModel.h"
#include "tests/support/DecimalSamples.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

using namespace norvik;
using norvik::test::DecimalSamples;
using norvik::test::Sample;

[[noreturn]] void differs(const std::string& input, const Decimal& ours, const std::string& expected) {
  std::fprintf(stderr, "%s: %s, expected %s\n", input.c_str(), ours.stringValue().c_str(), expected.c_str());
  std::abort();
}

void check(const std::string& input, const Decimal& ours, const model::Result& result) {
  if (result.outcome != model::Outcome::number) {
    if (!ours.isNaN()) differs(input, ours, "a fault");
    return;
  }
  const model::Number& n = result.number;
  const Decimal expected = DecimalSamples::make(n.digits, static_cast<int>(n.exponent), n.negative).decimal;
  if (ours.parts() != expected.parts()) differs(input, ours, model::print(n));
}

/// [-]digits[.digits] with at least one digit: the form that the model reads.
bool isPlain(const std::string& text) {
  const std::size_t start = text.rfind('-', 0) == 0 ? 1 : 0;
  const bool digits = text.find_first_of("0123456789") != std::string::npos;
  return digits && text.find_first_not_of("0123456789.", start) == std::string::npos &&
         text.find('.') == text.rfind('.');
}

void readText(const std::string& text) {
  const auto value = Decimal::parse(text);
  if (isPlain(text))
    check(text, value.value_or(Decimal::notANumber()),
          model::round(model::parse(text), model::Mode::plain, model::noScale));
  if (!value) return;
  const auto again = Decimal::parse(value->stringValue());
  if (!again || *again != *value || again->hash() != value->hash()) differs(text, *value, "a text that reads back");
}

/// Reads digits, an E and an exponent, limited to the range of a number.
bool readNumber(std::istream& in, Sample& sample) {
  std::string word;
  if (!(in >> word)) return false;
  const bool negative = word[0] == '-';
  const std::size_t end = word.find('E');
  if (end == std::string::npos) return false;
  const std::string digits = word.substr(negative ? 1 : 0, end - (negative ? 1 : 0));
  if (digits.size() > 38 || digits.find_first_not_of("0123456789") != std::string::npos) return false;
  const int exponent = std::atoi(word.substr(end + 1, 5).c_str());
  if (exponent < -128 || exponent > 127) return false;
  sample = DecimalSamples::make(digits, exponent, negative);
  return true;
}

/// The name of the exception for a result if every error raises one, or empty.
std::string faultOf(const model::Result& result) {
  switch (result.outcome) {
    case model::Outcome::number:
      return result.inexact ? "NSDecimalNumberExactnessException" : "";
    case model::Outcome::overflow:  // rounding up to a scale overflowed, after 38 digits were too few
      return result.inexact ? "NSDecimalNumberExactnessException" : "NSDecimalNumberOverflowException";
    case model::Outcome::underflow:
      return "NSDecimalNumberUnderflowException";
    case model::Outcome::divideByZero:
      return "NSDecimalNumberDivideByZeroException";
  }
  return "";
}

void operate(const std::string& input) {
  std::istringstream in(input);
  char operation = 0, mode = 0;
  int scale = 0;
  Sample a, b;
  if (!(in >> operation >> mode >> scale) || mode < '0' || mode > '3' || scale < -32767 || scale > 32767) return;
  if (!readNumber(in, a) || !readNumber(in, b)) return;
  const auto rounding = static_cast<NSRoundingMode>(mode - '0');
  const auto places = static_cast<std::int16_t>(scale);
  const auto paper = static_cast<model::Mode>(mode - '0');
  model::Number minus = b.number;
  minus.negative = !minus.negative && !minus.digits.empty();
  const auto checkBoth = [&](auto ours, const model::Result& expected) {
    check(input,
          ours(NSDecimalNumberHandler({.roundingMode = rounding,
                                       .scale = places,
                                       .raiseOnOverflow = false,
                                       .raiseOnUnderflow = false,
                                       .raiseOnDivideByZero = false})),
          expected);
    std::string raised;
    Decimal result;
    try {
      result = ours(NSDecimalNumberHandler({.roundingMode = rounding, .scale = places, .raiseOnExactness = true}));
    } catch (const NSException& exception) {
      raised = exception.name().utf8();
    }
    if (raised != faultOf(expected)) differs(input, result, "\"" + faultOf(expected) + "\", not \"" + raised + "\"");
    if (raised.empty()) check(input, result, expected);
  };
  switch (operation) {
    case '+':
      return checkBoth([&](const auto& handler) { return a.decimal.decimalNumberByAdding(b.decimal, handler); },
                       model::round(model::add(a.number, b.number), paper, scale));
    case '-':
      return checkBoth([&](const auto& handler) { return a.decimal.decimalNumberBySubtracting(b.decimal, handler); },
                       model::round(model::add(a.number, minus), paper, scale));
    case '*':
      return checkBoth([&](const auto& handler) { return a.decimal.decimalNumberByMultiplyingBy(b.decimal, handler); },
                       model::round(model::multiply(a.number, b.number), paper, scale));
    case '/':
      return checkBoth([&](const auto& handler) { return a.decimal.decimalNumberByDividingBy(b.decimal, handler); },
                       model::divide(a.number, b.number, paper, scale));
    case 'r':
      return checkBoth(
          [&](const auto& handler) { return a.decimal.decimalNumberByRoundingAccordingToBehavior(handler); },
          model::round(a.number, paper, scale));
    default:
      if (static_cast<int>(a.decimal.compare(b.decimal)) != model::compare(a.number, b.number)) {
        differs(input, a.decimal, "another order");
      }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 400) return 0;
  const std::string input(data, data + size);
  if (input[0] == '=') {
    readText(input.substr(1));
  } else {
    operate(input);
  }
  return 0;
}

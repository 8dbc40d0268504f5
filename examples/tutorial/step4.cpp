// examples/tutorial/step4.cpp - docs/tutorial.md: a field that is bound to the model.
#include "AmountField.h"
#include "Payslip.h"

#include <iostream>

using namespace payroll;

int main() {
  NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(999999.99_dec, 0);  // before the first field

  auto sian = payslip("Sian", "Works", 2500.00_dec);
  auto field = make<AmountField>();
  nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *sian, "grossPay", nullptr);
  std::cout << "the field shows " << field->text() << "\n";

  sian->setGrossPay(2600.5_dec);  // the program changes the model
  std::cout << "the field shows " << field->text() << "\n";

  for (const char* typed : {"£2,750.25", "2.75O", "1000000", ""}) {  // the user changes the field
    NSString reason;
    if (field->type(typed, reason))
      std::cout << "\"" << typed << "\": the gross pay is " << sian->grossPay() << "\n";
    else
      std::cout << "\"" << typed << "\" is refused: " << reason << "\n";
  }
}

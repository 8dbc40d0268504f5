// examples/diagnostics/diagnostics.cpp - a program to stop in a debugger, which shows the properties of a payment.
#include "NorvikCore/diagnostics/NSObject+MK_AutoDescribe.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "NorvikCore/platform/values/NSException.h"

using namespace norvik;

class Payment : public NSObject {
  NK_OBJECT(Payment, NSObject)
  NK_PROPERTY(Decimal, amount, setAmount)
  NK_PROPERTY(Date, date, setDate)
  NK_COMPUTED_PROPERTY(Decimal, fee)
  NK_PROPERTY(Ref<NSObject>, employee, setEmployee)

 public:
  Decimal fee() const { throw NSException("NoTariff", "the bank has not said it"); }
};

void pay(const Ref<Payment>& payment) {
  mk_printObject(*payment);  // temporary, for use without a debugger
}

int main() {
  auto payment = make<Payment>();
  payment->setAmount(1234.50_dec);
  payment->setDate("2021-05-28"_date);
  pay(payment);
}

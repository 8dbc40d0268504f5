// examples/bindings/bindings.cpp - a view without a screen, bound to a payslip in pounds that it shows in thousands.
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"

#include <iostream>

using namespace norvik;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)

 public:
  bool validateGrossPay(Value* value, Ref<NSError>* error) {
    if (value->as<Decimal>() >= Decimal(0)) return true;
    if (error) *error = NSError::errorWithDomain("Pay", 1);
    return false;
  }
  NK_METHOD_AS(validateGrossPay, "validateGrossPay:error:")
};

class PayField : public NSObject {
  NK_OBJECT(PayField, NSObject)
  NK_PROPERTY(Value, value, setValue)       // what the binding sets and follows
  NK_PROPERTY(bool, editable, setEditable)  // set by the binding, as the model can be written
};

int main() {
  auto payslip = make<Payslip>();
  auto field = make<PayField>();
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(
      *field, NSValueBinding, *payslip, keyPath<&Payslip::grossPay>(),
      NSDictionary::dictionaryWith({{NKBind, "validate"}}), [](const Decimal& pounds) { return pounds / 1000; },
      [](const Decimal& thousands) { return thousands * 1000; });

  payslip->setGrossPay(2500_dec);               // the field's value is 2.5
  field->setValue(Value(2.6_dec));              // the gross pay is 2600
  nk_updateBoundValue(*field, Value(2.7_dec));  // 2700, as if the user had typed 2.7
  std::cout << payslip->grossPay() << " " << field->value() << "\n";

  Ref<NSError> error;
  if (!nk_updateBoundValue(*field, Value(-1), &error)) std::cout << error->domain() << "\n";

  unbind(*field, NSValueBinding);
  payslip->setGrossPay(0_dec);
  std::cout << field->value() << "\n";
}

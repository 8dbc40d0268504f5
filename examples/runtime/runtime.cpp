// examples/runtime/runtime.cpp - a class that declares its properties; they are read and set by name, totalled and
// archived.
#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "NorvikCore/platform/values/NSException.h"

#include <iostream>

using namespace norvik;

class Payslip : public NSObject, public NSCoding {
  NK_OBJECT(Payslip, NSObject)
  NK_CODING
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(Decimal, tax, setTax)
  NK_COMPUTED_PROPERTY(Decimal, netPay)

  Decimal netPay() const { return grossPay() - tax(); }
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeObject(name(), "name");
    coder.encodeObject(grossPay(), "grossPay");
    coder.encodeObject(tax(), "tax");
  }
  bool initWithCoder(NSCoder& coder) override {
    name_ = coder.decode<NSString>("name");
    grossPay_ = coder.decode<Decimal>("grossPay");
    tax_ = coder.decode<Decimal>("tax");
    return true;
  }
};

Ref<Payslip> payslip(const char* name, Decimal grossPay, Decimal tax) {
  auto slip = make<Payslip>();
  slip->setName(name);
  slip->setGrossPay(grossPay);
  slip->setValue_forKey(tax, "tax");  // calls setTax()
  return slip;
}

int main() {
  auto slips = NSMutableArray::array();
  slips->addObject(payslip("Sian", 2500.00_dec, 290.40_dec));
  slips->addObject(payslip("Ann", 1850.50_dec, 160.50_dec));

  std::cout << "net pay " << slips->valueForKeyPath("@sum.netPay") << "\n";
  for (const Payslip& slip : slips->as<Payslip>()) std::cout << slip.name() << " " << slip.netPay() << "\n";

  Ref<NSData> data = NSKeyedArchiver::archivedDataWithRootObject(slips);
  auto same = NSKeyedUnarchiver::unarchiveObjectWithData(*data).as<Ref<NSArray>>();
  std::cout << same->count() << " payslips again, " << same->valueForKeyPath("@max.grossPay") << " at most\n";
  try {
    (void)same->valueForKeyPath("nettPay");  // misspelt
  } catch (const NSException& e) {
    std::cout << e.name() << "\n";
  }
}

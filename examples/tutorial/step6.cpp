// examples/tutorial/step6.cpp - docs/tutorial.md: a preference.
//
//   payroll [PERCENT]
#include "Payslip.h"

#include "NorvikCore/platform/foundation/NSBundle.h"
#include "NorvikCore/platform/foundation/NSUserDefaults.h"

#include <iostream>

using namespace payroll;

int main(int argc, char** argv) {
  NSBundle::mainBundle().setObject_forInfoDictionaryKey("uk.co.example.payroll", "CFBundleIdentifier");  // first

  NSUserDefaults& preferences = NSUserDefaults::standardUserDefaults();
  preferences.registerDefaults(*NSDictionary::dictionaryWith({{"pensionRate", 5_dec}}));
  if (argc > 1) {
    const std::optional<Decimal> percent = Decimal::parse(argv[1]);
    if (!percent) {
      std::cerr << "payroll: \"" << argv[1] << "\" is not a number; use payroll [PERCENT]\n";
      return 2;
    }
    preferences.setObject(*percent, "pensionRate");
  }

  auto sian = payslip("Sian", "Works", 2500.00_dec);
  sian->setPensionRate(preferences.objectForKey("pensionRate").as<Decimal>());
  std::cout << "at " << sian->pensionRate() << " % " << sian->name() << " gets " << sian->netPay() << "\n";
}

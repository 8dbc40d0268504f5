// examples/queries/queries.cpp - the code of docs/queries.md.
#include "NorvikCore/linq/LINQ.h"
#include "NorvikCore/platform/values/Decimal_literal.h"

#include <iostream>

using namespace norvik;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(NSString, department, setDepartment)
  NK_PROPERTY(Decimal, netPay, setNetPay)
};

Ref<Payslip> payslip(const char* name, const char* department, Decimal netPay) {
  auto slip = make<Payslip>();
  slip->setName(name);
  slip->setDepartment(department);
  slip->setNetPay(netPay);
  return slip;
}

struct Line {
  NSString kind;
  Decimal amount;
};

int main() {
  const Ref<NSArray> payslips =
      NSArray::arrayWithObjects(payslip("Sian", "Works", 2209.60_dec), payslip("Ann", "Sales", 1690.00_dec),
                                payslip("Bob", "Works", -12.50_dec), payslip("Cid", "Sales", 1203.15_dec));
  const auto isPaid = [](const Payslip& slip) { return slip.netPay() > 0; };

  Value net = payslips | linq_where(isPaid) | linq_select(&Payslip::netPay) | linq_sum();
  std::cout << "net pay " << net << "\n";

  Ref<NSArray> names = payslips | linq_where(isPaid) | linq_orderByKey("name", true) | linq_select(&Payslip::name);
  std::cout << names->componentsJoinedByString(", ") << "\n";

  Ref<NSMutableDictionary> groups = payslips | linq_groupBy(&Payslip::department);
  for (const auto& [department, group] : *groups) {
    std::cout << department << ": " << linq_sumForKey(*group.as<Ref<NSArray>>(), "netPay") << "\n";
  }

  Value overdrawn = linq_firstOrNil(*payslips, [](const Payslip& slip) { return slip.netPay() < 0; });
  if (const auto* slip = overdrawn.object<Payslip>()) std::cout << "negative: " << slip->name() << "\n";

  std::vector<Line> lines = {{"Basic pay", 2500.00_dec}, {"Tax", -290.40_dec}, {"Bonus", 100.00_dec}};
  Value pay =
      lines | linq_where([](const Line& line) { return line.amount > 0; }) | linq_select(&Line::amount) | linq_sum();
  std::cout << "pay " << pay << "\n";
}

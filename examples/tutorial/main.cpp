// examples/tutorial/main.cpp - docs/tutorial.md: the whole application.
//
//   payroll         reads lines "NAME AMOUNT" and sets the pay; at the end of the input it writes the payslips
#include "AmountField.h"
#include "PayFile.h"
#include "Payslip.h"
#include "PayslipText.h"

#include "NorvikCore/linq/LINQ.h"
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/appkit/AttributedStringHTML.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/foundation/NSBundle.h"
#include "NorvikCore/platform/foundation/NSUserDefaults.h"

#include <fstream>
#include <iostream>
#include <map>
#include <string>

using namespace payroll;

/// Writes every change of a gross pay into the file.
class Saver : public NSObject {
  NK_OBJECT(Saver, NSObject)

  void follow(const Ref<Payslip>& slip) {
    controller_->observe(
        slip, keyPath<&Payslip::grossPay>(), NSKeyValueObservingOptionInitial,
        [](Saver& saver, Payslip& changed, const Decimal& grossPay) { saver.file_.set(changed.name(), grossPay); });
  }

 private:
  PayFile file_{"pay.txt", [](std::size_t count) { DDLogInfo("%d amounts are in pay.txt", count); }};
  Ref<FBKVOController> controller_ = FBKVOController::controllerWithObserver(*this);
};

int main() {
  NSBundle::mainBundle().setObject_forInfoDictionaryKey("uk.co.example.payroll", "CFBundleIdentifier");
  NSUserDefaults::standardUserDefaults().registerDefaults(*NSDictionary::dictionaryWith({{"pensionRate", 5_dec}}));
  const Decimal rate = NSUserDefaults::standardUserDefaults().objectForKey("pensionRate").as<Decimal>();

  auto logger = DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory("logs"));
  logger->setLogFormatter(make<DDLogLineFormatter>());
  DDLog::addLogger(logger);
  ddLogLevel = LOG_LEVEL_INFO;
  NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(999999.99_dec, 0);

  auto payslips = NSMutableArray::array();
  std::map<NSString, Ref<AmountField>> fields;
  auto saver = make<Saver>();
  for (const auto& slip : {payslip("Sian", "Works", 2500.00_dec), payslip("Ann", "Sales", 1850.50_dec)}) {
    slip->setPensionRate(rate);
    payslips->addObject(slip);
    saver->follow(slip);
    fields[slip->name()] = make<AmountField>();
    nk_bind_toObject_withKeyPath_options(*fields[slip->name()], NSValueBinding, *slip, "grossPay", nullptr);
  }

  for (std::string name, amount; std::cin >> name >> amount; dispatch_main_queue_drain()) {
    NSString reason;
    const auto field = fields.find(name);
    if (field == fields.end()) {
      std::cout << "there is no employee " << name << "\n";
    } else if (field->second->type(amount, reason)) {
      DDLogInfo("%@ is paid %@", field->first, field->second->text());
    } else {
      DDLogWarn("the pay of %@ is unchanged: %@", field->first, reason);
      std::cout << reason << "\n";
    }
  }

  const Ref<NSMutableDictionary> departments = payslips | linq_groupBy(&Payslip::department);
  for (const auto& [department, group] : *departments)
    std::cout << department << ": " << linq_sumForKey(*group.as<Ref<NSArray>>(), "netPay") << "\n";

  std::ofstream page("payslips.html");
  page << "<!DOCTYPE html><meta charset=\"utf-8\"><title>Payslips</title>\n";
  for (const Payslip& slip : payslips->as<Payslip>()) page << "<p>" << htmlText(*payslipText(slip)) << "</p>\n";
}

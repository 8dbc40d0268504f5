// examples/tutorial/step7.cpp - docs/tutorial.md: a log.
#include "Payslip.h"

#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/logging/DDLogMacros.h"

using namespace payroll;

int main() {
  auto logger = DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory("logs"));
  logger->setLogFormatter(make<DDLogLineFormatter>());
  DDLog::addLogger(logger);
  ddLogLevel = LOG_LEVEL_INFO;

  auto sian = payslip("Sian", "Works", 2500.00_dec);
  auto bob = payslip("Bob", "Works", -12.50_dec);
  for (const auto& slip : {sian, bob}) {
    DDLogInfo("%@ gets %@", slip->name(), slip->netPay());
    DDLogVerbose("%@", slip);  // the level admits no verbose messages
    if (slip->netPay() < 0) DDLogWarn("the net pay of %@ is below zero", slip->name());
  }
}

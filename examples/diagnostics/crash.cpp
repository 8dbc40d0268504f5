// examples/diagnostics/crash.cpp - a program that an uncaught exception ends, and the report in its log.
#include "NorvikCore/logging/DDCrashHandler.h"
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDLogMacros.h"

#include <cstdio>
#include <stdexcept>

using namespace norvik;

void pay(const NSString& name, const NSString& account) {
  DDLogInfo("paying %@", name);
  if (account.empty()) throw std::invalid_argument("no bank account");
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  const NSString folder = argv[1];
  DDLog::addLogger(DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory(folder)));
  DDCrashHandler::install();

  ddLogLevel = LOG_LEVEL_INFO;
  pay("Amy Pond", "20-00-00 55779911");
  pay("Zoë Smith", "");
}

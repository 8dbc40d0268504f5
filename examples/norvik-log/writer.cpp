// examples/norvik-log/writer.cpp - docs/norvik-log.md: a program whose log the reader reads.
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/logging/DDLogMacros.h"

using namespace norvik;

int main() {
  auto logger = DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory("logs"));
  logger->setLogFormatter(make<DDLogLineFormatter>());  // with the level, in UTC, one line per message
  DDLog::addLogger(logger);

  ddLogLevel = LOG_LEVEL_INFO;
  DDLogInfo("%d payslips read", 40);
  DDLogWarn("no bank account for %@", NSString("Zo\u00EB\nSmith"));
}

// examples/logging/databases.cpp - a program that writes its log to a database.
//
//   databases FILE        logs to the SQLite database
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/logging/database/DDSQLiteLogger.h"

#include <cstdio>

using namespace norvik;

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FILE\n", argv[0]);
    return 2;
  }
  auto database = DDSQLiteLogger::initWithPath(argv[1]);
  database->setMaxAge(30 * 24 * 60 * 60);  // seconds; a week unless set
  database->setSaveInterval(5);            // seconds from an entry to its save, at most; a minute unless set
  DDLog::addLogger(database, LOG_LEVEL_INFO);

  ddLogLevel = LOG_LEVEL_INFO;
  DDLogInfo("%d payslips read", 40);
  DDLogError("no bank account for %@", NSString("Zoë Smith"));
}

// tests/logging/database/sqlite_child.cpp - a process that logs to the database of its second argument, and ends in the
// way that its first argument names. DDSQLiteLoggerProcess_test.cpp checks the results.
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/database/DDSQLiteLogger.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace norvik;

void say(const std::string& name, int from, int to) {
  for (int i = from; i < to; ++i) {
    DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0, "f", "g", 1, Value(), "%@ %d", NSString(name), i);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const std::string ending = argv[1];
  const auto logger = DDSQLiteLogger::initWithPath(argv[2]);
  DDLog::addLogger(logger);
  if (ending == "killed") {  // saves batches of 100 entries until then
    logger->setSaveThreshold(100);
    say("entry", 0, 1000);
    DDLog::flushLog();
    say("entry", 1000, 1050);
    std::puts("saved");
    std::fflush(stdout);
    pause();
  } else if (ending == "exit") {
    say("entry", 0, 50);
    std::exit(0);
  } else if (ending == "return") {
    say("entry", 0, 50);
  } else if (ending == "shares") {  // the file, with other processes
    logger->setSaveThreshold(10);
    say(argv[3], 0, 1000);
    DDLog::flushLog();
    return logger->lostEntryCount() == 0 ? 0 : 1;
  } else {
    return 2;
  }
}

// tests/programs/norvik-log/norvik_log_writer.cpp - logs to a folder with rolling files, by the commands on its
// standard input:
//
//   norvik_log_writer line|default FOLDER [MAXIMUM-FILE-SIZE [NUMBER-OF-FILES]]
//
//   log LEVEL TEXT      a message; \n in the text is a line feed
//   many COUNT TEXT     COUNT messages, with a number after the text
//   thread NAME TEXT    a message from a thread of that name
//   at SECONDS TEXT     a message of that time since 1970, with nine digits after the point
//   roll now            starts another file
//   tick now            waits until a new file would have another time
//
// It answers each command with "done" when the message is in the file. If the variable NORVIK_LOG_WRITER_SQLITE has a
// path, or NORVIK_LOG_WRITER_POSTGRES a connection string of libpq, it also logs to these databases.
//
//   norvik_log_writer measure PROGRAM ARGUMENT...
//
// runs a program and then writes the largest amount of memory that the program used, in KiB, to standard error. A
// separate small process does this, because the system counts the memory of the process that starts a program as the
// program's.
#include <dlfcn.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileFormatterDefault.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/logging/database/DDSQLiteLogger.h"
#ifdef NORVIK_HAS_POSTGRESQL
#include "NorvikCore/postgresql/DDPostgreSQLLogger.h"
#endif

using namespace norvik;

namespace {

thread_local const timespec* stoppedAt = nullptr;

}  // namespace

/// Replaces the C library's function. Returns the system's clock, or the time at which a thread has stopped it.
extern "C" [[gnu::visibility("default")]] int clock_gettime(clockid_t clock, timespec* time) noexcept {
  using Function = int (*)(clockid_t, timespec*);
  static const auto function = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "clock_gettime"));
  if (clock != CLOCK_REALTIME || stoppedAt == nullptr) return function(clock, time);
  *time = *stoppedAt;
  return 0;
}

namespace {

/// A message gets the time at which its object is created.
void logAt(const std::string& seconds, const std::string& text) {
  const std::size_t point = seconds.find('.');
  const timespec time = {std::stoll(seconds.substr(0, point)), std::stol(seconds.substr(point + 1))};
  stoppedAt = &time;
  const Ref<DDLogMessage> message = DDLogMessage::initWithLogMsg(NSString(text), LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0,
                                                                 __FILE__, __func__, __LINE__, {}, 0);
  stoppedAt = nullptr;
  DDLog::queueLogMessage(message, false);
}

void log(const std::string& level, const std::string& text) {
  if (level == "error") {
    DDLogError("%s", text.c_str());
  } else if (level == "warn") {
    DDLogWarn("%s", text.c_str());
  } else if (level == "debug") {
    DDLogDebug("%s", text.c_str());
  } else {
    DDLogInfo("%s", text.c_str());
  }
}

/// Waits for the next step of the clock that file times use, which advances in steps of some milliseconds.
void waitForTick() {
  timespec before{}, now{};
  ::clock_gettime(CLOCK_REALTIME_COARSE, &before);
  do ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
  while (now.tv_sec == before.tv_sec && now.tv_nsec == before.tv_nsec);
}

std::string withLineFeeds(std::string text) {
  for (std::size_t at = text.find("\\n"); at != std::string::npos; at = text.find("\\n", at)) text.replace(at, 2, "\n");
  return text;
}

int measure(char** command) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::execv(command[0], command);
    ::_exit(127);
  }
  int status = 0;
  struct rusage usage {};
  if (::wait4(child, &status, 0, &usage) != child || !WIFEXITED(status)) return 2;
  std::cerr << usage.ru_maxrss << std::endl;
  return WEXITSTATUS(status);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  if (std::string(argv[1]) == "measure") return measure(argv + 2);
  ddLogLevel = LOG_LEVEL_VERBOSE;
  const auto manager = DDLogFileManagerDefault::initWithLogsDirectory(NSString(argv[2]));
  if (argc > 4) manager->setMaximumNumberOfLogFiles(std::strtoull(argv[4], nullptr, 10));
  const auto logger = DDFileLogger::initWithLogFileManager(manager);
  if (argc > 3) logger->setMaximumFileSize(std::strtoull(argv[3], nullptr, 10));
  if (std::string(argv[1]) == "line") {
    logger->setLogFormatter(make<DDLogLineFormatter>());
  } else {
    logger->setLogFormatter(make<DDLogFileFormatterDefault>());
  }
  DDLog::addLogger(logger);
  const char* const database = std::getenv("NORVIK_LOG_WRITER_SQLITE");
  if (database != nullptr) DDLog::addLogger(DDSQLiteLogger::initWithPath(NSString(database)));
#ifdef NORVIK_HAS_POSTGRESQL
  const char* const server = std::getenv("NORVIK_LOG_WRITER_POSTGRES");
  if (server != nullptr) DDLog::addLogger(DDPostgreSQLLogger::initWithConnectionString(NSString(server)));
#endif
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string command, first, text;
    words >> command >> first;
    std::getline(words >> std::ws, text);
    if (command == "log") {
      log(first, withLineFeeds(text));
    } else if (command == "many") {
      for (int i = 0, count = std::atoi(first.c_str()); i < count; ++i) log("info", text + " " + std::to_string(i));
    } else if (command == "thread") {
      std::thread([&] {
        ::pthread_setname_np(::pthread_self(), first.c_str());
        log("info", text);
      }).join();
    } else if (command == "at") {
      logAt(first, text);
    } else if (command == "roll") {
      logger->rollLogFile();
    } else if (command == "tick") {
      waitForTick();
    }
    DDLog::flushLog();
    std::cout << "done" << std::endl;
  }
  return 0;
}

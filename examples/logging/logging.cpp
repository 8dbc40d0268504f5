// examples/logging/logging.cpp - a program that logs to a rolling file, with a logger and a formatter of its own.
//
//   logging FOLDER        writes a log into the folder and prints the number of errors
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDLogMacros.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <string>

using namespace norvik;

class ErrorCounter : public DDAbstractLogger {
  NK_OBJECT(ErrorCounter, DDAbstractLogger)
  void logMessage(const DDLogMessage& message) override {
    if (message.logFlag() == LOG_FLAG_ERROR) ++errors;
  }
  std::atomic<int> errors = 0;
};

class WithThread : public DDLogFormatter {
  NK_OBJECT(WithThread, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    if (message.logMsg().empty()) return std::nullopt;  // dropped
    return stringWithFormat("%@ [%@] %@", message.timestamp(), message.threadName(), message.logMsg());
  }
};

class Transcript : public DDAbstractLogger {
  NK_OBJECT(Transcript, DDAbstractLogger)
  bool takesRuns() const noexcept override { return true; }
  std::size_t logMessages(const DDLogRun& run) override {
    for (const DDLogEntry& entry : run) {
      entry.appendText(text);  // or formatter()->appendLogEntry(text, entry)
      text += '\n';
    }
    return run.count();  // if fewer, the remaining entries are passed again
  }
  std::string text;
};

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  const NSString folder = argv[1];
  auto file = DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory(folder));
  file->setMaximumFileSize(4 << 20);
  file->setLogFormatter(make<WithThread>());
  auto counter = make<ErrorCounter>();
  auto transcript = make<Transcript>();
  DDLog::addLogger(file);
  DDLog::addLogger(counter, LOG_LEVEL_WARN);
  DDLog::addLogger(transcript);

  ddLogLevel = LOG_LEVEL_INFO;
  DDLogInfo("%d payslips read", 40);
  DDLogError("no bank account for %@", NSString("Zoë Smith"));
  DDLogVerbose("%@", file->logFileManager());  // not evaluated: the level has no verbose messages

  DDLog::flushLog();
  std::printf("%d error\n%s", counter->errors.load(), transcript->text.c_str());
}

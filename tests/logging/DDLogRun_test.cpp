// Loggers that take several messages at once. The loggers get the messages only when the test releases the logging
// queue, so that they come as one run.
#include "NorvikCore/logging/DDLogRun.h"

#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileFormatterDefault.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "tests/support/LogFolder.h"
#include "tests/support/RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace norvik {
namespace {

using test::Events;
using test::Latch;
using test::RecordingLogger;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <class... Args>
void log(int flag, FormatStringFor<Args...> format, const Args&... arguments) {
  DDLog::log(true, LOG_LEVEL_VERBOSE, flag, 7, "Payslip.cpp", "pay", 42, Value(), format, arguments...);
}

/// Stores the texts of each run in brackets; takes at most `most` messages at once.
class RunLogger : public DDAbstractLogger {
  NK_OBJECT(RunLogger, DDAbstractLogger)

  void logMessage(const DDLogMessage& message) override { events.add("not in a run: " + message.logMsg().str()); }
  bool takesRuns() const noexcept override { return true; }
  std::size_t logMessages(const DDLogRun& run) override {
    if (onRun) onRun(run);
    std::string texts = "[";
    std::size_t taken = 0;
    for (const DDLogEntry& entry : run) {
      if (taken++ == most) break;
      if (texts.size() > 1) texts += ' ';
      if (DDLogFormatter* own = formatter().get()) {
        if (!own->appendLogEntry(texts, entry)) texts += "(dropped)";
      } else {
        entry.appendText(texts);
      }
    }
    events.add(texts + "]");
    return answer.value_or(std::min(run.count(), most));
  }

  Events events;
  std::size_t most = 1000;
  std::optional<std::size_t> answer;           // returned instead of the number of messages taken
  std::function<void(const DDLogRun&)> onRun;  // set before the logger is added
};

class DDLogRuns : public test::CleanDDLog {
 protected:
  void TearDown() override {
    released.open();
    CleanDDLog::TearDown();
  }
  /// Blocks the logging queue until go().
  void hold() {
    DDLog::flushLog();
    dispatch_async(DDLog::loggingQueue(), [this] {
      held.open();
      released.wait();
    });
    held.wait();
  }
  void go() {
    released.open();
    DDLog::flushLog();
  }
  Latch held, released;
};

class TotalLogger : public DDAbstractLogger {
  NK_OBJECT(TotalLogger, DDAbstractLogger)
  bool takesRuns() const noexcept override { return true; }
  std::size_t logMessages(const DDLogRun& run) override {
    std::string lines;
    for (const DDLogEntry& entry : run) {
      entry.appendText(lines);
      lines += '\n';
    }
    sent.push_back(lines);
    return run.count();
  }
  std::vector<std::string> sent;
};

TEST_F(DDLogRuns, HeaderExample) {
  const auto logger = make<TotalLogger>();
  DDLog::addLogger(logger);
  hold();
  log(LOG_FLAG_INFO, "%d payslips", 40);
  log(LOG_FLAG_WARN, "%@ has no bank account", "Zoë");
  go();
  EXPECT_THAT(logger->sent, ElementsAre("40 payslips\nZoë has no bank account\n"));
}

TEST_F(DDLogRuns, ALoggerGetsWhatItAdmitsInOneRunAndInOrder) {
  const auto all = make<RunLogger>(), warnings = make<RunLogger>();
  DDLog::addLogger(all);
  DDLog::addLogger(warnings, LOG_LEVEL_WARN);
  hold();
  log(LOG_FLAG_DEBUG, "1");
  log(LOG_FLAG_ERROR, "2");
  log(LOG_FLAG_INFO, "3");
  log(LOG_FLAG_WARN, "4");
  go();
  EXPECT_THAT(all->events.all(), ElementsAre("[1 2 3 4]"));
  EXPECT_THAT(warnings->events.all(), ElementsAre("[2 4]"));
}

TEST_F(DDLogRuns, MessagesThatNobodyAdmitsAreDone) {
  const auto warnings = make<RunLogger>();
  DDLog::addLogger(warnings, LOG_LEVEL_WARN);
  for (int i = 0; i < 3000; ++i) log(LOG_FLAG_DEBUG, "%d", i);
  DDLog::flushLog();
  EXPECT_THAT(warnings->events.all(), IsEmpty());
}

TEST_F(DDLogRuns, AnEntryHasWhatTheMessageHas) {
  const auto logger = make<RunLogger>();
  struct Copy {
    int level, flag, context, line;
    std::string file, function, thread, label, text;
    std::uint32_t threadId;
    Date time;
  };
  std::vector<Copy> entries, messages;
  logger->onRun = [&](const DDLogRun& run) {
    for (const DDLogEntry& entry : run) {
      entries.push_back({entry.logLevel(), entry.logFlag(), entry.logContext(), entry.lineNumber(), entry.file(),
                         entry.function(), std::string(entry.threadName()), std::string(entry.queueLabel()),
                         entry.text().str(), entry.machThreadID(), entry.timestamp()});
      const DDLogMessage& message = entry.message();
      messages.push_back({message.logLevel(), message.logFlag(), message.logContext(), message.lineNumber(),
                          message.file(), message.function(), message.threadName().str(), message.queueLabel(),
                          message.logMsg().str(), message.machThreadID(), message.timestamp()});
    }
  };
  DDLog::addLogger(logger);
  hold();
  dispatch_sync(dispatch_queue_create("payroll"), [] { log(LOG_FLAG_INFO, "%d %@", 1, "one"); });
  go();
  ASSERT_EQ(entries.size(), 1U);
  for (const Copy& copy : {entries[0], messages[0]}) {
    EXPECT_EQ(copy.level, LOG_LEVEL_VERBOSE);
    EXPECT_EQ(copy.flag, LOG_FLAG_INFO);
    EXPECT_EQ(copy.context, 7);
    EXPECT_EQ(copy.line, 42);
    EXPECT_EQ(copy.file, "Payslip.cpp");
    EXPECT_EQ(copy.function, "pay");
    EXPECT_EQ(copy.label, "payroll");
    EXPECT_EQ(copy.text, "1 one");
    EXPECT_EQ(copy.threadId, kernel::currentThreadId());
    EXPECT_EQ(copy.thread, kernel::currentThreadName());
    EXPECT_EQ(copy.time, entries[0].time);
  }
}

TEST_F(DDLogRuns, WhatALoggerLeavesComesAgain) {
  const auto logger = make<RunLogger>();
  logger->most = 2;
  DDLog::addLogger(logger);
  hold();
  for (int i = 0; i < 5; ++i) log(LOG_FLAG_INFO, "%d", i);
  go();
  EXPECT_THAT(logger->events.all(), ElementsAre("[0 1]", "[2 3]", "[4]"));
}

TEST_F(DDLogRuns, AnAnswerOfNoneOrTooManyCountsAsOneOrAll) {
  const auto none = make<RunLogger>(), tooMany = make<RunLogger>();
  none->answer = 0;
  tooMany->answer = 100;
  DDLog::addLogger(none);
  DDLog::addLogger(tooMany);
  hold();
  for (int i = 0; i < 3; ++i) log(LOG_FLAG_INFO, "%d", i);
  go();
  EXPECT_THAT(none->events.all(), ElementsAre("[0 1 2]", "[1 2]", "[2]"));
  EXPECT_THAT(tooMany->events.all(), ElementsAre("[0 1 2]"));
}

TEST_F(DDLogRuns, APlaceIsFreeAsSoonAsTheOnlyLoggerIsDoneWithItsMessage) {
  const auto logger = make<RunLogger>();
  logger->most = 1;
  int calls = 0;
  Latch full, oneDone;
  logger->onRun = [&](const DDLogRun&) {
    if (++calls == 2) {
      full.open();  // one of a thousand messages is done, the second is not
      oneDone.wait();
    }
  };
  DDLog::addLogger(logger);
  hold();
  for (int i = 0; i < 1000; ++i) log(LOG_FLAG_INFO, "%d", i);
  released.open();
  full.wait();
  std::thread([] { log(LOG_FLAG_INFO, "1000"); }).join();
  oneDone.open();
  DDLog::flushLog();
  EXPECT_EQ(calls, 1001);
}

TEST_F(DDLogRuns, BesideALoggerThatTakesOneMessageAtATimeAllKeepStep) {
  const auto single = make<RecordingLogger>();
  const auto runs = make<RunLogger>();
  DDLog::addLogger(single, LOG_LEVEL_WARN);
  DDLog::addLogger(runs);
  hold();
  log(LOG_FLAG_INFO, "1");
  log(LOG_FLAG_INFO, "2");
  log(LOG_FLAG_WARN, "3");
  log(LOG_FLAG_WARN, "4");
  log(LOG_FLAG_INFO, "5");
  go();
  EXPECT_THAT(single->all(), ElementsAre("[added]", "[flushed]", "3", "4", "[flushed]"));
  EXPECT_THAT(runs->events.all(), ElementsAre("[1 2]", "[3]", "[4]", "[5]"));
}

TEST_F(DDLogRuns, AMessageWithATagOrMadeElsewhereComesAlone) {
  const auto logger = make<RunLogger>();
  DDLog::addLogger(logger);
  hold();
  log(LOG_FLAG_INFO, "1");
  DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0, "f", "g", 1, Value(make<NSMutableArray>()), "%d", 2);
  log(LOG_FLAG_INFO, "3");
  DDLog::queueLogMessage(
      DDLogMessage::initWithLogMsg("4", LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0, "f", "g", 1, Value(), 0), true);
  log(LOG_FLAG_INFO, "5");
  go();
  EXPECT_THAT(logger->events.all(), ElementsAre("[1]", "[2]", "[3]", "[4]", "[5]"));
}

TEST_F(DDLogRuns, AnEntryOfAMessageThatWasMadeElsewhereHasWhatTheMessageHas) {
  const auto logger = make<RunLogger>();
  logger->setLogFormatter(make<DDLogLineFormatter>());
  const auto made = DDLogMessage::initWithLogMsg("a\nb", 3, LOG_FLAG_WARN, 5, "/src/Pay.cpp", "pay", 6, Value(), 0);
  bool isSame = false;
  logger->onRun = [&](const DDLogRun& run) {
    const DDLogEntry& entry = run[0];
    isSame = &entry.message() == made.get() && run.count() == 1 && entry.timestamp() == made->timestamp() &&
             entry.threadName() == made->threadName().view() && entry.machThreadID() == made->machThreadID();
    EXPECT_EQ(entry.logLevel(), 3);
    EXPECT_EQ(entry.logFlag(), LOG_FLAG_WARN);
    EXPECT_EQ(entry.logContext(), 5);
    EXPECT_EQ(entry.lineNumber(), 6);
    EXPECT_STREQ(entry.file(), "/src/Pay.cpp");
    EXPECT_STREQ(entry.function(), "pay");
    EXPECT_EQ(entry.text(), "a\nb");
  };
  DDLog::addLogger(logger);
  DDLog::queueLogMessage(made, true);
  DDLog::flushLog();
  EXPECT_TRUE(isSame);
  ASSERT_EQ(logger->events.all().size(), 1U);
  EXPECT_THAT(logger->events.all()[0], ::testing::HasSubstr("Pay.cpp:6  a\\nb]"));
}

TEST_F(DDLogRuns, ASynchronousMessageComesAloneAndAfterWhatWasLoggedBefore) {
  const auto logger = make<RunLogger>();
  DDLog::addLogger(logger);
  DDLog::flushLog();
  dispatch_sync(DDLog::loggingQueue(), [] {
    log(LOG_FLAG_INFO, "1");
    log(LOG_FLAG_INFO, "2");
  });
  DDLog::log(false, LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0, "f", "g", 1, Value(), "%d", 3);
  EXPECT_EQ(logger->events.all().back(), "[3]");
}

TEST_F(DDLogRuns, LoggersShareTheMessageOfAnEntryAndMayKeepIt) {
  const auto first = make<RunLogger>(), second = make<RunLogger>();
  std::vector<Ref<const DDLogMessage>> fromFirst, fromSecond;
  first->onRun = [&](const DDLogRun& run) {
    for (const DDLogEntry& entry : run) fromFirst.push_back(ref(entry.message()));
  };
  second->onRun = [&](const DDLogRun& run) {
    for (const DDLogEntry& entry : run) fromSecond.push_back(ref(entry.message()));
  };
  DDLog::addLogger(first);
  DDLog::addLogger(second);
  hold();
  for (int i = 0; i < 200; ++i) log(LOG_FLAG_INFO, "%d", i);
  go();
  ASSERT_EQ(fromFirst.size(), 200U);
  for (std::size_t i = 0; i < 200; ++i) EXPECT_EQ(fromFirst[i].get(), fromSecond.at(i).get());
  EXPECT_EQ(fromFirst[199]->logMsg(), "199");
}

class CountingLogger : public DDAbstractLogger {
  NK_OBJECT(CountingLogger, DDAbstractLogger)
  bool takesRuns() const noexcept override { return true; }
  void logMessage(const DDLogMessage& message) override { events.add(message.logMsg().str()); }
  Events events;
};

TEST_F(DDLogRuns, UnlessItIsOverriddenTheOperationHandsTheMessagesOverOneByOne) {
  const auto logger = make<CountingLogger>();
  DDLog::addLogger(logger);
  hold();
  for (int i = 0; i < 3; ++i) log(LOG_FLAG_INFO, "%d", i);
  go();
  EXPECT_THAT(logger->events.all(), ElementsAre("0", "1", "2"));
}

class Bracketing : public DDLogFormatter {
  NK_OBJECT(Bracketing, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    if (message.logMsg() == "secret") return std::nullopt;
    return "<" + message.logMsg() + ">";
  }
};

TEST_F(DDLogRuns, AFormatterThatKnowsMessagesOnlyFormatsEntriesToo) {
  const auto logger = make<RunLogger>();
  logger->setLogFormatter(make<Bracketing>());
  DDLog::addLogger(logger);
  hold();
  for (const char* text : {"1", "secret", "3"}) log(LOG_FLAG_INFO, "%@", text);
  go();
  EXPECT_THAT(logger->events.all(), ElementsAre("[<1> (dropped) <3>]"));
}

/// Overrides the text of a class that takes runs, but not takesRuns().
class Exclaiming : public DDLogFileFormatterDefault {
  NK_OBJECT(Exclaiming, DDLogFileFormatterDefault)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override { return message.logMsg() + "!"; }
};
class ExclaimingLines : public DDLogLineFormatter {
  NK_OBJECT(ExclaimingLines, DDLogLineFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override { return message.logMsg() + "!"; }
};

TEST_F(DDLogRuns, ADerivedFormattersTextIsUsedForEntriesAndMessagesAlike) {
  for (const Ref<DDLogFormatter>& formatter :
       {Ref<DDLogFormatter>(make<Exclaiming>()), Ref<DDLogFormatter>(make<ExclaimingLines>())}) {
    clean();
    const auto logger = make<RunLogger>();
    logger->setLogFormatter(formatter);
    const test::TemporaryFolder folder;
    const auto file = DDFileLogger::initWithLogFileManager(make<test::RecordingManager>(folder.path()));
    file->setLogFormatter(formatter);
    DDLog::addLogger(logger);
    DDLog::addLogger(file);
    for (int i = 0; i < 3; ++i) log(LOG_FLAG_INFO, "%d", i);
    DDLog::flushLog();
    clean();
    EXPECT_FALSE(formatter->takesRuns());
    EXPECT_THAT(test::allLinesIn(folder.path()), ElementsAre("0!", "1!", "2!"));
    std::string entries;
    for (const std::string& run : logger->events.all()) entries += run;
    EXPECT_THAT(entries, ::testing::HasSubstr("2!"));
  }
}

TEST_F(DDLogRuns, TheLibrarysFormattersFormEntriesAsMessages) {
  for (const Ref<DDLogFormatter>& formatter :
       {Ref<DDLogFormatter>(make<DDLogFileFormatterDefault>()), Ref<DDLogFormatter>(make<DDLogLineFormatter>())}) {
    clean();
    EXPECT_TRUE(formatter->takesRuns());
    const auto logger = make<RunLogger>();
    std::vector<std::string> entries, messages;
    logger->onRun = [&](const DDLogRun& run) {
      for (const DDLogEntry& entry : run) {
        EXPECT_TRUE(formatter->appendLogEntry(entries.emplace_back(), entry));
        EXPECT_TRUE(formatter->appendLogMessage(messages.emplace_back(), entry.message()));
        EXPECT_EQ(formatter->formatLogMessage(entry.message())->str(), messages.back());
      }
    };
    DDLog::addLogger(logger);
    log(LOG_FLAG_INFO, "plain");
    log(LOG_FLAG_WARN, "a\nb\\ %@", "\U0001F600");
    DDLog::flushLog();
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries, messages);
  }
}

}  // namespace
}  // namespace norvik

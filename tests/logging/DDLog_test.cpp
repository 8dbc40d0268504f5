#include "NorvikCore/logging/DDLog.h"

#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/logging/DDLoggerNode.h"
#include "NorvikCore/logging/internal/LibraryWarning.h"
#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/foundation/NSApplicationTermination.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "tests/support/LogFolder.h"
#include "tests/support/RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace norvik {

namespace pay {
class Levelled : public NSObject {
  NK_OBJECT(Levelled, NSObject)
  static int ddLogLevel() { return level; }
  static void ddSetLogLevel(int newLevel) { level = newLevel; }
  NK_CLASS_METHOD(ddLogLevel)
  NK_CLASS_METHOD(ddSetLogLevel)
  static inline int level = 1;
};
}  // namespace pay

namespace hr {
class Levelled : public pay::Levelled {
  NK_OBJECT(Levelled, pay::Levelled)
};
}  // namespace hr

namespace {

using test::Latch;
using test::RecordingLogger;
using test::say;
using test::TemporaryFolder;
using ::testing::ElementsAre;
using DDLogTest = test::CleanDDLog;
using Strings = std::vector<std::string>;

/// A logger with the required operation only.
class BareLogger : public DDLogger {
  NK_OBJECT(BareLogger, DDLogger)
  void logMessage(const DDLogMessage& message) override {
    events.add(message.logMsg().str() + " on \"" + dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL) + "\"");
  }
  test::Events events;
};

class NamedLogger : public BareLogger {
  NK_OBJECT(NamedLogger, BareLogger)
  std::optional<NSString> loggerName() override { return "named"; }
};

class LoggerWithQueue : public BareLogger {
  NK_OBJECT(LoggerWithQueue, BareLogger)
  dispatch_queue_t loggerQueue() override { return queue; }
  dispatch_queue_t queue = dispatch_queue_create("its own");
};

class WithLevel : public NSObject {
  NK_OBJECT(WithLevel, NSObject)
  static int ddLogLevel() { return level; }
  static void ddSetLogLevel(int newLevel) { level = newLevel; }
  NK_CLASS_METHOD(ddLogLevel)
  NK_CLASS_METHOD(ddSetLogLevel)
  static inline int level = 7;
};

class WithUnsignedLevel : public NSObject {
  NK_OBJECT(WithUnsignedLevel, NSObject)
  static std::uint32_t ddLogLevel() { return level; }
  static void ddSetLogLevel(std::uint32_t newLevel) { level = newLevel; }
  NK_CLASS_METHOD(ddLogLevel)
  NK_CLASS_METHOD(ddSetLogLevel)
  static inline std::uint32_t level = 7;
};

class InheritsLevel : public WithLevel {
  NK_OBJECT(InheritsLevel, WithLevel)
};

class WithGetterOnly : public NSObject {
  NK_OBJECT(WithGetterOnly, NSObject)
  static int ddLogLevel() { return 1; }
  NK_CLASS_METHOD(ddLogLevel)
};

TEST_F(DDLogTest, HeaderExample) {
  const TemporaryFolder folder;
  const auto logger =
      DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory(folder.path()));
  logger->setLogFormatter(nullptr);
  DDLog::addLogger(logger);
  const int count = 3;
  DDLogWarn("%d payslips without a payment date", count);
  DDLog::flushLog();
  EXPECT_THAT(test::allLinesIn(folder.path()), ElementsAre("3 payslips without a payment date"));
}

TEST_F(DDLogTest, EveryLoggerGetsEveryMessageOnceInOrder) {
  const auto first = make<RecordingLogger>(), second = make<RecordingLogger>();
  DDLog::addLogger(first);
  DDLog::addLogger(second);
  for (const char* text : {"a", "b", "c"}) say(text);
  settle();
  EXPECT_THAT(first->all(), ElementsAre("[added]", "a", "b", "c", "[flushed]"));
  EXPECT_THAT(second->all(), ElementsAre("[added]", "a", "b", "c", "[flushed]"));
}

TEST_F(DDLogTest, AllLoggersAreThoseThatAreAdded) {
  EXPECT_THAT(DDLog::allLoggers(), ElementsAre());
  const Ref<DDLogger> first = make<RecordingLogger>(), second = make<BareLogger>();
  DDLog::addLogger(first);
  DDLog::addLogger(second);
  DDLog::addLogger(first);
  DDLog::flushLog();
  EXPECT_THAT(DDLog::allLoggers(), ElementsAre(first, second, first));
  DDLog::removeLogger(first);
  DDLog::flushLog();
  EXPECT_THAT(DDLog::allLoggers(), ElementsAre(second, first));
  DDLog::removeAllLoggers();
  DDLog::flushLog();
  EXPECT_THAT(DDLog::allLoggers(), ElementsAre());
}

TEST_F(DDLogTest, ManyLoggersGetEveryMessageAlsoWhereTheyShareAQueue) {
  std::vector<Ref<BareLogger>> loggers;
  const auto shared = make<LoggerWithQueue>(), sharing = make<LoggerWithQueue>();
  sharing->queue = shared->queue;
  for (int i = 0; i < 10; ++i) loggers.push_back(make<BareLogger>());
  loggers.insert(loggers.end(), {shared, sharing});
  for (const auto& logger : loggers) DDLog::addLogger(logger);
  say("a");
  say("b", LOG_FLAG_ERROR, false);
  for (std::size_t i = 0; i < 10; ++i)
    EXPECT_THAT(loggers[i]->events.all(), ElementsAre("a on \"\"", "b on \"\"")) << i;
  EXPECT_THAT(shared->events.all(), ElementsAre("a on \"its own\"", "b on \"its own\""));
  EXPECT_THAT(sharing->events.all(), ElementsAre("a on \"its own\"", "b on \"its own\""));
}

TEST_F(DDLogTest, WithoutLoggersACallReturns) {
  say("asynchronous");
  say("synchronous", LOG_FLAG_ERROR, false);
  for (int i = 0; i < 3000; ++i) say("more than the queue holds");
  settle();
}

TEST_F(DDLogTest, ALoggerAdmitsFlagsUpToItsLevelAsNumbers) {
  const auto info = make<RecordingLogger>(), all = make<RecordingLogger>(), off = make<RecordingLogger>();
  DDLog::addLogger(info, LOG_LEVEL_INFO);
  DDLog::addLogger(all);
  DDLog::addLogger(off, LOG_LEVEL_OFF);
  say("1", 1), say("4", 4), say("7", 7), say("8", 8), say("16", 16), say("31", 31), say("32", 32), say("0", 0);
  settle();
  EXPECT_THAT(info->all(), ElementsAre("[added]", "1", "4", "7", "0", "[flushed]"));
  EXPECT_THAT(all->all(), ElementsAre("[added]", "1", "4", "7", "8", "16", "31", "0", "[flushed]"));
  EXPECT_THAT(off->all(), ElementsAre("[added]", "0", "[flushed]"));
}

TEST_F(DDLogTest, AnAbsentLoggerIsIgnored) {
  DDLog::addLogger(nullptr);
  DDLog::addLogger(nullptr, LOG_LEVEL_ERROR);
  DDLog::removeLogger(nullptr);
  say("nobody");
  settle();
}

TEST_F(DDLogTest, ALoggerAddedTwiceGetsEveryMessageTwiceUntilItIsRemovedOnce) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  DDLog::addLogger(logger);
  say("twice");
  DDLog::removeLogger(logger);
  say("once");
  DDLog::removeLogger(logger);
  say("never");
  dispatch_sync(DDLog::loggingQueue(), [] {});
  dispatch_sync(logger->loggerQueue(), [] {});
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "[added]", "twice", "twice", "[removed]", "once", "[removed]"));
}

TEST_F(DDLogTest, RemovingALoggerThatWasNotAddedDoesNothing) {
  const auto logger = make<RecordingLogger>(), other = make<RecordingLogger>();
  DDLog::addLogger(other);
  DDLog::removeLogger(logger);
  say("still");
  settle();
  EXPECT_THAT(logger->all(), ElementsAre());
  EXPECT_THAT(other->all(), ElementsAre("[added]", "still", "[flushed]"));
}

TEST_F(DDLogTest, RemovingAllTellsEachLogger) {
  const auto first = make<RecordingLogger>(), second = make<RecordingLogger>();
  DDLog::addLogger(first);
  DDLog::addLogger(second);
  DDLog::removeAllLoggers();
  say("nobody");
  dispatch_sync(DDLog::loggingQueue(), [] {});
  dispatch_sync(first->loggerQueue(), [] {});
  dispatch_sync(second->loggerQueue(), [] {});
  EXPECT_THAT(first->all(), ElementsAre("[added]", "[removed]"));
  EXPECT_THAT(second->all(), ElementsAre("[added]", "[removed]"));
}

TEST_F(DDLogTest, ALoggerIsKeptUntilItIsRemoved) {
  auto logger = make<RecordingLogger>();
  const Weak<RecordingLogger> watched = logger;
  DDLog::addLogger(logger);
  logger = nullptr;
  settle();
  EXPECT_TRUE(watched.lock());
  DDLog::removeLogger(watched.lock());
  settle();
  const dispatch_queue_t queue = watched.lock() ? watched.lock()->loggerQueue() : nullptr;
  if (queue) dispatch_sync(queue, [] {});
  EXPECT_FALSE(watched.lock());
}

TEST_F(DDLogTest, ASynchronousCallReturnsWhenEveryAdmittingLoggerIsDone) {
  const auto first = make<RecordingLogger>(), second = make<RecordingLogger>(), notAdmitting = make<RecordingLogger>();
  DDLog::addLogger(first);
  DDLog::addLogger(second);
  DDLog::addLogger(notAdmitting, LOG_LEVEL_ERROR);
  for (int i = 0; i < 200; ++i) {
    say("queued before", LOG_FLAG_WARN);
    say("now", LOG_FLAG_WARN, false);
    const Strings now = first->all(), also = second->all();
    ASSERT_EQ(now.size(), 3U + 2U * static_cast<unsigned>(i));
    ASSERT_EQ(now.back(), "now");
    ASSERT_EQ(also, now);
  }
  EXPECT_THAT(notAdmitting->all(), ElementsAre("[added]"));
}

TEST_F(DDLogTest, ACallBlocksWhileAThousandMessagesWait) {
  const auto logger = make<RecordingLogger>();
  Latch reached, go;
  logger->onMessage = [&](const DDLogMessage& message) {
    if (message.logMsg() != "stop") return;
    reached.open();
    go.wait();
  };
  DDLog::addLogger(logger);
  say("stop");
  reached.wait();
  std::atomic<int> logged = 0;
  std::thread caller([&] {
    for (int i = 0; i < 1100; ++i) {
      say("more");
      ++logged;
    }
  });
  while (logged < 999) std::this_thread::yield();
  // The message that is being handed out counts too: 999 more fit. The thousandth call blocks, or is about to block; it
  // cannot return.
  for (int i = 0; i < 1000; ++i) std::this_thread::yield();
  EXPECT_EQ(logged, 999);
  go.open();
  caller.join();
  EXPECT_EQ(logged, 1100);
}

class TalkativeFormatter : public DDLogFormatter {
  NK_OBJECT(TalkativeFormatter, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    if (message.logMsg() == "begin") {
      for (int i = 0; i < 1500; ++i) say("of the formatter");
      DDLog::queueLogMessage(DDLogMessage::initWithLogMsg("made", 31, 1, 0, "f", "g", 1, Value(), 0), true);
    }
    return message.logMsg();
  }
};

class FormattingRecorder : public RecordingLogger {
  NK_OBJECT(FormattingRecorder, RecordingLogger)
  void logMessage(const DDLogMessage& message) override {
    if (formatter()) (void)formatter()->formatLogMessage(message);
    RecordingLogger::logMessage(message);
  }
};

TEST_F(DDLogTest, AFormatterOrALoggerThatLogsIsNotHeldUpByTheBound) {
  const auto formatting = make<FormattingRecorder>();
  const auto other = make<RecordingLogger>();
  formatting->setLogFormatter(make<TalkativeFormatter>());
  other->onMessage = [](const DDLogMessage& message) {
    if (message.logMsg() != "begin") return;
    for (int i = 0; i < 1500; ++i) say("of the logger");
  };
  DDLog::addLogger(formatting);  // runs on a thread of its own; the last logger runs on that of the logging queue
  DDLog::addLogger(other);
  say("begin");
  settle();
  settle();  // messages that were logged while the first call waited
  const Strings all = formatting->all();
  EXPECT_EQ(std::count(all.begin(), all.end(), "of the formatter"), 1500);
  EXPECT_EQ(std::count(all.begin(), all.end(), "made"), 1);
  EXPECT_EQ(std::count(all.begin(), all.end(), "of the logger"), 1500);
  EXPECT_EQ(other->all(), all);
}

TEST_F(DDLogTest, ABlockOfTheLoggingQueueThatLogsIsNotHeldUpByTheBound) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  dispatch_sync(DDLog::loggingQueue(), [] {
    for (int i = 0; i < 1500; ++i) say("more");
  });
  settle();
  const Strings all = logger->all();
  EXPECT_EQ(std::count(all.begin(), all.end(), "more"), 1500);
}

TEST_F(DDLogTest, WhatIsLoggedPastTheBoundLeavesTheBoundAsItIs) {
  const auto logger = make<RecordingLogger>();
  Latch reached, go;
  logger->onMessage = [&](const DDLogMessage& message) {
    if (message.logMsg() == "begin") {
      const auto made = DDLogMessage::initWithLogMsg("made", 31, 1, 0, "f", "g", 1, Value(), 0);
      for (int i = 0; i < 750; ++i) {
        say("more");
        DDLog::queueLogMessage(made, true);
      }
    }
    if (message.logMsg() != "stop") return;
    reached.open();
    go.wait();
  };
  DDLog::addLogger(logger);
  say("begin");
  settle();
  settle();
  say("stop");
  reached.wait();
  std::atomic<int> logged = 0;
  std::thread caller([&] {
    for (int i = 0; i < 1100; ++i) {
      say("late");
      ++logged;
    }
  });
  while (logged < 999) std::this_thread::yield();
  for (int i = 0; i < 1000; ++i) std::this_thread::yield();
  EXPECT_EQ(logged, 999);
  go.open();
  caller.join();
  EXPECT_EQ(logged, 1100);
}

TEST_F(DDLogTest, AnAbsentFormatLogsNothing) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  DDLog::log(true, 31, 1, 0, "f", "g", 1, Value(), nullptr, 5);
  DDLog::log(true, 31, 1, 0, "f", "g", 1, Value(), runtimeFormat(std::nullopt));
  DDLog::log(true, 31, 1, 0, "f", "g", 1, Value(), runtimeFormat(std::nullopt), FormatArguments());
  DDLog::queueLogMessage(nullptr, true);
  settle();
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "[flushed]"));
}

TEST_F(DDLogTest, ACallFormatsItsArguments) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  DDLog::log(true, 31, 1, 0, "f", "g", 1, Value(), "%@ has %d payslips, %.2f%%", NSString("Zoë"), 3, 99.5);
  DDLog::log(true, 31, 1, 0, "f", "g", 1, Value(), runtimeFormat("%@ has %d payslips"), "Zoë", 3);
  const FormatArgumentList list("Zoë", 4);
  DDLog::log(true, 31, 1, 0, "f", "g", 1, Value(), runtimeFormat("%@ has %d payslips"), list);
  DDLog::log(true, 31, 1, 0, "f", "g", 1, nullptr, runtimeFormat("%@ has %d"), list);
  settle();
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "Zoë has 3 payslips, 99.50%", "Zoë has 3 payslips",
                                         "Zoë has 4 payslips", "Zoë has 4", "[flushed]"));
}

TEST_F(DDLogTest, AMessageCarriesWhatTheCallGave) {
  const auto logger = make<RecordingLogger>();
  Ref<const DDLogMessage> got;
  logger->onMessage = [&](const DDLogMessage& message) { got = Ref<const DDLogMessage>(&message); };
  DDLog::addLogger(logger);
  static const char file[] = "Categories/NSDate+Norvik";
  DDLog::log(false, 15, 8, 42, file, "nk_today", 7, Value("a tag"), "text");
  ASSERT_TRUE(got);
  EXPECT_EQ(got->logLevel(), 15);
  EXPECT_EQ(got->logFlag(), 8);
  EXPECT_EQ(got->logContext(), 42);
  EXPECT_EQ(got->file(), file);
  EXPECT_STREQ(got->function(), "nk_today");
  EXPECT_EQ(got->lineNumber(), 7);
  EXPECT_EQ(got->tag(), Value("a tag"));
  EXPECT_EQ(got->options(), 0U);
  EXPECT_EQ(got->logMsg(), "text");
  DDLog::log(false, 15, 8, 42, file, "nk_today", 7, 0, "a tag of 0");
  EXPECT_EQ(got->tag(), Value(0));
}

TEST_F(DDLogTest, AMessageMadeElsewhereCanBeQueuedMoreThanOnce) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  const auto message = DDLogMessage::initWithLogMsg("made", 31, 1, 0, "f", "g", 1, Value(), 0);
  DDLog::queueLogMessage(message, true);
  DDLog::queueLogMessage(message, true);
  DDLog::queueLogMessage(message, false);
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "made", "made", "made"));
}

TEST_F(DDLogTest, FlushLogFlushesAfterWhatWasLoggedBefore) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  say("before");
  DDLog::flushLog();
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "before", "[flushed]"));
  DDLog::applicationWillTerminate(*NSNotification::notificationWithName("any"));
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "before", "[flushed]", "[flushed]"));
}

TEST_F(DDLogTest, TheNotificationOfTheEndFlushesBeforeItReturns) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  say("before");
  NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification);
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "before", "[flushed]"));
}

TEST_F(DDLogTest, ALoggerWithOnlyWhatIsRequiredWorks) {
  const auto bare = make<BareLogger>();
  DDLog::addLogger(bare);
  say("text", LOG_FLAG_ERROR, false);
  DDLog::flushLog();
  DDLog::removeLogger(bare);
  settle();
  EXPECT_THAT(bare->events.all(), ElementsAre("text on \"\""));
}

TEST_F(DDLogTest, AQueueThatIsMadeForALoggerHasItsName) {
  const auto named = make<NamedLogger>();
  DDLog::addLogger(named);
  say("text", LOG_FLAG_ERROR, false);
  EXPECT_THAT(named->events.all(), ElementsAre("text on \"named\""));
}

TEST_F(DDLogTest, ALoggersOwnQueueIsUsed) {
  const auto logger = make<LoggerWithQueue>();
  DDLog::addLogger(logger);
  say("text", LOG_FLAG_ERROR, false);
  EXPECT_THAT(logger->events.all(), ElementsAre("text on \"its own\""));
}

TEST_F(DDLogTest, TheLoggingQueueKnowsItself) {
  EXPECT_STREQ(dispatch_queue_get_label(DDLog::loggingQueue()), "cocoa.quillmarch");
  EXPECT_EQ(dispatch_get_specific(GlobalLoggingQueueIdentityKey), nullptr);
  dispatch_sync(DDLog::loggingQueue(),
                [] { EXPECT_EQ(dispatch_get_specific(GlobalLoggingQueueIdentityKey), GlobalLoggingQueueIdentityKey); });
}

TEST_F(DDLogTest, LoggersRunInParallel) {
  const auto first = make<RecordingLogger>(), second = make<RecordingLogger>();
  Latch firstIsThere, secondIsThere;
  first->onMessage = [&](const DDLogMessage&) { firstIsThere.open(), secondIsThere.wait(); };
  second->onMessage = [&](const DDLogMessage&) { secondIsThere.open(), firstIsThere.wait(); };
  DDLog::addLogger(first);
  DDLog::addLogger(second);
  say("both", LOG_FLAG_ERROR, false);  // would never return if one logger waited for the other to end
  EXPECT_THAT(first->all(), ElementsAre("[added]", "both"));
}

TEST_F(DDLogTest, ALoggerMayLogAndAddAndRemoveLoggers) {
  const auto logger = make<RecordingLogger>(), added = make<RecordingLogger>();
  logger->onMessage = [&](const DDLogMessage& message) {
    if (message.logMsg() != "begin") return;
    say("from within");
    DDLog::addLogger(added);
    DDLog::removeLogger(logger);
  };
  DDLog::addLogger(logger);
  say("begin", LOG_FLAG_ERROR, false);
  say("end", LOG_FLAG_ERROR, false);
  dispatch_sync(logger->loggerQueue(), [] {});
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "begin", "from within", "[removed]"));
  EXPECT_THAT(added->all(), ElementsAre("[added]", "end"));
}

TEST_F(DDLogTest, ALibraryWarningIsLoggedOnlyWhereTheLevelHasWarnings) {
  const auto logger = make<RecordingLogger>();
  Ref<const DDLogMessage> got;
  logger->onMessage = [&](const DDLogMessage& message) { got = Ref<const DDLogMessage>(&message); };
  DDLog::addLogger(logger);
  ddLogLevel = LOG_LEVEL_ERROR;
  EXPECT_FALSE(detail::libraryWarnings());
  detail::libraryWarning("Categories/NSDate+Norvik", "nk_today:", 1, "suppressed");
  ddLogLevel = 6;
  EXPECT_TRUE(detail::libraryWarnings());
  detail::libraryWarning("Categories/NSDate+Norvik", "nk_addDays:", 12, "%d days", 3);
  settle();
  ASSERT_TRUE(got);
  EXPECT_EQ(got->logMsg(), "3 days");
  EXPECT_EQ(got->logLevel(), 6);
  EXPECT_EQ(got->logFlag(), 2);
  EXPECT_EQ(got->logContext(), 0);
  EXPECT_EQ(got->fileName(), "NSDate+Norvik");
  EXPECT_EQ(got->methodName(), "nk_addDays:");
  EXPECT_EQ(got->lineNumber(), 12);
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "3 days", "[flushed]"));
}

TEST_F(DDLogTest, AClassWithBothLevelOperationsIsRegisteredAlsoWhereItInheritsThem) {
  EXPECT_TRUE(DDLog::isRegisteredClass(WithLevel::staticClass()));
  EXPECT_TRUE(DDLog::isRegisteredClass(InheritsLevel::staticClass()));
  EXPECT_FALSE(DDLog::isRegisteredClass(WithGetterOnly::staticClass()));
  EXPECT_FALSE(DDLog::isRegisteredClass(NSObject::staticClass()));
  const std::vector<NSString> names = DDLog::registeredClassNames();
  EXPECT_THAT(names, ElementsAre("norvik::pay::Levelled", "norvik::hr::Levelled", "WithLevel", "WithUnsignedLevel",
                                 "InheritsLevel"));
  EXPECT_THAT(DDLog::registeredClasses(),
              ElementsAre(&pay::Levelled::staticClass(), &hr::Levelled::staticClass(), &WithLevel::staticClass(),
                          &WithUnsignedLevel::staticClass(), &InheritsLevel::staticClass()));
}

TEST_F(DDLogTest, InitializingAgainKeepsTheLoggingQueue) {
  DDLog::initialize();
  const dispatch_queue_t queue = DDLog::loggingQueue();
  DDLog::initialize();
  EXPECT_EQ(DDLog::loggingQueue(), queue);
  EXPECT_STREQ(dispatch_queue_get_label(queue), "cocoa.quillmarch");
}

TEST_F(DDLogTest, LevelsOfClassesAreReadAndSet) {
  WithLevel::level = 7;
  EXPECT_EQ(DDLog::logLevelForClass(WithLevel::staticClass()), 7U);
  DDLog::setLogLevel_forClass(15, WithLevel::staticClass());
  EXPECT_EQ(WithLevel::level, 15);
  DDLog::setLogLevel_forClassWithName(31, "InheritsLevel");
  EXPECT_EQ(DDLog::logLevelForClassWithName("WithLevel"), 31U);
}

TEST_F(DDLogTest, ALevelOfAllBitsIsSetWhetherTheSetterTakesASignOrNot) {
  DDLog::setLogLevel_forClass(0xFFFFFFFF, WithUnsignedLevel::staticClass());
  EXPECT_EQ(WithUnsignedLevel::level, 4294967295U);
  EXPECT_EQ(DDLog::logLevelForClass(WithUnsignedLevel::staticClass()), 4294967295U);
  DDLog::setLogLevel_forClass(0xFFFFFFFF, WithLevel::staticClass());
  EXPECT_EQ(WithLevel::level, -1);
  EXPECT_EQ(DDLog::logLevelForClass(WithLevel::staticClass()), 4294967295U);
}

TEST_F(DDLogTest, AClassThatIsNotRegisteredHasTheLevelOfAllBits) {
  EXPECT_EQ(DDLog::logLevelForClass(WithGetterOnly::staticClass()), 4294967295U);
  EXPECT_EQ(DDLog::logLevelForClassWithName("NobodysClass"), 4294967295U);
  DDLog::setLogLevel_forClass(1, WithGetterOnly::staticClass());
  DDLog::setLogLevel_forClassWithName(1, "NobodysClass");
}

TEST_F(DDLogTest, ANameThatClassesShareSetsNoLevelAndTheConsoleSaysWhy) {
  pay::Levelled::level = 3;
  testing::internal::CaptureStderr();
  DDLog::setLogLevel_forClassWithName(7, "Levelled");
  EXPECT_EQ(DDLog::logLevelForClassWithName("Levelled"), 4294967295U);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::HasSubstr("2 classes are named \"Levelled\": norvik::hr::Levelled, norvik::pay::Levelled"));
  EXPECT_EQ(pay::Levelled::level, 3);
  DDLog::setLogLevel_forClassWithName(7, "norvik::pay::Levelled");
  EXPECT_EQ(pay::Levelled::level, 7);
}

TEST_F(DDLogTest, TheNamesOfRegisteredClassesFindEachOfThem) {
  const auto classes = DDLog::registeredClasses();
  const auto names = DDLog::registeredClassNames();
  ASSERT_EQ(names.size(), classes.size());
  for (std::size_t i = 0; i < names.size(); ++i) EXPECT_EQ(Class::named(names[i]), classes[i]) << names[i];
}

TEST_F(DDLogTest, ANodeKeepsWhatItWasMadeOf) {
  const auto logger = make<RecordingLogger>();
  const auto queue = dispatch_queue_create("queue");
  const auto node = DDLoggerNode::nodeWithLogger(logger, queue, 7);
  EXPECT_EQ(node->logger(), logger);
  EXPECT_EQ(node->loggerQueue(), queue);
  EXPECT_EQ(node->logLevel(), 7);
  EXPECT_FALSE(DDLoggerNode::initWithLogger(logger, nullptr, 7)->loggerQueue());
}

TEST_F(DDLogTest, MessagesOfManyThreadsKeepTheOrderOfEachThread) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  constexpr int threads = 4, each = 2000;
  std::vector<std::thread> callers;
  for (int t = 0; t < threads; ++t) {
    callers.emplace_back([t] {
      for (int i = 0; i < each; ++i) {
        DDLog::log(i % 97 != 0, 31, 1, 0, "f", "g", 1, Value(), "%d %d", t, i);
      }
    });
  }
  for (std::thread& caller : callers) caller.join();
  settle();
  int next[threads] = {};
  std::size_t messages = 0;
  for (const std::string& event : logger->all()) {
    if (event[0] == '[') continue;
    const std::size_t blank = event.find(' ');
    const auto thread = static_cast<std::size_t>(std::stoi(event.substr(0, blank)));
    ASSERT_EQ(std::stoi(event.substr(blank + 1)), next[thread]++);
    ++messages;
  }
  EXPECT_EQ(messages, 8000U);
}

}  // namespace
}  // namespace norvik

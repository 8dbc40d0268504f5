#include "NorvikCore/logging/database/DDAbstractDatabaseLogger.h"

#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/InChild.h"
#include "tests/support/QuietFork.h"
#include "tests/support/RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace norvik {
namespace {

using test::consoleOf;
using test::say;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint64_t second = NSEC_PER_SEC;

/// Buffers texts, and records each hook: "save a b", "delete", "save a b and delete".
class HookLogger : public DDAbstractDatabaseLogger {
  NK_OBJECT(HookLogger, DDAbstractDatabaseLogger)

  bool db_log(const DDLogMessage& message) override {
    if (onLog) onLog();
    if (message.logMsg() == "refused") return false;
    buffer += " " + message.logMsg().str();
    return true;
  }
  void db_save() override {
    const std::string text = "save" + buffer;
    events.add(text);
    if (onSave) onSave();
    if (!isStoreOpen) return keepUnsaved();
    buffer.clear();
  }
  void db_delete() override {
    events.add("delete");
    if (onDelete) onDelete();
  }
  void db_saveAndDelete() override {
    events.add("save" + buffer + " and delete");
    if (onSave) onSave();
    if (!isStoreOpen) return keepUnsaved();
    buffer.clear();
  }
  void db_forget() override { buffer.clear(); }

  [[nodiscard]] bool isTimerSuspended() const { return saveTimerSuspended(); }
  [[nodiscard]] std::uint64_t unsaved() const { return unsavedCount(); }

  std::string buffer;
  test::Events events;
  std::function<void()> onLog, onSave, onDelete;
  bool isStoreOpen = true;
};

/// A logger with a manual clock. It is added by add().
class DDAbstractDatabaseLoggerTest : public test::CleanDDLog {
 protected:
  void SetUp() override {
    CleanDDLog::SetUp();
    logger_->setTimerClock(clock_);
  }
  void TearDown() override {
    clean();
    dispatch_sync(logger_->loggerQueue(), [this] { logger_->onLog = logger_->onSave = logger_->onDelete = nullptr; });
    CleanDDLog::TearDown();
  }
  void add() {
    DDLog::addLogger(logger_);
    settle();
    (void)seen();
  }
  /// Calls `f` on the logger's queue.
  template <class F>
  auto there(F&& f) {
    return dispatch_sync(logger_->loggerQueue(), std::forward<F>(f));
  }
  void logTexts(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) say(NSString(text), LOG_FLAG_ERROR, false);
  }
  void logCount(int count) {
    for (int i = 0; i < count; ++i) say("m", LOG_FLAG_ERROR, false);
  }
  /// Waits until the logger has done what it was asked to do.
  void finish() {
    dispatch_sync(DDLog::loggingQueue(), [] {});
    there([] {});
  }
  /// The hooks that were called since the last call of this.
  std::vector<std::string> seen() {
    finish();
    const std::vector<std::string> all = logger_->events.all();
    std::vector<std::string> since(all.begin() + static_cast<std::ptrdiff_t>(seenCount_), all.end());
    seenCount_ = all.size();
    return since;
  }
  std::vector<std::string> after(std::uint64_t nanoseconds) {
    finish();
    clock_.advance(nanoseconds);
    return seen();
  }
  std::uint64_t unsaved() {
    return there([this] { return logger_->unsaved(); });
  }
  bool isTimerSuspended() {
    return there([this] { return logger_->isTimerSuspended(); });
  }

  dispatch_manual_clock clock_;
  const Ref<HookLogger> logger_ = make<HookLogger>();
  std::size_t seenCount_ = 0;
};

// The header's example

class OutboxLogger : public DDAbstractDatabaseLogger {
  NK_OBJECT(OutboxLogger, DDAbstractDatabaseLogger)
  bool db_log(const DDLogMessage& message) override {
    buffer.push_back(message.logMsg());
    return true;
  }
  void db_save() override {
    if (!send(buffer)) return keepUnsaved();
    buffer.clear();
  }
  void db_forget() override { buffer.clear(); }
  bool send(const std::vector<NSString>& texts) {
    for (const NSString& text : texts) sent.add(text.str());
    return true;
  }
  std::vector<NSString> buffer;
  test::Events sent;
};

TEST_F(DDAbstractDatabaseLoggerTest, HeaderExample) {
  const auto logger = make<OutboxLogger>();
  DDLog::addLogger(logger);
  say("40 payslips read");
  say("no bank account for Zoë Smith");
  DDLog::flushLog();
  EXPECT_THAT(logger->sent.all(), ElementsAre("40 payslips read", "no bank account for Zoë Smith"));
}

class PlainDatabaseLogger : public DDAbstractDatabaseLogger {
  NK_OBJECT(PlainDatabaseLogger, DDAbstractDatabaseLogger)
};

TEST_F(DDAbstractDatabaseLoggerTest, TheBaseTakesNothingAndItsHooksDoNothing) {
  const auto logger = make<PlainDatabaseLogger>();
  logger->setSaveThreshold(1);
  logger->setDeleteOnEverySave(true);
  DDLog::addLogger(logger);
  say("text", LOG_FLAG_ERROR, false);
  logger->savePendingLogEntries();
  logger->deleteOldLogEntries();
  DDLog::flushLog();
}

TEST_F(DDAbstractDatabaseLoggerTest, SettingsHaveTheirDefaults) {
  EXPECT_EQ(logger_->saveThreshold(), 500U);
  EXPECT_EQ(logger_->saveInterval(), 60.0);
  EXPECT_EQ(logger_->maxAge(), 604800.0);
  EXPECT_EQ(logger_->deleteInterval(), 300.0);
  EXPECT_FALSE(logger_->deleteOnEverySave());
}

TEST_F(DDAbstractDatabaseLoggerTest, ASettingMayBeADuration) {
  logger_->setSaveInterval(std::chrono::milliseconds(2500));
  logger_->setMaxAge(std::chrono::hours(48));
  logger_->setDeleteInterval(std::chrono::minutes(10));
  EXPECT_EQ(logger_->saveInterval(), 2.5);
  EXPECT_EQ(logger_->maxAge(), 172800);
  EXPECT_EQ(logger_->deleteInterval(), 600);
}

TEST_F(DDAbstractDatabaseLoggerTest, ASettingReadIsTheOneSetBefore) {
  logger_->setSaveThreshold(7);
  logger_->setSaveInterval(8.5);
  logger_->setMaxAge(9e9);
  logger_->setDeleteInterval(-1);
  logger_->setDeleteOnEverySave(true);
  EXPECT_EQ(logger_->saveThreshold(), 7U);
  EXPECT_EQ(logger_->saveInterval(), 8.5);
  EXPECT_EQ(logger_->maxAge(), 9e9);
  EXPECT_EQ(logger_->deleteInterval(), -1.0);
  EXPECT_TRUE(logger_->deleteOnEverySave());
}

TEST_F(DDAbstractDatabaseLoggerTest, SettingsChangeAtOnceOnTheLoggersQueueAndMayBeReadThere) {
  there([this] {
    logger_->setSaveThreshold(3);
    EXPECT_EQ(logger_->saveThreshold(), 3U);
    logger_->setMaxAge(0);
    EXPECT_EQ(logger_->maxAge(), 0.0);
  });
}

// Saving by count

TEST_F(DDAbstractDatabaseLoggerTest, TheFiveHundredthEntrySaves) {
  add();
  logCount(499);
  EXPECT_THAT(seen(), IsEmpty());
  EXPECT_EQ(unsaved(), 499U);
  logCount(1);
  const std::vector<std::string> events = seen();
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].size(), std::string("save").size() + 500 * std::string(" m").size());
  EXPECT_EQ(unsaved(), 0U);
  logCount(499);
  EXPECT_THAT(seen(), IsEmpty()) << "the count begins anew";
}

TEST_F(DDAbstractDatabaseLoggerTest, AThresholdOfOneSavesEveryEntry) {
  add();
  logger_->setSaveThreshold(1);
  logTexts({"a", "b"});
  EXPECT_THAT(seen(), ElementsAre("save a", "save b"));
}

TEST_F(DDAbstractDatabaseLoggerTest, WithAThresholdOfZeroOnlyTimerFlushAndRemovalSave) {
  add();
  logger_->setSaveThreshold(0);
  logCount(2000);
  EXPECT_THAT(seen(), IsEmpty());
  there([this] { logger_->buffer = " many"; });
  EXPECT_THAT(after(60 * second), ElementsAre("save many"));
  logTexts({"a"});
  DDLog::flushLog();
  EXPECT_THAT(seen(), ElementsAre("save a"));
  logTexts({"b"});
  DDLog::removeLogger(logger_);
  EXPECT_THAT(seen(), ElementsAre("save b"));
}

TEST_F(DDAbstractDatabaseLoggerTest, AThresholdThatIsReachedAlreadySavesAtOnce) {
  add();
  logTexts({"a", "b", "c"});
  logger_->setSaveThreshold(4);
  EXPECT_THAT(seen(), IsEmpty());
  logger_->setSaveThreshold(3);
  EXPECT_THAT(seen(), ElementsAre("save a b c"));
  logTexts({"d"});
  logger_->setSaveThreshold(0);
  EXPECT_THAT(seen(), IsEmpty()) << "0 is no threshold";
}

TEST_F(DDAbstractDatabaseLoggerTest, AThresholdLoweredInsideASaveDoesNotSaveWithinIt) {
  add();
  logger_->setSaveThreshold(3);
  there([this] { logger_->onSave = [this] { logger_->setSaveThreshold(1); }; });
  logTexts({"a", "b", "c"});
  EXPECT_THAT(seen(), ElementsAre("save a b c"));
  EXPECT_EQ(logger_->saveThreshold(), 1U);
  logTexts({"d"});
  EXPECT_THAT(seen(), ElementsAre("save d"));
}

TEST_F(DDAbstractDatabaseLoggerTest, AnEntryThatIsNotTakenLeavesCountAndTimersUntouched) {
  add();
  logger_->setSaveThreshold(2);
  logTexts({"refused", "refused", "refused"});
  EXPECT_EQ(unsaved(), 0U);
  EXPECT_TRUE(isTimerSuspended());
  logTexts({"a"});
  EXPECT_THAT(after(30 * second), IsEmpty());
  logTexts({"refused"});
  EXPECT_EQ(unsaved(), 1U);
  EXPECT_THAT(after(30 * second), ElementsAre("save a")) << "60 seconds after the first that was taken";
}

TEST_F(DDAbstractDatabaseLoggerTest, NothingUnsavedIsNotSaved) {
  add();
  DDLog::flushLog();
  logger_->savePendingLogEntries();
  EXPECT_THAT(after(300 * second), ElementsAre("delete"));
}

// Saving by time

TEST_F(DDAbstractDatabaseLoggerTest, OneEntryIsSavedSixtySecondsAfterItArrivedAndTheTimerStaysSuspended) {
  add();
  logger_->setMaxAge(0);
  EXPECT_TRUE(isTimerSuspended());
  EXPECT_THAT(after(17 * second), IsEmpty());
  logTexts({"a"});
  EXPECT_FALSE(isTimerSuspended());
  EXPECT_THAT(after(60 * second - 1), IsEmpty());
  EXPECT_THAT(after(1), ElementsAre("save a"));
  EXPECT_TRUE(isTimerSuspended());
  EXPECT_THAT(after(1000 * second), IsEmpty());
  EXPECT_TRUE(isTimerSuspended());
}

TEST_F(DDAbstractDatabaseLoggerTest, TheIntervalCountsFromTheFirstUnsavedEntryAlone) {
  add();
  logger_->setMaxAge(0);
  logTexts({"a"});
  EXPECT_THAT(after(59 * second), IsEmpty());
  logTexts({"b"});
  EXPECT_THAT(after(1 * second), ElementsAre("save a b"));
  EXPECT_THAT(after(30 * second), IsEmpty());
  logTexts({"c"});  // periods do not count while the timer is suspended
  EXPECT_THAT(after(60 * second - 1), IsEmpty());
  EXPECT_THAT(after(1), ElementsAre("save c"));
}

TEST_F(DDAbstractDatabaseLoggerTest, ASaveByCountSuspendsTheTimer) {
  add();
  logger_->setMaxAge(0);
  logger_->setSaveThreshold(2);
  logTexts({"a"});
  EXPECT_THAT(after(50 * second), IsEmpty());
  logTexts({"b"});
  EXPECT_THAT(seen(), ElementsAre("save a b"));
  EXPECT_TRUE(isTimerSuspended());
  logTexts({"c"});
  EXPECT_THAT(after(60 * second - 1), IsEmpty());
  EXPECT_THAT(after(1), ElementsAre("save c"));
}

TEST_F(DDAbstractDatabaseLoggerTest, AnIntervalThatHasPassedAlreadySavesOnceAndAtOnce) {
  add();
  logger_->setMaxAge(0);
  logTexts({"a"});
  EXPECT_THAT(after(30 * second), IsEmpty());
  logger_->setSaveInterval(7);
  EXPECT_EQ(logger_->saveInterval(), 7.0);
  EXPECT_THAT(after(0), ElementsAre("save a"));
  EXPECT_THAT(after(100 * second), IsEmpty());
}

TEST_F(DDAbstractDatabaseLoggerTest, AnIntervalOfZeroOrLessEndsTheTimerAndALaterOneBeginsItAgain) {
  add();
  logger_->setMaxAge(0);
  for (const double none : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    logTexts({"a"});
    logger_->setSaveInterval(none);
    EXPECT_THAT(after(1000 * second), IsEmpty()) << none;
    EXPECT_EQ(clock_.armedTimers(), 0U) << none;
    logger_->setSaveInterval(2000);
    EXPECT_THAT(seen(), IsEmpty()) << none;
    EXPECT_THAT(after(1000 * second), ElementsAre("save a")) << "since the entry arrived; " << none;
  }
}

TEST_F(DDAbstractDatabaseLoggerTest, TheLongestIntervalIsAsGoodAsNone) {
  add();
  logger_->setMaxAge(0);
  logger_->setSaveInterval(std::numeric_limits<double>::infinity());
  logTexts({"a"});
  EXPECT_THAT(after(1'000'000 * second), IsEmpty());
}

TEST_F(DDAbstractDatabaseLoggerTest, SettingTheSameIntervalAgainChangesNothing) {
  add();
  logger_->setMaxAge(0);
  logTexts({"a"});
  EXPECT_THAT(after(59 * second), IsEmpty());
  logger_->setSaveInterval(60);
  EXPECT_THAT(after(1 * second), ElementsAre("save a"));
}

TEST_F(DDAbstractDatabaseLoggerTest, PeriodsMissedWhileTheQueueWasBusyAreOneSaveAndOneDeletion) {
  add();
  logTexts({"a"});
  there([this] { clock_.advance(3600 * second); });
  EXPECT_THAT(seen(), ElementsAre("save a", "delete"));
  EXPECT_THAT(after(300 * second), ElementsAre("delete")) << "the grid goes on";
}

TEST_F(DDAbstractDatabaseLoggerTest, TwoTimersDueTogetherAreBothHandledTheOneSetFirstBeforeTheOther) {
  add();
  EXPECT_THAT(after(240 * second), IsEmpty());
  logTexts({"a"});  // due at 300 s, as is the deletion, whose timer was set earlier: when the logger was added
  EXPECT_THAT(after(60 * second), ElementsAre("delete", "save a"));
}

TEST_F(DDAbstractDatabaseLoggerTest, TimersRunOnTheMachinesClockToo) {
  const auto logger = make<HookLogger>();
  const auto saved = dispatch_semaphore_create(0), deleted = dispatch_semaphore_create(0);
  logger->onSave = [&] { dispatch_semaphore_signal(saved); };
  logger->onDelete = [&] { dispatch_semaphore_signal(deleted); };
  DDLog::addLogger(logger);
  logger->setSaveInterval(0.02);
  logger->setDeleteInterval(0.01);
  const dispatch_time_t earliest = dispatch_time(DISPATCH_TIME_NOW, 20 * NSEC_PER_MSEC);
  say("a");
  dispatch_semaphore_wait(saved, DISPATCH_TIME_FOREVER);
  EXPECT_GE(dispatch_time(DISPATCH_TIME_NOW, 0), earliest);
  for (int i = 0; i < 3; ++i) dispatch_semaphore_wait(deleted, DISPATCH_TIME_FOREVER);
  clean();
  dispatch_sync(logger->loggerQueue(), [&] { logger->onSave = logger->onDelete = nullptr; });
}

// Deleting

TEST_F(DDAbstractDatabaseLoggerTest, DeletingRunsEveryFiveMinutes) {
  add();
  EXPECT_THAT(after(300 * second - 1), IsEmpty());
  EXPECT_THAT(after(1), ElementsAre("delete"));
  EXPECT_THAT(after(300 * second - 1), IsEmpty());
  EXPECT_THAT(after(1), ElementsAre("delete"));
}

TEST_F(DDAbstractDatabaseLoggerTest, AShorterAgeDeletesAtOnceAndALongerOneAtTheNextTick) {
  add();
  EXPECT_THAT(after(100 * second), IsEmpty());
  logger_->setMaxAge(3600);
  EXPECT_THAT(seen(), ElementsAre("delete"));
  EXPECT_THAT(after(299 * second), IsEmpty()) << "the interval counts from that deletion";
  EXPECT_THAT(after(1 * second), ElementsAre("delete"));
  logger_->setMaxAge(604800);
  EXPECT_THAT(seen(), IsEmpty());
  EXPECT_THAT(after(299 * second), IsEmpty());
  EXPECT_THAT(after(1 * second), ElementsAre("delete"));
}

TEST_F(DDAbstractDatabaseLoggerTest, AnAgeOfZeroOrLessDeletesNothingAndALaterOneDeletesAtOnce) {
  add();
  for (const double none : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    logger_->setMaxAge(none);
    EXPECT_THAT(after(1000 * second), IsEmpty()) << none;
    EXPECT_EQ(clock_.armedTimers(), 0U) << none;
    logger_->deleteOldLogEntries();
    EXPECT_THAT(seen(), IsEmpty()) << none;
    logger_->setMaxAge(604800);
    EXPECT_THAT(seen(), ElementsAre("delete")) << none;
    EXPECT_THAT(after(300 * second), ElementsAre("delete")) << none;
  }
}

TEST_F(DDAbstractDatabaseLoggerTest, OneAgeOfNoneAfterAnotherDeletesNothing) {
  add();
  logger_->setMaxAge(0);
  logger_->setMaxAge(-1);
  EXPECT_THAT(after(1000 * second), IsEmpty());
}

TEST_F(DDAbstractDatabaseLoggerTest, TheDeleteIntervalCountsFromTheLastDeletion) {
  add();
  EXPECT_THAT(after(300 * second), ElementsAre("delete"));
  EXPECT_THAT(after(100 * second), IsEmpty());
  logger_->setDeleteInterval(150);
  EXPECT_THAT(seen(), IsEmpty());
  EXPECT_THAT(after(50 * second - 1), IsEmpty());
  EXPECT_THAT(after(1), ElementsAre("delete"));
  logger_->setDeleteInterval(0);
  EXPECT_THAT(after(1000 * second), IsEmpty());
  logger_->setDeleteInterval(150);
  EXPECT_THAT(after(0), ElementsAre("delete")) << "150 seconds have passed already";
  EXPECT_THAT(after(50 * second - 1), IsEmpty()) << "periods of 150 seconds from that time on";
  EXPECT_THAT(after(1), ElementsAre("delete"));
}

TEST_F(DDAbstractDatabaseLoggerTest, DeletingWithEverySaveIsOneHook) {
  add();
  logger_->setDeleteOnEverySave(true);
  logTexts({"a"});
  DDLog::flushLog();
  EXPECT_THAT(seen(), ElementsAre("save a and delete"));
  logger_->setDeleteOnEverySave(false);
  logTexts({"b"});
  DDLog::flushLog();
  EXPECT_THAT(seen(), ElementsAre("save b"));
}

TEST_F(DDAbstractDatabaseLoggerTest, SavingAndDeletingMayBeAskedForFromAnyThread) {
  add();
  logTexts({"a"});
  logger_->savePendingLogEntries();
  logger_->deleteOldLogEntries();
  EXPECT_THAT(seen(), ElementsAre("save a", "delete"));
  logTexts({"b"});
  there([this] {
    logger_->savePendingLogEntries();
    EXPECT_EQ(logger_->buffer, "") << "at once";
    logger_->deleteOldLogEntries();
  });
  EXPECT_THAT(seen(), ElementsAre("save b", "delete"));
}

TEST_F(DDAbstractDatabaseLoggerTest, AskingForASaveDoesNotWaitForTheLoggingQueue) {
  add();
  logTexts({"a"});
  dispatch_sync(DDLog::loggingQueue(), [this] {
    logger_->savePendingLogEntries();
    there([] {});
    EXPECT_THAT(logger_->events.all(), ::testing::Contains("save a"));
  });
}

// Lifetime

TEST_F(DDAbstractDatabaseLoggerTest, RemovalSavesAndEndsBothTimers) {
  add();
  EXPECT_EQ(clock_.armedTimers(), 1U) << "to delete";
  logTexts({"a"});
  EXPECT_EQ(clock_.armedTimers(), 2U);
  DDLog::removeLogger(logger_);
  EXPECT_THAT(seen(), ElementsAre("save a"));
  EXPECT_EQ(clock_.armedTimers(), 0U);
  EXPECT_THAT(after(1000 * second), IsEmpty());
}

TEST_F(DDAbstractDatabaseLoggerTest, ALoggerThatIsAddedAgainHasItsTimersAgain) {
  add();
  DDLog::removeLogger(logger_);
  add();
  logTexts({"a"});
  EXPECT_THAT(after(60 * second), ElementsAre("save a"));
  EXPECT_THAT(after(240 * second), ElementsAre("delete"));
}

TEST_F(DDAbstractDatabaseLoggerTest, SettersWorkOnALoggerThatWasNeverAdded) {
  logger_->setSaveInterval(10);
  logger_->setSaveThreshold(1);
  EXPECT_THAT(after(1000 * second), IsEmpty()) << "no timer yet";
  logger_->setMaxAge(3600);
  EXPECT_THAT(seen(), ElementsAre("delete"));
  EXPECT_THAT(after(300 * second), ElementsAre("delete"));
  logger_->setDeleteInterval(100);
  EXPECT_THAT(after(100 * second), ElementsAre("delete"));
  DDLog::addLogger(logger_);
  EXPECT_THAT(after(100 * second), ElementsAre("delete")) << "still one timer";
}

TEST_F(DDAbstractDatabaseLoggerTest, ALoggerThatIsDestroyedStopsItsTimersAndDoesNotSave) {
  dispatch_manual_clock clock;
  std::string saved;
  Weak<HookLogger> watched;
  {
    const auto logger = make<HookLogger>();
    watched = logger;
    logger->setTimerClock(clock);
    logger->onSave = [&] { saved += "saved"; };
    dispatch_sync(logger->loggerQueue(), [&] {
      logger->didAddLogger();
      logger->logMessage(*DDLogMessage::initWithLogMsg("a", 1, 1, 0, nullptr, nullptr, 1, Value(), 0));
    });
    EXPECT_EQ(clock.armedTimers(), 2U);
  }
  EXPECT_FALSE(watched.lock()) << "a timer does not keep its logger";
  EXPECT_EQ(clock.armedTimers(), 0U);
  EXPECT_EQ(saved, "");
}

// Hooks that request saves and deletions

TEST_F(DDAbstractDatabaseLoggerTest, ASaveAskedForWithinALogIncludesItsEntry) {
  add();
  there([this] { logger_->onLog = [this] { logger_->savePendingLogEntries(); }; });
  logTexts({"a", "b"});
  EXPECT_THAT(seen(), ElementsAre("save a", "save b"));
}

TEST_F(DDAbstractDatabaseLoggerTest, ADeletionAskedForWithinASaveFollowsIt) {
  add();
  there([this] {
    logger_->onSave = [this] {
      logger_->deleteOldLogEntries();
      logger_->events.add("end of save");
    };
  });
  logTexts({"a"});
  DDLog::flushLog();
  EXPECT_THAT(seen(), ElementsAre("save a", "end of save", "delete"));
}

TEST_F(DDAbstractDatabaseLoggerTest, ADeletionWithinADeletionIsTheSameUnlessTheAgeIsAnother) {
  add();
  there([this] {
    logger_->onDelete = [this] {
      logger_->deleteOldLogEntries();
      logger_->setMaxAge(3600);  // no change in the second deletion
    };
  });
  logger_->deleteOldLogEntries();
  EXPECT_THAT(seen(), ElementsAre("delete", "delete"));
}

TEST_F(DDAbstractDatabaseLoggerTest, ASaveAskedForWithinADeletionFollowsIt) {
  add();
  logTexts({"a"});
  there([this] {
    logger_->onDelete = [this] {
      logger_->savePendingLogEntries();
      logger_->events.add("end of deletion");
    };
  });
  logger_->deleteOldLogEntries();
  EXPECT_THAT(seen(), ElementsAre("delete", "end of deletion", "save a"));
}

// A store that refuses the entries

TEST_F(DDAbstractDatabaseLoggerTest, WhatCouldNotBeSavedIsSavedAgainAfterAnotherInterval) {
  add();
  logger_->setMaxAge(0);
  there([this] { logger_->isStoreOpen = false; });
  logTexts({"a"});
  EXPECT_THAT(after(60 * second), ElementsAre("save a"));
  EXPECT_THAT(after(60 * second - 1), IsEmpty());
  EXPECT_THAT(after(1), ElementsAre("save a"));
  there([this] { logger_->isStoreOpen = true; });
  EXPECT_THAT(after(60 * second), ElementsAre("save a"));
  EXPECT_THAT(after(1000 * second), IsEmpty());
  EXPECT_TRUE(isTimerSuspended());
}

TEST_F(DDAbstractDatabaseLoggerTest, WhatCouldNotBeSavedIsSavedAgainWithAsManyMoreAsTheThreshold) {
  add();
  logger_->setSaveThreshold(2);
  there([this] { logger_->isStoreOpen = false; });
  logTexts({"a", "b"});
  EXPECT_THAT(seen(), ElementsAre("save a b"));
  logTexts({"c"});
  EXPECT_THAT(seen(), IsEmpty()) << "not with every entry";
  logTexts({"d"});
  EXPECT_THAT(seen(), ElementsAre("save a b c d"));
  there([this] { logger_->isStoreOpen = true; });
  logTexts({"e"});
  EXPECT_THAT(seen(), IsEmpty());
  DDLog::flushLog();
  EXPECT_THAT(seen(), ElementsAre("save a b c d e"));
  EXPECT_EQ(unsaved(), 0U);
}

TEST_F(DDAbstractDatabaseLoggerTest, WhatCouldNotBeSavedAtRemovalIsSavedAfterItIsAddedAgain) {
  add();
  logger_->setMaxAge(0);
  there([this] { logger_->isStoreOpen = false; });
  logTexts({"a"});
  DDLog::removeLogger(logger_);
  EXPECT_THAT(seen(), ElementsAre("save a"));
  EXPECT_THAT(after(1000 * second), IsEmpty());
  there([this] { logger_->isStoreOpen = true; });
  DDLog::addLogger(logger_);
  EXPECT_THAT(seen(), IsEmpty());
  EXPECT_THAT(after(0), ElementsAre("save a")) << "the interval has passed already";
}

TEST_F(DDAbstractDatabaseLoggerTest, AnExceptionThatLeavesASaveLosesNoEntry) {
  add();
  logger_->setMaxAge(0);
  there([this] { logger_->onSave = [] { throw NSException("StoreException", "the store is gone"); }; });
  logTexts({"a"});
  EXPECT_THAT(after(60 * second), ElementsAre("save a"));
  there([this] { logger_->onSave = nullptr; });
  logTexts({"b"});
  EXPECT_THAT(after(60 * second), ElementsAre("save a b"));
}

TEST_F(DDAbstractDatabaseLoggerTest, AnExceptionThatLeavesALogOrADeletionEndsNothing) {
  add();
  logger_->setSaveThreshold(1);
  there([this] {
    logger_->onLog = [] { throw NSException("StoreException", "no entry"); };
    logger_->onDelete = [] { throw NSException("StoreException", "no deletion"); };
  });
  logTexts({"a"});
  EXPECT_THAT(after(300 * second), ElementsAre("delete"));
  there([this] { logger_->onLog = nullptr; });
  logTexts({"b"});
  EXPECT_THAT(seen(), ElementsAre("save b"));
  EXPECT_THAT(after(300 * second), ElementsAre("delete")) << "the timer goes on";
}

TEST_F(DDAbstractDatabaseLoggerTest, WantOfMemoryInAHookEndsNothingAndLosesNoEntryThatWasTaken) {
  add();
  const std::vector<std::string> lines = consoleOf([this] {
    there([this] { logger_->onSave = logger_->onDelete = [] { throw std::bad_alloc(); }; });
    logTexts({"a"});
    EXPECT_THAT(after(60 * second), ElementsAre("save a"));
    there([this] { logger_->onLog = [] { throw std::bad_alloc(); }; });
    logTexts({"b"});
    EXPECT_EQ(unsaved(), 1U);
    logger_->deleteOldLogEntries();
    EXPECT_THAT(seen(), ElementsAre("delete"));
  });
  EXPECT_THAT(lines, IsEmpty());
  there([this] { logger_->onLog = logger_->onSave = nullptr; });
  logTexts({"c"});
  EXPECT_THAT(after(60 * second), ElementsAre("save a c"));
}

TEST_F(DDAbstractDatabaseLoggerTest, ExceptionsAreReportedTenTimesAtMost) {
  RUN_IN_CHILD({
    add();
    there([this] { logger_->onLog = [] { throw NSException("StoreException", "no entry"); }; });
    const std::vector<std::string> lines = consoleOf([this] { logCount(12); });
    std::vector<std::string> expected(10, "DDAbstractDatabaseLogger: StoreException: no entry");
    expected.push_back("DDAbstractDatabaseLogger: Too many exceptions -- will not log any more of them.");
    EXPECT_EQ(lines, expected);
  });
}

TEST_F(DDAbstractDatabaseLoggerTest, AnotherExceptionPassesAndLosesNoEntry) {
  add();
  logTexts({"a"});
  there([this] {
    logger_->onSave = [] { throw std::string("mine"); };
    EXPECT_THROW(logger_->savePendingLogEntries(), std::string);
    logger_->onSave = nullptr;
    logger_->savePendingLogEntries();
  });
  EXPECT_THAT(seen(), ElementsAre("save a", "save a"));
}

// Runs of messages

/// Logs asynchronously while the logging queue is held, so that the messages come as one run.
void logAsOneRun(const std::vector<std::string>& texts) {
  dispatch_sync(DDLog::loggingQueue(), [&] {
    for (const std::string& text : texts) say(NSString(text));
  });
}

TEST_F(DDAbstractDatabaseLoggerTest, ARunIsSavedAsItsMessagesOneByOneAre) {
  add();
  logger_->setSaveThreshold(2);
  logger_->setMaxAge(0);
  EXPECT_TRUE(logger_->takesRuns());
  logAsOneRun({"a", "b", "refused", "c", "d", "e"});
  EXPECT_THAT(seen(), ElementsAre("save a b", "save c d"));
  EXPECT_EQ(unsaved(), 1U);
  EXPECT_THAT(after(60 * second), ElementsAre("save e"));
}

class EntryLogger : public HookLogger {
  NK_OBJECT(EntryLogger, HookLogger)
  bool db_logEntry(const DDLogEntry& entry) override {
    std::string text;
    entry.appendText(text);
    buffer += " entry:" + text;
    return true;
  }
};

TEST_F(DDAbstractDatabaseLoggerTest, ALoggerMayTakeTheEntriesOfARunThemselves) {
  const auto logger = make<EntryLogger>();
  DDLog::addLogger(logger);
  settle();
  logAsOneRun({"a", "b"});
  DDLog::flushLog();
  EXPECT_THAT(logger->events.all(), ElementsAre("save entry:a entry:b"));
}

// Forks

TEST_F(DDAbstractDatabaseLoggerTest, WhatIsUnsavedAtAForkIsTheParentsAlone) {
#ifdef NK_TEST_THREAD_SANITIZER
  GTEST_SKIP() << "the thread sanitizer starts no threads in a forked child";
#endif
  add();
  logTexts({"parents"});
  test::quietBeforeFork();
  const pid_t child = fork();
  if (child == 0) {
    DDLog::flushLog();
    const bool hasNone = logger_->events.all().size() == seenCount_ && unsaved() == 0;
    logTexts({"childs"});
    clock_.advance(60 * second);
    const std::vector<std::string> events = seen();
    _exit(hasNone && events == std::vector<std::string>{"save childs"} ? 0 : 1);
  }
  int status = 1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_THAT(after(60 * second), ElementsAre("save parents"));
}

}  // namespace
}  // namespace norvik

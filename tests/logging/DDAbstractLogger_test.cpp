#include "NorvikCore/logging/DDAbstractLogger.h"

#include "tests/support/RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace norvik {
namespace {

using test::RecordingLogger;
using test::say;
using ::testing::ElementsAre;
using DDAbstractLoggerTest = test::CleanDDLog;

class RecordingFormatter : public DDLogFormatter {
  NK_OBJECT(RecordingFormatter, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    return "<" + message.logMsg() + ">";
  }
  void didAddToLogger(DDLogger& logger) override { events.add("added to " + logger.classObject().name().str()); }
  void willRemoveFromLogger(DDLogger& logger) override {
    events.add("removed from " + logger.classObject().name().str());
  }
  test::Events events;
};

class FormattingLogger : public DDAbstractLogger {
  NK_OBJECT(FormattingLogger, DDAbstractLogger)
  void logMessage(const DDLogMessage& message) override {
    const auto text = formatter() ? formatter()->formatLogMessage(message) : message.logMsg();
    events.add(text ? text->str() : "[dropped]");
  }
  std::optional<NSString> loggerName() override { return "the formatting logger"; }
  test::Events events;
};

class PlainLogger : public DDAbstractLogger {
  NK_OBJECT(PlainLogger, DDAbstractLogger)
};

class NamelessLogger : public DDAbstractLogger {
  NK_OBJECT(NamelessLogger, DDAbstractLogger)
  std::optional<NSString> loggerName() override { return std::nullopt; }
};

TEST_F(DDAbstractLoggerTest, HeaderExample) {
  const auto logger = make<FormattingLogger>();
  DDLog::addLogger(logger);
  say("before");
  logger->setLogFormatter(make<RecordingFormatter>());
  say("after", LOG_FLAG_ERROR, false);
  EXPECT_THAT(logger->events.all(), ElementsAre("before", "<after>"));
}

TEST_F(DDAbstractLoggerTest, TheQueueHasTheLoggersName) {
  EXPECT_STREQ(dispatch_queue_get_label(make<FormattingLogger>()->loggerQueue()), "the formatting logger");
}

TEST_F(DDAbstractLoggerTest, ALoggerIsNamedAfterItsClass) {
  const auto logger = make<PlainLogger>();
  EXPECT_EQ(logger->loggerName(), "PlainLogger");
  EXPECT_STREQ(dispatch_queue_get_label(logger->loggerQueue()), "PlainLogger");
}

TEST_F(DDAbstractLoggerTest, TheQueueOfALoggerWithoutANameHasNoLabel) {
  EXPECT_STREQ(dispatch_queue_get_label(make<NamelessLogger>()->loggerQueue()), "");
}

TEST_F(DDAbstractLoggerTest, TheBaseIgnoresMessages) {
  DDLog::addLogger(make<PlainLogger>());
  say("text", LOG_FLAG_ERROR, false);
}

TEST_F(DDAbstractLoggerTest, TheFormatterReadIsTheOneSetBefore) {
  const auto logger = make<FormattingLogger>();
  const auto first = make<RecordingFormatter>(), second = make<RecordingFormatter>();
  EXPECT_EQ(logger->logFormatter(), nullptr);
  logger->setLogFormatter(first);
  EXPECT_EQ(logger->logFormatter(), first);
  logger->setLogFormatter(second);
  logger->setLogFormatter(first);
  EXPECT_EQ(logger->logFormatter(), first);
  logger->setLogFormatter(nullptr);
  EXPECT_EQ(logger->logFormatter(), nullptr);
}

TEST_F(DDAbstractLoggerTest, AFormatterIsToldWhereItIsAddedAndRemoved) {
  const auto logger = make<FormattingLogger>();
  const auto first = make<RecordingFormatter>(), second = make<RecordingFormatter>();
  logger->setLogFormatter(first);
  logger->setLogFormatter(second);
  EXPECT_EQ(logger->logFormatter(), second);
  EXPECT_THAT(first->events.all(), ElementsAre("added to FormattingLogger", "removed from FormattingLogger"));
  EXPECT_THAT(second->events.all(), ElementsAre("added to FormattingLogger"));
}

TEST_F(DDAbstractLoggerTest, SettingTheSameFormatterAgainTellsItNothing) {
  const auto logger = make<FormattingLogger>();
  const auto formatter = make<RecordingFormatter>();
  logger->setLogFormatter(formatter);
  logger->setLogFormatter(formatter);
  EXPECT_EQ(logger->logFormatter(), formatter);
  EXPECT_THAT(formatter->events.all(), ElementsAre("added to FormattingLogger"));
}

TEST_F(DDAbstractLoggerTest, SettingNoFormatterTellsTheOldOneOnly) {
  const auto logger = make<FormattingLogger>();
  const auto formatter = make<RecordingFormatter>();
  logger->setLogFormatter(formatter);
  logger->setLogFormatter(nullptr);
  logger->setLogFormatter(nullptr);
  EXPECT_EQ(logger->logFormatter(), nullptr);
  EXPECT_THAT(formatter->events.all(), ElementsAre("added to FormattingLogger", "removed from FormattingLogger"));
}

TEST_F(DDAbstractLoggerTest, AFormatterHoldsForWhatIsLoggedAfterIt) {
  const auto logger = make<FormattingLogger>();
  DDLog::addLogger(logger);
  say("before");
  logger->setLogFormatter(make<RecordingFormatter>());
  say("after");
  logger->setLogFormatter(nullptr);
  say("again");
  say("end", LOG_FLAG_ERROR, false);
  EXPECT_THAT(logger->events.all(), ElementsAre("before", "<after>", "again", "end"));
}

TEST_F(DDAbstractLoggerTest, AFormatterMayBeSetOnTheLoggersQueue) {
  const auto logger = make<RecordingLogger>();
  logger->onMessage = [&](const DDLogMessage&) { logger->setLogFormatter(make<RecordingFormatter>()); };
  DDLog::addLogger(logger);
  say("text", LOG_FLAG_ERROR, false);
  EXPECT_NE(logger->logFormatter(), nullptr);
  clean();
  logger->onMessage = nullptr;
}

TEST_F(DDAbstractLoggerTest, EachQueueTestIsTrueOnItsQueueAlone) {
  const auto logger = make<RecordingLogger>(), other = make<RecordingLogger>();
  std::string inLogMessage;
  logger->onMessage = [&](const DDLogMessage&) {
    inLogMessage = logger->isOnInternalLoggerQueue() ? "own" : "not own";
    inLogMessage += other->isOnInternalLoggerQueue() ? ", other's" : ", not other's";
    inLogMessage += logger->isOnGlobalLoggingQueue() ? ", global" : ", not global";
  };
  DDLog::addLogger(logger);
  say("text", LOG_FLAG_ERROR, false);
  EXPECT_EQ(inLogMessage, "own, not other's, not global");
  EXPECT_FALSE(logger->isOnInternalLoggerQueue());
  EXPECT_FALSE(logger->isOnGlobalLoggingQueue());
  dispatch_sync(DDLog::loggingQueue(), [&] {
    EXPECT_TRUE(logger->isOnGlobalLoggingQueue());
    EXPECT_FALSE(logger->isOnInternalLoggerQueue());
  });
}

TEST_F(DDAbstractLoggerTest, AQueueThatOutlivesItsLoggerForgetsIt) {
  auto logger = make<PlainLogger>();
  const void* const address = logger.get();
  const dispatch_queue_t queue = logger->loggerQueue();
  EXPECT_EQ(dispatch_queue_get_specific(queue, address), address);
  logger = nullptr;
  EXPECT_EQ(dispatch_queue_get_specific(queue, address), nullptr);  // another logger may get this address
}

TEST_F(DDAbstractLoggerTest, ALoggerGoesWhenNobodyKeepsIt) {
  auto logger = make<FormattingLogger>();
  const Weak<FormattingLogger> watched = logger;
  logger->setLogFormatter(make<RecordingFormatter>());
  EXPECT_NE(logger->logFormatter(), nullptr);
  logger = nullptr;
  EXPECT_FALSE(watched.lock());
}

}  // namespace
}  // namespace norvik

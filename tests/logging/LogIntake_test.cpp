// The content of a log call is fixed at the call. The loggers get it only when the test releases the logging queue.
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/Mailbox.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/NSNumber.h"
#include "tests/support/LogFolder.h"
#include "tests/support/QuietFork.h"
#include "tests/support/RecordingLogger.h"
#include "tests/support/Sanitizers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using test::Latch;
using test::RecordingLogger;
using ::testing::ElementsAre;

template <class... Args>
void log(FormatStringFor<Args...> format, const Args&... arguments) {
  DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_ERROR, 0, "f", "g", 1, Value(), format, arguments...);
}

/// A value whose description is a text that is stored elsewhere.
struct Reference {
  const std::string* text;
  [[nodiscard]] std::string description() const { return *text; }
};

struct Raising {
  [[nodiscard]] std::string description() const { throw NSException("NSGenericException", "no description"); }
};

class LogIntake : public test::CleanDDLog {
 protected:
  void SetUp() override {
    CleanDDLog::SetUp();
    logger->onMessage = [this](const DDLogMessage& message) { messages.push_back(ref(message)); };
    DDLog::addLogger(logger);
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
  /// Hands out what was logged, and returns the texts.
  std::vector<std::string> go() {
    released.open();
    DDLog::flushLog();
    std::vector<std::string> texts;
    for (const auto& message : messages) texts.push_back(message->logMsg().str());
    return texts;
  }

  const Ref<RecordingLogger> logger = make<RecordingLogger>();
  std::vector<Ref<const DDLogMessage>> messages;
  Latch held, released;
};

TEST_F(LogIntake, TextsAreCopied) {
  hold();
  char array[] = "array";
  std::string buffer = "buffer", text = "text", view = "a view";
  std::optional<NSString> string = "string";
  log("%s %s %@ %@ %@", array, buffer.c_str(), text, std::string_view(view).substr(2), string);
  std::strcpy(array, "-----");
  for (std::string* changed : {&buffer, &text, &view}) changed->assign(changed->size(), '-');
  string = "------";
  EXPECT_THAT(go(), ElementsAre("array buffer text view string"));
}

TEST_F(LogIntake, NumbersAndPlainValuesAreCopied) {
  hold();
  int number = 42;
  double floating = 1.5;
  char letter = 'x';
  bool truth = true;
  Decimal decimal = *Decimal::parse("1234.50");
  Date date = Date::fromReferenceSeconds(0);
  NSNumber boxed = 7;
  std::optional<Decimal> absent;
  log("%d %.2f %c %d %@ %@ %@ %@", number, floating, letter, truth, decimal, date, boxed, absent);
  number = 0, floating = 0, letter = '-', truth = false;
  decimal = 0, date = Date::distantFuture(), boxed = 0, absent = 0;
  EXPECT_THAT(go(), ElementsAre("42 1.50 x 1 1234.50 2001-01-01 00:00:00 +0000 7 (null)"));
}

TEST_F(LogIntake, ObjectsAreDescribedAtTheCall) {
  hold();
  const auto array = make<NSMutableArray>();
  std::string elsewhere = "before";
  const std::string described = array->description().str();
  log("%@ %@", array, Reference{&elsewhere});
  array->addObject("late");
  elsewhere = "after";
  EXPECT_THAT(go(), ElementsAre(described + " before"));
}

TEST_F(LogIntake, ARunTimeFormatNeedNotLive) {
  hold();
  std::string format = "%d items";
  {
    const RuntimeFormat marked = runtimeFormat(NSString(format));
    log(marked, 3);
  }
  EXPECT_THAT(go(), ElementsAre("3 items"));
}

TEST_F(LogIntake, WhereMessagesAreJammedTheirTextsAreTheSame) {
  const auto& mailbox = static_cast<const detail::Mailbox&>(*DDLog::loggingQueue().core());
  const std::string fits(96, 'x'), tooLong(97, 'y'), noText("b\xC3(d");
  const NSString half = NSString::fromUtf16(
      u"a\xD83D"
      u"z");
  const auto calls = [&] {
    std::string text = "text";
    log("%d %g %@ %s", -42, 2.5, *Decimal::parse("1234.50"), text.c_str());
    text = "----";
    log("%s", fits.c_str());
    log("%s", tooLong.c_str());
    log("%@", NSString(tooLong));
    log("%s|%@", noText.c_str(), half);
    log("%@", half);
    log("%s", "");
    log("nothing but %% text");
    log("%100d", 7);
    DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_WARN, 3, "file", "function", 5, NSString("tag"), "%d with a tag", 1);
  };
  const auto expected =
      ElementsAre("-42 2.5 1234.50 text", fits, tooLong, tooLong, "b\xED\xB3\x83(d|a\xED\xA0\xBDz", "a\xED\xA0\xBDz",
                  "", "nothing but % text", std::string(99, ' ') + "7", "1 with a tag");
  for (int i = 0; mailbox.isCrowded() && i < 2000;
       ++i) {  // it may still be from an earlier test, until a sender checks
    log("%d", i);
    DDLog::flushLog();
  }
  messages.clear();
  EXPECT_FALSE(mailbox.isCrowded());
  calls();
  EXPECT_THAT(go(), expected);

  Latch heldAgain, releasedAgain, lastReleased;
  dispatch_async(DDLog::loggingQueue(), [&] {
    held.open();
    releasedAgain.wait();
  });
  held.wait();
  for (int i = 0; i < 100; ++i) log("%d", i);
  dispatch_async(DDLog::loggingQueue(), [&] {
    heldAgain.open();
    lastReleased.wait();
  });
  for (int i = 100; i < 1000; ++i) log("%d", i);
  std::thread caller([&] {
    kernel::setCurrentThreadName("a jammed thread");
    log("the first beyond the bound");
    EXPECT_TRUE(mailbox.isCrowded());
    calls();
    EXPECT_TRUE(mailbox.isCrowded());
  });
  releasedAgain.open();
  heldAgain.wait();
  caller.join();
  messages.clear();
  lastReleased.open();
  DDLog::flushLog();
  messages.erase(messages.begin(), messages.begin() + 901);
  EXPECT_THAT(go(), expected);
  const DDLogMessage& last = *messages.back();
  EXPECT_EQ(last.threadName(), "a jammed thread");
  EXPECT_EQ(last.logFlag(), LOG_FLAG_WARN);
  EXPECT_EQ(last.logContext(), 3);
  EXPECT_EQ(last.lineNumber(), 5);
  EXPECT_EQ(last.tag(), NSString("tag"));
}

TEST_F(LogIntake, APrecisionBoundsATextWithoutEnd) {
  hold();
  const auto letters = std::make_unique<char[]>(3);
  std::memcpy(letters.get(), "abc", 3);
  const char* const text = letters.get();
  log("%.3s|%.*s|%.2@", text, 2, text, "xyz");
  letters[0] = '-';
  EXPECT_THAT(go(), ElementsAre("abc|ab|xy"));
}

TEST_F(LogIntake, AddressesAreThoseOfTheArguments) {
  hold();
  const char* const text = "text";
  log("%p %s", text, text);
  EXPECT_THAT(go(), ElementsAre(stringWithFormat("%p text", text).str()));
}

TEST_F(LogIntake, EveryConversionSaysLaterWhatItSaysAtOnce) {
  hold();
  log("%5d|%-5d|%05d|%+d|%*d", 42, 42, 42, 42, 4, 42);
  log("%x|%#X|%o|%u|%hhd", 255, 255, 8, 7U, static_cast<signed char>(-1));
  log("%8.3f|%e|%g|%.0f", 3.14159, 1500.0, 0.25, 2.5);
  log("%c%c|%C|%d%%", '\xC3', '\xAB', u'\u00EB', 99);
  log("%10s|%-10s|%@|%s", "Zo\u00EB", std::string("right"), NSString("any"), std::string_view());
  log("%2$@ and %1$@", "second", "first");
  log("%@ %@ %d", Decimal(5), NSNumber(true), true);
  log("no arguments");
  log("");
  EXPECT_THAT(go(), ElementsAre("   42|42   |00042|+42|  42", "ff|0XFF|10|7|-1", "   3.142|1.500000e+03|0.25|2",
                                "\u00EB|\u00EB|99%", "       Zo\u00EB|right     |any|", "first and second", "5 1 1",
                                "no arguments", ""));
}

TEST_F(LogIntake, HalvesOfACharacterRejoin) {
  hold();
  const NSString smile = "\U0001F600";
  log("%@%@", smile.substringToIndex(1), smile.substringFromIndex(1));
  EXPECT_THAT(go(), ElementsAre("\U0001F600"));
}

TEST_F(LogIntake, WhatIsLargeArrivesToo) {
  hold();
  const std::string large(100000, 'y');
  const NSString shared(std::string(1000, 'z'));
  log("%s", large.c_str());
  log("short");
  log("%d%d%d%d%d%d%d%d%d%@", 1, 2, 3, 4, 5, 6, 7, 8, 9, shared);
  EXPECT_THAT(go(), ElementsAre(large, "short", "123456789" + std::string(1000, 'z')));
}

TEST_F(LogIntake, AThousandCallsArriveInOrder) {
  hold();
  for (int i = 0; i < 999; ++i) log("%d", i);
  const std::vector<std::string> texts = go();
  ASSERT_EQ(texts.size(), 999U);
  for (std::size_t i = 0; i < texts.size(); ++i) ASSERT_EQ(texts[i], std::to_string(i));
}

TEST_F(LogIntake, TheTimeIsThatOfTheCall) {
  hold();
  const Date before = Date::systemDate();
  log("now");
  const Date after = Date::systemDate();
  while (Date::systemDate().timeIntervalSinceDate(after) < 0.01) std::this_thread::yield();
  go();
  constexpr double accuracy = 1e-6;
  EXPECT_GE(messages.at(0)->timestamp().timeIntervalSinceDate(before), -accuracy);
  EXPECT_LE(messages.at(0)->timestamp().timeIntervalSinceDate(after), accuracy);
}

TEST_F(LogIntake, TheTimeIsTheRealOneAlsoWhileAnotherDateIsMocked) {
  hold();
  const Date before = Date::systemDate();
  const auto real = Date::setCurrentDateSource([]() -> std::optional<Date> { return Date::distantPast(); });
  log("left for later: %d", 1);
  log("formed at once: %@", NSArray::arrayWith({1}));
  Date::setCurrentDateSource(real);
  go();
  EXPECT_GE(messages.at(0)->timestamp().timeIntervalSinceDate(before), -1e-6);
  EXPECT_GE(messages.at(1)->timestamp(), before);
}

TEST_F(LogIntake, ThreadAndNameAreThoseOfTheCall) {
  hold();
  std::uint32_t id = 0;
  std::thread([&] {
    id = static_cast<std::uint32_t>(gettid());
    kernel::setCurrentThreadName("first");
    log("1");
    kernel::setCurrentThreadName("second");
    log("2");
    const std::string longName(200, 'n');
    kernel::setCurrentThreadName(longName);
    log("3");
    kernel::setCurrentThreadName("last");
    log("4");
    kernel::setCurrentThreadName("never");
  }).join();
  EXPECT_THAT(go(), ElementsAre("1", "2", "3", "4"));
  EXPECT_EQ(messages[0]->threadName(), "first");
  EXPECT_EQ(messages[1]->threadName(), "second");
  EXPECT_EQ(messages[2]->threadName(), NSString(std::string(200, 'n')));
  EXPECT_EQ(messages[3]->threadName(), "last");
  EXPECT_STREQ(messages[3]->queueLabel(), "last");
  for (const auto& message : messages) EXPECT_EQ(message->machThreadID(), id);
}

TEST_F(LogIntake, AThreadThatIsRenamedBehindTheLibrarysBackSoonLogsItsNewName) {
  std::thread([&] {
    pthread_setname_np(pthread_self(), "clerk");
    log("1");
    DDLog::flushLog();
    EXPECT_EQ(messages.back()->threadName(), "clerk");
    pthread_setname_np(pthread_self(), "manager");
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (messages.back()->threadName() != "manager" && std::chrono::steady_clock::now() < patience) {
      messages.clear();
      log("2");
      DDLog::flushLog();
    }
    EXPECT_EQ(messages.back()->threadName(), "manager");
  }).join();
}

TEST_F(LogIntake, TheQueueIsThatOfTheCall) {
  hold();
  dispatch_sync(dispatch_queue_create("payroll"), [] { log("short"); });
  dispatch_sync(dispatch_queue_create(std::string(300, 'q').c_str()), [] { log("long"); });
  std::thread([] {
    kernel::setCurrentThreadName("off any queue");
    log("none");
  }).join();
  EXPECT_THAT(go(), ElementsAre("short", "long", "none"));
  EXPECT_STREQ(messages[0]->queueLabel(), "payroll");
  EXPECT_EQ(messages[1]->queueLabel(), std::string(300, 'q'));
  EXPECT_STREQ(messages[2]->queueLabel(), "off any queue");
}

TEST_F(LogIntake, CallsThatJustFitTheirRoomAndThoseThatDoNotAreWhole) {
  // Outside any queue a thread's name is the label too: together 2, 4, 30, 32, 34, 98, 100 and 102 bytes.
  constexpr std::size_t lengths[] = {1, 2, 15, 16, 17, 49, 50, 51};
  hold();
  std::thread([&] {
    for (const std::size_t length : lengths) {
      kernel::setCurrentThreadName(std::string(length, 'n'));
      for (const Value& tag : {Value(), Value("tag")}) {
        const auto tagged = [&]<class... Args>(FormatStringFor<Args...> format, const Args&... arguments) {
          DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_ERROR, 0, "f", "g", 1, tag, format, arguments...);
        };
        tagged("%d %d %d %d", 1, 2, 3, 4);
        tagged("%d %d %d %d %d", 1, 2, 3, 4, 5);
        tagged("%d %d %d %d %d %d", 1, 2, 3, 4, 5, 6);
        tagged("%d %d %d %d %d %d %s", 1, 2, 3, 4, 5, 6, "seven");
      }
    }
  }).join();
  const std::vector<std::string> texts = go();
  ASSERT_EQ(texts.size(), 64u);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    constexpr const char* expected[] = {"1 2 3 4", "1 2 3 4 5", "1 2 3 4 5 6", "1 2 3 4 5 6 seven"};
    const std::string name(lengths[i / 8], 'n');
    EXPECT_EQ(texts[i], expected[i % 4]) << i;
    EXPECT_EQ(messages[i]->threadName(), NSString(name)) << i;
    EXPECT_EQ(messages[i]->queueLabel(), name) << i;
    EXPECT_EQ(messages[i]->tag(), i / 4 % 2 == 0 ? Value() : Value("tag")) << i;
  }
}

TEST_F(LogIntake, ATagIsKeptAndLetGo) {
  hold();
  auto tag = make<NSMutableArray>();
  const Weak<NSMutableArray> watched = tag;
  DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_ERROR, 0, "f", "g", 1, Value(tag), "%d", 1);
  tag = nullptr;
  EXPECT_TRUE(watched.lock());
  go();
  EXPECT_EQ(messages.at(0)->tag(), Value(watched.lock()));
  messages.clear();
  EXPECT_FALSE(watched.lock());
}

TEST_F(LogIntake, ADescriptionThatRaisesReachesTheCallerAndTakesNoPlaceInTheQueue) {
  for (int i = 0; i < 1100; ++i) EXPECT_THROW(log("%@", Raising()), NSException);
  log("after");
  EXPECT_THAT(go(), ElementsAre("after"));
}

TEST_F(LogIntake, AForkedChildLogsWithItsOwnThreadId) {
#ifdef NK_TEST_THREAD_SANITIZER
  GTEST_SKIP() << "the thread sanitizer starts no threads in a child made by fork()";
#endif
  log("of the parent");
  DDLog::flushLog();
  messages.clear();
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    log("of the child");
    DDLog::flushLog();
    const bool isRight = messages.size() == 1 && messages[0]->machThreadID() == static_cast<std::uint32_t>(gettid());
    _exit(isRight ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(LogIntake, AForkLeavesTheLoggingQueueFreeWhereALoggersQueueIsBusy) {
  const dispatch_group_t goesOn = dispatch_group_create();
  dispatch_async(logger->loggerQueue(), [this] { released.wait(); });
  test::quietBeforeFork();
  const pid_t child = fork();
  if (child == 0) _exit(0);
  waitpid(child, nullptr, 0);
  dispatch_group_async(goesOn, DDLog::loggingQueue(), [] {});
  EXPECT_EQ(dispatch_group_wait(goesOn, dispatch_time(DISPATCH_TIME_NOW, 20 * NSEC_PER_SEC)), 0);
  log("after");
  EXPECT_THAT(go(), ElementsAre("after"));
}

class SuspendingFormatter : public DDLogFormatter {
  NK_OBJECT(SuspendingFormatter, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    formatted.push_back(message.logMsg().str());
    if (message.logMsg() == "2") {
      dispatch_suspend(DDLog::loggingQueue());
      suspended.open();
    }
    return message.logMsg();
  }
  std::vector<std::string> formatted;  // used on the logger's queue
  Latch suspended;
};

TEST_F(LogIntake, ALoggerThatSuspendsTheLoggingQueueGetsNoFurtherMessage) {
  clean();
  const test::TemporaryFolder folder;
  const auto file = DDFileLogger::initWithLogFileManager(make<test::RecordingManager>(folder.path()));
  const auto formatter = make<SuspendingFormatter>();
  file->setLogFormatter(formatter);
  DDLog::addLogger(file);
  hold();
  for (int i = 0; i < 5; ++i) log("%d", i);
  released.open();
  formatter->suspended.wait();
  log("5");
  dispatch_sync(file->loggerQueue(), [&] { EXPECT_THAT(formatter->formatted, ElementsAre("0", "1", "2")); });
  dispatch_resume(DDLog::loggingQueue());
  DDLog::flushLog();
  EXPECT_THAT(formatter->formatted, ElementsAre("0", "1", "2", "3", "4", "5"));
}

TEST_F(LogIntake, ALoggerThatTakesMessagesOneByOneMaySuspendTheLoggingQueueToo) {
  clean();
  const auto suspending = make<RecordingLogger>();
  Latch suspended;
  suspending->onMessage = [&](const DDLogMessage& message) {
    if (message.logMsg() != "2") return;
    dispatch_suspend(DDLog::loggingQueue());
    suspended.open();
  };
  DDLog::addLogger(suspending);
  hold();
  for (int i = 0; i < 5; ++i) log("%d", i);
  released.open();
  suspended.wait();
  log("5");
  dispatch_sync(suspending->loggerQueue(),
                [&] { EXPECT_THAT(suspending->all(), ElementsAre("[added]", "[flushed]", "0", "1", "2")); });
  dispatch_resume(DDLog::loggingQueue());
  DDLog::flushLog();
  EXPECT_THAT(suspending->all(), ElementsAre("[added]", "[flushed]", "0", "1", "2", "3", "4", "5", "[flushed]"));
}

/// Forks when it formats the first message.
class ForkingFormatter : public DDLogFormatter {
  NK_OBJECT(ForkingFormatter, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    ++formatted;
    if (message.logMsg() == "0" && !child) {
      child = fork();
      if (child == 0) {
        alarm(20);
        log("of the child");
      }
    }
    if (child == 0 && message.logMsg() == "of the child") _exit(formatted == 2 ? 0 : 1);
    return message.logMsg();
  }
  std::optional<pid_t> child;
  int formatted = 0;
};

TEST_F(LogIntake, AChildThatIsForkedWithinAMessageGoesOnWithThatOneAlone) {
#ifdef NK_TEST_THREAD_SANITIZER
  GTEST_SKIP() << "the thread sanitizer starts no threads in a child made by fork()";
#endif
  clean();
  const test::TemporaryFolder folder;
  const auto file = DDFileLogger::initWithLogFileManager(make<test::RecordingManager>(folder.path()));
  const auto formatter = make<ForkingFormatter>();
  file->setLogFormatter(formatter);
  DDLog::addLogger(file);
  hold();
  for (int i = 0; i < 10; ++i) log("%d", i);
  go();
  int status = 0;
  waitpid(*formatter->child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(formatter->formatted, 10);
}

}  // namespace
}  // namespace norvik

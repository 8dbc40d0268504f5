#include "NorvikCore/platform/kernel/Fork.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/AssociatedObjects.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/SEL.h"
#include "NorvikCore/platform/object/Weak.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/QuietFork.h"
#include "tests/support/RecordingLogger.h"

namespace norvik {
namespace {

class Clerk : public NSObject {
  NK_OBJECT(Clerk, NSObject)
  NK_PROPERTY(std::int64_t, desk, setDesk)
  NK_ATOMIC_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Ref<Clerk>, manager, setManager)
  void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange&, void*) override { ++heard; }

 public:
  std::atomic<int> heard{0};
};

/// Has no lock of its own.
class CountingLogger : public DDAbstractLogger {
  NK_OBJECT(CountingLogger, DDAbstractLogger)
  void logMessage(const DDLogMessage&) override { ++count; }
  std::atomic<int> count{0};
};

const char associationKey = 0;

/// The work that threads of the parent and each child do with one subsystem, on shared objects. run() returns whether
/// the results were as expected.
struct Work {
  const char* name;
  std::function<bool(int round)> run;
};

std::vector<Work> allWork(const Ref<NSUserDefaults>& defaults) {
  const auto shared = make<Clerk>();
  shared->setManager(make<Clerk>());
  const auto locales = std::vector<NSString>{"en_GB", "de_DE", "fr_FR", "ar_EG", "cy_GB", "ga_IE"};
  return {
      {"observers",
       [shared](int) {
         const auto observer = make<Clerk>();
         shared->addObserver(*observer, "manager.desk", NSKeyValueObservingOptionNew, nullptr);
         shared->manager()->setDesk(shared->manager()->desk() + 1);
         shared->removeObserver(*observer, "manager.desk", nullptr);
         return observer->heard > 0;
       }},
      {"observers of a controller",
       [shared](int) {
         const auto observer = make<Clerk>();
         const auto controller = FBKVOController::controllerWithObserver(*observer);
         std::atomic<bool> isTold{false};
         controller->observe_keyPath_options_block(shared, "desk", NSKeyValueObservingOptionNew,
                                                   [&](NSObject&, NSObject&, const NSDictionary&) { isTold = true; });
         shared->setDesk(shared->desk() + 1);
         controller->unobserveAll();
         return isTold.load();
       }},
      {"weak references",
       [shared](int) {
         const Weak<Clerk> weak = shared;
         auto own = make<Clerk>();
         const Weak<Clerk> gone = own;
         own = nullptr;
         return weak.lock() == shared && gone.isGone();
       }},
      {"associated values",
       [shared](int round) {
         const char own = 0;
         setAssociatedValue(*shared, &own, Value(round));
         setAssociatedValue(*shared, &associationKey, Value(make<Clerk>()));
         const bool isKept = associatedValue(*shared, &own) == Value(round);
         setAssociatedValue(*shared, &own, Value());
         return isKept && associatedValue(*shared, &associationKey).isObject();
       }},
      {"atomic properties",
       [shared](int) {
         shared->setName("a name that is too long to stand in the object itself");
         return !shared->name().empty();
       }},
      {"classes and selectors",
       [](int round) {
         const SEL selector(NSString("selector" + std::to_string(round % 5000) + ":"));
         return Class::named("Clerk") == &Clerk::staticClass() && selector.argumentCount() == 1;
       }},
      {"notifications",
       [](int) {
         std::atomic<bool> isTold{false};
         auto& center = NSNotificationCenter::defaultCenter();
         const auto observer =
             center.addObserverForName("Fork", nullptr, [&](const NSNotification&) { isTold = true; });
         center.postNotificationName("Fork");
         center.removeObserver(*observer);
         return isTold.load();
       }},
      {"time zones",
       [](int round) {
         NSTimeZone::resetSystemTimeZone();
         return NSTimeZone::systemTimeZone() && NSTimeZone::timeZoneWithName("Europe/London") &&
                NSTimeZone::timeZoneForSecondsFromGMT(round % 600 * 60);
       }},
      {"formatters",
       [locales](int round) {
         const auto locale =
             NSLocale::localeWithLocaleIdentifier(locales[static_cast<std::size_t>(round) % locales.size()]);
         const auto numbers = make<NSNumberFormatter>();
         numbers->setLocale(locale);
         numbers->setNumberStyle(round % 2 == 0 ? NSNumberFormatterCurrencyStyle : NSNumberFormatterSpellOutStyle);
         const auto dates = make<NSDateFormatter>();
         dates->setLocale(locale);
         dates->setDateStyle(NSDateFormatterFullStyle);
         dates->setTimeStyle(NSDateFormatterFullStyle);
         return !numbers->stringFromNumber(NSNumber(1234)).empty() && !dates->stringFromDate(Date()).empty();
       }},
      {"preferences",
       [defaults](int round) {
         defaults->setInteger(round, "round");
         return !defaults->objectForKey("round").isAbsent();
       }},
      {"the log",
       [](int) {
         test::say("a line");
         return true;
       }},
  };
}

class Fork : public test::CleanDDLog {};

TEST_F(Fork, AChildCanDoWhateverItsParentCouldWhileThreadsWereDoingIt) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the sanitizer's heap does not survive a fork while other threads allocate";
#endif
  const test::DefaultsFolder folder;
  const auto logger = make<CountingLogger>();
  DDLog::addLogger(logger);
  DDLog::flushLog();
  const std::vector<Work> all = allWork(folder.open());
  std::atomic<bool> ends{false};
  std::vector<std::thread> threads;
  std::atomic<int> mistakes{0}, rounds{0};
  for (const Work& work : all) {
    threads.emplace_back([&] {
      for (int round = 0; !ends; ++round, ++rounds) mistakes += work.run(round) ? 0 : 1;
    });
  }
  while (rounds < 100) std::this_thread::yield();
  constexpr int forks = 150;
  for (int fork = 0; fork < forks && !HasFailure(); ++fork) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      for (std::size_t i = 0; i < all.size(); ++i) {
        alarm(10);
        if (!all[i].run(fork)) _exit(static_cast<int>(100 + i));
        if (!all[i].run(fork + 1)) _exit(static_cast<int>(100 + i));
      }
      alarm(10);
      const int before = logger->count;
      test::say("the last");
      DDLog::flushLog();
      _exit(logger->count > before ? 0 : 99);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by the signal " << WTERMSIG(status) << " after fork " << fork;
    if (!WIFEXITED(status) || WEXITSTATUS(status) == 0) continue;
    const auto failed = static_cast<std::size_t>(WEXITSTATUS(status) - 100);
    ADD_FAILURE() << "fork " << fork << ": " << (failed < all.size() ? all[failed].name : "the log's flush");
  }
  ends = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mistakes, 0);
}

TEST(ForkAlone, ItsHandlersRunInsideThoseOfOthersWhileNoOtherThreadHoldsALock) {
  static std::string calls;
  const pid_t child = fork();
  if (child == 0) {
    kernel::atForkAlone([] { calls += "1"; }, [] { calls += "a"; }, [] { calls += "A"; });
    kernel::atFork([] { calls += "2"; }, [] { calls += "b"; }, [] { calls += "B"; });
    kernel::atForkAlone([] { calls += "3"; }, [] { calls += "c"; }, [] { calls += "C"; });
    const pid_t grandchild = fork();
    if (grandchild == 0) _exit(calls == "231ACB" ? 0 : 1);
    int status = -1;
    waitpid(grandchild, &status, 0);
    _exit(status == 0 && calls == "231acb" ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST(ForkAlone, AForkWaitsForTheHoldsOfOtherThreads) {
  std::atomic<bool> isHeld{false}, isReleased{false};
  std::thread holder([&] {
    const kernel::ForkHold outer;
    const kernel::ForkHold inner;
    isHeld = true;
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    isReleased = true;
  });
  while (!isHeld) std::this_thread::yield();
  const pid_t child = fork();
  if (child == 0) _exit(isReleased ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  holder.join();
}

TEST(ForkAlone, AThreadThatHoldsForksMayForkAlsoWhileAnotherForkWaitsForIt) {
  std::atomic<int> isRight{0};
  const auto forks = [&](bool holds) {
    for (int round = 0; round < 50; ++round) {
      if (holds) kernel::holdForks();
      const pid_t child = fork();
      if (child == 0) {
        const kernel::ForkHold hold;
        _exit(0);
      }
      if (holds) kernel::releaseForks();
      int status = -1;
      waitpid(child, &status, 0);
      isRight += status == 0 ? 1 : 0;
    }
  };
  std::thread other(forks, true);
  forks(false);
  other.join();
  EXPECT_EQ(isRight, 100);
}

}  // namespace
}  // namespace norvik

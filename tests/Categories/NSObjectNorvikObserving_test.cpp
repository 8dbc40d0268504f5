#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "NorvikCore/Categories/NSObject+Norvik_Observing.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/platform/appkit/BindingModels.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/WarningRecorder.h"

namespace norvik::test {
namespace {

using ::testing::ElementsAre;

constexpr char ourContext = 0, otherContext = 0;
void* ours() { return const_cast<char*>(&ourContext); }
void* others() { return const_cast<char*>(&otherContext); }

/// Records the key paths in the order of the notifications.
class PathRecorder : public NSObject {
 public:
  void observeValueForKeyPath(const NSString& keyPath, NSObject&, const KeyValueChange&, void* context) override {
    heard.push_back(keyPath.str() + (context == ours() ? " ours" : ""));
  }
  std::vector<std::string> heard;
};

class ObservingWarnings : public ::testing::Test {
 protected:
  void SetUp() override { ddLogLevel = LOG_LEVEL_WARN; }
  void TearDown() override { ddLogLevel = LOG_LEVEL_WARN; }
  WarningRecorder warnings;
  Ref<BoundSlip> slip = make<BoundSlip>();
  Ref<PathRecorder> watcher = make<PathRecorder>();
};

using NSObjectNorvikObserving = ObservingWarnings;

TEST_F(NSObjectNorvikObserving, HeaderExample) {
  slip->setEmployee(make<BoundEmployee>());
  const auto paths = NSArray::arrayWithObjects("grossPay", "employee.name");
  nk_addObserver(*slip, *watcher, *paths, NSKeyValueObservingOptionNew, this);
  slip->setGrossPay(1_dec);
  slip->employee()->setName("Sian");
  nk_safelyRemoveObserver(*slip, *watcher, *paths, this);
  slip->setGrossPay(2_dec);
  EXPECT_THAT(watcher->heard, ElementsAre("grossPay", "employee.name"));
  EXPECT_TRUE(warnings.take().empty());
}

TEST_F(NSObjectNorvikObserving, PathsAreObservedInOrderWithOptionsAndContext) {
  nk_addObserver(*slip, *watcher, *NSArray::arrayWithObjects("tax", "grossPay"),
                 NSKeyValueObservingOptionInitial | NSKeyValueObservingOptionNew, ours());
  EXPECT_THAT(watcher->heard, ElementsAre("tax ours", "grossPay ours"));
  nk_safelyRemoveObserver(*slip, *watcher, *NSArray::arrayWithObjects("tax", "grossPay"), ours());
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(NSObjectNorvikObserving, AnUnknownPathRaisesAndLeavesTheOnesBefore) {
  EXPECT_RAISES(nk_addObserver(*slip, *watcher, *NSArray::arrayWithObjects("tax", "taxes", "grossPay"),
                               NSKeyValueObservingOptionNew, ours()),
                "NSUnknownKeyException");
  slip->setGrossPay(1_dec);
  slip->setTax(1_dec);
  EXPECT_THAT(watcher->heard, ElementsAre("tax ours"));
  slip->removeObserver(*watcher, "tax", ours());
}

TEST_F(NSObjectNorvikObserving, RemovingWhatWasNeverAddedLogsOneWarning) {
  nk_safelyRemoveObserver(*slip, *watcher, "grossPay", nullptr);
  const auto logged = warnings.take();
  ASSERT_EQ(logged.size(), 1U);
  EXPECT_EQ(logged[0].file, "Categories/NSObject+Norvik");
  EXPECT_EQ(logged[0].function, "nk_safelyRemoveObserver:forKeyPath:context:");
  EXPECT_EQ(logged[0].level, 3);
  EXPECT_EQ(logged[0].flag, 2);
  EXPECT_EQ(logged[0].context, 0);
  EXPECT_THAT(logged[0].text, ::testing::StartsWith("NSRangeException - "));
  EXPECT_THAT(logged[0].text, ::testing::HasSubstr("\"grossPay\""));
  EXPECT_THAT(logged[0].text, ::testing::EndsWith(" : \ncontext : 0x0\nobservationInfo : (null)"));
}

TEST_F(NSObjectNorvikObserving, TheWarningNamesContextAndOtherObservers) {
  slip->addObserver(*watcher, "tax", NSKeyValueObservingOptionNew, others());
  nk_safelyRemoveObserver(*slip, *watcher, "tax", reinterpret_cast<void*>(0x1234));
  const auto logged = warnings.take();
  ASSERT_EQ(logged.size(), 1U);
  EXPECT_THAT(logged[0].text, ::testing::HasSubstr("\ncontext : 0x1234\nobservationInfo : "));
  EXPECT_THAT(logged[0].text, ::testing::HasSubstr("tax"));
  EXPECT_THAT(logged[0].text, ::testing::Not(::testing::HasSubstr("observationInfo : (null)")));
  slip->setTax(1_dec);
  EXPECT_EQ(watcher->heard.size(), 1U);
  slip->removeObserver(*watcher, "tax", others());
}

TEST_F(NSObjectNorvikObserving, TheWarningHasLine140AndNoTag) {
  class LineRecorder : public DDAbstractLogger {
   public:
    void logMessage(const DDLogMessage& message) override {
      line = message.lineNumber();
      hasTag = !message.tag().isAbsent();
    }
    int line = 0;
    bool hasTag = true;
  };
  const auto recorder = make<LineRecorder>();
  DDLog::addLogger(recorder);
  nk_safelyRemoveObserver(*slip, *watcher, "grossPay", nullptr);
  DDLog::removeLogger(recorder);
  DDLog::flushLog();
  EXPECT_EQ(recorder->line, 140);
  EXPECT_FALSE(recorder->hasTag);
}

TEST_F(NSObjectNorvikObserving, WithoutWarningsNothingIsLoggedAndNothingRaised) {
  ddLogLevel = LOG_LEVEL_ERROR;
  nk_safelyRemoveObserver(*slip, *watcher, "grossPay", ours());
  EXPECT_TRUE(warnings.take().empty());
}

TEST_F(NSObjectNorvikObserving, ExceptionsOfOtherKindsPass) {
  /// Throws when its class is read.
  class Broken : public NSObject {
   public:
    const Class& classObject() const override { throw std::runtime_error("broken"); }
  };
  const auto broken = make<Broken>();
  EXPECT_THROW(nk_safelyRemoveObserver(*slip, *broken, "tax", ours()), std::runtime_error);
  EXPECT_TRUE(warnings.take().empty());
}

TEST_F(NSObjectNorvikObserving, TheLogIsFlushedInEitherCase) {
  class FlushCounter : public DDAbstractLogger {
   public:
    void logMessage(const DDLogMessage&) override {}
    void flush() override { ++flushes; }
    std::atomic<int> flushes{0};
  };
  const auto counter = make<FlushCounter>();
  DDLog::addLogger(counter);
  slip->addObserver(*watcher, "tax", NSKeyValueObservingOptionNew, ours());
  nk_safelyRemoveObserver(*slip, *watcher, "tax", ours());
  EXPECT_EQ(counter->flushes, 1);
  nk_safelyRemoveObserver(*slip, *watcher, "tax", ours());
  EXPECT_EQ(counter->flushes, 2);
  nk_safelyRemoveObserver(*slip, *watcher, *NSArray::arrayWithObjects("tax", "note"), ours());
  EXPECT_EQ(counter->flushes, 4);
  DDLog::removeLogger(counter);
}

TEST_F(NSObjectNorvikObserving, SeveralPathsWarnOneByOneInOrder) {
  nk_safelyRemoveObserver(*slip, *watcher, *NSArray::arrayWithObjects("tax", "note"), ours());
  const auto logged = warnings.take();
  ASSERT_EQ(logged.size(), 2U);
  EXPECT_THAT(logged[0].text, ::testing::HasSubstr("\"tax\""));
  EXPECT_THAT(logged[1].text, ::testing::HasSubstr("\"note\""));
}

TEST_F(NSObjectNorvikObserving, TheFormWithoutContextRemovesAndAdvises) {
  const kernel::SystemLogCapture console;
  slip->addObserver(*watcher, "tax", NSKeyValueObservingOptionNew);
  nk_safelyRemoveObserver(*slip, *watcher, "tax");
  EXPECT_FALSE(slip->isObserved());
  EXPECT_TRUE(warnings.take().empty());
  EXPECT_THAT(console.lines(),
              ElementsAre("BoundSlip nk_safelyRemoveObserver:forKeyPath: tax: This method is valid but you should use "
                          "the alternate that also specifies the context. Failure to use the context can lead to "
                          "crashes."));
}

TEST_F(NSObjectNorvikObserving, TheFormWithoutContextLeavesWhatHasOneAndWarns) {
  const kernel::SystemLogCapture console;
  slip->addObserver(*watcher, "tax", NSKeyValueObservingOptionNew, ours());
  nk_safelyRemoveObserver(*slip, *watcher, "tax");
  EXPECT_EQ(warnings.take().size(), 1U);
  EXPECT_EQ(console.lines().size(), 1U);
  EXPECT_TRUE(slip->isObserved());
  slip->removeObserver(*watcher, "tax", ours());
}

// Manual changes of key paths.

TEST_F(NSObjectNorvikObserving, TheOwnerOfAPathIsFound) {
  auto employee = make<BoundEmployee>();
  slip->setEmployee(employee);
  NSString key;
  EXPECT_EQ(nk_receiverForKeyPath(*slip, "employee.name", &key), Ref<NSObject>(employee));
  EXPECT_EQ(key, "name");
  EXPECT_EQ(nk_receiverForKeyPath(*slip, "name", &key), Ref<NSObject>(slip));
  EXPECT_EQ(key, "name");
  EXPECT_EQ(nk_receiverForKeyPath(*slip, "employee.name"), Ref<NSObject>(employee));
}

class Address : public NSObject {
  NK_OBJECT(Address, NSObject)
  NK_PROPERTY(NSString, postcode, setPostcode)
};
class Person : public NSObject {
  NK_OBJECT(Person, NSObject)
  NK_PROPERTY(Ref<Address>, address, setAddress)
};
class Job : public NSObject {
  NK_OBJECT(Job, NSObject)
  NK_PROPERTY(Ref<Person>, employee, setEmployee)
};

TEST_F(NSObjectNorvikObserving, TheOwnerOfADeepPathIsFound) {
  auto job = make<Job>();
  job->setEmployee(make<Person>());
  job->employee()->setAddress(make<Address>());
  NSString key;
  EXPECT_EQ(nk_receiverForKeyPath(*job, "employee.address.postcode", &key), Ref<NSObject>(job->employee()->address()));
  EXPECT_EQ(key, "postcode");
}

class Node : public NSObject {
  NK_OBJECT(Node, NSObject)
  NK_PROPERTY(Ref<NSObject>, a, setA)
  NK_PROPERTY(Ref<NSObject>, b, setB)
};

TEST_F(NSObjectNorvikObserving, ComponentsEqualToTheKeyAreLeftOut) {
  auto node = make<Node>(), atA = make<Node>(), atB = make<Node>(), deep = make<Node>();
  node->setA(atA);
  node->setB(atB);
  atA->setB(deep);
  NSString key;
  EXPECT_EQ(nk_receiverForKeyPath(*node, "a.b.a", &key), Ref<NSObject>(atB));
  EXPECT_EQ(key, "a");
}

TEST_F(NSObjectNorvikObserving, APathOfOneKeyRepeatedHasNoOwner) {
  auto node = make<Node>();
  EXPECT_RAISES(static_cast<void>(nk_receiverForKeyPath(*node, "a.a")), "NSUnknownKeyException");
}

TEST_F(NSObjectNorvikObserving, APlainValueOwnsNoKeys) {
  slip->setNote("a text");
  EXPECT_FALSE(nk_receiverForKeyPath(*slip, "note.length"));
  nk_willChangeValueForKeyPath(*slip, "note.length");
  nk_didChangeValueForKeyPath(*slip, "note.length");
}

TEST_F(NSObjectNorvikObserving, APathThatBreaksOffHasNoOwnerAndIsNotAnnounced) {
  EXPECT_FALSE(nk_receiverForKeyPath(*slip, "employee.name"));
  nk_willChangeValueForKeyPath(*slip, "employee.name");
  nk_didChangeValueForKeyPath(*slip, "employee.name");
}

TEST_F(NSObjectNorvikObserving, AChangeByHandIsAnnouncedOnTheOwner) {
  auto employee = make<BoundEmployee>();
  slip->setEmployee(employee);
  employee->addObserver(*watcher, "name", NSKeyValueObservingOptionNew);
  nk_willChangeValueForKeyPath(*slip, "employee.name");
  EXPECT_TRUE(watcher->heard.empty());
  nk_didChangeValueForKeyPath(*slip, "employee.name");
  EXPECT_THAT(watcher->heard, ElementsAre("name"));
  employee->removeObserver(*watcher, "name");
}

}  // namespace
}  // namespace norvik::test

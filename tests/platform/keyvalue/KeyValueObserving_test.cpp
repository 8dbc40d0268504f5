#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/Format.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

using namespace norvik;

namespace {

class Person : public NSObject {
  NK_OBJECT(Person, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Decimal, pay, setPay)
  NK_PROPERTY(Decimal, bonus, setBonus)
  NK_PROPERTY(Ref<Person>, manager, setManager)
  NK_COMPUTED_PROPERTY(Decimal, total)
  NK_AFFECTED_BY(total, pay)
  NK_AFFECTED_BY(total, bonus)
  NK_WEAK_PROPERTY(Person, deputy, setDeputy)
  NK_PROPERTY(Ref<NSArray>, reports, setReports)
  NK_PROPERTY(Ref<NSDictionary>, notes, setNotes)
  NK_PROPERTY(Value, anything, setAnything)
  Decimal total() const { return pay() + bonus(); }
};

class Director : public Person {
  NK_OBJECT(Director, Person)
  NK_PROPERTY(NSString, board, setBoard)
  NK_AFFECTED_BY(seat, board)
  NK_AFFECTED_BY(caption, seat)
  NK_COMPUTED_PROPERTY(NSString, seat)
  NK_COMPUTED_PROPERTY(NSString, caption)
  NSString seat() const { return "seat on " + board(); }
  NSString caption() const { return "has a " + seat(); }
};

class Account : public NSObject {
  NK_OBJECT(Account, NSObject)
  NK_PROPERTY(Decimal, pay, setPay)
  NK_PROPERTY(Decimal, deposit, setDeposit)
  NK_COMPUTED_PROPERTY(Decimal, total)
  NK_AFFECTED_BY(total, deposit)
  Decimal total() const { return deposit(); }
};

class WatchedSlip : public NSObject {
  NK_OBJECT(WatchedSlip, NSObject)
  NK_PROPERTY(Ref<Person>, employee, setEmployee)
};

class Watcher : public NSObject {
  NK_OBJECT(Watcher, NSObject)
  void observeValueForKeyPath(const NSString& path, NSObject& object, const KeyValueChange& change, void*) override {
    heard.push_back(stringWithFormat("%@ of %@: %@", path, object.classObject().name(), change.newValue()).utf8());
  }
  std::vector<std::string> heard;
};

class Recorder : public NSObject {
  NK_OBJECT(Recorder, NSObject)
  void observeValueForKeyPath(const NSString& path, NSObject&, const KeyValueChange& change, void* context) override {
    heard.push_back((path + ":" + change.oldValue().description() + ">" + change.newValue().description() +
                     (change.isPrior() ? " prior" : ""))
                        .utf8());
    contexts.push_back(context);
    if (then) then();
  }
  std::vector<std::string> heard;
  std::vector<void*> contexts;
  std::function<void()> then;
};

using Texts = std::vector<std::string>;
constexpr auto Old = NSKeyValueObservingOptionOld, New = NSKeyValueObservingOptionNew,
               Prior = NSKeyValueObservingOptionPrior, Initial = NSKeyValueObservingOptionInitial;

struct KeyValueObserving : testing::Test {
  Ref<Person> person = make<Person>();
  Ref<Recorder> recorder = make<Recorder>();
};

}  // namespace

TEST_F(KeyValueObserving, HeaderExample) {
  const auto slip = make<WatchedSlip>();
  slip->setEmployee(person);
  const auto watcher = make<Watcher>();
  slip->addObserver(*watcher, "employee.name", NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld);
  slip->employee()->setName("Sian");
  const auto another = make<Person>();
  another->setName("Bea");
  slip->setEmployee(another);
  slip->removeObserver(*watcher, "employee.name");
  another->setName("Cy");
  EXPECT_EQ(watcher->heard, (Texts{"employee.name of WatchedSlip: Sian", "employee.name of WatchedSlip: Bea"}));
}

TEST_F(KeyValueObserving, TellsOfEachChangeWithOldAndNewValue) {
  person->setName("Ann");
  person->addObserver(*recorder, "name", Old | New);
  person->setName("Bea");
  person->setName("Cy");
  EXPECT_EQ(recorder->heard, (Texts{"name:Ann>Bea", "name:Bea>Cy"}));
}

TEST_F(KeyValueObserving, CarriesOnlyWhatTheOptionsAskFor) {
  int tag = 0;
  person->addObserver(*recorder, "name", NSKeyValueObservingOptions{}, &tag);
  person->setName("Bea");
  EXPECT_EQ(recorder->heard, (Texts{"name:(null)>(null)"}));
  EXPECT_EQ(recorder->contexts, std::vector<void*>{&tag});
}

TEST_F(KeyValueObserving, InitialTellsAtOnceAndPriorTellsBeforeEachChange) {
  person->setPay(1);
  person->addObserver(*recorder, "pay", Initial | New | Old | Prior);
  person->setPay(2);
  EXPECT_EQ(recorder->heard, (Texts{"pay:(null)>1", "pay:1>(null) prior", "pay:1>2"}));
}

TEST_F(KeyValueObserving, StopsOnceRemoved) {
  person->addObserver(*recorder, "name", New);
  person->removeObserver(*recorder, "name");
  person->setName("Bea");
  EXPECT_TRUE(recorder->heard.empty());
  EXPECT_FALSE(person->isObserved());
}

TEST_F(KeyValueObserving, RemovingWhatIsNotRegisteredRaises) {
  int tag = 0;
  EXPECT_RAISES(person->removeObserver(*recorder, "name"), "NSRangeException");
  person->addObserver(*recorder, "name", New);
  EXPECT_RAISES(person->removeObserver(*recorder, "name", &tag), "NSRangeException");
  EXPECT_RAISES(person->removeObserver(*recorder, "pay"), "NSRangeException");
}

TEST_F(KeyValueObserving, RemovingOneOfTwoEqualRegistrationsLeavesTheOther) {
  int first = 0, second = 0;
  person->addObserver(*recorder, "name", New, &first);
  person->addObserver(*recorder, "name", New, &second);
  person->removeObserver(*recorder, "name", &first);
  person->setName("Bea");
  EXPECT_EQ(recorder->contexts, std::vector<void*>{&second});
}

TEST_F(KeyValueObserving, SeesAChangeAnywhereAlongThePath) {
  const auto boss = make<Person>(), other = make<Person>();
  boss->setName("Ann");
  other->setName("Bea");
  person->setManager(boss);
  person->addObserver(*recorder, "manager.name", Old | New);
  boss->setName("Ann B");
  person->setManager(other);
  boss->setName("unheard");
  other->setName("Bea C");
  person->setManager(nullptr);
  EXPECT_EQ(recorder->heard, (Texts{"manager.name:Ann>Ann B", "manager.name:Ann B>Bea", "manager.name:Bea>Bea C",
                                    "manager.name:Bea C><null>"}));
  EXPECT_FALSE(boss->isObserved());
  EXPECT_FALSE(other->isObserved());
}

TEST_F(KeyValueObserving, ThreeDeepPathsMoveWithTheObjectsInTheMiddle) {
  const auto a = make<Person>(), b = make<Person>(), c = make<Person>();
  c->setPay(5);
  person->setManager(a);
  person->addObserver(*recorder, "manager.manager.pay", New);
  a->setManager(b);
  b->setPay(1);
  a->setManager(c);
  b->setPay(9);
  c->setPay(6);
  person->removeObserver(*recorder, "manager.manager.pay");
  c->setPay(7);
  EXPECT_EQ(recorder->heard, (Texts{"manager.manager.pay:(null)>0", "manager.manager.pay:(null)>1",
                                    "manager.manager.pay:(null)>5", "manager.manager.pay:(null)>6"}));
  EXPECT_FALSE(a->isObserved() || b->isObserved() || c->isObserved());
}

TEST_F(KeyValueObserving, AComputedKeyChangesWithTheKeysThatAffectIt) {
  person->addObserver(*recorder, "total", Old | New);
  person->setPay(10);
  person->setBonus(2);
  person->setName("no matter");
  EXPECT_EQ(recorder->heard, (Texts{"total:0>10", "total:10>12"}));
}

TEST_F(KeyValueObserving, ManualAnnouncementsReachObservers) {
  person->addObserver(*recorder, "name", New);
  person->willChangeValueForKey("name");
  person->didChangeValueForKey("name");
  EXPECT_EQ(recorder->heard, (Texts{"name:(null)>"}));
}

namespace {

void expectUndefinedKey(NSObject& object, NSObject& observer, const char* path, const char* className,
                        const char* key) {
  try {
    object.addObserver(observer, path, New);
    FAIL() << path << ": nothing was raised";
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), "NSUnknownKeyException");
    EXPECT_NE(std::string(exception.what()).find(className), std::string::npos) << exception.what();
    EXPECT_NE(std::string(exception.what()).find(key), std::string::npos) << exception.what();
  }
  EXPECT_FALSE(object.isObserved());
}

/// Seconds of processor time, the least of three runs.
template <class Work>
double processorTime(Work&& work) {
  double least = 1e9;
  for (int run = 0; run < 3; ++run) {
    const std::clock_t start = std::clock();
    work();
    least = std::min(least, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return least;
}

/// How many times longer work(8 * count) takes than work(count): 8 if each step takes constant time, 64 if each step
/// passes over all earlier ones.
template <class Work>
double growthOfEightfoldWork(int count, Work&& work) {
  const double once = processorTime([&] { work(count); });
  return processorTime([&] { work(8 * count); }) / once;
}

void addObserverThatIsDestroyed(NSObject& object, const NSString& path) {
  const auto observer = make<Recorder>();
  object.addObserver(*observer, path, NSKeyValueObservingOptionNew);
}

}  // namespace

TEST_F(KeyValueObserving, AMisspeltPathRaisesAtOnceAndNamesClassAndKey) {
  expectUndefinedKey(*person, *recorder, "nmae", "Person", "\"nmae\"");
  expectUndefinedKey(*person, *recorder, "", "Person", "\"\"");
  person->setManager(make<Person>());
  expectUndefinedKey(*person, *recorder, "manager.nmae", "Person", "\"nmae\"");
  expectUndefinedKey(*person, *recorder, "name.lenght", "NSString", "\"lenght\"");
  expectUndefinedKey(*person, *recorder, "name.", "NSString", "\"\"");
  expectUndefinedKey(*person, *recorder, "manager.", "Person", "\"\"");
  EXPECT_FALSE(person->manager()->isObserved());
}

TEST_F(KeyValueObserving, AMisspeltKeyBehindAnAbsentObjectRaisesByTheStatedClass) {
  expectUndefinedKey(*person, *recorder, "manager.nmae", "Person", "\"nmae\"");
  expectUndefinedKey(*person, *recorder, "deputy.manager.nmae", "Person", "\"nmae\"");
  person->setManager(make<Person>());
  expectUndefinedKey(*person, *recorder, "manager.manager.pya", "Person", "\"pya\"");
}

TEST_F(KeyValueObserving, AKeyThatOnlyALowerClassHasIsAcceptedWhereNoObjectStandsYet) {
  person->addObserver(*recorder, "manager.board", New);
  const auto director = make<Director>();
  director->setBoard("audit");
  person->setManager(director);
  EXPECT_EQ(recorder->heard, (Texts{"manager.board:(null)>audit"}));
}

TEST_F(KeyValueObserving, AnyKeyBehindWhatAnswersKeysItselfIsAccepted) {
  person->addObserver(*recorder, "notes.whatever", New);
  person->addObserver(*recorder, "anything.whatever", New);
  const auto notes = NSMutableDictionary::dictionary();
  person->setNotes(notes);
  notes->setValue_forKey("late", "whatever");
  EXPECT_EQ(recorder->heard, (Texts{"notes.whatever:(null)><null>", "notes.whatever:(null)>late"}));
}

TEST_F(KeyValueObserving, AnObjectWithoutTheKeyOnThePathRaisesInTheSetterAfterTheChange) {
  person->addObserver(*recorder, "anything.name", New);
  EXPECT_RAISES(person->setAnything(make<Recorder>()), "NSUnknownKeyException");
  EXPECT_TRUE(person->anything().object<Recorder>());
  const auto other = make<Person>();
  other->setName("Ann");
  person->setAnything(other);
  other->setName("Bea");
  EXPECT_EQ(recorder->heard, (Texts{"anything.name:(null)>Ann", "anything.name:(null)>Bea"}));
}

TEST_F(KeyValueObserving, AnObjectThatIsNoLongerOnThePathIsNotHeardAlsoWhereThePathCannotBeRead) {
  const auto before = make<Person>();
  before->setManager(make<Person>());
  person->setAnything(before);
  person->addObserver(*recorder, "anything.manager.name", New);
  EXPECT_RAISES(person->setAnything(make<Recorder>()), "NSUnknownKeyException");
  before->manager()->setName("unheard");
  before->setManager(nullptr);
  EXPECT_TRUE(recorder->heard.empty());
  EXPECT_FALSE(before->isObserved());
  person->setAnything(before);
  EXPECT_EQ(recorder->heard, (Texts{"anything.manager.name:(null)><null>"}));
}

TEST_F(KeyValueObserving, AnObjectThatMadeThePathUnreadableCanBeReplaced) {
  person->addObserver(*recorder, "anything.name", Old | New | Prior);
  EXPECT_RAISES(person->setAnything(make<Recorder>()), "NSUnknownKeyException");
  const auto other = make<Person>();
  other->setName("Ann");
  person->setAnything(other);
  other->setName("Bea");
  EXPECT_EQ(recorder->heard,
            (Texts{"anything.name:<null>>(null) prior", "anything.name:<null>>(null) prior", "anything.name:<null>>Ann",
                   "anything.name:Ann>(null) prior", "anything.name:Ann>Bea"}));
}

TEST_F(KeyValueObserving, WhatCannotBeReadForAnObserverThatIsGoneOrRemovedDoesNotRaise) {
  person->addObserver(*recorder, "anything.name", Old | New);
  recorder = nullptr;
  person->setAnything(make<Recorder>());
  EXPECT_TRUE(person->anything().object<Recorder>());
  person->setAnything({});

  recorder = make<Recorder>();
  recorder->then = [&] { person->removeObserver(*recorder, "anything.name"); };
  person->addObserver(*recorder, "anything.name", Old | New | Prior);
  person->setAnything(make<Recorder>());
  EXPECT_EQ(recorder->heard, (Texts{"anything.name:<null>>(null) prior"}));
  EXPECT_FALSE(person->isObserved());
}

TEST_F(KeyValueObserving, AnOperatorIsObservedThroughTheObjectThatHoldsTheCollection) {
  const auto boss = make<Person>();
  boss->setPay(5);
  const auto notes = NSMutableDictionary::dictionaryWith({{"boss", boss}});
  for (const char* path : {"@count", "@sum.pay"}) {
    EXPECT_RAISES(notes->addObserver(*recorder, path, New), "NSInvalidArgumentException") << path;
    EXPECT_RAISES(notes->allValues()->addObserver(*recorder, path, New), "NSInvalidArgumentException") << path;
  }
  EXPECT_FALSE(notes->isObserved());
  person->addObserver(*recorder, "notes.@sum.pay", New);
  person->setNotes(notes);
  EXPECT_EQ(recorder->heard, (Texts{"notes.@sum.pay:(null)>5"}));
}

TEST_F(KeyValueObserving, APathIsCutAtItsFullStopsWhateverStandsBetweenThem) {
  const NSString key = NSString::fromCodePoint(0xD83D);
  const auto inner = NSMutableDictionary::dictionary(), outer = NSMutableDictionary::dictionary();
  outer->setObject(inner, key);
  outer->addObserver(*recorder, key + "." + key, New);
  inner->setValue_forKey(5, key);
  const auto other = NSMutableDictionary::dictionary();
  other->setObject(6, key);
  outer->setValue_forKey(other, key);
  ASSERT_EQ(recorder->heard.size(), 2u);
  EXPECT_TRUE(recorder->heard[0].ends_with(":(null)>5"));
  EXPECT_TRUE(recorder->heard[1].ends_with(":(null)>6"));
}

TEST_F(KeyValueObserving, APathOfMoreThanAThousandKeysRaises) {
  std::string path = "name";
  for (int i = 0; i < 999; ++i) path = "self." + path;
  person->addObserver(*recorder, path, New);
  person->setName("Ann");
  EXPECT_EQ(recorder->heard.size(), 1u);
  person->removeObserver(*recorder, path);
  EXPECT_RAISES(person->addObserver(*recorder, "self." + path, New), "NSInvalidArgumentException");
  EXPECT_RAISES(person->addObserver(*recorder, std::string(1'000'000, '.'), New), "NSInvalidArgumentException");
  EXPECT_FALSE(person->isObserved());
}

TEST_F(KeyValueObserving, PathsThroughTextsAndCollectionsAreReadAndHeardWhereTheyAreSet) {
  person->addObserver(*recorder, "name.length", Old | New);
  person->setName("Zoe");
  person->addObserver(*recorder, "reports.@sum.pay", New);
  const auto one = make<Person>();
  one->setPay(5);
  person->setReports(NSArray::arrayWith({one, one}));
  one->setPay(7);  // inside the array, whose elements are not observed
  EXPECT_EQ(recorder->heard, (Texts{"name.length:0>3", "reports.@sum.pay:(null)>10"}));
  EXPECT_FALSE(one->isObserved());
}

TEST_F(KeyValueObserving, KeysAffectedThroughOtherKeysChangeToo) {
  const auto director = make<Director>();
  director->addObserver(*recorder, "caption", New);
  director->setBoard("audit");
  EXPECT_EQ(recorder->heard, (Texts{"caption:(null)>has a seat on audit"}));
}

TEST_F(KeyValueObserving, AKeyIsAffectedByWhatTheClassOfItsObjectStates) {
  const auto account = make<Account>();
  for (int round = 0; round < 2; ++round) {
    person->addObserver(*recorder, "total", New);
    account->addObserver(*recorder, "total", New);
    person->setPay(person->pay() + 1);
    account->setPay(account->pay() + 1);  // another key, for which no dependency is stated
    account->setDeposit(account->deposit() + 5);
    person->removeObserver(*recorder, "total");
    account->removeObserver(*recorder, "total");
  }
  EXPECT_EQ(recorder->heard, (Texts{"total:(null)>1", "total:(null)>5", "total:(null)>2", "total:(null)>10"}));
}

TEST_F(KeyValueObserving, APathInACircleHearsOfEachChangeOnce) {
  person->setManager(person);
  person->addObserver(*recorder, "manager.manager.name", New);
  person->setName("Ann");
  EXPECT_EQ(recorder->heard, (Texts{"manager.manager.name:(null)>Ann"}));
  recorder->heard.clear();
  const auto other = make<Person>();
  other->setManager(other);
  other->setName("Bea");
  person->setManager(other);
  EXPECT_EQ(recorder->heard, (Texts{"manager.manager.name:(null)>Bea"}));
  person->setManager(nullptr);
  other->setManager(nullptr);
}

TEST_F(KeyValueObserving, PriorCallsComeBeforeTheChangeAlsoAlongAPath) {
  const auto boss = make<Person>();
  boss->setName("Ann");
  person->setManager(boss);
  person->addObserver(*recorder, "manager.name", Old | New | Prior);
  boss->setName("Bea");
  EXPECT_EQ(recorder->heard, (Texts{"manager.name:Ann>(null) prior", "manager.name:Ann>Bea"}));
}

TEST_F(KeyValueObserving, TheChangeAsADictionaryHoldsWhatTheOptionsAskFor) {
  const struct {
    const char* why;
    KeyValueChange change;
    const char* expected;
  } rows[] = {
      {"nothing asked for", {Value(), Value(), false}, "kind 1"},
      {"new", {Value(), "b", false}, "kind 1, new b"},
      {"both", {"a", Value::null(), false}, "kind 1, new <null>, old a"},
      {"prior", {"a", Value(), true}, "kind 1, old a, notificationIsPrior 1"},
  };
  for (const auto& row : rows) {
    NSString text;
    const auto dictionary = row.change.dictionary();
    for (const auto& [key, value] : *dictionary) {
      text = text + (text.empty() ? "" : ", ") + key.description() + " " + value.description();
    }
    EXPECT_EQ(text, row.expected) << row.why;
  }
}

TEST_F(KeyValueObserving, ADictionaryTellsOfTheKeyThatIsSet) {
  const auto dictionary = NSMutableDictionary::dictionary();
  dictionary->addObserver(*recorder, "total", Old | New);
  dictionary->setValue_forKey(5, "total");
  dictionary->setValue_forKey(6, "other");
  EXPECT_EQ(recorder->heard, (Texts{"total:<null>>5"}));
}

TEST_F(KeyValueObserving, ObservationInfoNamesEachRegistration) {
  EXPECT_EQ(person->observationInfo(), std::nullopt);
  EXPECT_EQ(stringWithFormat("%@", person->observationInfo()), "(null)");
  int tag = 0;
  const auto boss = make<Person>();
  person->setManager(boss);
  person->addObserver(*recorder, "name", Old | New, &tag);
  person->addObserver(*recorder, "manager.name", NSKeyValueObservingOptions{});
  const NSString watcher = stringWithFormat("<Recorder: %p>", static_cast<const void*>(recorder.get()));
  EXPECT_EQ(person->observationInfo(), "(\n    " + watcher + " observes \"name\", options New|Old, context " +
                                           stringWithFormat("%p", static_cast<const void*>(&tag)) + "\n    " + watcher +
                                           " observes \"manager.name\", options none, context 0x0\n)");
  EXPECT_EQ(boss->observationInfo(), "(\n    " + watcher + " observes \"manager.name\" of " +
                                         stringWithFormat("<Person: %p>", static_cast<const void*>(person.get())) +
                                         ", options none, context 0x0\n)");
  person->removeObserver(*recorder, "name");
  person->removeObserver(*recorder, "manager.name");
  EXPECT_EQ(person->observationInfo(), std::nullopt);
  EXPECT_EQ(boss->observationInfo(), std::nullopt);
}

TEST_F(KeyValueObserving, AnObserverMayRemoveItselfOrLetGoOfEverythingInsideTheCall) {
  person->addObserver(*recorder, "name", New);
  recorder->then = [&] {
    recorder->then = nullptr;
    person->removeObserver(*recorder, "name");
  };
  person->setName("Bea");
  person->setName("Cy");
  EXPECT_EQ(recorder->heard.size(), 1u);

  person->addObserver(*recorder, "name", New);
  recorder->then = [&] { person = nullptr; };
  person->setName("Di");
  EXPECT_EQ(recorder->heard.size(), 2u);
}

TEST_F(KeyValueObserving, OneThatIsRemovedByAnotherInsideTheCallIsNotToldAnyMore) {
  const auto second = make<Recorder>();
  person->addObserver(*recorder, "name", New);
  person->addObserver(*second, "name", New);
  recorder->then = [&] {
    recorder->then = nullptr;
    person->removeObserver(*second, "name");
  };
  person->setName("Bea");
  EXPECT_TRUE(second->heard.empty());
}

TEST_F(KeyValueObserving, OneThatIsAddedInsideTheCallHearsOfTheNextChange) {
  const auto second = make<Recorder>();
  person->addObserver(*recorder, "name", New);
  recorder->then = [&] {
    recorder->then = nullptr;
    person->addObserver(*second, "name", New);
  };
  person->setName("Bea");
  EXPECT_TRUE(second->heard.empty());
  person->setName("Cy");
  EXPECT_EQ(second->heard, (Texts{"name:(null)>Cy"}));
}

TEST_F(KeyValueObserving, AnObserverThatIsGoneIsNotTold) {
  person->addObserver(*recorder, "name", New);
  recorder = nullptr;
  person->setName("Bea");
  EXPECT_EQ(person->name(), "Bea");
}

TEST_F(KeyValueObserving, AnObserverThatDoesNotHandleChangesRaises) {
  const auto plain = make<Person>();
  person->addObserver(*plain, "name", New);
  EXPECT_RAISES(person->setName("Bea"), "NSInternalInconsistencyException");
}

TEST_F(KeyValueObserving, AnObserverThatIsGoneIsForgottenAtTheNextChange) {
  const auto boss = make<Person>();
  person->setManager(boss);
  person->addObserver(*recorder, "name", New);
  person->addObserver(*recorder, "manager.name", New);
  recorder = nullptr;
  person->setName("Bea");
  boss->setName("Cy");
  EXPECT_FALSE(person->isObserved());
  EXPECT_FALSE(boss->isObserved());
}

TEST_F(KeyValueObserving, WithTheObservedObjectGoItsEntriesAlongThePath) {
  const auto boss = make<Person>();
  person->setManager(boss);
  person->addObserver(*recorder, "manager.name", New);
  EXPECT_TRUE(boss->isObserved());
  person = nullptr;
  EXPECT_FALSE(boss->isObserved());
  boss->setName("Ann");
  EXPECT_TRUE(recorder->heard.empty());
}

TEST_F(KeyValueObserving, AnObjectInTheMiddleOfThePathMayGo) {
  auto boss = make<Person>();
  person->setDeputy(boss);
  person->addObserver(*recorder, "deputy.name", New);
  boss = nullptr;  // the weak property becomes empty and notifies no observer
  EXPECT_TRUE(recorder->heard.empty());
  for (int i = 0; i < 50; ++i) {  // a later object is likely to have the same address
    boss = make<Person>();
    boss->setName("Ann");
    person->setDeputy(boss);
    boss->setName("Bea");
    EXPECT_EQ(recorder->heard, (Texts{"deputy.name:(null)>Ann", "deputy.name:(null)>Bea"})) << i;
    recorder->heard.clear();
    boss = nullptr;
  }
}

TEST_F(KeyValueObserving, LettingGoOfTheLastRefToTheObserverInsideTheCallIsAllowed) {
  person->addObserver(*recorder, "name", New);
  recorder->then = [this] { recorder = nullptr; };
  person->setName("Bea");
  EXPECT_FALSE(recorder);
  person->setName("Cy");
  EXPECT_FALSE(person->isObserved());
}

TEST_F(KeyValueObserving, TheInitialCallMayRemoveTheRegistrationOrLetGoOfEverything) {
  recorder->then = [&] { person->removeObserver(*recorder, "name"); };
  person->addObserver(*recorder, "name", Initial);
  EXPECT_FALSE(person->isObserved());
  recorder->then = [&] { person = nullptr, recorder = nullptr; };
  person->addObserver(*recorder, "name", Initial);
  EXPECT_FALSE(person || recorder);
}

TEST_F(KeyValueObserving, WhatTheInitialCallRaisesWithdrawsTheRegistration) {
  recorder->then = [] { throw std::runtime_error("no"); };
  EXPECT_THROW(person->addObserver(*recorder, "name", Initial), std::runtime_error);
  EXPECT_FALSE(person->isObserved());
}

TEST_F(KeyValueObserving, WhatAnObserverRaisesPassesToTheSetterAfterTheOthersWereTold) {
  const auto second = make<Recorder>();
  person->addObserver(*recorder, "name", New);
  person->addObserver(*second, "name", New);
  recorder->then = [] { throw std::runtime_error("first"); };
  second->then = [] { throw std::runtime_error("second"); };
  try {
    person->setName("Bea");
    FAIL() << "nothing was raised";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "first");
  }
  EXPECT_EQ(second->heard, (Texts{"name:(null)>Bea"}));
  EXPECT_EQ(person->name(), "Bea");
}

TEST_F(KeyValueObserving, WhatAPriorCallRaisesKeepsTheOldValueAndTheNextChangeIsHeard) {
  person->setManager(make<Person>());
  person->addObserver(*recorder, "manager.name", New | Prior);
  recorder->then = [] { throw std::runtime_error("no"); };
  const auto other = make<Person>();
  other->setName("Ann");
  EXPECT_THROW(person->setManager(other), std::runtime_error);
  EXPECT_NE(person->manager(), other);
  recorder->then = nullptr;
  recorder->heard.clear();
  person->manager()->setName("Bea");
  person->setManager(other);
  EXPECT_EQ(recorder->heard, (Texts{"manager.name:(null)>(null) prior", "manager.name:(null)>Bea",
                                    "manager.name:(null)>(null) prior", "manager.name:(null)>Ann"}));
}

TEST_F(KeyValueObserving, AnObjectWhosePriorCallRaisedIsDestroyed) {
  for (const bool isByHand : {false, true}) {
    auto other = make<Person>();
    const Weak<Person> seen = other;
    other->addObserver(*recorder, "name", Prior);
    recorder->then = [] { throw std::runtime_error("no"); };
    if (isByHand) {
      EXPECT_THROW(other->willChangeValueForKey("name"), std::runtime_error);
    } else {
      EXPECT_THROW(other->setName("Ann"), std::runtime_error);
    }
    recorder->then = nullptr;
    other->removeObserver(*recorder, "name");
    other = nullptr;
    EXPECT_TRUE(seen.isGone()) << isByHand;
  }
}

TEST_F(KeyValueObserving, AllObserversOfOneChangeGetTheSameNewValue) {
  const auto second = make<Recorder>();
  person->addObserver(*recorder, "name", New);
  person->addObserver(*second, "name", New);
  recorder->then = [&] {
    recorder->then = nullptr;
    person->setName("Cy");
  };
  person->setName("Bea");
  EXPECT_EQ(recorder->heard, (Texts{"name:(null)>Bea", "name:(null)>Cy"}));
  EXPECT_EQ(second->heard, (Texts{"name:(null)>Cy", "name:(null)>Bea"}));
}

TEST_F(KeyValueObserving, ManualAnnouncementsNestAndGoWithWhatIsAnnounced) {
  person->addObserver(*recorder, "name", New);
  person->addObserver(*recorder, "pay", New);
  person->willChangeValueForKey("name");
  person->willChangeValueForKey("pay");
  person->didChangeValueForKey("name");
  person->didChangeValueForKey("pay");
  person->didChangeValueForKey("pay");  // not announced, so no observer is notified
  EXPECT_EQ(recorder->heard, (Texts{"name:(null)>", "pay:(null)>0"}));
}

TEST_F(KeyValueObserving, AnyNumberOfChangesMayBeAnnouncedAtOnceAndFollowEachOther) {
  constexpr std::size_t changes = 100'000;
  person->addObserver(*recorder, "pay", {});
  for (std::size_t i = 0; i < changes; ++i) person->willChangeValueForKey("pay");
  const auto later = make<Recorder>();
  person->addObserver(*later, "pay", {});
  for (std::size_t i = 0; i < changes; ++i) person->didChangeValueForKey("pay");
  EXPECT_EQ(recorder->heard.size(), 100'000u);
  EXPECT_EQ(later->heard.size(), 0u) << "it was added after the changes were announced";
  for (std::size_t i = 0; i < changes; ++i) person->setPay(1250_dec);
  EXPECT_EQ(recorder->heard.size(), 200'000u);
  EXPECT_EQ(later->heard.size(), 100'000u);
  person->removeObserver(*later, "pay");
  person->removeObserver(*recorder, "pay");
  EXPECT_FALSE(person->isObserved());
}

TEST_F(KeyValueObserving, ObserversAreToldInTheOrderInWhichTheyWereAdded) {
  std::vector<Ref<Recorder>> many;
  std::vector<int> order;
  for (int i = 0; i < 40; ++i) {
    many.push_back(make<Recorder>());
    many.back()->then = [&order, i] { order.push_back(i); };
    person->addObserver(*many.back(), "name", New);
  }
  for (int i = 0; i < 40; ++i) {
    if (i % 5 != 2) person->removeObserver(*many[static_cast<std::size_t>(i)], "name", nullptr);
  }
  person->setName("Bea");
  EXPECT_EQ(order, (std::vector<int>{2, 7, 12, 17, 22, 27, 32, 37}));
}

TEST_F(KeyValueObserving, OfManyEqualRegistrationsEachRemovalTakesOne) {
  for (int i = 0; i < 20; ++i) person->addObserver(*recorder, i % 2 == 0 ? "name" : "pay", New);
  for (int left = 9; left >= 0; --left) {
    person->removeObserver(*recorder, "name", nullptr);
    recorder->heard.clear();
    person->setName("x");
    EXPECT_EQ(recorder->heard.size(), static_cast<std::size_t>(left));
  }
  EXPECT_RAISES(person->removeObserver(*recorder, "name", nullptr), "NSRangeException");
}

TEST_F(KeyValueObserving, AThousandObserversMayAllRemoveThemselvesInsideTheCall) {
  std::vector<Ref<Recorder>> many;
  for (int i = 0; i < 1000; ++i) {
    many.push_back(make<Recorder>());
    Recorder& watcher = *many.back();
    watcher.then = [&] { person->removeObserver(watcher, "name", nullptr); };
    person->addObserver(watcher, "name", New);
  }
  person->setName("Bea");
  person->setName("Cy");
  for (const auto& watcher : many) ASSERT_EQ(watcher->heard.size(), 1u);
  EXPECT_FALSE(person->isObserved());
}

TEST_F(KeyValueObserving, ObserversDestroyedWithoutRemovalDoNotSlowAddingOrTelling) {
  const double growth = growthOfEightfoldWork(4000, [](int count) {
    const auto observed = make<Person>();
    for (int i = 0; i < count; ++i) addObserverThatIsDestroyed(*observed, "name");
    observed->setName("Ann");
    EXPECT_FALSE(observed->isObserved());
  });
  EXPECT_LT(growth, 24);
}

TEST_F(KeyValueObserving, ObserversDestroyedTogetherAreForgottenInLinearTime) {
  const double growth = growthOfEightfoldWork(4000, [](int count) {
    const auto observed = make<Person>();
    std::vector<Ref<Recorder>> observers;
    for (int i = 0; i < count; ++i) {
      observers.push_back(make<Recorder>());
      observed->addObserver(*observers.back(), "name", NSKeyValueObservingOptionNew);
    }
    observers.clear();
    observed->setName("Ann");
    EXPECT_FALSE(observed->isObserved());
  });
  EXPECT_LT(growth, 24);
}

TEST_F(KeyValueObserving, OneObserverOfManyKeysOfAnObjectIsAddedAndRemovedInConstantTime) {
  const double growth = growthOfEightfoldWork(2000, [](int count) {
    const auto rates = make<NSMutableDictionary>();
    const auto observer = make<Recorder>();
    for (int i = 0; i < count; ++i) {
      rates->addObserver(*observer, NSString(std::to_string(i)), NSKeyValueObservingOptionNew, nullptr);
    }
    for (int i = 0; i < count; ++i) rates->removeObserver(*observer, NSString(std::to_string(i)), nullptr);
    EXPECT_FALSE(rates->isObserved());
  });
  EXPECT_LT(growth, 24);
}

TEST_F(KeyValueObserving, EqualRegistrationsAreAddedRemovedAndForgottenInConstantTimeEach) {
  const double growth = growthOfEightfoldWork(2000, [](int count) {
    const auto observed = make<Person>();
    const auto manager = make<Person>();
    observed->setManager(manager);
    auto observer = make<Recorder>();
    const auto addAll = [&] {
      for (int i = 0; i < count; ++i) {
        observed->addObserver(*observer, "manager.name", NSKeyValueObservingOptionNew, nullptr);
      }
    };
    addAll();
    for (int i = 0; i < count; ++i) observed->removeObserver(*observer, "manager.name", nullptr);
    EXPECT_FALSE(manager->isObserved());
    addAll();
    observer = nullptr;
    manager->setName("Ann");
    EXPECT_FALSE(manager->isObserved());
    EXPECT_FALSE(observed->isObserved());
  });
  EXPECT_LT(growth, 24);
}

TEST_F(KeyValueObserving, ObserversDestroyedWithoutRemovalLeaveNoMemoryBehindAlsoWithoutAChange) {
  const auto manager = make<Person>();
  person->setManager(manager);
  const auto addAndDestroy = [&](int count) {
    for (int i = 0; i < count; ++i) {
      addObserverThatIsDestroyed(*person, "name");
      addObserverThatIsDestroyed(*person, "manager.name");
    }
  };
  addAndDestroy(100);
  const std::size_t before = mallinfo2().uordblks;
  addAndDestroy(20'000);
  EXPECT_LT(mallinfo2().uordblks, before + 100'000);
}

TEST_F(KeyValueObserving, AnObserverAtTheAddressOfADestroyedOneIsAnotherObserver) {
  const NSObject* earlier = nullptr;
  {
    const auto observer = make<Recorder>();
    earlier = observer.get();
    person->addObserver(*observer, "name", NSKeyValueObservingOptionNew);
  }
  std::vector<Ref<Recorder>> kept;
  while (kept.empty() || (kept.back().get() != earlier && kept.size() < 1000)) kept.push_back(make<Recorder>());
  if (kept.back().get() != earlier) GTEST_SKIP() << "the allocator does not use an address again";
  EXPECT_RAISES(person->removeObserver(*kept.back(), "name"), "NSRangeException");
  EXPECT_RAISES(person->removeObserver(*kept.back(), "name", nullptr), "NSRangeException");
}

class LeavesInItsDestructor : public NSObject {
  NK_OBJECT(LeavesInItsDestructor, NSObject)
  ~LeavesInItsDestructor() override {
    person->removeObserver(*this, "name");
    person->removeObserver(*this, "pay", &person);
  }
  Ref<Person> person;
};

TEST_F(KeyValueObserving, AnObserverMayRemoveItselfInItsDestructor) {
  auto observer = make<LeavesInItsDestructor>();
  observer->person = person;
  person->addObserver(*observer, "name", New);
  person->addObserver(*observer, "pay", New, &observer->person);
  observer = nullptr;
  EXPECT_FALSE(person->isObserved());
}

TEST_F(KeyValueObserving, AnyOrderOfAddingAndRemovingLeavesWhatAPlainListWouldHold) {
  struct Registered {
    int path, context;
    bool operator==(const Registered&) const = default;
  };
  const std::vector<NSString> paths{"name", "pay"};
  std::vector<int> contexts(5);
  std::vector<Registered> model;
  std::mt19937 random(20260406);
  for (int step = 0; step < 4000; ++step) {
    const Registered chosen{static_cast<int>(random() % 2), static_cast<int>(random() % 5)};
    const NSString& path = paths[static_cast<std::size_t>(chosen.path)];
    int* context = &contexts[static_cast<std::size_t>(chosen.context)];
    // Up to about 100 registrations and back, so that the list has an index and has none.
    const bool adds = step % 1000 < 500 ? random() % 5 < 3 : random() % 5 < 2;
    if (adds) {
      person->addObserver(*recorder, path, New, context);
      model.push_back(chosen);
      continue;
    }
    const auto latest = std::find(model.rbegin(), model.rend(), chosen);
    if (latest == model.rend()) {
      EXPECT_RAISES(person->removeObserver(*recorder, path, context), "NSRangeException");
    } else {
      person->removeObserver(*recorder, path, context);
      model.erase(std::next(latest).base());
    }
    if (step % 10 != 0) continue;
    recorder->contexts.clear();
    person->setName("x");
    std::vector<void*> expected;
    for (const Registered& r : model) {
      if (r.path == 0) expected.push_back(&contexts[static_cast<std::size_t>(r.context)]);
    }
    ASSERT_EQ(recorder->contexts, expected) << "in step " << step;
  }
}

#include "NorvikCore/platform/runtime/KeyValueObserving.h"

#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <functional>
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
  Decimal total() const { return pay() + bonus(); }
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

TEST_F(KeyValueObserving, AMisspeltPathRaisesAtOnceAndNamesClassAndKey) {
  try {
    person->addObserver(*recorder, "nmae", New);
    FAIL() << "nothing was raised";
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), "NSUnknownKeyException");
    EXPECT_NE(std::string(exception.what()).find("Person"), std::string::npos);
    EXPECT_NE(std::string(exception.what()).find("nmae"), std::string::npos);
  }
  EXPECT_FALSE(person->isObserved());
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

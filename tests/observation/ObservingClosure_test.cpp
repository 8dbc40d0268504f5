#include "NorvikCore/observation/ObservingClosure.h"

#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/observation/NSObject+FBKVOController.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

using namespace norvik;

namespace {

class Clerk : public NSObject {
  NK_OBJECT(Clerk, NSObject)
  NK_PROPERTY(NSString, name, setName)
};

class Stub : public NSObject {
  NK_OBJECT(Stub, NSObject)
  NK_PROPERTY(Decimal, netPay, setNetPay)
  NK_PROPERTY(int, hours, setHours)
  NK_PROPERTY(std::optional<Decimal>, bonus, setBonus)
  NK_PROPERTY(Value, anything, setAnything)
  NK_PROPERTY(Ref<Clerk>, clerk, setClerk)
};

class Pane : public NSObject {
  NK_OBJECT(Pane, NSObject)

 public:
  void showNetPay(const Decimal& net) { shown.push_back("method " + net.stringValue()); }

  std::vector<std::string> shown;
};

class Other : public NSObject {
  NK_OBJECT(Other, NSObject)
};

constexpr auto initially = NSKeyValueObservingOptionInitial;

struct ObservingClosureTest : testing::Test {
  Ref<Pane> pane = make<Pane>();
  Ref<Stub> stub = make<Stub>();
  Ref<FBKVOController> controller = FBKVOController::controllerWithObserver(*pane);
  std::vector<std::string> heard;
};

using Texts = std::vector<std::string>;

std::string text(const Decimal& amount) { return amount.stringValue(); }

/// The reason of the NSInvalidArgumentException that the operation raises; "" if it raises nothing.
std::string refusal(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const NSException& problem) {
    EXPECT_EQ(problem.name(), NSInvalidArgumentException);
    return problem.reason().str();
  }
  return "";
}

}  // namespace

TEST_F(ObservingClosureTest, HeaderExample) {
  controller->observe(stub, keyPath<&Stub::netPay>(),
                      [](Pane& observer, const Decimal& net) { observer.shown.push_back(text(net)); });
  stub->setNetPay(1234.50_dec);
  EXPECT_EQ(pane->shown, Texts{"1234.50"});
  controller = nullptr;
  stub->setNetPay(0);
  EXPECT_EQ(pane->shown, Texts{"1234.50"});
}

TEST_F(ObservingClosureTest, TakesTheObserverTheObjectTheNewAndTheOldValue) {
  stub->setNetPay(5);
  controller->observe(stub, keyPath<&Stub::netPay>(),
                      [&](Pane& observer, Stub& object, const Decimal& net, const Decimal& before) {
                        EXPECT_EQ(&observer, pane.get());
                        EXPECT_EQ(&object, stub.get());
                        heard.push_back(text(before) + " to " + text(net));
                      });
  stub->setNetPay(6.50_dec);
  stub->setNetPay(7);
  EXPECT_EQ(heard, (Texts{"5 to 6.50", "6.50 to 7"}));
}

TEST_F(ObservingClosureTest, LeavesOutWhatItDoesNotNeed) {
  const auto other = [&] { return FBKVOController::controllerWithObserver(*pane); };
  const Ref<FBKVOController> kept[] = {other(), other(), other(), other(), other()};
  const auto path = keyPath<&Stub::netPay>();
  kept[0]->observe(stub, path, [&] { heard.push_back("nothing"); });
  kept[1]->observe(stub, path, [&](Pane&) { heard.push_back("observer"); });
  kept[2]->observe(stub, path, [&](const NSObject&, const Stub& object) { heard.push_back(text(object.netPay())); });
  kept[3]->observe(stub, path, [&](Decimal net) { heard.push_back("new " + text(net)); });
  kept[4]->observe(stub, path, [&](Decimal net, Decimal old) { heard.push_back(text(old) + " to " + text(net)); });
  stub->setNetPay(3);
  EXPECT_EQ(heard, (Texts{"nothing", "observer", "3", "new 3", "0 to 3"}));
}

TEST_F(ObservingClosureTest, MayBeAMemberOfTheObserverAFunctionOrABlock) {
  controller->observe(stub, keyPath<&Stub::netPay>(), &Pane::showNetPay);
  const Block<void(Pane&, int)> block = [](Pane& observer, int hours) {
    observer.shown.push_back("block " + std::to_string(hours));
  };
  controller->observe(*stub, keyPath<&Stub::hours>(), block);
  void (*function)(Pane&, const std::optional<Decimal>&) = [](Pane& observer, const std::optional<Decimal>& bonus) {
    observer.shown.push_back("function " + (bonus ? text(*bonus) : "none"));
  };
  controller->observe(stub, keyPath<&Stub::bonus>(), function);
  stub->setNetPay(1);
  stub->setHours(38);
  stub->setBonus(2_dec);
  stub->setBonus(std::nullopt);
  EXPECT_EQ(pane->shown, (Texts{"method 1", "block 38", "function 2", "function none"}));
}

TEST_F(ObservingClosureTest, AnEmptyObjectPathOrClosureObservesNothing) {
  controller->observe(Ref<Stub>(), keyPath<&Stub::netPay>(), [&](Decimal) { heard.push_back("called"); });
  controller->observe(stub, "", [&] { heard.push_back("called"); });
  controller->observe(stub, keyPath<&Stub::netPay>(), Block<void(Decimal)>());
  controller->observe(stub, keyPath<&Stub::netPay>(), std::function<void()>());
  void (Pane::*noMember)(const Decimal&) = nullptr;
  controller->observe(stub, keyPath<&Stub::netPay>(), noMember);
  controller->observe(stub, keyPath<&Stub::netPay>(), [&] { heard.push_back("the first"); });
  stub->setNetPay(1);
  EXPECT_EQ(heard, Texts{"the first"});
}

TEST_F(ObservingClosureTest, AValueBehindAnotherObjectIsAbsentWhereThePathEnds) {
  controller->observe(stub, keyPath<&Stub::clerk, &Clerk::name>(),
                      [&](const std::optional<NSString>& name, const std::optional<NSString>& before) {
                        heard.push_back((before ? before->str() : "none") + " to " + (name ? name->str() : "none"));
                      });
  const auto clerk = make<Clerk>();
  clerk->setName("Ann");
  stub->setClerk(clerk);
  clerk->setName("Zo\u00EB");
  stub->setClerk(nullptr);
  EXPECT_EQ(heard, (Texts{"none to Ann", "Ann to Zo\u00EB", "Zo\u00EB to none"}));
}

TEST_F(ObservingClosureTest, TakesAnObjectByItsRefAndAnyValueAsAValue) {
  controller->observe(stub, keyPath<&Stub::clerk>(), [&](const Ref<NSObject>& clerk, const Ref<Clerk>& before) {
    heard.push_back(std::string(clerk ? "a clerk" : "no clerk") + (before ? " after one" : " after none"));
  });
  controller->observe(stub, keyPath<&Stub::netPay>(),
                      [&](const Value& net) { heard.push_back(net.description().str()); });
  stub->setClerk(make<Clerk>());
  stub->setClerk(nullptr);
  stub->setNetPay(2);
  EXPECT_EQ(heard, (Texts{"a clerk after none", "no clerk after one", "2"}));
}

TEST_F(ObservingClosureTest, TakesAWiderType) {
  controller->observe(stub, keyPath<&Stub::hours>(), [&](const Decimal& hours, std::optional<std::int64_t> before) {
    heard.push_back(text(hours) + " after " + std::to_string(*before));
  });
  stub->setHours(38);
  EXPECT_EQ(heard, Texts{"38 after 0"});
}

TEST_F(ObservingClosureTest, TheInitialCallHasNoOldValue) {
  stub->setNetPay(4);
  controller->observe(stub, keyPath<&Stub::netPay>(), initially, [&](Decimal net, std::optional<Decimal> before) {
    heard.push_back((before ? text(*before) : "none") + " to " + text(net));
  });
  EXPECT_EQ(heard, Texts{"none to 4"});
  stub->setNetPay(5);
  EXPECT_EQ(heard, (Texts{"none to 4", "4 to 5"}));
}

TEST_F(ObservingClosureTest, RefusesOptionsThatItsParametersCannotShow) {
  const auto observe = [&](NSKeyValueObservingOptions options) {
    return refusal([&] {
      controller->observe(stub, keyPath<&Stub::netPay>(), options,
                          [&](Decimal, Decimal) { heard.push_back("called"); });
    });
  };
  EXPECT_EQ(observe(initially),
            "observing \"netPay\": the initial call has no old value: the closure takes the old value as a "
            "std::optional");
  EXPECT_EQ(observe(NSKeyValueObservingOptionPrior),
            "observing \"netPay\": a closure cannot tell a prior call from the others: use "
            "observe_keyPath_options_block");
  stub->setNetPay(1);
  EXPECT_EQ(heard, Texts{});
}

TEST_F(ObservingClosureTest, RefusesAnObserverOfAnotherClass) {
  const auto other = make<Other>();
  const auto others = FBKVOController::controllerWithObserver(*other);
  const std::string reason = refusal([&] {
    others->observe(stub, keyPath<&Stub::netPay>(), [&](Pane&, const Decimal&) { heard.push_back("called"); });
  });
  EXPECT_EQ(
      reason,
      "observing \"netPay\": the closure takes an observer of class Pane, and the controller's is of class Other");
  stub->setNetPay(1);
  EXPECT_EQ(heard, Texts{});
}

TEST_F(ObservingClosureTest, APathThatIsATextConvertsTheValue) {
  controller->observe(stub, "anything",
                      [&](Pane&, Stub&, const NSString& anything) { heard.push_back(anything.str()); });
  controller->observe(stub, "clerk.name", [&](const NSString& name) { heard.push_back(name.str()); });
  controller->observe(stub, "netPay", [&](double net) { heard.push_back(std::to_string(net)); });
  stub->setAnything("text");
  stub->setClerk(make<Clerk>());
  stub->setNetPay(2.5_dec);
  EXPECT_EQ(heard, (Texts{"text", "", "2.500000"}));
}

TEST_F(ObservingClosureTest, AValueThatDoesNotConvertRaisesInTheSetter) {
  controller->observe(stub, "anything", [&](const NSString& anything) { heard.push_back(anything.str()); });
  controller->observe(stub, "clerk.name", [&](const NSString& name) { heard.push_back(name.str()); });
  EXPECT_EQ(refusal([&] { stub->setAnything(5); }),
            "observing \"anything\": the new value \"5\" (NSNumber) is not a text");
  EXPECT_EQ(stub->anything(), Value(5));
  stub->setClerk(make<Clerk>());
  EXPECT_EQ(refusal([&] { stub->setClerk(nullptr); }),
            "observing \"clerk.name\": the new value \"<null>\" (NSNull) is not a text");
  EXPECT_EQ(heard, Texts{""});
}

TEST_F(ObservingClosureTest, ExceptionsOfTheClosurePassUnchanged) {
  controller->observe(stub, keyPath<&Stub::netPay>(),
                      [](const Decimal&) { throw std::runtime_error("of the closure"); });
  controller->observe(stub, keyPath<&Stub::hours>(), [](int) { NSException::raise("Own", "of the closure"); });
  EXPECT_THROW(stub->setNetPay(1), std::runtime_error);
  EXPECT_RAISES(stub->setHours(1), "Own");
  EXPECT_EQ(stub->netPay(), Decimal(1));
}

TEST_F(ObservingClosureTest, AClosureMayEndItsOwnObservationAndReleaseEverything) {
  controller->observe(stub, keyPath<&Stub::netPay>(), [&](const Decimal& net) {
    heard.push_back(text(net));
    controller->unobserve(stub, keyPath<&Stub::netPay>());
    heard.push_back(text(net));  // the closure and its arguments still exist
  });
  stub->setNetPay(1);
  stub->setNetPay(2);
  EXPECT_EQ(heard, (Texts{"1", "1"}));

  const Weak<Pane> watched = pane;
  controller->observe(stub, keyPath<&Stub::hours>(), [&](Pane& observer, int hours) {
    controller = nullptr;
    pane = nullptr;
    observer.shown.push_back(std::to_string(hours));
    heard = observer.shown;
  });
  stub->setHours(7);
  stub->setHours(8);
  EXPECT_EQ(heard, Texts{"7"});
  EXPECT_FALSE(watched.lock());
}

TEST_F(ObservingClosureTest, AClosureMaySetThePropertyAgain) {
  controller->observe(stub, keyPath<&Stub::netPay>(), [&](Pane&, Stub& object, const Decimal& net) {
    heard.push_back(text(net));
    if (net < 3) object.setNetPay(net + 1);
    heard.push_back("after " + text(net));
  });
  stub->setNetPay(2);
  EXPECT_EQ(heard, (Texts{"2", "3", "after 3", "after 2"}));
}

TEST_F(ObservingClosureTest, ADestroyedObserverIsNotNotified) {
  const auto kept = controller;
  controller->observe(stub, keyPath<&Stub::netPay>(), [&](const Decimal& net) { heard.push_back(text(net)); });
  pane = nullptr;
  stub->setNetPay(1);
  controller->observe(stub, keyPath<&Stub::hours>(), [&](Other&, int) { heard.push_back("called"); });
  stub->setHours(1);
  EXPECT_EQ(heard, Texts{});
}

TEST_F(ObservingClosureTest, TheSecondObservationOfAPathIsIgnored) {
  controller->observe(stub, "netPay", [&] { heard.push_back("text"); });
  controller->observe(stub, keyPath<&Stub::netPay>(), [&](Decimal) { heard.push_back("typed"); });
  controller->observe_keyPath_options_block(
      stub, "netPay", NSKeyValueObservingOptionNew,
      [&](NSObject&, NSObject&, const NSDictionary&) { heard.push_back("block"); });
  stub->setNetPay(1);
  EXPECT_EQ(heard, Texts{"text"});
}

TEST_F(ObservingClosureTest, IsListedWithItsAddress) {
  controller->observe(stub, keyPath<&Stub::netPay>(), [](Decimal) {});
  const std::string listed = controller->debugDescription().str();
  EXPECT_NE(listed.find("keyPath:netPay options:NSKeyValueObservingOptionNew block:0x"), std::string::npos) << listed;
}

TEST_F(ObservingClosureTest, NkObserveUsesTheObserversOwnController) {
  nk_observe(*pane, stub, keyPath<&Stub::netPay>(), &Pane::showNetPay);
  nk_observe(*pane, *stub, "hours", initially,
             [](Pane& observer, int hours) { observer.shown.push_back("hours " + std::to_string(hours)); });
  stub->setNetPay(1);
  KVOController(*pane)->unobserve(stub, keyPath<&Stub::netPay>());
  stub->setNetPay(2);
  stub->setHours(3);
  EXPECT_EQ(pane->shown, (Texts{"hours 0", "method 1", "hours 3"}));
  pane = nullptr;
  stub->setHours(4);
}

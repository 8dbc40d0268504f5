#include "NorvikCore/observation/FBKVOController.h"

#include "NorvikCore/observation/FBKVOController+Norvik.h"
#include "NorvikCore/observation/NSObject+FBKVOController.h"
#include "NorvikCore/observation/internal/_FBKVOInfo.h"
#include "NorvikCore/observation/internal/_FBKVOSharedController.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "NorvikCore/platform/values/Format.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

using namespace norvik;

namespace {

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
};

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(NSString, note, setNote)
  NK_PROPERTY(Ref<Employee>, employee, setEmployee)
  NSString description() const override { return "slip"; }
};

using Texts = std::vector<std::string>;
constexpr auto New = NSKeyValueObservingOptionNew, Old = NSKeyValueObservingOptionOld,
               Initial = NSKeyValueObservingOptionInitial, Prior = NSKeyValueObservingOptionPrior;
constexpr auto None = NSKeyValueObservingOptions{};

std::string textOf(const NSDictionary& change) {
  std::string text;
  for (const auto& [key, value] : change) {
    text += (text.empty() ? "" : " ") + key.description().utf8() + "=" + value.description().utf8();
  }
  return text;
}

class Window : public NSObject {
  NK_OBJECT(Window, NSObject)

  void slipChanged(const Ref<NSDictionary>& change, const Ref<NSObject>& object) {
    heard.push_back("action " + textOf(*change) + " of " + object->description().utf8());
  }
  NK_METHOD(slipChanged)

  void observeValueForKeyPath(const NSString& path, NSObject& object, const KeyValueChange& change,
                              void* context) override {
    heard.push_back("context " + path.utf8() + " " + change.newValue().description().utf8() + " of " +
                    object.description().utf8());
    contexts.push_back(context);
  }

  Texts heard;
  std::vector<void*> contexts;
};

struct FBKVOControllerTest : testing::Test {
  Ref<Window> window = make<Window>();
  Ref<Payslip> slip = make<Payslip>();
  Ref<FBKVOController> controller = FBKVOController::controllerWithObserver(*window);
  Texts heard;

  FBKVONotificationBlock recording() {
    return [this](NSObject&, NSObject&, const NSDictionary& change) { heard.push_back(textOf(change)); };
  }
  /// Calls `then` at each change, after recording it.
  FBKVONotificationBlock doing(std::function<void()> then) {
    return [this, then = std::move(then)](NSObject&, NSObject&, const NSDictionary& change) {
      heard.push_back(textOf(change));
      then();
    };
  }
};

std::string address(const void* pointer) { return stringWithFormat("%p", pointer).utf8(); }

}  // namespace

TEST_F(FBKVOControllerTest, HeaderExample) {
  slip->setEmployee(make<Employee>());
  controller->observe_keyPath_options_block(
      slip, keyPath<&Payslip::employee, &Employee::name>(), NSKeyValueObservingOptionNew,
      [](NSObject& observer, NSObject&, const NSDictionary& change) {
        static_cast<Window&>(observer).heard.push_back(change[NSKeyValueChangeNewKey].description().utf8());
      });
  slip->employee()->setName("Sian");
  EXPECT_EQ(window->heard, Texts{"Sian"});
  controller = nullptr;
  slip->employee()->setName("Ann");
  EXPECT_EQ(window->heard, Texts{"Sian"});
}

TEST_F(FBKVOControllerTest, ABlockGetsTheObserverTheObjectAndTheChangeWithItsKeyPath) {
  controller->observe_keyPath_options_block(slip, "note", New | Old,
                                            [&](NSObject& observer, NSObject& object, const NSDictionary& change) {
                                              EXPECT_EQ(&observer, window.get());
                                              EXPECT_EQ(&object, slip.get());
                                              heard.push_back(textOf(change));
                                            });
  slip->setNote("late");
  EXPECT_EQ(heard, Texts{"FBKVONotificationKeyPathKey=note kind=1 new=late old="});
  EXPECT_EQ(FBKVONotificationKeyPathKey, "FBKVONotificationKeyPathKey");
}

TEST_F(FBKVOControllerTest, AnActionGetsTheChangeFirstAndTheObjectSecond) {
  controller->observe_keyPath_options_action(slip, "note", New, "slipChanged::");
  slip->setNote("late");
  EXPECT_EQ(window->heard, Texts{"action kind=1 new=late of slip"});
}

TEST_F(FBKVOControllerTest, AContextHandlerGetsTheContextGivenWhenObserving) {
  int tag = 0;
  controller->observe_keyPath_options_context(slip, "note", New, &tag);
  controller->observe_keyPath_options_context(slip, "grossPay", New, nullptr);
  slip->setNote("late");
  slip->setGrossPay(5);
  EXPECT_EQ(window->heard, (Texts{"context note late of slip", "context grossPay 5 of slip"}));
  EXPECT_EQ(window->contexts, (std::vector<void*>{&tag, nullptr}));
}

TEST_F(FBKVOControllerTest, TheOptionsDecideWhatAChangeCarries) {
  const struct {
    const char* why;
    NSKeyValueObservingOptions options;
    Texts expected;
  } rows[] = {
      {"none", None, {"FBKVONotificationKeyPathKey=note kind=1"}},
      {"old", Old, {"FBKVONotificationKeyPathKey=note kind=1 old=a"}},
      {"initial",
       Initial | New,
       {"FBKVONotificationKeyPathKey=note kind=1 new=a", "FBKVONotificationKeyPathKey=note kind=1 new=b"}},
      {"prior",
       Prior | Old | New,
       {"FBKVONotificationKeyPathKey=note kind=1 old=a notificationIsPrior=1",
        "FBKVONotificationKeyPathKey=note kind=1 new=b old=a"}},
  };
  for (const auto& row : rows) {
    slip->setNote("a");
    heard.clear();
    controller->observe_keyPath_options_block(slip, "note", row.options, recording());
    slip->setNote("b");
    EXPECT_EQ(heard, row.expected) << row.why;
    controller->unobserveAll();
  }
}

TEST_F(FBKVOControllerTest, AKeyPathIsObservedOnceAndTheFirstHandlerStays) {
  controller->observe_keyPath_options_block(slip, "note", New, recording());
  controller->observe_keyPath_options_action(slip, "note", New | Old, "slipChanged::");
  slip->setNote("late");
  EXPECT_EQ(heard.size(), 1u);
  EXPECT_TRUE(window->heard.empty());
  controller->unobserve(slip, "note");
  EXPECT_FALSE(slip->isObserved());
  controller->observe_keyPath_options_action(slip, "note", New, "slipChanged::");
  slip->setNote("later");
  EXPECT_EQ(heard.size(), 1u);
  EXPECT_EQ(window->heard.size(), 1u);
}

TEST_F(FBKVOControllerTest, TwoControllersObserveTheSameKeyPathEachForItself) {
  const auto other = FBKVOController::initWithObserver(*window);
  controller->observe_keyPath_options_block(slip, "note", New, recording());
  other->observe_keyPath_options_block(slip, "note", New, recording());
  slip->setNote("late");
  EXPECT_EQ(heard.size(), 2u);
}

TEST_F(FBKVOControllerTest, SeveralKeyPathsAreObservedInOrder) {
  const auto paths = NSArray::arrayWith({"note", "grossPay", "note"});
  int tag = 0;
  controller->observe_keyPaths_options_block(slip, *paths, Initial, recording());
  EXPECT_EQ(heard, (Texts{"FBKVONotificationKeyPathKey=note kind=1", "FBKVONotificationKeyPathKey=grossPay kind=1"}));
  controller->unobserve(slip);
  controller->observe_keyPaths_options_action(slip, *paths, New, "slipChanged::");
  slip->setGrossPay(1);
  controller->unobserve(slip);
  controller->observe_keyPaths_options_context(slip, *paths, New, &tag);
  slip->setNote("x");
  EXPECT_EQ(window->heard, (Texts{"action kind=1 new=1 of slip", "context note x of slip"}));
}

TEST_F(FBKVOControllerTest, NothingHappensWithoutObjectKeyPathOrHandler) {
  controller->observe_keyPath_options_block(nullptr, "note", New, recording());
  controller->observe_keyPath_options_action(nullptr, "note", New, "slipChanged::");
  controller->observe_keyPath_options_context(nullptr, "note", New, nullptr);
  controller->observe_keyPath_options_block(slip, "", New, recording());
  controller->observe_keyPath_options_action(slip, "", New, "slipChanged::");
  controller->observe_keyPath_options_context(slip, "", New, nullptr);
  controller->observe_keyPath_options_block(slip, "note", New, nullptr);
  controller->observe_keyPath_options_action(slip, "note", New, SEL());
  controller->observe_keyPaths_options_block(slip, *NSArray::array(), New, recording());
  controller->unobserve(nullptr, "note");
  controller->unobserve(nullptr);
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(FBKVOControllerTest, UnobservingAKeyPathNeverObservedDoesNothing) {
  controller->observe_keyPath_options_block(slip, "grossPay", New, recording());
  controller->observe_keyPath_options_block(slip, "employee.name", New, recording());
  controller->unobserve(slip, "note");
  controller->unobserve(make<Payslip>(), "note");
  slip->setGrossPay(1);
  EXPECT_EQ(heard, Texts{"FBKVONotificationKeyPathKey=grossPay kind=1 new=1"});
}

TEST_F(FBKVOControllerTest, UnobservingEndsOneKeyPathOneObjectOrAll) {
  const auto other = make<Payslip>();
  for (const Ref<Payslip>& object : {slip, other}) {
    controller->observe_keyPath_options_block(object, "note", New, recording());
    controller->observe_keyPath_options_block(object, "grossPay", New, recording());
    controller->observe_keyPath_options_block(object, "employee", New, recording());
  }
  const auto countAfterChanges = [&] {
    heard.clear();
    for (const Ref<Payslip>& object : {slip, other}) object->setNote("x"), object->setGrossPay(1);
    return heard.size();
  };
  EXPECT_EQ(countAfterChanges(), 4u);
  controller->unobserve(slip, "note");
  EXPECT_EQ(countAfterChanges(), 3u);
  controller->unobserve(slip);
  EXPECT_EQ(countAfterChanges(), 2u);
  controller->unobserveAll();
  EXPECT_EQ(countAfterChanges(), 0u);
  EXPECT_FALSE(slip->isObserved() || other->isObserved());
}

TEST_F(FBKVOControllerTest, AMisspeltKeyPathRaisesAndLeavesNothingBehind) {
  try {
    controller->observe_keyPath_options_block(slip, "grosPay", New, recording());
    FAIL() << "nothing was raised";
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), "NSUnknownKeyException");
    EXPECT_NE(std::string(exception.what()).find("Payslip"), std::string::npos);
    EXPECT_NE(std::string(exception.what()).find("grosPay"), std::string::npos);
  }
  EXPECT_EQ(controller->debugDescription().utf8().find("->"), std::string::npos);
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(FBKVOControllerTest, AfterTheObserverIsGoneChangesAreIgnored) {
  controller->observe_keyPath_options_block(slip, "note", New, recording());
  controller->observe_keyPath_options_action(slip, "grossPay", New, "slipChanged::");
  controller->observe_keyPath_options_context(slip, "employee", New, nullptr);
  window = nullptr;
  EXPECT_FALSE(controller->observer());
  slip->setNote("late");
  slip->setGrossPay(1);
  slip->setEmployee(nullptr);
  EXPECT_TRUE(heard.empty());
}

TEST_F(FBKVOControllerTest, AfterTheControllerIsReleasedTheObjectHasNoRegistrationOfIt) {
  controller->observe_keyPath_options_block(slip, "note", New, recording());
  EXPECT_TRUE(slip->isObserved());
  controller = nullptr;
  EXPECT_FALSE(slip->isObserved());
  EXPECT_EQ(slip->observationInfo(), std::nullopt);
}

TEST_F(FBKVOControllerTest, KeepsWhatItObservesUnlessItWasMadeNotTo) {
  controller->observe_keyPath_options_block(slip, "note", New, recording());
  Weak<Payslip> kept(slip);
  slip = nullptr;
  EXPECT_TRUE(kept.lock());
  controller->unobserveAll();
  EXPECT_FALSE(kept.lock());

  const auto watching = FBKVOController::initWithObserver(*window, false);
  for (int i = 0; i < 200; ++i) {  // many of them get the same address
    slip = make<Payslip>();
    watching->observe_keyPath_options_block(slip, "note", New, recording());
    slip->setNote("x");
    EXPECT_EQ(heard.size(), static_cast<std::size_t>(i + 1));
  }
  Weak<Payslip> notKept(slip);
  slip = nullptr;
  EXPECT_FALSE(notKept.lock());
  EXPECT_EQ(watching->debugDescription().utf8().find("->"), std::string::npos);
}

TEST_F(FBKVOControllerTest, TheDictionaryOfAChangeCanBeKeptAndIsNotChangedByTheNextOne) {
  std::vector<Ref<NSDictionary>> kept;
  controller->observe_keyPath_options_block(
      slip, "note", New, [&](NSObject&, NSObject&, const NSDictionary& change) { kept.push_back(change.copy()); });
  for (const char* note : {"a", "b", "c"}) slip->setNote(note);
  ASSERT_EQ(kept.size(), 3u);
  EXPECT_EQ(textOf(*kept[0]), "FBKVONotificationKeyPathKey=note kind=1 new=a");
  EXPECT_EQ(textOf(*kept[2]), "FBKVONotificationKeyPathKey=note kind=1 new=c");
}

TEST_F(FBKVOControllerTest, AChangeInsideAHandlerHasADictionaryOfItsOwn) {
  controller->observe_keyPath_options_block(slip, "note", New, [&](NSObject&, NSObject&, const NSDictionary& change) {
    heard.push_back("before " + textOf(change));
    if (slip->note() == "a") slip->setNote("b");
    heard.push_back("after " + textOf(change));
  });
  slip->setNote("a");
  EXPECT_EQ(heard, (Texts{"before FBKVONotificationKeyPathKey=note kind=1 new=a",
                          "before FBKVONotificationKeyPathKey=note kind=1 new=b",
                          "after FBKVONotificationKeyPathKey=note kind=1 new=b",
                          "after FBKVONotificationKeyPathKey=note kind=1 new=a"}));
}

TEST_F(FBKVOControllerTest, TheDictionaryOfAChangeDoesNotKeepItsValuesAfterTheHandler) {
  controller->observe_keyPath_options_block(slip, "employee", New | Old, recording());
  slip->setEmployee(make<Employee>());
  Weak<Employee> employee(slip->employee());
  slip->setEmployee(nullptr);
  EXPECT_FALSE(employee.lock());
}

// What a handler may do.

TEST_F(FBKVOControllerTest, AHandlerIsReleasedAfterAnyNumberOfChanges) {
  auto captured = make<Employee>();
  const Weak<Employee> released = captured;
  controller->observe_keyPath_options_block(slip, "note", None,
                                            [captured](NSObject&, NSObject&, const NSDictionary&) {});
  captured = nullptr;
  for (int i = 0; i < 100'000; ++i) slip->setNote("paid");
  EXPECT_FALSE(released.isGone());
  controller->unobserve(slip, "note");
  EXPECT_TRUE(released.isGone());
}

TEST_F(FBKVOControllerTest, AHandlerMayUnobserveItself) {
  controller->observe_keyPath_options_block(slip, "note", New, doing([&] { controller->unobserve(slip, "note"); }));
  slip->setNote("a");
  slip->setNote("b");
  EXPECT_EQ(heard.size(), 1u);
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(FBKVOControllerTest, AHandlerMayUnobserveInsideTheInitialCall) {
  controller->observe_keyPath_options_block(slip, "note", Initial, doing([&] { controller->unobserveAll(); }));
  EXPECT_FALSE(slip->isObserved());
  slip->setNote("a");
  EXPECT_EQ(heard.size(), 1u);
}

TEST_F(FBKVOControllerTest, AHandlerMayReplaceItselfInsideTheInitialCall) {
  controller->observe_keyPath_options_block(slip, "note", Initial, doing([&] {
                                              controller->unobserve(slip, "note");
                                              controller->observe_keyPath_options_action(slip, "note", New,
                                                                                         "slipChanged::");
                                            }));
  slip->setNote("a");
  EXPECT_EQ(heard.size(), 1u);
  EXPECT_EQ(window->heard, Texts{"action kind=1 new=a of slip"});
}

TEST_F(FBKVOControllerTest, AHandlerMayObserveMore) {
  const auto other = make<Payslip>();
  controller->observe_keyPath_options_block(
      slip, "note", New, doing([&] {
        controller->observe_keyPath_options_block(other, "note", New, recording());
        controller->observe_keyPath_options_block(slip, "grossPay", New, recording());
      }));
  slip->setNote("a");
  other->setNote("b");
  slip->setGrossPay(1);
  EXPECT_EQ(heard.size(), 3u);
}

TEST_F(FBKVOControllerTest, AHandlerMayLetGoOfTheController) {
  controller->observe_keyPath_options_block(slip, "note", New, doing([&] { controller = nullptr; }));
  controller->observe_keyPath_options_block(slip, "grossPay", New, recording());
  slip->setNote("a");
  EXPECT_FALSE(controller);
  slip->setNote("b");
  slip->setGrossPay(1);
  EXPECT_EQ(heard.size(), 1u);
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(FBKVOControllerTest, AHandlerMayLetGoOfTheObserver) {
  controller->observe_keyPath_options_block(slip, "note", New, doing([&] { window = nullptr; }));
  slip->setNote("a");
  slip->setNote("b");
  EXPECT_EQ(heard.size(), 1u);
}

TEST_F(FBKVOControllerTest, AHandlerMayLetGoOfTheObject) {
  const auto watching = FBKVOController::initWithObserver(*window, false);
  Weak<Payslip> object(slip);
  watching->observe_keyPath_options_block(slip, "note", New, doing([&] { slip = nullptr; }));
  slip->setNote("a");
  EXPECT_EQ(heard.size(), 1u);
  EXPECT_FALSE(object.lock());
}

TEST_F(FBKVOControllerTest, AHandlerMayLetGoOfEverythingAtOnce) {
  controller->observe_keyPath_options_block(slip, "note", Prior | New, doing([&] {
                                              controller = nullptr;
                                              window = nullptr;
                                              slip = nullptr;
                                            }));
  const Weak<Payslip> object(slip);
  slip->setNote("a");
  EXPECT_EQ(heard.size(), 1u);  // the prior call ended the observation
  EXPECT_FALSE(object.lock());
}

TEST_F(FBKVOControllerTest, AHandlerMayChangeWhatItObserves) {
  controller->observe_keyPath_options_block(slip, "grossPay", New, doing([&] {
                                              if (slip->grossPay() < 3) slip->setGrossPay(slip->grossPay() + 1);
                                            }));
  slip->setGrossPay(1);
  EXPECT_EQ(slip->grossPay(), 3);
  EXPECT_EQ(heard.size(), 3u);
}

TEST_F(FBKVOControllerTest, AHandlerOfOneControllerMayDestroyAnotherBeforeItsTurn) {
  auto second = FBKVOController::controllerWithObserver(*window);
  controller->observe_keyPath_options_block(slip, "note", New, doing([&] { second = nullptr; }));
  second->observe_keyPath_options_block(slip, "note", New, recording());
  slip->setNote("a");
  EXPECT_EQ(heard.size(), 1u);
}

TEST_F(FBKVOControllerTest, WhatAHandlerRaisesPassesToTheSetter) {
  controller->observe_keyPath_options_block(slip, "note", New, doing([] { throw std::runtime_error("no"); }));
  EXPECT_THROW(slip->setNote("a"), std::runtime_error);
  EXPECT_EQ(slip->note(), "a");
  controller->observe_keyPath_options_action(slip, "grossPay", New, "unknownAction::");
  EXPECT_RAISES(slip->setGrossPay(1), "NSInvalidArgumentException");
}

TEST_F(FBKVOControllerTest, WhatTheInitialCallRaisesLeavesNothingBehind) {
  EXPECT_THROW(
      controller->observe_keyPath_options_block(slip, "note", Initial, doing([] { throw std::runtime_error("no"); })),
      std::runtime_error);
  EXPECT_FALSE(slip->isObserved());
  controller->observe_keyPath_options_block(slip, "note", New, recording());
  slip->setNote("a");
  EXPECT_EQ(heard.size(), 2u);
}

TEST_F(FBKVOControllerTest, AnObservationThatEndsBeforeItBeginsIsNeitherMadeNorListed) {
  auto& shared = _FBKVOSharedController::sharedController();
  const auto info = _FBKVOInfo::initWithController_keyPath_options_block(*controller, "note", New, recording());
  shared.unobserve(*slip, *info);
  shared.observe(*slip, info);
  EXPECT_FALSE(slip->isObserved());
  EXPECT_EQ(shared.debugDescription().view().find(info->description().view()), std::string_view::npos);
}

// Disposal.

TEST_F(FBKVOControllerTest, HeaderExampleOfDisposal) {
  setRequiresDisposal(*controller, true);
  controller->observe_keyPath_options_block(slip, "note", New, recording());
  dispose(*controller);
  EXPECT_FALSE(slip->isObserved());
  EXPECT_TRUE(disposed(*controller));
  EXPECT_TRUE(requiresDisposal(*controller));
  slip->setNote("paid");
  EXPECT_TRUE(heard.empty());
}

TEST_F(FBKVOControllerTest, DisposingTwiceUnobservesOnce) {
  EXPECT_FALSE(disposed(*controller));
  controller->observe_keyPath_options_block(slip, "note", New, recording());
  dispose(*controller);
  EXPECT_TRUE(disposed(*controller));
  EXPECT_FALSE(slip->isObserved());
  controller->observe_keyPath_options_block(slip, "note", New, recording());
  dispose(*controller);  // the second one does nothing
  EXPECT_TRUE(slip->isObserved());
  setDisposed(*controller, false);
  dispose(*controller);
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(FBKVOControllerTest, TheMarksAreStoredAndAreKeys) {
  EXPECT_FALSE(requiresDisposal(*controller));
  setRequiresDisposal(*controller, true);
  EXPECT_TRUE(requiresDisposal(*controller));
  EXPECT_EQ(controller->valueForKey("requiresDisposal"), Value(true));
  EXPECT_EQ(controller->valueForKey("disposed"), Value(false));
  controller->setValue_forKey(false, "requiresDisposal");
  EXPECT_FALSE(requiresDisposal(*controller));
  EXPECT_EQ(controller->valueForKey("observer").object(), window.get());
}

// A controller for every object.

TEST_F(FBKVOControllerTest, HeaderExampleOfAnObjectsOwnController) {
  KVOController(*window)->observe_keyPath_options_block(slip, "note", NSKeyValueObservingOptionNew, recording());
  slip->setNote("late");
  EXPECT_EQ(heard, Texts{"FBKVONotificationKeyPathKey=note kind=1 new=late"});
}

TEST_F(FBKVOControllerTest, AnObjectsOwnControllerIsMadeOnceAndKeepsWhatItObserves) {
  const Ref<FBKVOController> own = KVOController(*window);
  EXPECT_EQ(KVOController(*window), own);
  EXPECT_NE(KVOControllerNonRetaining(*window), own);
  EXPECT_EQ(own->observer(), window);
  own->observe_keyPath_options_block(slip, "note", New, recording());
  const Weak<Payslip> kept(slip);
  slip = nullptr;
  EXPECT_TRUE(kept.lock());
}

TEST_F(FBKVOControllerTest, AnObjectsNonRetainingControllerDoesNotKeepWhatItObserves) {
  const Ref<FBKVOController> own = KVOControllerNonRetaining(*window);
  EXPECT_EQ(KVOControllerNonRetaining(*window), own);
  own->observe_keyPath_options_block(slip, "note", New, recording());
  const Weak<Payslip> notKept(slip);
  slip = nullptr;
  EXPECT_FALSE(notKept.lock());
}

TEST_F(FBKVOControllerTest, WithAnObjectGoTheObservationsOfItsOwnControllers) {
  KVOController(*window)->observe_keyPath_options_block(slip, "note", New, recording());
  KVOControllerNonRetaining(*window)->observe_keyPath_options_block(slip, "grossPay", New, recording());
  window = nullptr;
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(FBKVOControllerTest, AnObjectsOwnControllersCanBeSet) {
  setKVOController(*window, controller);
  EXPECT_EQ(KVOController(*window), controller);
  setKVOController(*window, nullptr);
  EXPECT_NE(KVOController(*window), controller);
  setKVOControllerNonRetaining(*window, controller);
  EXPECT_EQ(KVOControllerNonRetaining(*window), controller);
  setKVOControllerNonRetaining(*window, nullptr);
}

// Descriptions.

TEST_F(FBKVOControllerTest, DescribesAnInfoWithWhatItHas) {
  const auto block = recording();
  int tag = 0;
  const auto text = [](const Ref<_FBKVOInfo>& info) {
    std::string description = info->debugDescription().utf8();
    return description.substr(description.find(" keyPath:"));
  };
  const auto plain = _FBKVOInfo::initWithController_keyPath(*controller, "note");
  EXPECT_EQ(plain->description().utf8(), "<_FBKVOInfo:" + address(plain.get()) + " keyPath:note>");
  EXPECT_EQ(text(_FBKVOInfo::initWithController_keyPath_options_block(*controller, "note", New | Old, block)),
            " keyPath:note options:NSKeyValueObservingOptionNew|NSKeyValueObservingOptionOld block:" +
                address(block.object().get()) + ">");
  EXPECT_EQ(text(_FBKVOInfo::initWithController_keyPath_options_action(*controller, "note", Prior | Initial, "go::")),
            " keyPath:note options:NSKeyValueObservingOptionInitial|NSKeyValueObservingOptionPrior action:go::>");
  EXPECT_EQ(text(_FBKVOInfo::initWithController_keyPath_options_context(*controller, "note", None, &tag)),
            " keyPath:note context:" + address(&tag) + ">");
  const auto beyond = static_cast<NSKeyValueObservingOptions>(64 | 1);
  EXPECT_EQ(text(_FBKVOInfo::initWithController_keyPath_options_block_action_context(*controller, "note", beyond,
                                                                                     nullptr, SEL(), nullptr)),
            " keyPath:note options:NSKeyValueObservingOptionNew>");
}

TEST_F(FBKVOControllerTest, DescribesAControllerWithWhatItObserves) {
  const std::string start =
      "<FBKVOController:" + address(controller.get()) + " observer:<Window:" + address(window.get()) + ">";
  EXPECT_EQ(controller->debugDescription().utf8(), start + ">");
  controller->observe_keyPath_options_action(slip, "note", New, "go::");
  const std::string text = controller->debugDescription().utf8();
  EXPECT_EQ(text.substr(0, start.size() + 11), start + "\n  slip -> ");
  EXPECT_NE(text.find(" keyPath:note options:NSKeyValueObservingOptionNew action:go::>"), std::string::npos) << text;
  EXPECT_EQ(text.back(), '>');
  window = nullptr;
  EXPECT_NE(controller->debugDescription().utf8().find(" observer:<(null):0x0>"), std::string::npos);
}

TEST_F(FBKVOControllerTest, DescribesTheSharedControllerWithAllObservations) {
  auto& shared = _FBKVOSharedController::sharedController();
  const std::string before = shared.debugDescription().utf8();
  EXPECT_EQ(before.find("<_FBKVOSharedController:" + address(&shared) + " contexts:"), 0u) << before;
  controller->observe_keyPath_options_action(slip, "note", New, "describedHere::");
  EXPECT_NE(shared.debugDescription().utf8().find(" action:describedHere::>"), std::string::npos);
  controller->unobserveAll();
  EXPECT_EQ(shared.debugDescription().utf8().find(" action:describedHere::>"), std::string::npos);
}

TEST_F(FBKVOControllerTest, InfosAreEqualByTheirKeyPath) {
  const auto one = _FBKVOInfo::initWithController_keyPath(*controller, "note");
  const auto same = _FBKVOInfo::initWithController_keyPath_options_block(*controller, "note", New, recording());
  const auto other = _FBKVOInfo::initWithController_keyPath(*controller, "grossPay");
  EXPECT_TRUE(one->isEqual(*same) && same->isEqual(*one) && one->isEqual(*one));
  EXPECT_EQ(one->hash(), same->hash());
  EXPECT_FALSE(one->isEqual(*other));
  EXPECT_FALSE(one->isEqual(*slip));
  EXPECT_EQ(NSSet::setWith({one, same, other})->count(), 2u);
}

TEST_F(FBKVOControllerTest, HeaderExampleOfTheControllerThatEveryObjectHas) {
  const Ref<Payslip> other = make<Payslip>();
  KVOController(*other)->observe_keyPath_options_block(slip, "note", New, recording());
  slip->setNote("paid");
  EXPECT_EQ(heard.size(), 1U);
}

#include "NorvikCore/platform/appkit/NSApplication.h"

#include <gtest/gtest.h>

#include "tests/support/ExpectRaises.h"

namespace norvik {
namespace {

class PayWindow : public NSObject {
  NK_OBJECT(PayWindow, NSObject)
  void closePayRun(const Value& sender) { closedBy = sender; }
  NK_METHOD(closePayRun)
  void refresh() { ++refreshes; }
  NK_METHOD(refresh)
  void merge(const Value&, const Value&) {}
  NK_METHOD(merge)
  bool refuse(const Value&) { return false; }
  NK_METHOD(refuse)

  Value closedBy;
  int refreshes = 0;
};

NSApplication& application() { return NSApplication::sharedApplication(); }

TEST(NSApplication, HeaderExample) {
  auto window = make<PayWindow>();
  EXPECT_TRUE(NSApplication::sharedApplication().sendAction_to_from("closePayRun:", window, "the menu"));
  EXPECT_EQ(window->closedBy, Value("the menu"));
}

TEST(NSApplication, ThereIsOne) { EXPECT_EQ(&NSApplication::sharedApplication(), &application()); }

TEST(NSApplication, ATargetThatDoesNotRespondGivesFalse) {
  EXPECT_FALSE(application().sendAction_to_from("printPayslips:", make<PayWindow>(), Value()));
  EXPECT_FALSE(application().sendAction_to_from(SEL(), make<PayWindow>(), Value()));
}

TEST(NSApplication, AnActionWithoutArgumentIsPerformedWithoutTheSender) {
  auto window = make<PayWindow>();
  EXPECT_TRUE(application().sendAction_to_from("refresh", window, "ignored"));
  EXPECT_EQ(window->refreshes, 1);
}

TEST(NSApplication, WhatTheActionGivesBackIsDropped) {
  EXPECT_TRUE(application().sendAction_to_from("refuse:", make<PayWindow>(), Value()));
}

TEST(NSApplication, AnActionWithTwoArgumentsRaises) {
  EXPECT_RAISES(application().sendAction_to_from("merge::", make<PayWindow>(), Value()), "NSInvalidArgumentException");
}

TEST(NSApplication, WithoutATargetTheDelegateIsAsked) {
  EXPECT_FALSE(application().sendAction_to_from("closePayRun:", nullptr, "menu"));
  {
    auto window = make<PayWindow>();
    application().setDelegate(window);
    EXPECT_TRUE(application().sendAction_to_from("closePayRun:", nullptr, "menu"));
    EXPECT_EQ(window->closedBy, Value("menu"));
    EXPECT_FALSE(application().sendAction_to_from("printPayslips:", nullptr, "menu"));
  }
  EXPECT_FALSE(application().sendAction_to_from("closePayRun:", nullptr, "menu")) << "a delegate is not kept";
}

}  // namespace
}  // namespace norvik

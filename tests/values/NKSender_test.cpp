#include "NorvikCore/values/NKSender.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "NorvikCore/platform/appkit/NSApplication.h"

namespace norvik {
namespace {

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
};
class FinalPayslip : public Payslip {
  NK_OBJECT(FinalPayslip, Payslip)
};

class Window : public NSObject {
  NK_OBJECT(Window, NSObject)
  void reviewPayslip(const Value& sender) {
    reviewed = NKSender::fromSender_getRepresentedObjectWithClass(sender, Payslip::staticClass());
    sender.object<NKSender>()->onContinue()();
  }
  NK_METHOD(reviewPayslip)
  Value reviewed;
};

TEST(NKSender, HeaderExample) {
  auto payslip = make<Payslip>();
  auto window = make<Window>();
  bool isClosed = false;
  auto sender = NKSender::senderWithRepresentedObject(payslip);
  sender->setOnContinue([&] { isClosed = true; });
  NSApplication::sharedApplication().sendAction_to_from("reviewPayslip:", window, sender);
  EXPECT_EQ(window->reviewed, Value(payslip));
  EXPECT_TRUE(isClosed);
}

TEST(NKSender, HasItsPropertiesInOrder) {
  std::string names;
  for (const Property& property : NKSender::staticClass().properties()) names += property.name.str() + " ";
  EXPECT_EQ(
      names,
      "onValidationSuccess onContinue onAlternateContinue onCancel info senderTarget identifier representedObject "
      "action tag ");
}

TEST(NKSender, ANewOneHasNothing) {
  auto sender = make<NKSender>();
  EXPECT_FALSE(sender->onValidationSuccess());
  EXPECT_FALSE(sender->onContinue());
  EXPECT_FALSE(sender->onAlternateContinue());
  EXPECT_FALSE(sender->onCancel());
  EXPECT_FALSE(sender->info());
  EXPECT_FALSE(sender->senderTarget());
  EXPECT_FALSE(sender->identifier());
  EXPECT_TRUE(sender->representedObject().isAbsent());
  EXPECT_FALSE(sender->action());
  EXPECT_EQ(sender->tag(), 0);
}

TEST(NKSender, KeepsWhatItIsGiven) {
  auto sender = make<NKSender>();
  std::string called;
  sender->setOnValidationSuccess([&] { called += "v"; });
  sender->setOnContinue([&] { called += "c"; });
  sender->setOnAlternateContinue([&] { called += "a"; });
  sender->setOnCancel([&] { called += "x"; });
  sender->setInfo(NSDictionary::dictionaryWith({{"month", 4}}));
  sender->setIdentifier("close");
  sender->setRepresentedObject(12.5);
  sender->setAction("close:");
  sender->setTag(-3);
  EXPECT_EQ(called, "") << "setting calls nothing";
  sender->onValidationSuccess()();
  sender->onContinue()();
  sender->onAlternateContinue()();
  sender->onCancel()();
  EXPECT_EQ(called, "vcax");
  EXPECT_EQ(sender->info()->objectForKey("month"), Value(4));
  EXPECT_EQ(sender->identifier(), NSString("close"));
  EXPECT_EQ(sender->representedObject(), Value(12.5));
  EXPECT_EQ(sender->action(), SEL("close:"));
  EXPECT_EQ(sender->tag(), -3);
}

TEST(NKSender, ItsPropertiesAreKeys) {
  auto sender = make<NKSender>();
  sender->setValue_forKey(7, "tag");
  sender->setValue_forKey("refresh", "identifier");
  EXPECT_EQ(sender->valueForKey("tag"), Value(7));
  EXPECT_EQ(sender->valueForKey("identifier"), Value("refresh"));
  EXPECT_TRUE(sender->valueForKey("onCancel").isAbsent());
}

TEST(NKSender, TheTargetIsNotKept) {
  auto sender = make<NKSender>();
  {
    auto target = make<Payslip>();
    sender->setSenderTarget(target);
    EXPECT_EQ(sender->senderTarget(), Ref<NSObject>(target));
  }
  EXPECT_FALSE(sender->senderTarget());
}

TEST(NKSender, EachMakerSetsOneProperty) {
  EXPECT_EQ(NKSender::senderWithTag(INT64_MIN)->tag(), INT64_MIN);
  EXPECT_EQ(NKSender::senderWithRepresentedObject("a")->representedObject(), Value("a"));
  EXPECT_TRUE(NKSender::senderWithRepresentedObject("a")->onContinue() == nullptr);
  const Block<void()> next = [] {};
  EXPECT_EQ(NKSender::senderWithOnContinue(next)->onContinue(), next);
  EXPECT_EQ(NKSender::senderWithOnContinue(next)->tag(), 0);
}

TEST(NKSender, TheRepresentedObjectIsGivenWhereItIsOfTheClass) {
  const Class& payslips = Payslip::staticClass();
  auto payslip = make<FinalPayslip>();
  auto sender = NKSender::senderWithRepresentedObject(payslip);
  EXPECT_EQ(NKSender::fromSender_getRepresentedObjectWithClass(sender, payslips), Value(payslip));
  EXPECT_EQ(NKSender::fromSender_getRepresentedObjectWithClass(sender, FinalPayslip::staticClass()), Value(payslip));
  EXPECT_EQ(NKSender::fromSender_getRepresentedObjectWithClass(NKSender::senderWithRepresentedObject("a"),
                                                               *Class::named("NSString")),
            Value("a"));
}

TEST(NKSender, AnythingElseGivesNothing) {
  const Class& payslips = Payslip::staticClass();
  EXPECT_TRUE(NKSender::fromSender_getRepresentedObjectWithClass(Value(), payslips).isAbsent());
  EXPECT_TRUE(NKSender::fromSender_getRepresentedObjectWithClass(make<Payslip>(), payslips).isAbsent());
  EXPECT_TRUE(NKSender::fromSender_getRepresentedObjectWithClass("a", payslips).isAbsent());
  EXPECT_TRUE(NKSender::fromSender_getRepresentedObjectWithClass(make<NKSender>(), payslips).isAbsent());
  EXPECT_TRUE(NKSender::fromSender_getRepresentedObjectWithClass(NKSender::senderWithRepresentedObject("a"), payslips)
                  .isAbsent());
}

TEST(NKSenderThreads, PropertiesAreReadAndSetOnSeveralThreads) {
  auto sender = make<NKSender>();
  auto target = make<Payslip>();
  const auto setAndRead = [&](std::int64_t tag) {
    for (int i = 0; i < 500; ++i) {
      sender->setTag(tag);
      sender->setIdentifier("a text that does not fit into the object itself");
      sender->setRepresentedObject(target);
      sender->setOnContinue([] {});
      sender->setSenderTarget(i % 2 == 0 ? Ref<NSObject>(target) : nullptr);
      static_cast<void>(sender->senderTarget());
      static_cast<void>(sender->identifier());
      static_cast<void>(sender->representedObject());
      sender->onContinue()();
    }
  };
  { std::jthread one(setAndRead, 1), two(setAndRead, 2); }
  EXPECT_TRUE(sender->tag() == 1 || sender->tag() == 2);
}

}  // namespace
}  // namespace norvik

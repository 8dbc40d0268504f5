#include "NorvikCore/qt/NKSenderAction.h"

#include "NorvikCore/platform/appkit/NSApplication.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/qt/QtModels.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <thread>

namespace {

using namespace norvik;
using norvik::test::runUntil;

class Office : public NSObject {
  NK_OBJECT(Office, NSObject)
  void reviewPayslip(const Value& sender) {
    reviewed = NKSender::fromSender_getRepresentedObjectWithClass(sender, QtPayslip::staticClass());
    sender.object<NKSender>()->onContinue()();
  }
  NK_METHOD_AS(reviewPayslip, "reviewPayslip:")
  void closePayRun(const Value&) { NSException::raise(NSGenericException, "the pay run is closed"); }
  NK_METHOD_AS(closePayRun, "closePayRun:")
  Value reviewed;
};

TEST(NKSenderAction, HeaderExample) {
  const auto office = make<Office>();
  const auto payslip = test::payslipOf("Sian");
  QDialog window;
  QDialog* const dialog = &window;
  auto* const button = new QPushButton("Review", dialog);

  auto sender = NKSender::senderWithRepresentedObject(payslip);
  auto* review = new NKSenderAction("reviewPayslip:", office, sender, button);
  QObject::connect(button, &QPushButton::clicked, review, &NKSenderAction::perform);
  QObject::connect(review, &NKSenderAction::continued, dialog, &QDialog::accept);
  QObject::connect(review, &NKSenderAction::cancelled, dialog, &QDialog::reject);

  button->click();
  EXPECT_EQ(office->reviewed, Value(payslip));
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
  sender->onCancel()();
  EXPECT_EQ(dialog->result(), QDialog::Rejected);
}

TEST(NKSenderAction, AClickPerformsTheActionAndItsClosureIsASignal) {
  auto office = make<Office>();
  auto slip = test::payslipOf("Sian");
  QPushButton button("Review");
  auto* review = new NKSenderAction("reviewPayslip:", office, NKSender::senderWithRepresentedObject(slip), &button);
  QObject::connect(&button, &QPushButton::clicked, review, &NKSenderAction::perform);
  QSignalSpy continued(review, &NKSenderAction::continued), cancelled(review, &NKSenderAction::cancelled);
  QTest::keyClick(&button, Qt::Key_Space);
  EXPECT_EQ(office->reviewed, Value(slip));
  EXPECT_EQ(continued.size(), 1);
  EXPECT_EQ(cancelled.size(), 0);
}

TEST(NKSenderAction, WithoutATargetTheApplicationsDelegateGetsIt) {
  auto office = make<Office>();
  NSApplication::sharedApplication().setDelegate(office);
  auto slip = test::payslipOf("Sian");
  NKSenderAction review("reviewPayslip:", nullptr, NKSender::senderWithRepresentedObject(slip));
  EXPECT_TRUE(review.perform());
  EXPECT_EQ(office->reviewed, Value(slip));
  NSApplication::sharedApplication().setDelegate(nullptr);
  EXPECT_FALSE(review.perform()) << "no object responds";
}

TEST(NKSenderAction, ATargetIsNotRetained) {
  auto office = make<Office>();
  const Weak<Office> watched(office);
  const NKSenderAction review("reviewPayslip:", office, nullptr);
  office = nullptr;
  EXPECT_TRUE(watched.isGone());
}

TEST(NKSenderAction, AnExceptionOfTheActionBecomesASignal) {
  auto office = make<Office>();
  NKSenderAction close("closePayRun:", office, nullptr);
  QSignalSpy failed(&close, &NKSenderAction::failed);
  EXPECT_FALSE(close.perform());
  ASSERT_EQ(failed.size(), 1);
  EXPECT_EQ(failed[0][0].toString(), "the pay run is closed");
}

TEST(NKSenderAction, AClosureOfTheApplicationIsKept) {
  bool isCalled = false;
  auto sender = NKSender::senderWithOnContinue([&] { isCalled = true; });
  NKSenderAction action("reviewPayslip:", nullptr, sender);
  QSignalSpy continued(&action, &NKSenderAction::continued);
  sender->onContinue()();
  EXPECT_TRUE(isCalled);
  EXPECT_EQ(continued.size(), 0);
}

TEST(NKSenderAction, ClosuresCalledOnOtherThreadsArriveOnTheActionsThreadAndNotAfterItsEnd) {
  auto action = std::make_unique<NKSenderAction>("x:", nullptr, nullptr);
  const Ref<NKSender> sender = action->sender();
  int continued = 0, cancelled = 0;
  QObject::connect(action.get(), &NKSenderAction::continued, [&] { ++continued; });
  QObject::connect(action.get(), &NKSenderAction::cancelled, [&] { ++cancelled; });
  std::thread([&] { sender->onContinue()(); }).join();
  EXPECT_EQ(continued, 0);
  EXPECT_TRUE(runUntil([&] { return continued == 1; }));
  std::thread([&] { sender->onCancel()(); }).join();
  action.reset();
  sender->onCancel()();
  std::thread([&] { sender->onCancel()(); }).join();
  QCoreApplication::processEvents();
  EXPECT_EQ(cancelled, 0);
}

}  // namespace

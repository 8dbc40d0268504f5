#include "NorvikCore/platform/keyvalue/KeyPath.h"

#include "NorvikCore/platform/object/NSObject.h"

#include <gtest/gtest.h>

namespace {

using namespace norvik;

class Worker : public NSObject {
  NK_OBJECT(Worker, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_WEAK_PROPERTY(Worker, manager, setManager)
};

class Foreman : public Worker {
  NK_OBJECT(Foreman, Worker)
  NK_ATOMIC_PROPERTY(int, seat_2, setSeat_2)
};

class WageSlip : public NSObject {
  NK_OBJECT(WageSlip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(Ref<Foreman>, employee, setEmployee)
  NK_COMPUTED_PROPERTY(Decimal, netPay)
  Decimal netPay() const noexcept { return grossPay(); }
};

}  // namespace

TEST(KeyPath, HeaderExample) {
  EXPECT_EQ(keyPath<&WageSlip::grossPay>(), "grossPay");
  EXPECT_EQ((keyPath<&WageSlip::employee, &Worker::name>()), "employee.name");
}

TEST(KeyPath, AccessorsOfEveryKindOfPropertyNameTheirKey) {
  EXPECT_EQ(keyPath<&WageSlip::netPay>(), "netPay");
  EXPECT_EQ(keyPath<&Foreman::seat_2>(), "seat_2");
  EXPECT_EQ(keyPath<&Foreman::name>(), "name");  // inherited
  EXPECT_EQ((keyPath<&WageSlip::employee, &Foreman::manager, &Worker::manager, &Worker::name>()),
            "employee.manager.manager.name");
}

TEST(KeyPath, TheTextIsBorrowedAndAlwaysTheSame) {
  EXPECT_TRUE(keyPath<&WageSlip::grossPay>().isIdenticalTo(keyPath<&WageSlip::grossPay>()));
  EXPECT_TRUE(keyPath<&WageSlip::grossPay>().isAscii());
}

TEST(KeyPath, LeadsToWhatItNames) {
  const auto slip = make<WageSlip>();
  slip->setEmployee(make<Foreman>());
  slip->employee()->setName("Ann");
  EXPECT_EQ(slip->valueForKeyPath(keyPath<&WageSlip::employee, &Worker::name>()), Value("Ann"));
}

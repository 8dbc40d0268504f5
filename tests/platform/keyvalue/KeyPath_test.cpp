#include "NorvikCore/platform/keyvalue/KeyPath.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSString_fmt.h"

#include <gtest/gtest.h>

#include <optional>
#include <type_traits>
#include <unordered_set>

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

TEST(KeyPath, KnowsWhereItStartsAndWhatItLeadsTo) {
  const auto leadsFromTo = []<class Root, class T>(const KeyPath<Root, T>&, std::type_identity<Root>,
                                                   std::type_identity<T>) { return true; };
  const std::type_identity<WageSlip> slip;
  EXPECT_TRUE(leadsFromTo(keyPath<&WageSlip::grossPay>(), slip, std::type_identity<Decimal>()));
  EXPECT_TRUE(leadsFromTo(keyPath<&WageSlip::employee>(), slip, std::type_identity<Ref<Foreman>>()));
  // Behind another object a value may be absent.
  EXPECT_TRUE(
      leadsFromTo(keyPath<&WageSlip::employee, &Foreman::seat_2>(), slip, std::type_identity<std::optional<int>>()));
  EXPECT_TRUE(leadsFromTo(keyPath<&WageSlip::employee, &Foreman::manager>(), slip, std::type_identity<Ref<Worker>>()));
}

TEST(KeyPath, IsATextWhereverOneIsExpected) {
  const auto path = keyPath<&WageSlip::grossPay>();
  const NSString copy = path;
  EXPECT_TRUE(copy.isIdenticalTo(path));
  EXPECT_TRUE(path == "grossPay" && "grossPay" == path && path == copy && path < copy + "x");
  EXPECT_EQ(Value(path), Value("grossPay"));
  EXPECT_EQ(stringWithFormat("%@!", path), "grossPay!");
  EXPECT_EQ(fmt::format("{:>9}", path), " grossPay");
  EXPECT_EQ(NSArray::arrayWithObjects(path, keyPath<&WageSlip::netPay>())->objectAtIndex(1), Value("netPay"));
  EXPECT_TRUE(std::unordered_set<NSString>({path}).contains("grossPay"));
}

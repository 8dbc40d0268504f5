// tests/qt/QtModels.h - models of the tests of the component Qt, and waiting for the event loop.
#pragma once

#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "NorvikCore/platform/values/Format.h"

#include <QAbstractItemModelTester>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

class QtPayslip : public norvik::NSObject {
  NK_OBJECT(QtPayslip, NSObject)
  NK_ATOMIC_PROPERTY(norvik::NSString, name, setName)
  NK_ATOMIC_PROPERTY(norvik::Decimal, grossPay, setGrossPay)
  NK_PROPERTY(norvik::Date, paymentDate, setPaymentDate)
  NK_PROPERTY(bool, paid, setPaid)

  /// Rounds to pennies and refuses amounts below zero.
  bool validateGrossPay(norvik::Value* value, norvik::Ref<norvik::NSError>* error) {
    using namespace norvik;
    const Decimal amount = value->as<Decimal>();
    if (amount < 0) {
      if (error) {
        *error = NSError::errorWithDomain(
            "Payroll", 7, NSDictionary::dictionaryWith({{NSLocalizedDescriptionKey, "Pay is not below zero."}}));
      }
      return false;
    }
    *value = amount.round(2);
    return true;
  }
  NK_METHOD_AS(validateGrossPay, "validateGrossPay:error:")
};

class QtPayRun : public norvik::NSObject {
  NK_OBJECT(QtPayRun, NSObject)
  NK_ATOMIC_PROPERTY(norvik::Ref<norvik::NSArray>, payslips, setPayslips)
  NK_PROPERTY(norvik::Ref<QtPayslip>, first, setFirst)
};

namespace norvik::test {

/// A fault of a model ends the test program.
inline constexpr auto failing = QAbstractItemModelTester::FailureReportingMode::Fatal;

inline Ref<QtPayslip> payslipOf(const NSString& name, const Decimal& pay = 0) {
  auto slip = make<QtPayslip>();
  slip->setName(name);
  slip->setGrossPay(pay);
  return slip;
}

/// Runs the event loop until the condition is true, for ten seconds at most.
template <class Condition>
bool runUntil(Condition condition) {
  QElapsedTimer time;
  time.start();
  while (!condition() && time.elapsed() < 10000) {
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 100);
  }
  return condition();
}

}  // namespace norvik::test

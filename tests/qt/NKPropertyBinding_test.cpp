#include "NorvikCore/qt/NKPropertyBinding.h"

#include "NorvikCore/constants/NKBind.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/qt/NKFormatterValidator.h"
#include "NorvikCore/qt/QtConversions.h"
#include "tests/qt/QtModels.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QDateEdit>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>
#include <string>
#include <thread>

namespace {

using namespace norvik;
using norvik::test::payslipOf;
using norvik::test::runUntil;

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
};

class EmployedPayslip : public QtPayslip {
  NK_OBJECT(EmployedPayslip, QtPayslip)
  NK_PROPERTY(Ref<Employee>, employee, setEmployee)
};

class Totals : public NSObject {
  NK_OBJECT(Totals, NSObject)
  NK_PROPERTY(Decimal, pay, setPay)
};

/// Refuses amounts above its limit, and codes with digits.
class Contract : public NSObject {
  NK_OBJECT(Contract, NSObject)
  NK_ATOMIC_PROPERTY(Decimal, pay, setPay)
  NK_PROPERTY(Decimal, limit, setLimit)
  NK_PROPERTY(NSString, code, setCode)

  bool validatePay(Value* value, Ref<NSError>* error) {
    return value->as<Decimal>() <= limit() || refused("Too much.", error);
  }
  NK_METHOD_AS(validatePay, "validatePay:error:")
  bool validateCode(Value* value, Ref<NSError>* error) {
    return nk_toQString(value->as<NSString>()).indexOf(QRegularExpression("[0-9]")) < 0 || refused("No digits.", error);
  }
  NK_METHOD_AS(validateCode, "validateCode:error:")

 private:
  static bool refused(const NSString& reason, Ref<NSError>* error) {
    if (error) {
      *error =
          NSError::errorWithDomain("Payroll", 8, NSDictionary::dictionaryWith({{NSLocalizedDescriptionKey, reason}}));
    }
    return false;
  }
};

Value inPounds(const Value& pay) { return pay.description() + " pounds"; }

Ref<NSDictionary> tokens(const NSString& tokens) { return NSDictionary::dictionaryWith({{NKBind, tokens}}); }

/// A window in which the pay of a contract is edited: 1234.5, and at most 5000.
class NKPropertyBindingFieldTest : public ::testing::Test {
 protected:
  NKPropertyBindingFieldTest()
      : contract(make<Contract>()),
        edit(new QLineEdit(&window)),
        other(new QLineEdit(&window)),
        field(new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), *edit)) {
    contract->setPay(1234.5_dec);
    contract->setLimit(5000);
    binding = &nk_bind_toObject_withKeyPath_options(*field, "value", *contract, "pay", tokens("validate"));
    auto* const layout = new QVBoxLayout(&window);
    layout->addWidget(edit);
    layout->addWidget(other);
    window.show();
    QApplication::setActiveWindow(&window);
    edit->setFocus();
  }
  void typeOver(const char* text) {
    edit->selectAll();
    QTest::keyClicks(edit, text);
  }
  void enter(const char* text) {
    typeOver(text);
    QTest::keyClick(edit, Qt::Key_Return);
  }
  /// The reason, if all that show it agree.
  [[nodiscard]] std::string reason() const {
    if (edit->property("invalid").toBool() == edit->toolTip().isEmpty()) return "invalid and the tool tip differ";
    return edit->toolTip() == field->errorText() ? field->errorText().toStdString() : "the tool tip differs";
  }

  Ref<Contract> contract;
  QWidget window;
  QLineEdit *edit, *other;
  NKFormatterValidator* field;
  NKPropertyBinding* binding = nullptr;
};

TEST(NKPropertyBinding, HeaderExample) {
  const auto slip = make<EmployedPayslip>();
  const auto totals = make<Totals>();
  slip->setEmployee(make<Employee>());
  QLineEdit line, amount;
  QLabel label;
  QLineEdit* const edit = &line;
  QLabel* const total = &label;
  auto* const payField = new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), amount);

  nk_bind_toObject_withKeyPath_options(*edit, "text", *slip, "employee.name", nullptr);
  nk_bind_toObject_withKeyPath_options(*payField, "value", *slip, "grossPay",
                                       NSDictionary::dictionaryWith({{NKBind, "validate"}}));
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(
      *total, "text", *totals, "pay", nullptr, [](const Value& pay) -> Value { return inPounds(pay); }, nullptr);

  slip->employee()->setName("Sian");
  EXPECT_EQ(edit->text(), "Sian");
  QTest::keyClicks(edit, "!");
  EXPECT_EQ(slip->employee()->name(), "Sian!");
  slip->setGrossPay(1234.5_dec);
  EXPECT_EQ(amount.text(), "1,234.50");
  payField->setObjectValue(-1_dec);
  EXPECT_EQ(slip->grossPay(), 1234.5_dec) << "the validation refuses it";
  totals->setPay(40);
  EXPECT_EQ(total->text(), "40 pounds");
}

TEST(NKPropertyBinding, BothSidesFollowEachOther) {
  auto slip = payslipOf("Sian");
  QLineEdit edit;
  nk_bind_toObject_withKeyPath_options(edit, "text", *slip, "name", nullptr);
  EXPECT_EQ(edit.text(), "Sian");
  slip->setName("Zo\u00EB");
  EXPECT_EQ(edit.text(), QString::fromUtf8("Zo\u00EB"));
  QTest::keyClicks(&edit, "!");
  EXPECT_EQ(slip->name(), "Zo\u00EB!");
  EXPECT_EQ(edit.cursorPosition(), 4);
}

TEST(NKPropertyBinding, DatesAreDaysInUtcAndFlagsAreChecked) {
  auto slip = payslipOf("Sian");
  slip->setPaymentDate("2024-04-30"_date);
  QDateEdit date;
  QCheckBox paid;
  nk_bind_toObject_withKeyPath_options(date, "date", *slip, "paymentDate", nullptr);
  nk_bind_toObject_withKeyPath_options(paid, "checked", *slip, "paid", nullptr);
  EXPECT_EQ(date.date(), QDate(2024, 4, 30));
  date.setDate(QDate(2024, 7, 1));
  EXPECT_EQ(slip->paymentDate(), "2024-07-01"_date);
  QTest::keyClick(&paid, Qt::Key_Space);
  EXPECT_TRUE(slip->paid());
}

TEST(NKPropertyBinding, AnAmountIsExactThroughAFieldAndARefusedOneStaysWithItsReason) {
  auto slip = payslipOf("Sian", 1234.50_dec);
  QLineEdit edit;
  auto* pay = new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), edit);
  auto& binding = nk_bind_toObject_withKeyPath_options(*pay, "value", *slip, "grossPay", tokens("validate"));
  QSignalSpy errors(&binding, &NKPropertyBinding::errorTextChanged);
  EXPECT_EQ(edit.text(), "1,234.50");

  edit.selectAll();
  QTest::keyClicks(&edit, "1200.129");
  QTest::keyClick(&edit, Qt::Key_Return);
  EXPECT_EQ(to_string(slip->grossPay()), "1200.13") << "the validation rounds";
  EXPECT_EQ(edit.text(), "1,200.13");

  edit.selectAll();
  QTest::keyClicks(&edit, "-5");
  QTest::keyClick(&edit, Qt::Key_Return);
  EXPECT_EQ(to_string(slip->grossPay()), "1200.13");
  EXPECT_EQ(edit.text(), "-5.00");
  EXPECT_EQ(binding.errorText(), "Pay is not below zero.");
  EXPECT_EQ(edit.toolTip(), "Pay is not below zero.");
  EXPECT_TRUE(edit.property("invalid").toBool());
  ASSERT_TRUE(binding.error());
  EXPECT_EQ(binding.error()->code(), 7);

  edit.selectAll();
  QTest::keyClicks(&edit, "1200.13");
  QTest::keyClick(&edit, Qt::Key_Return);
  EXPECT_EQ(binding.errorText(), "");
  EXPECT_EQ(edit.toolTip(), "");
  EXPECT_EQ(errors.size(), 2);
}

TEST(NKPropertyBinding, AValueThatTheModelRoundsToItsPresentOneIsShownAsThePresentOne) {
  auto slip = payslipOf("Sian", 10.00_dec);
  QLineEdit edit;
  auto* pay = new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), edit);
  nk_bind_toObject_withKeyPath_options(*pay, "value", *slip, "grossPay", tokens("validate"));
  edit.selectAll();
  QTest::keyClicks(&edit, "10.004");
  QTest::keyClick(&edit, Qt::Key_Return);
  EXPECT_EQ(edit.text(), "10.00");
}

TEST(NKPropertyBinding, EscapeShowsTheModelsValueAgain) {
  auto slip = payslipOf("Sian", 10_dec);
  QLineEdit edit;
  auto* pay = new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), edit);
  auto& binding = nk_bind_toObject_withKeyPath_options(*pay, "value", *slip, "grossPay", tokens("validate"));
  edit.selectAll();
  QTest::keyClicks(&edit, "-5");
  QTest::keyClick(&edit, Qt::Key_Return);
  QTest::keyClicks(&edit, "6");
  QTest::keyClick(&edit, Qt::Key_Escape);
  EXPECT_EQ(edit.text(), "10.00");
  EXPECT_EQ(binding.errorText(), "");
}

TEST_F(NKPropertyBindingFieldTest, EscapeAfterARefusalShowsTheModelsValueAgain) {
  enter("9000");
  EXPECT_EQ(edit->text(), "9,000.00");
  EXPECT_EQ(reason(), "Too much.");
  EXPECT_EQ(binding->errorText(), "Too much.");
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "1,234.50");
  EXPECT_EQ(field->objectValue(), Value(1234.5_dec));
  EXPECT_EQ(contract->pay(), 1234.5_dec);
  EXPECT_EQ(reason(), "");
  EXPECT_EQ(binding->errorText(), "");
  EXPECT_FALSE(binding->error());
}

TEST_F(NKPropertyBindingFieldTest, EscapeAfterARefusalAlsoWorksWhenTheFocusHasLeftAndReturned) {
  typeOver("9000");
  other->setFocus();
  EXPECT_EQ(edit->text(), "9,000.00");
  EXPECT_EQ(reason(), "Too much.");
  edit->setFocus();
  EXPECT_EQ(reason(), "Too much.");
  other->setFocus();
  EXPECT_EQ(reason(), "Too much.") << "it is left again without an edit";
  edit->setFocus();
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "1,234.50");
  EXPECT_EQ(reason(), "");
  other->setFocus();
  EXPECT_EQ(edit->text(), "1,234.50");
  EXPECT_EQ(contract->pay(), 1234.5_dec);
}

TEST_F(NKPropertyBindingFieldTest, EscapeShowsTheLastValueThatTheModelTookWithContinuousUpdates) {
  field->setUpdatesContinuously(true);
  typeOver("9000");
  EXPECT_EQ(contract->pay(), 900);
  EXPECT_EQ(reason(), "Too much.");
  QTest::keyClick(edit, Qt::Key_Backspace);
  EXPECT_EQ(reason(), "") << "900 is accepted";
  QTest::keyClicks(edit, "0");
  EXPECT_EQ(reason(), "Too much.") << "and 9000 refused again";
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "900.00");
  EXPECT_EQ(contract->pay(), 900);
  EXPECT_EQ(reason(), "");
}

TEST_F(NKPropertyBindingFieldTest, EscapeShowsTheLastAcceptedValueAfterTheModelWasDestroyed) {
  enter("2000");
  enter("9000");
  enter("8000");
  EXPECT_EQ(reason(), "Too much.");
  contract = nullptr;
  QSignalSpy changed(field, &NKFormatterValidator::valueChanged);
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "2,000.00");
  EXPECT_EQ(reason(), "");
  ASSERT_EQ(changed.size(), 1);
  EXPECT_EQ(nk_toValue(changed[0][0]), Value(2000));
}

TEST_F(NKPropertyBindingFieldTest, EscapeNeverWritesToTheModel) {
  enter("9000");
  std::thread([&] { contract->setPay(3000); }).join();  // the event loop has not shown it yet
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "3,000.00");
  EXPECT_EQ(reason(), "");
  QCoreApplication::processEvents();
  EXPECT_EQ(edit->text(), "3,000.00");
  EXPECT_EQ(contract->pay(), 3000);

  contract->setPay(6000);  // a value that the validation would refuse
  enter("9000");
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "6,000.00");
  EXPECT_EQ(reason(), "");
}

TEST_F(NKPropertyBindingFieldTest, AChangeByAnotherFieldEndsARefusalAndEscapeLeavesTheOtherFieldAlone) {
  auto* const second = new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), *other);
  nk_bind_toObject_withKeyPath_options(*second, "value", *contract, "pay", tokens("validate"));
  enter("9000");
  EXPECT_EQ(other->text(), "1,234.50");
  QTest::keyClicks(other, "7");  // being typed there
  EXPECT_EQ(other->text(), "1,234.507");
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "1,234.50");
  EXPECT_EQ(other->text(), "1,234.507");

  enter("9000");
  EXPECT_EQ(reason(), "Too much.");
  other->setFocus();
  other->selectAll();
  QTest::keyClicks(other, "2000");
  QTest::keyClick(other, Qt::Key_Return);
  EXPECT_EQ(edit->text(), "2,000.00");
  EXPECT_EQ(reason(), "");
  EXPECT_EQ(binding->errorText(), "");
}

TEST_F(NKPropertyBindingFieldTest, TheReasonIsAboutTheTextThatTheFieldShows) {
  enter("9000");
  EXPECT_EQ(reason(), "Too much.");
  typeOver("4");
  EXPECT_EQ(reason(), "") << "the refused text is edited";
  EXPECT_EQ(binding->errorText(), "");
  QTest::keyClicks(edit, "000");
  EXPECT_EQ(reason(), "");
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(contract->pay(), 4000);

  enter("9000");
  typeOver("1.2.3");
  EXPECT_EQ(reason(), "") << "it is not read yet";
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(reason(), "\"1.2.3\" is not a number that can be entered here.");
  other->setFocus();
  EXPECT_EQ(edit->text(), "1.2.3");
  EXPECT_EQ(reason(), "\"1.2.3\" is not a number that can be entered here.");
  EXPECT_EQ(binding->errorText(), "");
}

TEST_F(NKPropertyBindingFieldTest, AValueThatIsTypedAgainIsRefusedAgain) {
  enter("9000");
  typeOver("8");
  EXPECT_EQ(reason(), "");
  enter("9000");
  EXPECT_EQ(reason(), "Too much.");
  EXPECT_EQ(binding->errorText(), "Too much.");
  contract->setLimit(9000);
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(contract->pay(), 9000) << "Return asks the model again";
  EXPECT_EQ(reason(), "");
}

TEST_F(NKPropertyBindingFieldTest, AModelThatGetsTheRefusedValueByOtherCodeEndsTheRefusal) {
  enter("9000");
  contract->setPay(9000);
  EXPECT_EQ(reason(), "");
  EXPECT_EQ(binding->errorText(), "");
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "9,000.00");
}

TEST_F(NKPropertyBindingFieldTest, AnUnboundFieldKeepsItsValueWithoutTheMark) {
  enter("9000");
  unbind(*field, "value");
  EXPECT_EQ(edit->text(), "9,000.00");
  EXPECT_EQ(reason(), "");
}

TEST_F(NKPropertyBindingFieldTest, ALineEditBoundByItsTextKeepsARefusedTextUntilItIsCorrectedOrRefreshed) {
  contract->setCode("AB");
  auto& code = nk_bind_toObject_withKeyPath_options(*other, "text", *contract, "code", tokens("validate"));
  other->setFocus();
  QTest::keyClicks(other, "1");
  QTest::keyClick(other, Qt::Key_Escape);
  EXPECT_EQ(other->text(), "AB1") << "Escape means nothing to a QLineEdit";
  EXPECT_EQ(other->toolTip(), "No digits.");
  EXPECT_EQ(contract->code(), "AB");
  QTest::keyClick(other, Qt::Key_Backspace);
  EXPECT_EQ(other->toolTip(), "");
  QTest::keyClicks(other, "C2");
  EXPECT_EQ(contract->code(), "ABC");
  EXPECT_EQ(other->toolTip(), "No digits.");
  code.refresh();
  EXPECT_EQ(other->text(), "ABC");
  EXPECT_EQ(other->toolTip(), "");
}

TEST_F(NKPropertyBindingFieldTest, TheToolTipShowsTheNewestReasonOfAWidget) {
  nk_bind_toObject_withKeyPath_options(*edit, "objectName", *contract, "code", tokens("validate"));
  edit->setObjectName("1");
  EXPECT_EQ(edit->toolTip(), "No digits.");
  enter("9000");
  EXPECT_EQ(edit->toolTip(), "Too much.");
  edit->setObjectName("2");
  EXPECT_EQ(edit->toolTip(), "Too much.") << "the reason has not changed";
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->toolTip(), "No digits.");
  edit->setObjectName("");
  EXPECT_EQ(edit->toolTip(), "");
}

TEST_F(NKPropertyBindingFieldTest, AMarkEndsWithItsBinding) {
  enter("9000");
  delete binding;
  EXPECT_EQ(reason(), "");
}

TEST(NKPropertyBinding, AnExceptionOfTheModelBecomesTheReason) {
  auto slip = payslipOf("Sian", 10_dec);
  QLineEdit edit;
  auto& binding = nk_bind_toObject_withKeyPath_options(edit, "text", *slip, "grossPay", nullptr);
  EXPECT_EQ(edit.text(), "10");
  QTest::keyClicks(&edit, "x");  // a text is no Decimal
  EXPECT_NE(binding.errorText(), "");
  EXPECT_EQ(slip->grossPay(), 10);
  binding.refresh();
  EXPECT_EQ(edit.text(), "10");
  EXPECT_EQ(binding.errorText(), "");
}

TEST(NKPropertyBinding, ClosuresTransformAndOneOfThemMakesItOneWay) {
  auto slip = payslipOf("Sian", 12_dec);
  QLabel label;
  QLineEdit edit;
  const NKTransformBlock show = [](const Value& pay) -> Value { return "GBP " + pay.description(); };
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(label, "text", *slip, "grossPay", nullptr, show, nullptr);
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(edit, "text", *slip, "grossPay", nullptr, show, nullptr);
  slip->setGrossPay(13_dec);
  EXPECT_EQ(label.text(), "GBP 13");
  QTest::keyClicks(&edit, "4");
  EXPECT_EQ(slip->grossPay(), 13);
  EXPECT_EQ(nk_bindingOfProperty(edit, "text")->errorText(), "");

  nk_bind_toObject_withKeyPath_options_block_reverseBlock(
      edit, "text", *slip, "grossPay", nullptr, show,
      [](const Value& text) -> Value { return *Decimal::parse(text.as<NSString>().substringFromIndex(4).view()); });
  EXPECT_EQ(edit.text(), "GBP 13");
  QTest::keyClicks(&edit, "5");
  EXPECT_EQ(slip->grossPay(), 135);
}

TEST(NKPropertyBinding, EitherSideMayBeDestroyedFirst) {
  auto slip = payslipOf("Sian");
  auto edit = std::make_unique<QLineEdit>();
  nk_bind_toObject_withKeyPath_options(*edit, "text", *slip, "name", nullptr);
  edit.reset();
  slip->setName("Zoe");
  EXPECT_FALSE(slip->isObserved()) << "nothing is left behind";

  QLineEdit kept;
  auto& binding = nk_bind_toObject_withKeyPath_options(kept, "text", *slip, "name", nullptr);
  slip = nullptr;
  EXPECT_EQ(kept.text(), "Zoe");
  QTest::keyClicks(&kept, "!");
  EXPECT_EQ(kept.text(), "Zoe!");
  EXPECT_EQ(binding.errorText(), "");
  EXPECT_FALSE(binding.commit());
  binding.refresh();
  EXPECT_EQ(kept.text(), "Zoe!");
}

TEST(NKPropertyBinding, AMarkedWidgetMayBeDestroyedWithItsFieldAndItsBinding) {
  auto slip = payslipOf("Sian", 10_dec);
  auto edit = std::make_unique<QLineEdit>();
  auto* pay = new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), *edit);
  nk_bind_toObject_withKeyPath_options(*pay, "value", *slip, "grossPay", tokens("validate"));
  QTest::keyClicks(edit.get(), "-5");
  edit->selectAll();
  QTest::keyClicks(edit.get(), "-5");
  QTest::keyClick(edit.get(), Qt::Key_Return);
  ASSERT_TRUE(edit->property("invalid").toBool());
  delete pay;  // the reason ends with the field
  EXPECT_TRUE(runUntil([&] { return !edit->property("invalid").toBool(); }));
  EXPECT_EQ(edit->toolTip(), "");
  edit.reset();
  QCoreApplication::processEvents();
}

/// Destroys a widget as soon as its name changes.
class Destroyer : public NSObject {
  NK_OBJECT(Destroyer, NSObject)
  void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange&, void*) override { edit.reset(); }
  std::unique_ptr<QLineEdit> edit;
};

TEST(NKPropertyBinding, AnObserverOfTheModelMayDestroyTheWidgetThatIsBeingTypedInto) {
  auto slip = payslipOf("Sian");
  auto destroyer = make<Destroyer>();
  destroyer->edit = std::make_unique<QLineEdit>();
  auto& binding = nk_bind_toObject_withKeyPath_options(*destroyer->edit, "text", *slip, "name", nullptr);
  slip->addObserver(*destroyer, "name", NSKeyValueObservingOptionNew);
  {
    const QSignalBlocker quiet(*destroyer->edit);
    destroyer->edit->setText("Zoe");
  }
  EXPECT_TRUE(binding.commit());
  EXPECT_FALSE(destroyer->edit);
  EXPECT_EQ(slip->name(), "Zoe");
}

TEST(NKPropertyBinding, TwoWidgetsOnOneKeyPathEndInOneRound) {
  auto slip = payslipOf("a");
  QLineEdit first, second;
  nk_bind_toObject_withKeyPath_options(first, "text", *slip, "name", nullptr);
  nk_bind_toObject_withKeyPath_options(second, "text", *slip, "name", nullptr);
  QSignalSpy changes(&second, &QLineEdit::textChanged);
  QTest::keyClicks(&first, "b");
  EXPECT_EQ(second.text(), "ab");
  EXPECT_EQ(changes.size(), 1);
  QTest::keyClicks(&second, "c");
  EXPECT_EQ(first.text(), "abc");
}

TEST(NKPropertyBinding, APathLeadsFromObjectToObject) {
  auto run = make<QtPayRun>();
  QLineEdit edit;
  nk_bind_toObject_withKeyPath_options(edit, "text", *run, "first.name", nullptr);
  EXPECT_EQ(edit.text(), "");
  run->setFirst(payslipOf("Sian"));
  EXPECT_EQ(edit.text(), "Sian");
  run->first()->setName("Zoe");
  EXPECT_EQ(edit.text(), "Zoe");
}

TEST(NKPropertyBinding, AChangeOnAnotherThreadReachesTheWidgetByItsEventLoop) {
  auto slip = payslipOf("start");
  QLineEdit edit;
  nk_bind_toObject_withKeyPath_options(edit, "text", *slip, "name", nullptr);
  QSignalSpy changes(&edit, &QLineEdit::textChanged);
  std::thread([&] {
    for (int i = 1; i <= 1000; ++i) slip->setName(stringWithFormat("%d", i));
  }).join();
  EXPECT_EQ(edit.text(), "start") << "a widget is touched on its own thread only";
  EXPECT_TRUE(runUntil([&] { return edit.text() == "1000"; }));
  EXPECT_EQ(changes.size(), 1) << "the last of the waiting changes";
}

TEST(NKPropertyBinding, AWidgetIsDestroyedWhileAnotherThreadChangesTheModel) {
  auto slip = payslipOf("start");
  std::atomic<bool> isDone = false;
  std::thread changes([&] {
    for (int i = 0; !isDone; ++i) slip->setName(stringWithFormat("%d", i));
  });
  for (int i = 0; i < 200; ++i) {
    QLineEdit edit;
    nk_bind_toObject_withKeyPath_options(edit, "text", *slip, "name", nullptr);
    QCoreApplication::processEvents();
  }
  isDone = true;
  changes.join();
  QCoreApplication::processEvents();
}

TEST(NKPropertyBinding, WhatCannotBeBoundRaisesAndLeavesThePropertyUnbound) {
  auto slip = payslipOf("Sian", 0.1_dec);
  QLineEdit edit;
  QDoubleSpinBox spin;
  const auto bind = [&](QObject& receiver, const char* property, const char* path) {
    nk_bind_toObject_withKeyPath_options(receiver, property, *slip, path, nullptr);
  };
  EXPECT_RAISES(bind(edit, "texxt", "name"), "NSInvalidArgumentException");
  EXPECT_RAISES(bind(edit, nullptr, "name"), "NSInvalidArgumentException");
  EXPECT_RAISES(bind(edit, "hasSelectedText", "name"), "NSInvalidArgumentException") << "read-only";
  EXPECT_RAISES(bind(edit, "text", "nane"), NSUndefinedKeyException.utf8());
  EXPECT_RAISES(bind(spin, "value", "grossPay"), "NSInvalidArgumentException") << "a decimal never becomes a double";
  EXPECT_EQ(nk_bindingOfProperty(edit, "text"), nullptr);
  EXPECT_EQ(nk_bindingOfProperty(spin, "value"), nullptr);
  EXPECT_FALSE(slip->isObserved());
  std::thread([&] { EXPECT_RAISES(bind(edit, "text", "name"), "NSInvalidArgumentException"); }).join();
}

TEST(NKPropertyBinding, AnUnboundPropertyKeepsItsValueAndFollowsNothing) {
  auto slip = payslipOf("Sian");
  QLineEdit edit;
  nk_bind_toObject_withKeyPath_options(edit, "text", *slip, "name", nullptr);
  unbind(edit, "text");
  unbind(edit, "text");
  slip->setName("Zoe");
  EXPECT_EQ(edit.text(), "Sian");
}

}  // namespace

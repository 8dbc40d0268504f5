#include "NorvikCore/qt/NKFormatterValidator.h"

#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/formatters/NKPlainTextFormatter.h"
#include "NorvikCore/formatters/NKUKSortCodeFormatter.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "NorvikCore/qt/NKPropertyBinding.h"
#include "NorvikCore/qt/QtConversions.h"
#include "tests/qt/QtModels.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QLineEdit>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace {

using namespace norvik;

/// Refuses "x" with a reason, replaces "y" by "[yes]" with "yes" selected, and reads only texts without "?".
class MarkFormatter : public NSFormatter {
  NK_OBJECT(MarkFormatter, NSFormatter)
  [[nodiscard]] std::optional<NSString> stringForObjectValue(const Value& value) const override {
    return "<" + value.as<NSString>() + ">";
  }
  [[nodiscard]] std::optional<NSString> editingStringForObjectValue(const Value& value) const override {
    return value.as<NSString>();
  }
  [[nodiscard]] bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                               NSString* error) const override {
    if (text.containsString("?")) {
      if (error) *error = "A mark is not a question.";
      return false;
    }
    value = text;
    return true;
  }
  [[nodiscard]] bool isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                          NSRange originalSelection, NSString* error) const override {
    seen =
        stringWithFormat("%@ {%d, %d} -> %@", original, originalSelection.location, originalSelection.length, proposed);
    if (proposed.containsString("x")) {
      if (error) *error = "No x.";
      return false;
    }
    if (!proposed.containsString("y") || proposed.containsString("yes")) return true;
    const NSRange place = proposed.rangeOfString("y");
    proposed = proposed.stringByReplacingOccurrencesOfString("y", "[yes]");
    selection = {place.location + 1, 3};
    return false;
  }
  mutable NSString seen;
};

/// A window with the edit and another widget that takes the focus.
class NKFormatterValidatorTest : public ::testing::Test {
 protected:
  NKFormatterValidatorTest() : edit(new QLineEdit(&window)), other(new QLineEdit(&window)) {
    auto* const layout = new QVBoxLayout(&window);
    layout->addWidget(edit);
    layout->addWidget(other);
    window.show();
    QApplication::setActiveWindow(&window);
    other->setFocus();
  }
  NKFormatterValidator* with(Ref<NSFormatter> formatter) {
    return new NKFormatterValidator(std::move(formatter), *edit);
  }

  QWidget window;
  QLineEdit *edit, *other;
};

Ref<NKPlainTextFormatter> plainText(std::int64_t maxLength) {
  auto formatter = make<NKPlainTextFormatter>();
  formatter->setMaxLength(maxLength);
  return formatter;
}

TEST_F(NKFormatterValidatorTest, HeaderExample) {
  const auto slip = norvik::test::payslipOf("Sian");
  auto* pay = new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), *edit);
  pay->setObjectValue(1234.5_dec);
  EXPECT_EQ(edit->text(), "1,234.50");
  int changes = 0;
  QObject::connect(pay, &NKFormatterValidator::valueChanged, [&changes] { ++changes; });
  nk_bind_toObject_withKeyPath_options(*pay, "value", *slip, "grossPay", nullptr);
  EXPECT_EQ(edit->text(), "0.00");
  edit->setFocus();
  edit->selectAll();
  QTest::keyClicks(edit, "20");
  const int changesBefore = changes;
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(changes, changesBefore + 1);
  EXPECT_EQ(slip->grossPay(), 20);
}

TEST_F(NKFormatterValidatorTest, AnAmountIsTypedReadAndShownInTheUsersFormat) {
  auto* pay = with(make<NKMonetaryTermDecimalNumberFormatter>());
  QSignalSpy changed(pay, &NKFormatterValidator::valueChanged);
  edit->setFocus();
  QTest::keyClicks(edit, "1234.5");
  EXPECT_EQ(pay->objectValue(), Value()) << "editing has not ended";
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(edit->text(), "1,234.50");
  EXPECT_EQ(to_string(pay->objectValue().as<Decimal>()), "1234.5");
  ASSERT_EQ(changed.size(), 1);
  EXPECT_EQ(changed[0][0].value<Decimal>(), 1234.5_dec);
}

TEST_F(NKFormatterValidatorTest, EachEditIsJudgedWithTheTextAndTheSelectionBeforeIt) {
  auto formatter = make<MarkFormatter>();
  with(formatter);
  edit->setFocus();
  QTest::keyClicks(edit, "abcd");
  EXPECT_EQ(formatter->seen, "abc {3, 0} -> abcd");
  QTest::keyClick(edit, Qt::Key_Left);
  QTest::keyClick(edit, Qt::Key_Left);
  QTest::keyClicks(edit, "e");
  EXPECT_EQ(formatter->seen, "abcd {2, 0} -> abecd") << "typing in the middle";
  edit->setSelection(1, 3);
  QTest::keyClicks(edit, "f");
  EXPECT_EQ(formatter->seen, "abecd {1, 3} -> afd") << "typing over a selection";
  QTest::keyClick(edit, Qt::Key_Backspace);
  EXPECT_EQ(formatter->seen, "afd {2, 0} -> ad");
  QApplication::clipboard()->setText("ghi");
  QTest::keyClick(edit, Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(formatter->seen, "ad {1, 0} -> aghid") << "pasting";
  EXPECT_EQ(edit->text(), "aghid");
  EXPECT_EQ(edit->cursorPosition(), 4);
  QTest::keyClick(edit, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(formatter->seen, "aghid {4, 0} -> ad") << "undo";
}

TEST_F(NKFormatterValidatorTest, ARefusedEditLeavesTextCaretAndSelectionAndSaysWhy) {
  auto* marks = with(make<MarkFormatter>());
  edit->setToolTip("A mark");
  edit->setFocus();
  QTest::keyClicks(edit, "abc");
  edit->setSelection(1, 1);
  QTest::keyClicks(edit, "x");
  EXPECT_EQ(edit->text(), "abc");
  EXPECT_EQ(edit->selectedText(), "b");
  EXPECT_EQ(marks->errorText(), "No x.");
  EXPECT_EQ(edit->toolTip(), "No x.");
  EXPECT_TRUE(edit->property("invalid").toBool());
  QTest::keyClicks(edit, "z");
  EXPECT_EQ(edit->text(), "azc");
  EXPECT_EQ(marks->errorText(), "");
  EXPECT_EQ(edit->toolTip(), "A mark");
  EXPECT_FALSE(edit->property("invalid").toBool());
}

TEST_F(NKFormatterValidatorTest, AnEditIsReplacedByTheFormattersTextWithItsSelection) {
  with(make<MarkFormatter>());
  edit->setFocus();
  QTest::keyClicks(edit, "ab");
  QTest::keyClick(edit, Qt::Key_Left);
  QTest::keyClicks(edit, "y");
  EXPECT_EQ(edit->text(), "a[yes]b");
  EXPECT_EQ(edit->selectedText(), "yes");
  QTest::keyClicks(edit, "no");
  EXPECT_EQ(edit->text(), "a[no]b");
  EXPECT_EQ(edit->cursorPosition(), 4);
}

TEST_F(NKFormatterValidatorTest, TooMuchIsCutToWhatFitsAtTheCaret) {
  with(plainText(5));
  edit->setFocus();
  QTest::keyClicks(edit, "abc");
  edit->setCursorPosition(1);
  QApplication::clipboard()->setText("12345");
  QTest::keyClick(edit, Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(edit->text(), "a12bc");
  EXPECT_EQ(edit->cursorPosition(), 3);
  QTest::keyClicks(edit, "9");
  EXPECT_EQ(edit->text(), "a12bc") << "nothing fits any more";
  EXPECT_EQ(edit->cursorPosition(), 3);
  QTest::keyClick(edit, Qt::Key_Backspace);
  EXPECT_EQ(edit->text(), "a1bc");
}

TEST_F(NKFormatterValidatorTest, CaseIsConvertedDuringTyping) {
  auto formatter = plainText(9);
  formatter->setUpperCase(true);
  with(formatter);
  edit->setFocus();
  QTest::keyClicks(edit, "qq12c");
  EXPECT_EQ(edit->text(), "QQ12C");
  edit->setCursorPosition(2);
  QTest::keyClicks(edit, "x");
  EXPECT_EQ(edit->text(), "QQX12C");
  EXPECT_EQ(edit->cursorPosition(), 3);
}

TEST_F(NKFormatterValidatorTest, ASortCodeIsPairedWhenEditingEnds) {
  auto* code = with(make<NKUKSortCodeFormatter>());
  edit->setFocus();
  QTest::keyClicks(edit, "123456");
  other->setFocus();
  EXPECT_EQ(edit->text(), "12-34-56");
  EXPECT_EQ(code->objectValue(), Value("12-34-56"));
}

TEST_F(NKFormatterValidatorTest, AnUnreadableTextStaysUntilItIsCorrectedOrEscaped) {
  auto* marks = with(make<MarkFormatter>());
  marks->setObjectValue("old");
  EXPECT_EQ(edit->text(), "<old>");
  edit->setFocus();
  EXPECT_EQ(edit->text(), "old") << "the editing text";
  QTest::keyClicks(edit, "?");
  other->setFocus();
  EXPECT_EQ(edit->text(), "old?");
  EXPECT_EQ(marks->errorText(), "A mark is not a question.");
  EXPECT_EQ(marks->objectValue(), Value("old"));
  edit->setFocus();
  EXPECT_EQ(edit->text(), "old?");
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "<old>");
  EXPECT_EQ(marks->errorText(), "");
}

TEST_F(NKFormatterValidatorTest, TheReasonOfARefusedEditEndsWithEscapeAndWhenEditingEnds) {
  auto* marks = with(make<MarkFormatter>());
  marks->setObjectValue("old");
  edit->setFocus();
  QTest::keyClicks(edit, "x");
  EXPECT_EQ(marks->errorText(), "No x.");
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "<old>");
  EXPECT_EQ(marks->errorText(), "");
  QTest::keyClicks(edit, "x");
  EXPECT_EQ(marks->errorText(), "No x.");
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(marks->errorText(), "") << "the value was shown unchanged";
  EXPECT_FALSE(edit->property("invalid").toBool());
}

TEST_F(NKFormatterValidatorTest, AValueWithMoreDigitsThanItsTextIsKeptUnlessItIsEdited) {
  auto* pay = with(make<NKMonetaryTermDecimalNumberFormatter>());
  QSignalSpy changed(pay, &NKFormatterValidator::valueChanged);
  pay->setObjectValue(1.23456789_dec);
  EXPECT_EQ(edit->text(), "1.2346");
  edit->setFocus();
  QTest::keyClick(edit, Qt::Key_Return);
  other->setFocus();
  EXPECT_EQ(to_string(pay->objectValue().as<Decimal>()), "1.23456789");
  EXPECT_EQ(changed.size(), 1);
}

TEST_F(NKFormatterValidatorTest, AValueMayBeRefusedWithoutABindingAndEscapeShowsTheOneBefore) {
  auto* marks = with(make<MarkFormatter>());
  marks->setObjectValue("old");
  QStringList passedOn;
  QObject::connect(marks, &NKFormatterValidator::valueChanged, [&](const QVariant& value) {
    passedOn += value.toString();
    if (value.toString().startsWith("bad")) marks->refuse("Bad.");
  });
  QSignalSpy ended(marks, &NKFormatterValidator::refusalEnded);
  edit->setFocus();
  edit->selectAll();
  QTest::keyClicks(edit, "bad");
  EXPECT_FALSE(marks->commit());
  EXPECT_EQ(marks->errorText(), "Bad.");
  EXPECT_EQ(edit->toolTip(), "Bad.");
  EXPECT_EQ(marks->objectValue(), Value("bad"));
  EXPECT_EQ(edit->text(), "<bad>");

  QTest::keyClicks(edit, "x");
  EXPECT_EQ(marks->errorText(), "No x.") << "a refused edit says why";
  EXPECT_EQ(ended.size(), 0) << "and leaves the refused text";
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(marks->errorText(), "Bad.");

  edit->selectAll();
  QTest::keyClicks(edit, "bad?");
  EXPECT_EQ(ended.size(), 2) << "when it was passed on again, and when it was edited";
  EXPECT_EQ(marks->errorText(), "");
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(marks->errorText(), "A mark is not a question.");
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "<old>");
  EXPECT_EQ(marks->objectValue(), Value("old"));
  EXPECT_EQ(marks->errorText(), "");
  EXPECT_TRUE(marks->commit());
  EXPECT_EQ(passedOn, QStringList({"bad", "bad", "old"}));
}

TEST_F(NKFormatterValidatorTest, ARefusalWithoutAReasonHasOneAndAnotherValueEndsIt) {
  auto* marks = with(make<MarkFormatter>());
  marks->setObjectValue("first");
  marks->refuse("");
  EXPECT_EQ(marks->errorText(), "The value is not accepted.");
  marks->setObjectValue("second");
  EXPECT_EQ(marks->errorText(), "");
  marks->refuse("Later.");
  marks->setObjectValue("second");
  EXPECT_EQ(marks->errorText(), "") << "the same value, which is accepted now";
  EXPECT_EQ(edit->text(), "<second>");
}

TEST_F(NKFormatterValidatorTest, AReceiverOfTheValueMayDestroyTheEdit) {
  auto window = std::make_unique<QLineEdit>();
  auto* marks = new NKFormatterValidator(make<MarkFormatter>(), *window);
  QTest::keyClicks(window.get(), "abc");
  QObject::connect(marks, &NKFormatterValidator::valueChanged, [&] { window.reset(); });
  EXPECT_TRUE(marks->commit());
  EXPECT_FALSE(window);
}

TEST_F(NKFormatterValidatorTest, EscapeIsLeftToTheWindowWhenThereIsNothingToEnd) {
  QDialog dialog;
  auto* const inner = new QLineEdit(&dialog);
  auto* marks = new NKFormatterValidator(make<MarkFormatter>(), *inner);
  marks->setObjectValue("old");
  dialog.show();
  inner->setFocus();
  QTest::keyClicks(inner, "x");
  QTest::keyClick(inner, Qt::Key_Escape);
  EXPECT_TRUE(dialog.isVisible()) << "it has ended the refused edit";
  QTest::keyClick(inner, Qt::Key_Escape);
  EXPECT_FALSE(dialog.isVisible());
}

TEST_F(NKFormatterValidatorTest, EscapeEndsAnEditBeforeAShortcutOfTheWindowGetsIt) {
  auto* marks = with(make<MarkFormatter>());
  marks->setObjectValue("old");
  int shortcuts = 0;
  QShortcut shortcut(Qt::Key_Escape, &window);
  QObject::connect(&shortcut, &QShortcut::activated, [&] { ++shortcuts; });
  edit->setFocus();
  QTest::keyClicks(edit, "abc");
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(edit->text(), "<old>");
  EXPECT_EQ(shortcuts, 0);
  QTest::keyClick(edit, Qt::Key_Escape);
  EXPECT_EQ(shortcuts, 1);
}

TEST_F(NKFormatterValidatorTest, ATextThatLacksLeadingDigitsOrTheSignCanOnlyBeReplacedAsAWhole) {
  auto cutting = make<NSNumberFormatter>();
  cutting->setFormat("#,##0.00");
  cutting->setMaximumIntegerDigits(4);
  auto* pay = with(cutting);
  const QString reason = "The text shows only a part of the value. It can only be replaced as a whole.";
  pay->setObjectValue(12345.67_dec);
  EXPECT_EQ(edit->text(), "2,345.67");
  EXPECT_EQ(edit->toolTip(), reason);
  EXPECT_TRUE(edit->property("invalid").toBool());

  edit->setFocus();
  QTest::keyClick(edit, Qt::Key_End);
  QTest::keyClick(edit, Qt::Key_Backspace);
  QTest::keyClicks(edit, "8");
  EXPECT_EQ(edit->text(), "2,345.67");
  QTest::keyClick(edit, Qt::Key_Return);
  other->setFocus();
  EXPECT_EQ(pay->objectValue(), Value(12345.67_dec));
  EXPECT_EQ(edit->toolTip(), reason);

  edit->setFocus();
  edit->selectAll();
  QTest::keyClicks(edit, "7");
  EXPECT_EQ(edit->toolTip(), "");
  QTest::keyClick(edit, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(edit->text(), "2,345.67") << "undone";
  EXPECT_EQ(edit->toolTip(), reason);
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(pay->objectValue(), Value(12345.67_dec));
  edit->selectAll();
  QTest::keyClicks(edit, "7");
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(pay->objectValue(), Value(7));
  EXPECT_EQ(edit->toolTip(), "");

  pay->setUpdatesContinuously(true);
  pay->setObjectValue(12345.67_dec);
  edit->selectAll();
  QTest::keyClicks(edit, "9");
  QTest::keyClick(edit, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(edit->text(), "2,345.67");
  EXPECT_EQ(pay->objectValue(), Value(9)) << "each edit becomes the value, but not the part";

  pay->setUpdatesContinuously(false);
  pay->setObjectValue(12345.67_dec);
  edit->setText("8");  // the program replaces the text as a whole
  EXPECT_EQ(edit->toolTip(), "");
  QTest::keyClicks(edit, "9");
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(pay->objectValue(), Value(89));
}

TEST_F(NKFormatterValidatorTest, RoundedTextsAreWhole) {
  auto formatter = make<NSNumberFormatter>();
  const struct {
    const char* format;
    int integerDigits;
    Decimal value;
    const char* text;
    bool isWhole;
  } rows[] = {
      {"0.00", 4, 1.23456789_dec, "1.23", true},
      {"0.00", 4, 0.004_dec, "0.00", true},
      {"0", 4, 0.6_dec, "1", true},
      {"0", 4, 1.5_dec, "2", true},
      {"0", 5, -9999.5_dec, "-10000", true},
      {"@@", 40, 149999_dec, "150000", true},
      {"0", 4, 10000_dec, "0", false},
      {"0", 4, 19999_dec, "9999", false},
      {"0", 4, -10001_dec, "-1", false},
      {"0;0", 4, -5_dec, "5", false},
      {"0%", 2, 1.25_dec, "25%", false},
  };
  for (const auto& row : rows) {
    formatter->setFormat(row.format);
    formatter->setMaximumIntegerDigits(row.integerDigits);
    QLineEdit line;
    auto* const field = new NKFormatterValidator(formatter, line);
    field->setObjectValue(row.value);
    EXPECT_EQ(line.text().toStdString(), row.text);
    EXPECT_EQ(field->errorText().isEmpty(), row.isWhole) << row.text;
  }
}

TEST_F(NKFormatterValidatorTest, AnUnchangedTextIsNotReadEvenIfItWouldBeRefused) {
  auto bounded = make<NSNumberFormatter>();
  bounded->setFormat("#,##0.00");
  bounded->setMaximum(9999);
  auto* pay = with(bounded);
  pay->setObjectValue(12345_dec);
  edit->setFocus();
  QTest::keyClick(edit, Qt::Key_Return);
  other->setFocus();
  EXPECT_EQ(edit->text(), "12,345.00");
  EXPECT_EQ(pay->errorText(), "");
  EXPECT_EQ(pay->objectValue(), Value(12345));
}

TEST_F(NKFormatterValidatorTest, ContinuousUpdatesKeepTheTextAsTyped) {
  auto* pay = with(make<NKMonetaryTermDecimalNumberFormatter>());
  pay->setUpdatesContinuously(true);
  edit->setFocus();
  QTest::keyClicks(edit, "1234");
  EXPECT_EQ(pay->objectValue(), Value(1234));
  EXPECT_EQ(edit->text(), "1234");
  other->setFocus();
  EXPECT_EQ(edit->text(), "1,234.00");
}

TEST_F(NKFormatterValidatorTest, TextsBeyondTheBasicPlaneCountUnits) {
  with(plainText(4));
  edit->setFocus();
  QApplication::clipboard()->setText(QString::fromUtf8("\U0001F4B7\U0001F4B7\U0001F4B7"));
  QTest::keyClick(edit, Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(edit->text(), QString::fromUtf8("\U0001F4B7\U0001F4B7"));
}

TEST_F(NKFormatterValidatorTest, WithoutAFormatterItRaisesAndTheEditOutlivesIt) {
  EXPECT_RAISES(with(nullptr), "NSInvalidArgumentException");
  delete with(make<MarkFormatter>());
  edit->setFocus();
  QTest::keyClicks(edit, "x");
  EXPECT_EQ(edit->text(), "x");
}

}  // namespace

// NorvikCore/qt/NKFormatterValidator.h - a line edit that holds a value, by one of the library's formatters.
//
//   auto* pay = new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), *edit);    // owned by the edit
//   pay->setObjectValue(1234.5_dec);                           // the edit shows "1,234.50"
//   QObject::connect(pay, &NKFormatterValidator::valueChanged, ...);
//   nk_bind_toObject_withKeyPath_options(*pay, "value", *slip, "grossPay", nullptr);      // NKPropertyBinding.h
//
// Each edit, by keys, pasting, dropping or an input method, is passed to isPartialStringValid() with the text and the
// selection before it. The edit is accepted, refused, or replaced by the formatter's text with the formatter's caret or
// selection. A replaced edit ends the edit's undo history, because Qt has no other way to replace a text.
//
// The text becomes the value when editing ends: Return, Enter, or another widget gets the focus. Then the edit shows
// the formatter's text of the value, and when it gets the focus again, the formatter's editing text. A text that the
// formatter cannot read stays for the user to correct. An unchanged text is not read, so that a value with more digits
// than its text is kept.
//
// A receiver of valueChanged() may refuse the value (refuse()), as NKPropertyBinding does for its model. The text stays
// for the user to correct, and each end of editing passes a refused value on again. Escape ends an edit and a refusal,
// and shows the last value that was not refused; a bound field shows the model's value. Without an edit and a refusal
// the key is left to the window.
//
// errorText() is about the text that the edit shows: the first of these reasons that holds.
// 1. The formatter refused the last edit, or could not read the text when editing ended.
// 2. The value was refused.
// 3. The text shows only a part of the value (see below).
// An edit that is accepted, another value and Escape end the first two; the end of editing ends a refused edit's
// reason. The edit's tool tip shows errorText() too, and its property "invalid" is true meanwhile, for style sheets:
// QLineEdit[invalid="true"] {...}.
//
// A text shows only a part of a number if it reads back as a number that differs by one or more, and by half of the
// number or more. A formatter with at most four integer digits shows 12345 as "2,345", for example. Rounding to whole
// numbers or finer never changes a number that much. Only an edit that replaces the whole text is accepted then.
//
// Ownership: retains the formatter. A child of the line edit, which it is installed in as its validator.
// Threads:   confined to the thread of the line edit.
// Errors:    an exception of the formatter passes to Qt's event loop, which ends the process.
#pragma once

#include "NorvikCore/platform/export.h"

#ifndef Q_MOC_RUN  // moc of Qt 6.4 cannot read <concepts>
#include "NorvikCore/platform/foundation/NSFormatter.h"
#include "NorvikCore/platform/object/Value.h"
#endif

#include <QValidator>
#include <QVariant>

QT_BEGIN_NAMESPACE
class QLineEdit;
QT_END_NAMESPACE

namespace norvik {

class NK_EXPORT NKFormatterValidator : public QValidator {
  Q_OBJECT
  /// objectValue() as QtConversions.h converts it.
  Q_PROPERTY(QVariant value READ value WRITE setValue NOTIFY valueChanged USER true)
  Q_PROPERTY(QString errorText READ errorText NOTIFY errorTextChanged)
  /// True: each edit that can be read becomes the value at once; the text stays as typed. Initially false.
  Q_PROPERTY(bool updatesContinuously READ updatesContinuously WRITE setUpdatesContinuously)

 public:
  /// An empty Ref raises NSInvalidArgumentException. A previous validator of the edit stays its owner's.
  NKFormatterValidator(Ref<NSFormatter> formatter, QLineEdit& edit);
  ~NKFormatterValidator() override;

  [[nodiscard]] const Ref<NSFormatter>& formatter() const noexcept { return formatter_; }
  [[nodiscard]] QLineEdit& edit() const noexcept { return edit_; }

  /// Absent until a value is set or typed.
  [[nodiscard]] const Value& objectValue() const noexcept { return value_; }
  /// Shows the value; a text that is being edited is replaced unless the value is equal. The empty text shows an absent
  /// value and one that the formatter cannot show. Ends a refusal.
  void setObjectValue(const Value& value);
  [[nodiscard]] QVariant value() const;
  void setValue(const QVariant& value);

  [[nodiscard]] QString errorText() const { return errorText_; }
  [[nodiscard]] bool updatesContinuously() const noexcept { return updatesContinuously_; }
  void setUpdatesContinuously(bool updates) noexcept { updatesContinuously_ = updates; }

  [[nodiscard]] State validate(QString& text, int& position) const override;
  void fixup(QString& text) const override;
  [[nodiscard]] bool eventFilter(QObject* watched, QEvent* event) override;

 public Q_SLOTS:
  /// Ends editing: the text becomes the value. False if the formatter cannot read it or the value is refused.
  bool commit();
  /// What Escape does.
  void cancel();
  /// The value cannot be used, because of `reason`. A receiver of valueChanged() calls it, at once or later.
  void refuse(const QString& reason);

 Q_SIGNALS:
  /// Also emitted when a refused value is passed on again.
  void valueChanged(const QVariant& value);
  void errorTextChanged(const QString& errorText) const;
  void cancelled();
  /// The reason of refuse() does not hold any more.
  void refusalEnded();

 private:
  friend class NKPropertyBinding;
  [[nodiscard]] bool read(Value& value, NSString* error) const;
  void replaceValue(const Value& value);
  void take(const Value& value);
  void accept();
  void show(const std::optional<NSString>& text);
  void showValue();
  void showEditingText();
  void noteText();
  void noteSelection();
  [[nodiscard]] bool showsPart() const;
  void setEditReason(const QString& reason) const;
  void setRefusal(const QString& reason);
  void updateErrorText() const;

  const Ref<NSFormatter> formatter_;
  QLineEdit& edit_;
  Value value_;
  Value acceptedValue_;  ///< while value_ is refused: the last one that was not
  /// The text and the selection before the edit that validate() checks.
  QString original_;
  NSRange originalSelection_{0, 0};
  mutable std::optional<QString> judged_;  ///< the text that validate() accepted or made, until the edit has it
  mutable NSRange replacementSelection_{0, 0};
  std::optional<QString> partialText_;  ///< the text that was shown last, if it shows only a part of the value
  mutable QString editReason_, errorText_;
  QString refusal_;           ///< why value_ was refused, until the text is edited
  bool isRefused_ = false;    ///< value_ was refused
  bool isRestoring_ = false;  ///< the accepted value is set again, which is no change of the user
  bool isEdited_ = false;     ///< the text was changed after it was shown
  bool isShowing_ = false;
  bool updatesContinuously_ = false;
};

}  // namespace norvik

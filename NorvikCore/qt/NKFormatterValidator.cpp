#include "NorvikCore/qt/NKFormatterValidator.h"

#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/qt/QtConversions.h"
#include "NorvikCore/qt/internal/ErrorMarks.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>

#include <algorithm>
#include <utility>

namespace norvik {
namespace {

Ref<NSFormatter> requiredFormatter(Ref<NSFormatter> formatter) {
  if (!formatter) NSException::raise(NSInvalidArgumentException, "NKFormatterValidator needs a formatter");
  return formatter;
}

}  // namespace

NKFormatterValidator::NKFormatterValidator(Ref<NSFormatter> formatter, QLineEdit& edit)
    : QValidator(&edit), formatter_(requiredFormatter(std::move(formatter))), edit_(edit) {
  noteText(edit.text());
  isEdited_ = false;
  noteSelection();
  edit.setValidator(this);
  edit.installEventFilter(this);
  connect(&edit, &QLineEdit::textChanged, this, &NKFormatterValidator::noteText);
  connect(&edit, &QLineEdit::selectionChanged, this, &NKFormatterValidator::noteSelection);
  connect(&edit, &QLineEdit::cursorPositionChanged, this, &NKFormatterValidator::noteSelection);
  connect(&edit, &QLineEdit::textEdited, this, [this] {
    Value typed;
    if (updatesContinuously_ && read(typed, nullptr)) take(typed);
  });
  connect(&edit, &QLineEdit::editingFinished, this, &NKFormatterValidator::commit);
}

NKFormatterValidator::~NKFormatterValidator() = default;

QVariant NKFormatterValidator::value() const { return nk_toQVariant(value_); }

void NKFormatterValidator::setValue(const QVariant& value) { setObjectValue(nk_toValue(value)); }

void NKFormatterValidator::setObjectValue(const Value& value) {
  const bool isEqual = value == value_;
  if (isEqual && isEdited_) return;
  value_ = value;
  setErrorText({});
  if (edit_.hasFocus() && !edit_.isReadOnly()) {
    showEditingText();
  } else {
    showValue();
  }
  if (!isEqual) Q_EMIT valueChanged(this->value());
}

QValidator::State NKFormatterValidator::validate(QString& text, int& position) const {
  const bool isEdit = text != original_ && text != judged_ && !isShowing_;
  if (isEdit) {
    const NSString asTyped = nk_toNSString(text);
    NSString proposed = asTyped, error;
    NSRange selection{static_cast<NSUInteger>(position), 0};
    if (formatter_->isPartialStringValid(proposed, selection, nk_toNSString(original_), originalSelection_, &error)) {
      setErrorText({});
      replacementSelection_ = {0, 0};
    } else {
      setErrorText(nk_toQString(error));
      const bool isReplaced = !proposed.isIdenticalTo(asTyped) || proposed.empty();
      const QString replacement = nk_toQString(proposed);
      // An edit that leaves the text as it was is refused, because Qt then keeps its undo history.
      if (!isReplaced || replacement == original_) return Invalid;
      const auto length = static_cast<NSUInteger>(replacement.size());
      selection.location = std::min(selection.location, length);
      selection.length = std::min(selection.length, length - selection.location);
      text = replacement;
      position = static_cast<int>(selection.location);
      replacementSelection_ = selection;
    }
    judged_ = text;
  }
  Value value;
  return formatter_->getObjectValue_forString_errorDescription(value, nk_toNSString(text)) ? Acceptable : Intermediate;
}

void NKFormatterValidator::fixup(QString& text) const {
  Value value;
  NSString error;
  // Called at the end of editing, for a text that is not acceptable: it stays for the user to correct.
  if (!formatter_->getObjectValue_forString_errorDescription(value, nk_toNSString(text), &error)) {
    setErrorText(nk_toQString(error));
  }
}

bool NKFormatterValidator::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress:
      if (isEdited_ && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        cancel();
        return true;
      }
      [[fallthrough]];
    case QEvent::InputMethod:  // the signals may have been blocked
      original_ = edit_.text();
      noteSelection();
      break;
    case QEvent::FocusIn:
      if (!isEdited_ && errorText_.isEmpty() && !edit_.isReadOnly()) showEditingText();
      break;
    default:
      break;
  }
  return QValidator::eventFilter(watched, event);
}

bool NKFormatterValidator::commit() {
  if (isEdited_) {
    Value typed;
    NSString error;
    if (!read(typed, &error)) {
      setErrorText(nk_toQString(error));
      return false;
    }
    setErrorText({});
    isEdited_ = false;
    take(typed);
    if (isEdited_) return true;  // a receiver of the signal has set another text
  }
  showValue();
  return true;
}

void NKFormatterValidator::cancel() {
  setErrorText({});
  showValue();
  Q_EMIT cancelled();
}

bool NKFormatterValidator::read(Value& value, NSString* error) const {
  return formatter_->getObjectValue_forString_errorDescription(value, nk_toNSString(edit_.text()), error);
}

bool NKFormatterValidator::take(const Value& value) {
  if (value == value_) return false;
  value_ = value;
  Q_EMIT valueChanged(this->value());
  return true;
}

void NKFormatterValidator::showValue() {
  show(value_.isAbsent() || value_.isNull() ? std::nullopt : formatter_->stringForObjectValue(value_));
}

void NKFormatterValidator::showEditingText() {
  show(value_.isAbsent() || value_.isNull() ? std::nullopt : formatter_->editingStringForObjectValue(value_));
}

void NKFormatterValidator::show(const std::optional<NSString>& text) {
  const QString shown = text ? nk_toQString(*text) : QString();
  if (shown != edit_.text()) {
    const QScopedValueRollback showing(isShowing_, true);
    edit_.setText(shown);
  }
  isEdited_ = false;
}

void NKFormatterValidator::noteText(const QString& text) {
  original_ = text;
  const bool wasJudged = judged_ == text;
  judged_.reset();
  if (!isShowing_) isEdited_ = true;
  if (wasJudged && replacementSelection_.length > 0) {
    edit_.setSelection(static_cast<int>(replacementSelection_.location),
                       static_cast<int>(replacementSelection_.length));
  }
}

void NKFormatterValidator::noteSelection() {
  if (edit_.text() != original_) return;  // Qt undoes an edit, and has moved the caret before it asks the validator
  originalSelection_ = edit_.hasSelectedText() ? NSRange{static_cast<NSUInteger>(edit_.selectionStart()),
                                                         static_cast<NSUInteger>(edit_.selectionLength())}
                                               : NSRange{static_cast<NSUInteger>(edit_.cursorPosition()), 0};
}

void NKFormatterValidator::setErrorText(const QString& text) const {
  if (text == errorText_) return;
  errorText_ = text;
  detail::markError(edit_, *this, text);
  Q_EMIT errorTextChanged(text);
}

}  // namespace norvik

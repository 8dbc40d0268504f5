#include "NorvikCore/qt/NKFormatterValidator.h"

#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/qt/QtConversions.h"
#include "NorvikCore/qt/internal/ErrorMarks.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>
#include <utility>

namespace norvik {
namespace {

Ref<NSFormatter> requiredFormatter(Ref<NSFormatter> formatter) {
  if (!formatter) NSException::raise(NSInvalidArgumentException, "NKFormatterValidator needs a formatter");
  return formatter;
}

QString partReason() {
  return QStringLiteral("The text shows only a part of the value. It can only be replaced as a whole.");
}

/// Whether the text of a number has lost leading digits or the sign. The header says how that differs from rounding.
bool showsPartOf(const Value& value, const NSString& text, const NSFormatter& formatter) {
  Value read;
  if (!value.isNumber() || !formatter.getObjectValue_forString_errorDescription(read, text) || !read.isNumber()) {
    return false;
  }
  const double number = value.as<double>();
  const double difference = std::abs(number - read.as<double>());
  return difference >= 1 && difference >= std::abs(number) / 2;
}

}  // namespace

NKFormatterValidator::NKFormatterValidator(Ref<NSFormatter> formatter, QLineEdit& edit)
    : QValidator(&edit), formatter_(requiredFormatter(std::move(formatter))), edit_(edit) {
  noteText();
  isEdited_ = false;
  noteSelection();
  edit.setValidator(this);
  edit.installEventFilter(this);
  connect(&edit, &QLineEdit::textChanged, this, &NKFormatterValidator::noteText);
  connect(&edit, &QLineEdit::selectionChanged, this, &NKFormatterValidator::noteSelection);
  connect(&edit, &QLineEdit::cursorPositionChanged, this, &NKFormatterValidator::noteSelection);
  connect(&edit, &QLineEdit::textEdited, this, [this] {
    if (!updatesContinuously_) return;
    noteText();  // this signal is emitted before textChanged
    Value typed;
    if (isEdited_ && read(typed, nullptr)) take(typed);
  });
  connect(&edit, &QLineEdit::editingFinished, this, &NKFormatterValidator::commit);
}

NKFormatterValidator::~NKFormatterValidator() = default;

QVariant NKFormatterValidator::value() const { return nk_toQVariant(value_); }

void NKFormatterValidator::setValue(const QVariant& value) { setObjectValue(nk_toValue(value)); }

void NKFormatterValidator::setObjectValue(const Value& value) {
  const bool isEqual = value == value_;
  if (isEqual && isEdited_) return accept();
  replaceValue(value);
  setEditReason({});
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
    // A text that the program sets is not modified, and replaces the whole text.
    if (showsPart() && edit_.isModified() && originalSelection_.length < static_cast<NSUInteger>(original_.size())) {
      setEditReason(partReason());
      return Invalid;
    }
    const NSString asTyped = nk_toNSString(text);
    NSString proposed = asTyped, error;
    NSRange selection{static_cast<NSUInteger>(position), 0};
    if (formatter_->isPartialStringValid(proposed, selection, nk_toNSString(original_), originalSelection_, &error)) {
      setEditReason({});
      replacementSelection_ = {0, 0};
    } else {
      setEditReason(nk_toQString(error));
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
  if (isEdited_ && !formatter_->getObjectValue_forString_errorDescription(value, nk_toNSString(text), &error)) {
    setEditReason(nk_toQString(error));
  }
}

bool NKFormatterValidator::eventFilter(QObject* watched, QEvent* event) {
  const auto isEscape = [&] { return static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape; };
  const bool hasSomethingToEnd = isEdited_ || isRefused_ || !editReason_.isEmpty();
  switch (event->type()) {
    case QEvent::ShortcutOverride:  // accepted: the key is no shortcut of the window then
      if (!hasSomethingToEnd || !isEscape()) break;
      event->accept();
      return true;
    case QEvent::KeyPress:
      if (hasSomethingToEnd && isEscape()) {
        cancel();
        return true;
      }
      [[fallthrough]];
    case QEvent::InputMethod:  // the signals may have been blocked
      original_ = edit_.text();
      noteSelection();
      break;
    case QEvent::FocusIn:
      if (!isEdited_ && !edit_.isReadOnly()) showEditingText();
      break;
    default:
      break;
  }
  return QValidator::eventFilter(watched, event);
}

bool NKFormatterValidator::commit() {
  Value typed = value_;
  NSString error;
  if (isEdited_ && !read(typed, &error)) {
    setEditReason(nk_toQString(error));
    return false;
  }
  setEditReason({});
  isEdited_ = false;
  const QPointer<NKFormatterValidator> self(this);
  take(typed);
  if (!self) return true;
  if (!isEdited_) showValue();  // otherwise a receiver of the signal has set another text
  return !isRefused_;
}

void NKFormatterValidator::cancel() {
  const QPointer<NKFormatterValidator> self(this);
  setEditReason({});
  if (isRefused_) {
    isRestoring_ = true;
    setObjectValue(Value(acceptedValue_));
    if (!self) return;
    isRestoring_ = false;
  }
  showValue();
  Q_EMIT cancelled();
}

void NKFormatterValidator::refuse(const QString& reason) {
  isRefused_ = true;
  setRefusal(reason.isEmpty() ? QStringLiteral("The value is not accepted.") : reason);
}

bool NKFormatterValidator::read(Value& value, NSString* error) const {
  return formatter_->getObjectValue_forString_errorDescription(value, nk_toNSString(edit_.text()), error);
}

void NKFormatterValidator::replaceValue(const Value& value) {
  if (!isRefused_) acceptedValue_ = value_;
  value_ = value;
  accept();
}

void NKFormatterValidator::take(const Value& value) {
  if (value == value_ && !isRefused_) return;
  replaceValue(value);
  Q_EMIT valueChanged(this->value());
}

void NKFormatterValidator::accept() {
  isRefused_ = false;
  setRefusal({});
}

void NKFormatterValidator::showValue() {
  show(value_.isAbsent() || value_.isNull() ? std::nullopt : formatter_->stringForObjectValue(value_));
}

void NKFormatterValidator::showEditingText() {
  show(value_.isAbsent() || value_.isNull() ? std::nullopt : formatter_->editingStringForObjectValue(value_));
}

void NKFormatterValidator::show(const std::optional<NSString>& text) {
  const QString shown = text ? nk_toQString(*text) : QString();
  partialText_.reset();
  if (text && showsPartOf(value_, *text, *formatter_)) partialText_ = shown;
  if (shown != edit_.text()) {
    const QScopedValueRollback showing(isShowing_, true);
    edit_.setText(shown);
  }
  isEdited_ = false;
  updateErrorText();
}

void NKFormatterValidator::noteText() {
  const QString text = edit_.text();
  const bool wasJudged = judged_ == text;
  judged_.reset();
  if (text != std::exchange(original_, text) && !isShowing_) {
    isEdited_ = text != partialText_;  // the edits may have been undone
    setRefusal({});
    updateErrorText();
  }
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

bool NKFormatterValidator::showsPart() const { return original_ == partialText_; }

void NKFormatterValidator::setEditReason(const QString& reason) const {
  editReason_ = reason;
  updateErrorText();
}

void NKFormatterValidator::setRefusal(const QString& reason) {
  if (reason == refusal_) return;
  refusal_ = reason;
  updateErrorText();
  if (reason.isEmpty()) Q_EMIT refusalEnded();
}

void NKFormatterValidator::updateErrorText() const {
  const QString text = !editReason_.isEmpty() ? editReason_
                       : !refusal_.isEmpty()  ? refusal_
                       : showsPart()          ? partReason()
                                              : QString();
  if (text == errorText_) return;
  errorText_ = text;
  detail::markError(edit_, *this, text);
  Q_EMIT errorTextChanged(text);
}

}  // namespace norvik

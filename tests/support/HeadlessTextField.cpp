#include "tests/support/HeadlessTextField.h"

#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"

namespace norvik::test {

using namespace norvik;

void HeadlessTextField::setValue(const Value& value) {
  willChangeValueForKey("value");
  value_ = value;
  didChangeValueForKey("value");
  if (!keepsText_) show();
}

void HeadlessTextField::show() {
  if (value_.isAbsent()) {
    text_ = NSString();
  } else {
    text_ = formatter() ? formatter()->stringForObjectValue(value_).value_or(NSString()) : value_.description();
  }
  selection_ = {text_.length(), 0};
}

bool HeadlessTextField::type(const NSString& characters) {
  bool isPlain = true;
  for (NSUInteger i = 0; i < characters.length(); ++i) {
    if (!edit(characters.substringWithRange({i, 1}))) isPlain = false;
  }
  return isPlain;
}

bool HeadlessTextField::edit(const NSString& inserted) {
  if (!editable()) return false;
  const NSString proposed = text_.substringToIndex(selection_.location) + inserted +
                            text_.substringFromIndex(selection_.location + selection_.length);
  const NSRange caret{selection_.location + inserted.length(), 0};
  NSString accepted = proposed;
  NSRange selection = caret;
  const bool isAccepted =
      !formatter() || formatter()->isPartialStringValid(accepted, selection, text_, selection_, &whyUnreadable_);
  const bool isReplaced = !accepted.isIdenticalTo(proposed) || accepted.empty();
  if (!isAccepted && !isReplaced) return false;
  text_ = accepted;
  selection_ = selection;
  const auto info = infoForBinding(*this, NSValueBinding);
  const Value update = info ? info->valueForKeyPath("NSOptions.NSContinuouslyUpdatesValue") : Value();
  if (!update.isAbsent() && update.as<bool>()) push(true);
  return isAccepted;
}

bool HeadlessTextField::commit() {
  if (!push(false)) return false;
  show();
  return true;
}

bool HeadlessTextField::push(bool keepsText) {
  error_ = nullptr;
  whyUnreadable_ = NSString();
  Value read = text_;
  if (formatter() && !formatter()->getObjectValue_forString_errorDescription(read, text_, &whyUnreadable_))
    return false;
  if (!infoForBinding(*this, NSValueBinding)) {
    value_ = read;
    return true;
  }
  keepsText_ = true;
  const bool isTaken = nk_updateBoundValue(*this, read, &error_);
  keepsText_ = false;
  return isTaken || (keepsText && !error_);
}

}  // namespace norvik::test

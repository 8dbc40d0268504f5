// tests/support/HeadlessTextField.h - a text field without a screen. It has a value, the text that shows the value, and
// a simulated user who types.
//
//   auto field = make<HeadlessTextField>();
//   field->setFormatter(formatter);
//   nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *slip, "grossPay", options);
//   field->type("1250.5");            // each character goes through the formatter's partial-string check
//   field->commit();                  // the text becomes a value, which goes to the slip through the binding
//   field->text();                    // "1,250.50"
#pragma once

#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/foundation/NSFormatter.h"

namespace norvik::test {

class HeadlessTextField : public norvik::NSObject {
  NK_OBJECT(HeadlessTextField, NSObject)
  NK_COMPUTED_PROPERTY_WITH_SETTER(norvik::Value, value, setValue)
  NK_PROPERTY(norvik::Ref<norvik::NSFormatter>, formatter, setFormatter)
  NK_PROPERTY(bool, editable, setEditable)
  NK_PROPERTY(bool, enabled, setEnabled)

 public:
  [[nodiscard]] const norvik::Value& value() const { return value_; }
  /// Shows the value instead of the typed text.
  void setValue(const norvik::Value& value);

  [[nodiscard]] const norvik::NSString& text() const { return text_; }
  void select(norvik::NSRange selection) { selection_ = selection; }
  /// Types the characters one after the other over the selection. Returns false if an edit was refused or changed. A
  /// field that is not editable refuses all edits.
  bool type(const norvik::NSString& characters);
  /// Ends editing. Returns false if the formatter cannot read the text or the model refuses the value. The text then
  /// stays for the user to correct, and error() or whyUnreadable() gives the reason.
  bool commit();
  /// Shows the text of the value again.
  void cancel() { show(); }

  [[nodiscard]] const norvik::Ref<norvik::NSError>& error() const { return error_; }
  [[nodiscard]] const norvik::NSString& whyUnreadable() const { return whyUnreadable_; }

 private:
  bool edit(const norvik::NSString& inserted);
  bool push(bool keepsText);
  void show();

  norvik::Value value_;
  norvik::NSString text_, whyUnreadable_;
  norvik::NSRange selection_{0, 0};
  norvik::Ref<norvik::NSError> error_;
  bool keepsText_ = false;  ///< while the user types, a value that the model has changed does not replace the text
};

}  // namespace norvik::test

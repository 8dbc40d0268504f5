// NorvikCore/qt/NKPropertyBinding.h - keeps a property of a QObject and a key path of a model equal.
//
//   nk_bind_toObject_withKeyPath_options(*edit, "text", *slip, "employee.name", nullptr);
//   nk_bind_toObject_withKeyPath_options(*payField, "value", *slip, "grossPay",          // an NKFormatterValidator
//                                        NSDictionary::dictionaryWith({{NKBind, "validate"}}));
//   nk_bind_toObject_withKeyPath_options_block_reverseBlock(
//       *total, "text", *totals, "pay", nullptr, [](const Value& pay) -> Value { return inPounds(pay); }, nullptr);
//
// From the model: the property is set when it differs, at once if the change is made on the receiver's thread. A change
// on another thread reaches the receiver through its event loop; of several changes that wait, only the last one does.
// QtConversions.h says which value becomes which type. Decimals never become doubles: bind a field with a formatter,
// not a QDoubleSpinBox.
//
// To the model: each time the property's NOTIFY signal is emitted, the property is transformed in reverse, validated if
// the options ask for it ("validate"), and set unless it is equal. Then the receiver shows the value that the model has
// after that. A property without such a signal, and a transformer without a reverse, make the binding one-way. A value
// that a binding sets is not carried back.
//
// A value that the model refuses stays in the widget for the user to correct. errorText() has the reason: the error of
// the validation, or the reason of an NSException that the model raised. The next accepted value, a change of the model
// and refresh() end that state.
// - An NKFormatterValidator shows the reason by the rules of its header: an edit that it accepts ends the reason, and
//   Escape shows the model's value. Bind its property "value", not the text of its edit.
// - The tool tip of any other widget shows the reason, and its property "invalid" is true meanwhile, for style sheets.
//   If several bindings of a widget have a reason, it shows the newest. A QLineEdit that is bound by its "text" passes
//   each edit on, so that the model has the last text that it accepted; Escape has no effect there.
//
// Options:   those of NSObject+Norvik_Binding.h. "update" sets the receiver's property "updatesContinuously" if it has
//            one; "readOnly" has no effect, because the binding never disables its receiver.
// Ownership: the binding is a child of the receiver and ends with it; the model is not retained. When the model is
//            destroyed, the receiver keeps its value, and later changes of the receiver are not passed on.
// Threads:   bind and unbind on the receiver's thread; another one raises NSInvalidArgumentException. The model is read
//            and set on that thread. Models that other threads change must be safe for that (NK_ATOMIC_PROPERTY).
// Callbacks: the model's setters, validation and observers may unbind, and destroy the receiver.
#pragma once

#include "NorvikCore/platform/export.h"

#ifndef Q_MOC_RUN  // moc of Qt 6.4 cannot read <concepts>
#include "NorvikCore/Categories/NKBlockValueTransformer.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSError.h"
#endif

#include <QByteArray>
#include <QMetaProperty>
#include <QObject>
#include <QPointer>
#include <QString>

namespace norvik {

namespace detail {
class BoundProperty;
}

class NKFormatterValidator;
class NKPropertyBinding;
/// Binds the property and shows the model's value; an existing binding of the property is ended first. The result is
/// valid until the receiver is destroyed or the property is bound again or unbound. An unknown or read-only property,
/// an unknown key path and a value that the property cannot hold raise, and leave the property unbound.
NK_EXPORT NKPropertyBinding& nk_bind_toObject_withKeyPath_options(QObject& receiver, const char* property,
                                                                  NSObject& object, const NSString& keyPath,
                                                                  const Ref<NSDictionary>& options);
/// The same with closures that transform the value, as in NSObject+Norvik_Binding.h. If only `block` is given, the
/// binding is one-way.
NK_EXPORT NKPropertyBinding& nk_bind_toObject_withKeyPath_options_block_reverseBlock(
    QObject& receiver, const char* property, NSObject& object, const NSString& keyPath,
    const Ref<NSDictionary>& options, const NKTransformBlock& block, const NKTransformBlock& reverseBlock);
/// Null if the property is not bound.
[[nodiscard]] NK_EXPORT NKPropertyBinding* nk_bindingOfProperty(const QObject& receiver, const char* property);
/// The receiver keeps its present value. Does nothing if the property is not bound.
NK_EXPORT void unbind(QObject& receiver, const char* property);

class NK_EXPORT NKPropertyBinding : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString errorText READ errorText NOTIFY errorTextChanged)

 public:
  ~NKPropertyBinding() override;

  [[nodiscard]] QObject& receiver() const noexcept { return receiver_; }
  [[nodiscard]] QByteArray property() const { return property_.name(); }
  /// Why the model refused the receiver's value; empty if it did not.
  [[nodiscard]] QString errorText() const { return errorText_; }
  /// The error of the validation; an empty Ref if there is none.
  [[nodiscard]] const Ref<NSError>& error() const noexcept { return error_; }

 public Q_SLOTS:
  /// Shows the model's value again. Does nothing if the model was destroyed.
  void refresh();
  /// Passes the receiver's value to the model, as its signal does. False if the model refused it or was destroyed.
  bool commit();

 Q_SIGNALS:
  void errorTextChanged(const QString& errorText);

 private:
  friend class detail::BoundProperty;
  friend NKPropertyBinding& nk_bind_toObject_withKeyPath_options(QObject&, const char*, NSObject&, const NSString&,
                                                                 const Ref<NSDictionary>&);
  friend void unbind(QObject&, const char*);
  NKPropertyBinding(QObject& receiver, const QMetaProperty& property);
  void bind(NSObject& object, const NSString& keyPath, const Ref<NSDictionary>& options);
  void show(const Value& value);
  void showSafely(const Value& value);
  void setErrorText(const QString& text);

  QObject& receiver_;
  const QMetaProperty property_;
  const QPointer<NKFormatterValidator> field_;  ///< the receiver, if the property is its value
  Ref<detail::BoundProperty> bound_;
  QString errorText_;
  Ref<NSError> error_;
  bool isShowing_ = false;
};

}  // namespace norvik

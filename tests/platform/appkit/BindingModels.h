// tests/platform/appkit/BindingModels.h - a small payslip and a small view for the tests of bindings.
#pragma once

#include "NorvikCore/platform/appkit/KeyValueBinding.h"
#include "NorvikCore/platform/appkit/NSValueTransformer.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

#include <functional>
#include <optional>

namespace norvik::test {

using namespace norvik;

class BoundEmployee : public NSObject {
  NK_OBJECT(BoundEmployee, NSObject)
  NK_PROPERTY(std::optional<NSString>, name, setName)
};

class BoundSlip : public NSObject {
  NK_OBJECT(BoundSlip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(Decimal, tax, setTax)
  NK_COMPUTED_PROPERTY(Decimal, netPay)
  NK_AFFECTED_BY(netPay, grossPay)
  NK_AFFECTED_BY(netPay, tax)
  NK_PROPERTY(Ref<BoundEmployee>, employee, setEmployee)
  NK_PROPERTY(Value, note, setNote)

 public:
  [[nodiscard]] Decimal netPay() const { return grossPay() - tax(); }

  /// Refuses negative values; reduces values above 10,000 to that.
  bool validateGrossPay(Value* value, Ref<NSError>* error) {
    if (value->as<Decimal>() < Decimal(0)) {
      if (error) *error = NSError::errorWithDomain("Pay", 1);
      return false;
    }
    if (value->as<Decimal>() > Decimal(10000)) *value = Decimal(10000);
    return true;
  }
  NK_METHOD_AS(validateGrossPay, "validateGrossPay:error:")
};

class BoundField : public NSObject {
  NK_OBJECT(BoundField, NSObject)
  NK_COMPUTED_PROPERTY_WITH_SETTER(Value, value, setValue)
  NK_PROPERTY(bool, editable, setEditable)
  NK_PROPERTY(bool, enabled, setEnabled)

 public:
  [[nodiscard]] const Value& value() const { return shown_; }
  void setValue(const Value& value) {
    ++sets;
    willChangeValueForKey("value");
    shown_ = adjust ? adjust(value) : value;
    didChangeValueForKey("value");
  }
  int sets = 0;
  std::function<Value(const Value&)> adjust;

 private:
  Value shown_;
};

/// Calls a function at each change that it is notified of.
class CallingObserver : public NSObject {
 public:
  explicit CallingObserver(std::function<void()> call) : call_(std::move(call)) {}
  void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange&, void*) override {
    ++calls;
    if (call_) call_();
  }
  int calls = 0;

 private:
  std::function<void()> call_;
};

/// Pennies in the model, pounds in the view.
class PenniesTransformer : public NSValueTransformer {
  NK_OBJECT(PenniesTransformer, NSValueTransformer)
  static bool allowsReverseTransformation() { return true; }
  NK_CLASS_METHOD(allowsReverseTransformation)
  Value transformedValue(const Value& pennies) override { return pennies.as<Decimal>() / Decimal(100); }
  Value reverseTransformedValue(const Value& pounds) override { return pounds.as<Decimal>() * Decimal(100); }
};

inline void bind(NSObject& receiver, NSObject& object, const NSString& keyPath,
                 const Ref<NSDictionary>& options = nullptr) {
  bind_toObject_withKeyPath_options(receiver, NSValueBinding, object, keyPath, options);
}

}  // namespace norvik::test

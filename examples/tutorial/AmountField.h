// examples/tutorial/AmountField.h - docs/tutorial.md: a field for an amount.
#pragma once

#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/platform/foundation/NSLocale.h"

namespace payroll {

using namespace norvik;

/// A field without a window: text() is what it shows, type() is what its user does.
class AmountField : public NSObject {
  NK_OBJECT(AmountField, NSObject)
  NK_PROPERTY(Value, value, setValue)  // the binding sets it and follows it

  AmountField() { formatter_->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB")); }

  NSString text() const { return formatter_->stringForObjectValue(value()).value_or(""); }

  /// False, with the reason, if the text is no amount.
  bool type(const NSString& text, NSString& reason) {
    Value amount;
    if (!formatter_->getObjectValue_forString_errorDescription(amount, text, &reason)) return false;
    return nk_updateBoundValue(*this, amount.isAbsent() ? Value(0) : amount);  // an emptied field means 0
  }

 private:
  Ref<NKMonetaryTermDecimalNumberFormatter> formatter_ = make<NKMonetaryTermDecimalNumberFormatter>();
};

}  // namespace payroll

// examples/tutorial/PayslipText.h - docs/tutorial.md: a payslip as a text with styles.
#pragma once

#include "Payslip.h"

#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/markup/MRKEscapedStringForString.h"
#include "NorvikCore/markup/MRKTaggedString.h"
#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/values/NSException.h"

namespace payroll {

using namespace norvik;

inline Ref<NSAttributedString> payslipText(const Payslip& slip) {
  auto styles = MRKTaggedStringOptions::optionsWithBaseAttributes(
      NSDictionary::dictionaryWithObject(NSFont::systemFontOfSize(12), NSFontAttributeName));
  styles->setAttributes(NSDictionary::dictionaryWithObject(NSFont::boldSystemFontOfSize(12), NSFontAttributeName), "b");

  auto text =
      MRKTaggedString::stringWithFormat("%@: pay %@, pension %@, <b>net pay %@</b>",
                                        MRKEscapedStringForString(slip.name()), nk_currencyStyleString(slip.grossPay()),
                                        nk_currencyStyleString(slip.pension()), nk_currencyStyleString(slip.netPay()));
  Ref<NSError> error;
  Ref<NSAttributedString> styled = text->attributedStringWithOptions(*styles, &error);
  if (!styled)
    NSException::raise(NSInvalidArgumentException, error->userInfo()->objectForKey("developerError").description());
  return styled;
}

}  // namespace payroll

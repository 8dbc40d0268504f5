#include "NorvikCore/Categories/NSLocale+Norvik.h"

#include "NorvikCore/formatters/internal/PayrollCalendars.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSMutableString.h"

namespace norvik {

const Ref<NSLocale>& nk_defaultLocale() { return detail::defaultLocale(); }

const Ref<NSLocale>& nk_ukLocale() { return detail::ukLocale(); }

Ref<NSArray> nk_allKeys() {
  return NSArray::arrayWith({NSLocaleIdentifier, NSLocaleLanguageCode, NSLocaleCountryCode, NSLocaleScriptCode,
                             NSLocaleVariantCode, NSLocaleExemplarCharacterSet, NSLocaleCalendar,
                             NSLocaleCollationIdentifier, NSLocaleUsesMetricSystem, NSLocaleMeasurementSystem,
                             NSLocaleDecimalSeparator, NSLocaleGroupingSeparator, NSLocaleCurrencySymbol,
                             NSLocaleCurrencyCode, NSLocaleCollatorIdentifier, NSLocaleQuotationBeginDelimiterKey,
                             NSLocaleQuotationEndDelimiterKey, NSLocaleAlternateQuotationBeginDelimiterKey,
                             NSLocaleAlternateQuotationEndDelimiterKey});
}

NSString nk_description(const NSLocale& locale) {
  NSMutableString text;
  const Ref<NSArray> keys = nk_allKeys();
  for (const Value& key : *keys) {
    text.appendString(stringWithFormat("%@ : %@\n", key, locale.objectForKey(key.as<NSString>())));
  }
  return text.string();
}

}  // namespace norvik

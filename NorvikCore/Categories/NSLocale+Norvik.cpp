#include "NorvikCore/Categories/NSLocale+Norvik.h"

#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSMutableString.h"

namespace norvik {

const Ref<NSLocale>& nk_defaultLocale() {
  static const auto& locale = *new Ref<NSLocale>(NSLocale::localeWithLocaleIdentifier("en_GB"));
  return locale;
}

const Ref<NSLocale>& nk_ukLocale() {
  static const auto& locale = *new Ref<NSLocale>(NSLocale::localeWithLocaleIdentifier("en_GB"));
  return locale;
}

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

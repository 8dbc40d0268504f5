#include "NorvikCore/platform/foundation/NSLocale.h"

#include "NorvikCore/platform/foundation/NSCalendar.h"
#include "NorvikCore/platform/foundation/internal/IcuText.h"
#include "NorvikCore/platform/foundation/internal/LocaleData.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <unicode/dcfmtsym.h>
#include <unicode/ucurr.h>
#include <unicode/ulocdata.h>
#include <unicode/uniset.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace norvik {

constinit const NSString NSLocaleIdentifier = "NSLocaleIdentifier";
constinit const NSString NSLocaleLanguageCode = "NSLocaleLanguageCode";
constinit const NSString NSLocaleCountryCode = "NSLocaleCountryCode";
constinit const NSString NSLocaleScriptCode = "NSLocaleScriptCode";
constinit const NSString NSLocaleVariantCode = "NSLocaleVariantCode";
constinit const NSString NSLocaleExemplarCharacterSet = "NSLocaleExemplarCharacterSet";
constinit const NSString NSLocaleCalendar = "NSLocaleCalendar";
constinit const NSString NSLocaleCollationIdentifier = "NSLocaleCollationIdentifier";
constinit const NSString NSLocaleUsesMetricSystem = "NSLocaleUsesMetricSystem";
constinit const NSString NSLocaleMeasurementSystem = "NSLocaleMeasurementSystem";
constinit const NSString NSLocaleDecimalSeparator = "NSLocaleDecimalSeparator";
constinit const NSString NSLocaleGroupingSeparator = "NSLocaleGroupingSeparator";
constinit const NSString NSLocaleCurrencySymbol = "NSLocaleCurrencySymbol";
constinit const NSString NSLocaleCurrencyCode = "NSLocaleCurrencyCode";
constinit const NSString NSLocaleCollatorIdentifier = "NSLocaleCollatorIdentifier";
constinit const NSString NSLocaleQuotationBeginDelimiterKey = "NSLocaleQuotationBeginDelimiterKey";
constinit const NSString NSLocaleQuotationEndDelimiterKey = "NSLocaleQuotationEndDelimiterKey";
constinit const NSString NSLocaleAlternateQuotationBeginDelimiterKey = "NSLocaleAlternateQuotationBeginDelimiterKey";
constinit const NSString NSLocaleAlternateQuotationEndDelimiterKey = "NSLocaleAlternateQuotationEndDelimiterKey";

namespace detail {

bool LocaleData::writesAsciiDigits() const {
  int known = asciiDigits_.load(std::memory_order_relaxed);
  if (known < 0) {
    const kernel::ForkHold hold;
    UErrorCode status = U_ZERO_ERROR;
    const icu::DecimalFormatSymbols symbols(locale, status);
    const auto& zero = symbols.getConstSymbol(icu::DecimalFormatSymbols::kZeroDigitSymbol);
    known = U_SUCCESS(status) && zero == icu::UnicodeString(u'0');
    asciiDigits_.store(known, std::memory_order_relaxed);
  }
  return known != 0;
}

/// The modifiers in the system's locale names that mean a script, and the subtags of identifiers for them.
constexpr std::pair<std::string_view, const char*> scripts[] = {
    {"@latin", "_Latn"}, {"@cyrillic", "_Cyrl"}, {"@devanagari", "_Deva"}};

std::string localeIdentifierFromEnvironment(const char* all, const char* time, const char* language) {
  for (const char* value : {all, time, language}) {
    if (!value || !*value) continue;
    const std::string_view text(value);
    std::string identifier(text.substr(0, text.find_first_of(".@")));  // "en_GB.UTF-8", "ca_ES@valencia"
    if (identifier == "C" || identifier == "POSIX") return "en_GB";
    for (const auto& [modifier, script] : scripts) {
      if (text.ends_with(modifier)) identifier.insert(std::min(identifier.find('_'), identifier.size()), script);
    }
    return identifier;
  }
  return "en_GB";
}

}  // namespace detail

namespace {

Value textOrAbsent(const char* text) { return *text ? Value(text) : Value(); }

Value exemplarCharacters(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalULocaleDataPointer data(ulocdata_open(locale.getName(), &status));
  icu::UnicodeSet characters;
  ulocdata_getExemplarSet(data.getAlias(), characters.toUSet(), 0, ULOCDATA_ES_STANDARD, &status);
  icu::UnicodeString pattern;
  return U_SUCCESS(status) ? Value(detail::stringFromIcu(characters.toPattern(pattern))) : Value();
}

Value delimiter(const icu::Locale& locale, ULocaleDataDelimiterType type) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalULocaleDataPointer data(ulocdata_open(locale.getName(), &status));
  char16_t text[16];
  const std::int32_t length = ulocdata_getDelimiter(data.getAlias(), type, text, 16, &status);
  if (U_FAILURE(status) || length > 16) return {};
  return NSString::fromUtf16({text, static_cast<std::size_t>(length)});
}

UMeasurementSystem measurementSystem(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const UMeasurementSystem system = ulocdata_getMeasurementSystem(locale.getName(), &status);
  return U_SUCCESS(status) ? system : UMS_SI;
}

Value symbol(const icu::Locale& locale, icu::DecimalFormatSymbols::ENumberFormatSymbol which) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::DecimalFormatSymbols symbols(locale, status);
  return U_SUCCESS(status) ? Value(detail::stringFromIcu(symbols.getSymbol(which))) : Value();
}

Value currencyCode(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  char16_t code[4];
  const std::int32_t length = ucurr_forLocale(locale.getName(), code, 4, &status);
  if (U_FAILURE(status) || length != 3) return {};
  return NSString::fromUtf16({code, 3});
}

Value collation(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const auto value = locale.getKeywordValue<std::string>("collation", status);
  return U_SUCCESS(status) ? textOrAbsent(value.c_str()) : Value();
}

NSString languageTag(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const auto tag = locale.toLanguageTag<std::string>(status);
  return U_SUCCESS(status) ? NSString(tag) : NSString(locale.getName());
}

using LocaleLookup = Value (*)(const NSLocale&, const icu::Locale&);

/// The look-up function of each key.
constexpr struct {
  const NSString& key;
  LocaleLookup value;
} lookups[] = {
    {NSLocaleIdentifier, [](const NSLocale& self, const icu::Locale&) -> Value { return self.localeIdentifier(); }},
    {NSLocaleLanguageCode,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return textOrAbsent(locale.getLanguage()); }},
    {NSLocaleCountryCode,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return textOrAbsent(locale.getCountry()); }},
    {NSLocaleScriptCode,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return textOrAbsent(locale.getScript()); }},
    {NSLocaleVariantCode,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return textOrAbsent(locale.getVariant()); }},
    {NSLocaleExemplarCharacterSet,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return exemplarCharacters(locale); }},
    {NSLocaleCalendar,
     [](const NSLocale& self, const icu::Locale&) -> Value {
       Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
       calendar->setLocale(NSLocale::localeWithLocaleIdentifier(self.localeIdentifier()));
       return calendar;
     }},
    {NSLocaleCollationIdentifier,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return collation(locale); }},
    {NSLocaleUsesMetricSystem,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return measurementSystem(locale) != UMS_US; }},
    {NSLocaleMeasurementSystem,
     [](const NSLocale&, const icu::Locale& locale) -> Value {
       const UMeasurementSystem system = measurementSystem(locale);
       return system == UMS_US ? "U.S." : system == UMS_UK ? "U.K." : "Metric";
     }},
    {NSLocaleDecimalSeparator,
     [](const NSLocale&, const icu::Locale& locale) -> Value {
       return symbol(locale, icu::DecimalFormatSymbols::kDecimalSeparatorSymbol);
     }},
    {NSLocaleGroupingSeparator,
     [](const NSLocale&, const icu::Locale& locale) -> Value {
       return symbol(locale, icu::DecimalFormatSymbols::kGroupingSeparatorSymbol);
     }},
    {NSLocaleCurrencySymbol,
     [](const NSLocale&, const icu::Locale& locale) -> Value {
       return symbol(locale, icu::DecimalFormatSymbols::kCurrencySymbol);
     }},
    {NSLocaleCurrencyCode, [](const NSLocale&, const icu::Locale& locale) -> Value { return currencyCode(locale); }},
    {NSLocaleCollatorIdentifier,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return languageTag(locale); }},
    {NSLocaleQuotationBeginDelimiterKey,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return delimiter(locale, ULOCDATA_QUOTATION_START); }},
    {NSLocaleQuotationEndDelimiterKey,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return delimiter(locale, ULOCDATA_QUOTATION_END); }},
    {NSLocaleAlternateQuotationBeginDelimiterKey,
     [](const NSLocale&, const icu::Locale& locale) -> Value {
       return delimiter(locale, ULOCDATA_ALT_QUOTATION_START);
     }},
    {NSLocaleAlternateQuotationEndDelimiterKey,
     [](const NSLocale&, const icu::Locale& locale) -> Value { return delimiter(locale, ULOCDATA_ALT_QUOTATION_END); }},
};

/// The root locale if the text is not an identifier ("Europe/London"), because ICU would make a locale of it on which
/// its functions crash.
icu::Locale localeOf(const NSString& identifier) {
  const kernel::ForkHold hold;
  icu::Locale locale = icu::Locale::createCanonical(identifier.str().c_str());
  return locale.isBogus() ? icu::Locale::getRoot() : locale;
}

}  // namespace

NSLocale::NSLocale(const NSString& identifier)
    : data_(new detail::LocaleData(localeOf(identifier))), identifier_(data_->locale.getName()) {}

NSLocale::~NSLocale() = default;

Ref<NSLocale> NSLocale::localeWithLocaleIdentifier(const NSString& identifier) { return make<NSLocale>(identifier); }

Ref<NSLocale> NSLocale::currentLocale() {
  return kernel::madeOnce([] {
    return new Ref<NSLocale>(make<NSLocale>(NSString(
        detail::localeIdentifierFromEnvironment(std::getenv("LC_ALL"), std::getenv("LC_TIME"), std::getenv("LANG")))));
  });
}

Ref<NSLocale> NSLocale::systemLocale() {
  return kernel::madeOnce([] { return new Ref<NSLocale>(make<NSLocale>("")); });
}

Value NSLocale::objectForKey(const NSString& key) const {
  const kernel::ForkHold hold;
  for (const auto& lookup : lookups) {
    if (lookup.key == key) return lookup.value(*this, data_->locale);
  }
  return {};
}

NSString NSLocale::displayName() const {
  const kernel::ForkHold hold;
  icu::UnicodeString name;
  return detail::stringFromIcu(data_->locale.getDisplayName(data_->locale, name));
}

NSString NSLocale::description() const { return "<NSLocale: " + identifier_ + ">"; }

bool NSLocale::isEqual(const NSObject& other) const {
  const auto* locale = dynamic_cast<const NSLocale*>(&other);
  return locale && locale->identifier_ == identifier_;
}

std::size_t NSLocale::hash() const { return std::hash<NSString>()(identifier_); }

void NSLocale::encodeWithCoder(NSCoder& coder) const { coder.encodeValue(identifier_); }

Ref<NSLocale> NSLocale::localeWithCoder(NSCoder& coder) {
  return localeWithLocaleIdentifier(coder.decodeValue<NSString>());
}

}  // namespace norvik

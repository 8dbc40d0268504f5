// NorvikCore/platform/foundation/NSLocale.h - a language and region, and their conventions.
//
//   Ref<NSLocale> british = NSLocale::localeWithLocaleIdentifier("en_GB");
//   british->objectForKey(NSLocaleCurrencySymbol);        // "£"
//   british->displayName();                               // "English (United Kingdom)"
//
// Identifiers are those of Unicode's locale data: "en_GB", "de_DE", "sr_Latn_RS", "" for no region at all. "en-GB" is
// accepted too. A locale that the data does not know falls back to its language, then to the root locale. A text that
// is not an identifier means the root locale.
//
// Threads: immutable; the class operations are synchronised.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

namespace detail {
struct LocaleData;
}

class NK_EXPORT NSLocale : public NSObject, public NSCoding {
  NK_OBJECT(NSLocale, NSObject)
  NK_DECODED_BY(localeWithCoder)

  [[nodiscard]] static Ref<NSLocale> localeWithLocaleIdentifier(const NSString& identifier);
  [[nodiscard]] static Ref<NSLocale> initWithLocaleIdentifier(const NSString& identifier) {
    return localeWithLocaleIdentifier(identifier);
  }
  /// The user's locale: the first of the environment variables LC_ALL, LC_TIME and LANG that is set and not empty. "C",
  /// "POSIX" and no variable at all mean "en_GB"; "sr_RS@latin" means "sr_Latn_RS". Read once per process.
  [[nodiscard]] static Ref<NSLocale> currentLocale();
  /// The locale of no region, with the identifier "".
  [[nodiscard]] static Ref<NSLocale> systemLocale();

  /// In the form "en_GB".
  [[nodiscard]] const NSString& localeIdentifier() const noexcept { return identifier_; }
  /// The value for one of the keys below; absent if the locale has none (most have no script or variant) and for any
  /// other key. All values are texts, except the metric system (a boolean) and the calendar (an NSCalendar).
  [[nodiscard]] Value objectForKey(const NSString& key) const;
  /// The locale's name in its own language.
  [[nodiscard]] NSString displayName() const;

  /// "<NSLocale: en_GB>"
  [[nodiscard]] NSString description() const override;
  /// Locales of one identifier are equal.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;

  /// Archives the identifier only: the conventions are looked up where it is decoded.
  void encodeWithCoder(NSCoder& coder) const override;
  [[nodiscard]] static Ref<NSLocale> localeWithCoder(NSCoder& coder);

  explicit NSLocale(const NSString& identifier);
  ~NSLocale() override;

  [[nodiscard]] const detail::LocaleData& data() const noexcept { return *data_; }

 private:
  const detail::Hidden<const detail::LocaleData> data_;
  const NSString identifier_;
};

NK_EXPORT extern const NSString NSLocaleIdentifier;
NK_EXPORT extern const NSString NSLocaleLanguageCode;  ///< "en"
NK_EXPORT extern const NSString NSLocaleCountryCode;   ///< "GB"
NK_EXPORT extern const NSString NSLocaleScriptCode;    ///< "Latn", if the identifier has it
NK_EXPORT extern const NSString NSLocaleVariantCode;
NK_EXPORT extern const NSString NSLocaleExemplarCharacterSet;  ///< the letters of the language as a set: "[abc...]"
NK_EXPORT extern const NSString NSLocaleCalendar;              ///< a Gregorian NSCalendar with this locale
NK_EXPORT extern const NSString NSLocaleCollationIdentifier;   ///< if the identifier has it: "de@collation=phonebook"
NK_EXPORT extern const NSString NSLocaleUsesMetricSystem;      ///< a boolean; true in the United Kingdom
NK_EXPORT extern const NSString NSLocaleMeasurementSystem;     ///< "Metric", "U.S." or "U.K."
NK_EXPORT extern const NSString NSLocaleDecimalSeparator;
NK_EXPORT extern const NSString NSLocaleGroupingSeparator;
NK_EXPORT extern const NSString NSLocaleCurrencySymbol;
NK_EXPORT extern const NSString NSLocaleCurrencyCode;        ///< "GBP", if the region is known
NK_EXPORT extern const NSString NSLocaleCollatorIdentifier;  ///< the locale whose sorting order is used: "en-GB"
NK_EXPORT extern const NSString NSLocaleQuotationBeginDelimiterKey;
NK_EXPORT extern const NSString NSLocaleQuotationEndDelimiterKey;
NK_EXPORT extern const NSString NSLocaleAlternateQuotationBeginDelimiterKey;
NK_EXPORT extern const NSString NSLocaleAlternateQuotationEndDelimiterKey;

}  // namespace norvik

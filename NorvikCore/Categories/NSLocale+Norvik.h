// NorvikCore/Categories/NSLocale+Norvik.h - the library's locales, and a locale's properties as text.
//
//   nk_defaultLocale()->localeIdentifier();      // "en_GB"
//   NSLog("%@", nk_description(*nk_ukLocale()));  // one line for each of the 19 properties
//
// Each locale is one object that lives until the process ends. Any thread.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/foundation/NSLocale.h"

namespace norvik {

/// "en_GB", for everything that the library computes and stores.
[[nodiscard]] NK_EXPORT const Ref<NSLocale>& nk_defaultLocale();
/// A separate "en_GB" object, for showing British local time.
[[nodiscard]] NK_EXPORT const Ref<NSLocale>& nk_ukLocale();

/// A new array of the 19 keys that a locale has values for, from NSLocaleIdentifier to
/// NSLocaleAlternateQuotationEndDelimiterKey.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_allKeys();

/// For diagnostics: a line "key : value" for each of nk_allKeys(), in that order; "(null)" for a value that the locale
/// does not have.
[[nodiscard]] NK_EXPORT NSString nk_description(const NSLocale& locale);

}  // namespace norvik

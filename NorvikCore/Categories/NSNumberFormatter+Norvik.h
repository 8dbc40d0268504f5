// NorvikCore/Categories/NSNumberFormatter+Norvik.h - a number in one of the platform's styles, in the library's locale.
//
//   nk_defaultStringFromNumber(1234.5, NSNumberFormatterDecimalStyle);      // "1,234.5"
#pragma once

#include "NorvikCore/platform/foundation/NSNumberFormatter.h"

namespace norvik {

/// The token on which code that shares a number formatter between threads synchronises.
extern NK_EXPORT const NSString kSharedNumberFormatterLock;

/// The formatter that nk_defaultStringFromNumber keeps, in the style of its last call. Empty until the first call on
/// the main thread. Never destroyed. Main thread only.
extern NK_EXPORT Ref<NSNumberFormatter>& m_sharedNumberFormatter;

/// The number in that style in nk_defaultLocale(). Any thread. The main thread keeps one formatter and reuses it. On
/// other threads each call makes a formatter, which takes some tens of microseconds, or half a millisecond for the
/// spell-out style.
[[nodiscard]] NK_EXPORT NSString nk_defaultStringFromNumber(const NSNumber& number, NSNumberFormatterStyle numberStyle);

}  // namespace norvik

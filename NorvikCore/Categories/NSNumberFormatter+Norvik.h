// NorvikCore/Categories/NSNumberFormatter+Norvik.h - a number in one of the platform's styles, in the library's locale.
//
//   nk_defaultStringFromNumber(1234.5, NSNumberFormatterDecimalStyle);      // "1,234.5"
#pragma once

#include "NorvikCore/platform/foundation/NSNumberFormatter.h"

namespace norvik {

/// The token on which code that shares a number formatter across threads synchronises.
extern NK_EXPORT const NSString kSharedNumberFormatterLock;

/// The slot of the formatter that nk_defaultStringFromNumber keeps: empty until its first call on the main thread, in
/// the style of its last one. Never destroyed. Main thread only.
extern NK_EXPORT Ref<NSNumberFormatter>& m_sharedNumberFormatter;

/// The number in that style in nk_defaultLocale(). Any thread: the main thread keeps one formatter and uses it again;
/// elsewhere each call makes one, some tens of microseconds, for words half a millisecond.
[[nodiscard]] NK_EXPORT NSString nk_defaultStringFromNumber(const NSNumber& number, NSNumberFormatterStyle numberStyle);

}  // namespace norvik

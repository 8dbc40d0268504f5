// NorvikCore/platform/foundation/NSStringCase.h - converts texts to upper case, lower case and title case.
//
//   uppercaseString("Straße 7");      // "STRASSE 7": the length may change
//   lowercaseString("PAYE");          // "paye"
//   capitalizedString("net pay");     // "Net Pay"
//
// Uses Unicode's full mappings, the same in every locale; a sigma at the end of a word becomes the final one. A lone
// surrogate half is unchanged. Any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

[[nodiscard]] NK_EXPORT NSString uppercaseString(const NSString& text);
[[nodiscard]] NK_EXPORT NSString lowercaseString(const NSString& text);
/// The first letter of each word in title case ("\u01C6" becomes "\u01C5"), the others in lower case. Words are
/// Unicode's.
[[nodiscard]] NK_EXPORT NSString capitalizedString(const NSString& text);

}  // namespace norvik

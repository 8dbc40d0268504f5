// NorvikCore/Categories/NSFormatter+Norvik.h - extra text attributes (a colour, a font) that any formatter adds to the
// text it shows.
//
//   setNk_additionalAttributes(*formatter, NSDictionary::dictionaryWith({{NSForegroundColorAttributeName, red}}));
//   nk_customAttributedString(*formatter, text);      // a copy of the text, red all over
//
// The attributes are the formatter's key "nk_additionalAttributes", which can be read, set and observed by that name.
#pragma once

#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/foundation/NSFormatter.h"

namespace norvik {

/// Attribute names and values; empty until set. The formatter keeps them.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> nk_additionalAttributes(const NSFormatter& formatter);
/// Notifies observers of the key before and after the change. An empty Ref removes the attributes.
NK_EXPORT void setNk_additionalAttributes(NSFormatter& formatter, const Ref<NSDictionary>& attributes);

/// A copy of the text with the additional attributes over its whole range, where they replace attributes of the same
/// name. If there are no additional attributes, it returns the same object, also if that is an empty Ref.
[[nodiscard]] NK_EXPORT Ref<NSAttributedString> nk_customAttributedString(const NSFormatter& formatter,
                                                                          const Ref<NSAttributedString>& text);

}  // namespace norvik

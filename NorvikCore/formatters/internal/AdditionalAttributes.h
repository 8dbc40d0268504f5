// NorvikCore/formatters/internal/AdditionalAttributes.h - the extra text attributes of a formatter, and a text under
// them. Users have them by Categories/NSFormatter+Norvik.h, which says what they are.
#pragma once

#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/foundation/NSFormatter.h"

namespace norvik::detail {

[[nodiscard]] Ref<NSDictionary> additionalAttributes(const NSFormatter& formatter);
/// Tells no observers.
void setAdditionalAttributes(NSFormatter& formatter, const Ref<NSDictionary>& attributes);
[[nodiscard]] Ref<NSAttributedString> customAttributedString(const NSFormatter& formatter,
                                                             const Ref<NSAttributedString>& text);

}  // namespace norvik::detail

// NorvikCore/formatters/internal/AdditionalAttributes.h - the extra text attributes of a formatter, and applying them
// to a text. Categories/NSFormatter+Norvik.h is the public header and describes them.
#pragma once

#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/foundation/NSFormatter.h"

namespace norvik::detail {

[[nodiscard]] Ref<NSDictionary> additionalAttributes(const NSFormatter& formatter);
/// Notifies no observers.
void setAdditionalAttributes(NSFormatter& formatter, const Ref<NSDictionary>& attributes);
[[nodiscard]] Ref<NSAttributedString> customAttributedString(const NSFormatter& formatter,
                                                             const Ref<NSAttributedString>& text);

}  // namespace norvik::detail

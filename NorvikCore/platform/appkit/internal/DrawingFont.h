// NorvikCore/platform/appkit/internal/DrawingFont.h - the font for drawing text with attributes.
#pragma once

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik::detail {

/// The value of NSFontAttributeName; the system's font if there is none, if the value is not a font, or for an empty
/// Ref.
[[nodiscard]] Ref<const NSFont> drawingFont(const Ref<NSDictionary>& attributes);

}  // namespace norvik::detail

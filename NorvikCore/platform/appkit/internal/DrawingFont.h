// NorvikCore/platform/appkit/internal/DrawingFont.h - the font in which text with attributes is drawn.
#pragma once

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik::detail {

/// NSFontAttributeName's; the system's where there is none, or where the value is no font. An empty Ref has none.
[[nodiscard]] Ref<const NSFont> drawingFont(const Ref<NSDictionary>& attributes);

}  // namespace norvik::detail

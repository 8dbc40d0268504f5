#include "NorvikCore/platform/appkit/internal/DrawingFont.h"

#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"

namespace norvik::detail {

Ref<const NSFont> drawingFont(const Ref<NSDictionary>& attributes) {
  if (attributes) {
    const Value stated = attributes->objectForKey(NSFontAttributeName);
    if (const auto* const font = stated.object<NSFont>()) return Ref<const NSFont>(font);
  }
  return kernel::madeOnce([] { return new Ref<const NSFont>(NSFont::systemFontOfSize(NSFont::systemFontSize())); });
}

}  // namespace norvik::detail

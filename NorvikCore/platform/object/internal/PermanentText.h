// NorvikCore/platform/object/internal/PermanentText.h - names that are kept until the process ends.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <string_view>

namespace norvik::detail {

/// The text with storage that belongs to the process: equal texts share it, and it is never freed. Its address is kept
/// where leak checkers find it, because some of them report storage with only pointers into its interior as possibly
/// lost. Synchronised. A text with a lone surrogate half is returned unchanged.
[[nodiscard]] NSString permanentText(const NSString& text);

}  // namespace norvik::detail

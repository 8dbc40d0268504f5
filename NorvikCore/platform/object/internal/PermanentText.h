// NorvikCore/platform/object/internal/PermanentText.h - names that are kept until the process ends.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <string_view>

namespace norvik::detail {

/// The text with storage of the process's, which equal texts share and which is never freed. Its address is kept where
/// leak checkers look: the storage of a text that is only pointed into counts as lost, possibly, with some.
/// Synchronised. One with a lone half is given back as it is.
[[nodiscard]] NSString permanentText(const NSString& text);

}  // namespace norvik::detail

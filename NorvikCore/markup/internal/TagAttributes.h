// NorvikCore/markup/internal/TagAttributes.h - the attributes written behind a tag's name; MRKStringParserTag.h has the
// rules.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"

#include <string_view>

namespace norvik::detail {

/// Names, and texts or the null marker. `raw` is as NSString::view() gives it. Linear.
[[nodiscard]] Ref<NSDictionary> tagAttributesIn(std::string_view raw);

}  // namespace norvik::detail

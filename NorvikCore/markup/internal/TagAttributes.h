// NorvikCore/markup/internal/TagAttributes.h - parses the attributes after a tag's name; MRKStringParserTag.h has the
// rules.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"

#include <string_view>

namespace norvik::detail {

/// Names with texts or the null marker. `raw` is in the encoding of NSString::view(). Linear.
[[nodiscard]] Ref<NSDictionary> tagAttributesIn(std::string_view raw);

}  // namespace norvik::detail

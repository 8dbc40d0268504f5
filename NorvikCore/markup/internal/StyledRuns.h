// NorvikCore/markup/internal/StyledRuns.h - marked-up text with the attributes of its tags, each computed once.
//
// The result equals that of adding each tag's attributes over its range, in reverse order of the closing tags. When a
// tag is processed in that order, its text still has one run, so the tag's attributes are those of the tag around it
// plus its own. The cost is therefore linear in the tags, however they are nested. Combinations of attributes that
// occurred before are looked up.
//
// If no tag in the text has a closure, the runs are made in the same pass as the text. Otherwise the tags are listed
// first, because closures are called in reverse order of the closing tags.
#pragma once

#include "NorvikCore/markup/MRKTaggedStringOptions.h"
#include "NorvikCore/platform/foundation/internal/AttributeRuns.h"

#include <optional>

namespace norvik::detail {

struct StyledText {
  NSString text;
  AttributeRuns runs;
  std::optional<NSString> fault;  ///< why the source is not valid markup; then the other members are not valid
};

/// Calls the closures of the options, in reverse order of the closing tags.
[[nodiscard]] StyledText styledText(const NSString& source, const MRKTaggedStringOptions& options);

}  // namespace norvik::detail

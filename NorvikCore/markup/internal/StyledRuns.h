// NorvikCore/markup/internal/StyledRuns.h - marked-up text with the attributes of its tags, each computed once.
//
// The result is that of adding each tag's attributes over its range, the tag closed last first. But where a tag is
// asked, its text still has one run, so that its attributes are those of the tag around it and its own. That takes the
// time of the tags, however they are nested; combinations of attributes that were seen before are looked up.
//
// Where no tag in the text has a closure, the runs are made in the same pass as the text. Otherwise the tags are listed
// first, because the closure of the tag closed last is called first.
#pragma once

#include "NorvikCore/markup/MRKTaggedStringOptions.h"
#include "NorvikCore/platform/foundation/internal/AttributeRuns.h"

#include <optional>

namespace norvik::detail {

struct StyledText {
  NSString text;
  AttributeRuns runs;
  std::optional<NSString> fault;  ///< why the source is no markup; nothing else counts then
};

/// Calls the closures of the options, the tag closed last first.
[[nodiscard]] StyledText styledText(const NSString& source, const MRKTaggedStringOptions& options);

}  // namespace norvik::detail

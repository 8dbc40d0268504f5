// NorvikCore/markup/internal/StyledRuns.h - the attributes of scanned markup, as runs, each computed once.
//
// The result is that of adding each tag's attributes over its range, the tag closed last first. But where a tag is
// asked, its text still has one run, so that its attributes are those of the tag around it and its own. That takes the
// time of the tags, however they are nested; combinations of attributes that were seen before are looked up.
#pragma once

#include "NorvikCore/markup/MRKTaggedStringOptions.h"
#include "NorvikCore/markup/internal/MarkupScan.h"

#include <vector>

namespace norvik::detail {

/// Calls the closures of the options, the tag closed last first.
[[nodiscard]] std::vector<AttributeRun> styledRuns(const MarkupScan& scan, const MRKTaggedStringOptions& options);

}  // namespace norvik::detail

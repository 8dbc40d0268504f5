// NorvikCore/markup/MRKEscapedStringForString.h - escapes text so that it can be inserted into marked-up text.
//
//   MRKEscapedStringForString("5 < 6");      // "5 \001< 6": the character U+0001 before each "<"
//
// Parsing the result as markup gives the text back, whatever it contains. There are two exceptions next to a tag: if
// the text begins with ">" and follows a tag, the leading ">" characters become part of that tag and are lost; if the
// text ends with U+0001 and precedes a tag, that tag is escaped.
//
// Any thread. Linear.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

[[nodiscard]] NK_EXPORT NSString MRKEscapedStringForString(const NSString& text);

}  // namespace norvik

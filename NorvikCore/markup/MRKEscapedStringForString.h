// NorvikCore/markup/MRKEscapedStringForString.h - text of others, made safe to be put into marked-up text.
//
//   MRKEscapedStringForString("5 < 6");      // "5 \001< 6": each "<" behind the character U+0001
//
// Parsed as markup the result is the text again, whatever it holds. Only right beside a tag two things count: ">" at
// the start of the text belong to the tag before it and are lost, and U+0001 at its end escapes the tag behind it.
//
// Any thread. Linear.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

[[nodiscard]] NK_EXPORT NSString MRKEscapedStringForString(const NSString& text);

}  // namespace norvik

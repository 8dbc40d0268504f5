// NorvikCore/platform/appkit/internal/TextStyle.h - the attributes of a run that can be displayed.
#pragma once

#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

#include <string>

namespace norvik::detail {

struct TextStyle {
  Ref<NSFont> font;                     // empty if there is none
  Ref<NSColor> foreground, background;  // empty if there is none, and if alpha is 0
  bool isUnderlined = false;
  std::string address;  // of a link, in ASCII; empty if there is none or its scheme is not allowed
};

/// An attribute of an unexpected class is treated as absent.
TextStyle styleOf(const NSDictionary& attributes);

/// A component as 0 to 255.
int byteOf(double component);

/// Detects line breaks; the LF of CR LF is not a line break of its own.
class LineBreaks {
 public:
  enum class Kind { None, Break, Rest };
  Kind next(char32_t character);

 private:
  bool isBehindReturn_ = false;
};

/// Appends a character as UTF-8; a lone surrogate half as U+FFFD.
void appendCharacter(std::string& result, char32_t character);

}  // namespace norvik::detail

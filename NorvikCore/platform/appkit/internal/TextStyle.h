// NorvikCore/platform/appkit/internal/TextStyle.h - the attributes of a run that can be shown.
#pragma once

#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

#include <string>

namespace norvik::detail {

struct TextStyle {
  Ref<NSFont> font;                     // empty for none
  Ref<NSColor> foreground, background;  // empty for none, and where alpha is 0
  bool isUnderlined = false;
  std::string address;  // of a link, in ASCII; empty for none and for one that must not be followed
};

/// An attribute of an unexpected class counts as absent.
TextStyle styleOf(const NSDictionary& attributes);

/// A component in 0 to 255.
int byteOf(double component);

/// Tells the second unit of CR LF from a line break of its own.
class LineBreaks {
 public:
  enum class Kind { None, Break, Rest };
  Kind next(char32_t character);

 private:
  bool isBehindReturn_ = false;
};

/// Appends a character as UTF-8; a lone half as U+FFFD.
void appendCharacter(std::string& result, char32_t character);

}  // namespace norvik::detail

#include "NorvikCore/markup/MRKEscapedStringForString.h"

namespace norvik {

NSString MRKEscapedStringForString(const NSString& text) {
  return text.stringByReplacingOccurrencesOfString("<"_ns, "\001<"_ns);
}

}  // namespace norvik

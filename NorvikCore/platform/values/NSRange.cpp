#include "NorvikCore/platform/values/NSRange.h"

#include <ostream>

namespace norvik {

std::ostream& operator<<(std::ostream& out, const NSRange& range) {
  return out << '{' << range.location << ", " << range.length << '}';
}

}  // namespace norvik

#include "Counted.h"

#include <string>

namespace desk {

using norvik::NSString;

NSString grouped(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3;) digits.insert(at -= 3, 1, ',');
  return digits;
}

NSString counted(std::uint64_t number, const NSString& one, const NSString& many) {
  return grouped(number) + " " + (number == 1 ? one : many);
}

}  // namespace desk

#include "NorvikCore/platform/kernel/SystemError.h"

#include <cstring>

namespace norvik::kernel {

std::string errorText(int error) {
  if (error == attributeAbsent) return "Attribute not found";
  if (const char* text = strerrordesc_np(error)) return text;
  return "Unknown error " + std::to_string(error);
}

}  // namespace norvik::kernel

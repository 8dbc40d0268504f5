// examples/payroll-desk/Counted.h - numbers of things as text.
#pragma once

#include <cstdint>

#include "NorvikCore/platform/values/NSString.h"

namespace desk {

/// "10,000".
norvik::NSString grouped(std::uint64_t number);
/// "1 person", "10,000 people".
norvik::NSString counted(std::uint64_t number, const norvik::NSString& one, const norvik::NSString& many);

}  // namespace desk

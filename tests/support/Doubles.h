// tests/support/Doubles.h - the doubles that are not finite.
#pragma once

#include <limits>

namespace norvik::test {

inline constexpr double infinity = std::numeric_limits<double>::infinity();
inline constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

}  // namespace norvik::test

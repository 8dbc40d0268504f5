#include "NorvikCore/constants/NorvikCoreVersion.h"

namespace norvik {

constexpr double NorvikCoreVersionNumber = 1.0;
constexpr NSString NorvikCoreVersionString = "@(#)PROGRAM:NorvikCore  PROJECT:Norvik-1\n";

}  // namespace norvik

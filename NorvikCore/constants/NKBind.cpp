#include "NorvikCore/constants/NKBind.h"

namespace norvik {

constexpr NSString NKBind = "NKBind";

}  // namespace norvik

#include "NorvikCore/constants/ErrorKeys.h"

namespace norvik {

constexpr NSString NKShowAlertForErrorKey = "NKShowAlertForErrorKey";
constexpr NSString NKSlotExceptionErrorKey = "NKSlotExceptionErrorKey";

}  // namespace norvik

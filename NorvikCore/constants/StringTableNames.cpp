#include "NorvikCore/constants/StringTableNames.h"

namespace norvik {

constexpr NSString NKAnalysisStrings = "Analysis";
constexpr NSString NKEmployeesStrings = "Employees";
constexpr NSString NKEmployerStrings = "Employer";
constexpr NSString NKHmrcStrings = "HMRC";
constexpr NSString NKPayrollStrings = "Payroll";
constexpr NSString NKRtiStrings = "RTI";

}  // namespace norvik

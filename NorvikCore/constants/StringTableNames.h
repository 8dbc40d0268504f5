// NorvikCore/constants/StringTableNames.h - the names of the application's tables of localised texts.
//
//   NKRtiStrings;      // "RTI", the table in RTI.strings
//
// Constants that are never destroyed: any thread, any time.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

NK_EXPORT extern const NSString NKAnalysisStrings;
NK_EXPORT extern const NSString NKEmployeesStrings;
NK_EXPORT extern const NSString NKEmployerStrings;
NK_EXPORT extern const NSString NKHmrcStrings;
NK_EXPORT extern const NSString NKPayrollStrings;
NK_EXPORT extern const NSString NKRtiStrings;

}  // namespace norvik

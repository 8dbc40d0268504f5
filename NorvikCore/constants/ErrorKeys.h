// NorvikCore/constants/ErrorKeys.h - keys of the user info of errors that the application reports.
//
//   NSError::errorWithDomain(domain, 0, NSDictionary::dictionaryWith({{NKShowAlertForErrorKey, true}}));
//
// Constants that are never destroyed: any thread, any time.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

NK_EXPORT extern const NSString NKShowAlertForErrorKey;
NK_EXPORT extern const NSString NKSlotExceptionErrorKey;

}  // namespace norvik

// NorvikCore/constants/NorvikCoreVersion.h - the version of the vocabulary, as programs ask for it.
//
//   NSLog("%.1f", NorvikCoreVersionNumber);      // 1.0
//
// It is the version of the names and their behaviour; that of the library's file and package is CMake's
// NorvikCore_VERSION and pkg-config's. The text begins with "@(#)", so that what(1) finds it in the library's file.
// Constants that are never destroyed: any thread, any time.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

NK_EXPORT extern const double NorvikCoreVersionNumber;
/// "@(#)PROGRAM:NorvikCore  PROJECT:Norvik-1" and a line feed.
NK_EXPORT extern const NSString NorvikCoreVersionString;

}  // namespace norvik

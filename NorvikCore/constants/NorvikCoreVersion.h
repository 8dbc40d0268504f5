// NorvikCore/constants/NorvikCoreVersion.h - the version of the library's names and behaviour, for programs.
//
//   NSLog("%.1f", NorvikCoreVersionNumber);      // 1.0
//
// The version of the library file and of the package is given by CMake's NorvikCore_VERSION and by pkg-config. The
// text begins with "@(#)" so that what(1) finds it in the library file. Constants that are never destroyed: any thread,
// any time.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

NK_EXPORT extern const double NorvikCoreVersionNumber;
/// "@(#)PROGRAM:NorvikCore  PROJECT:Norvik-1" and a line feed.
NK_EXPORT extern const NSString NorvikCoreVersionString;

}  // namespace norvik

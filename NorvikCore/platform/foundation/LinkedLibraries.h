// NorvikCore/platform/foundation/LinkedLibraries.h - the versions of NorvikCore, ICU and SQLite that this process
// has loaded.
//
//   for (const LinkedLibrary& library : linkedLibraries()) NSLog("%@ %@", library.name, library.version);
//   // NorvikCore 0.2.0
//   // ICU 72.1
//   // SQLite 3.40.1
//
// Each version is read from the loaded library, which may be newer than the one that the program was built with. Any
// thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <vector>

namespace norvik {

/// A library by its name, with the version that this process uses.
struct LinkedLibrary {
  NSString name, version;
};

/// These three, in this order. Libraries that are loaded on first use, such as those for drawing, are not listed.
[[nodiscard]] NK_EXPORT std::vector<LinkedLibrary> linkedLibraries();

}  // namespace norvik

// NorvikCore/platform/foundation/LinkedLibraries.h - the versions of NorvikCore, ICU and SQLite that this process
// uses.
//
//   for (const LinkedLibrary& library : linkedLibraries()) NSLog("%@ %@", library.name, library.version);
//   // NorvikCore 0.2.0
//   // ICU 72.1
//   // SQLite 3.40.1
//
// Each version is read from the loaded library, which may be newer than the one that the program was built with. SQLite
// is loaded for that; its version is empty if it cannot be loaded. Any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <vector>

namespace norvik {

/// A library by its name, with the version that this process uses.
struct LinkedLibrary {
  NSString name, version;
};

/// These three, in this order. Libraries for one task, such as those for drawing, are not listed.
[[nodiscard]] NK_EXPORT std::vector<LinkedLibrary> linkedLibraries();

}  // namespace norvik

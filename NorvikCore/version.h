// NorvikCore/version.h - the version of NorvikCore: of the headers when a program is compiled, of the library when it
// runs.
//
//   #if NORVIKCORE_VERSION_AT_LEAST(0, 2, 0)
//   std::cout << "compiled with " NORVIKCORE_VERSION_STRING ", runs with " << libraryVersion() << "\n";
//   #endif
//
// A release that raises only the last number runs the programs of the releases before it. Any other release has another
// SONAME, so that programs are compiled again. docs/packages.md has the whole promise.
#pragma once

#include "NorvikCore/platform/export.h"

#define NORVIKCORE_VERSION_MAJOR 0
#define NORVIKCORE_VERSION_MINOR 2
#define NORVIKCORE_VERSION_PATCH 0
#define NORVIKCORE_VERSION_STRING "0.2.0"

/// Whether the headers are of this version or a newer one. For #if, and for constant expressions.
#define NORVIKCORE_VERSION_AT_LEAST(major, minor, patch) \
  (NORVIKCORE_VERSION_MAJOR > (major) ||                 \
   (NORVIKCORE_VERSION_MAJOR == (major) &&               \
    (NORVIKCORE_VERSION_MINOR > (minor) ||               \
     (NORVIKCORE_VERSION_MINOR == (minor) && NORVIKCORE_VERSION_PATCH >= (patch)))))

namespace norvik {

/// The version of the loaded library, such as "0.2.0". It may be newer than the headers that the program was compiled
/// with. The text stays valid until the process ends. Any thread.
[[nodiscard]] NK_EXPORT const char* libraryVersion() noexcept;

}  // namespace norvik

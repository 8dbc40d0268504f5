#include "NorvikCore/platform/foundation/LinkedLibraries.h"

#include "NorvikCore/version.h"

#include <sqlite3.h>
#include <unicode/uversion.h>

namespace norvik {

std::vector<LinkedLibrary> linkedLibraries() {
  UVersionInfo numbers{};
  u_getVersion(numbers);
  char icu[U_MAX_VERSION_STRING_LENGTH]{};
  u_versionToString(numbers, icu);
  return {{"NorvikCore", libraryVersion()}, {"ICU", icu}, {"SQLite", sqlite3_libversion()}};
}

}  // namespace norvik

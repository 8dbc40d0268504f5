#include "NorvikCore/platform/foundation/LinkedLibraries.h"

#include "NorvikCore/platform/foundation/internal/SQLiteLibrary.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/version.h"

#include <unicode/uversion.h>

namespace norvik {
namespace {

NSString sqliteVersion() {
  try {
    return detail::sqlite::library().sqlite3_libversion();
  } catch (const NSException&) {
    return {};  // it cannot be loaded
  }
}

}  // namespace

std::vector<LinkedLibrary> linkedLibraries() {
  UVersionInfo numbers{};
  u_getVersion(numbers);
  char icu[U_MAX_VERSION_STRING_LENGTH]{};
  u_versionToString(numbers, icu);
  return {{"NorvikCore", libraryVersion()}, {"ICU", icu}, {"SQLite", sqliteVersion()}};
}

}  // namespace norvik

// NorvikCore/platform/foundation/internal/ApplicationFolder.h - the paths of an application's database files.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <string>

namespace norvik::detail {

/// The main bundle's identifier, or else the process's name.
[[nodiscard]] NSString applicationName();

/// "<folder>/<application>/<file>". The folder is the value of the environment variable if that begins with '/', else
/// `usualFolder`. Raises NSInvalidArgumentException if the application cannot be the name of a folder.
[[nodiscard]] std::string pathInApplicationFolder(const char* variable, const std::string& usualFolder,
                                                  const NSString& application, const char* file);

/// The path as bytes for the system. Raises NSInvalidArgumentException unless it begins with '/' and holds no NUL;
/// `whose` begins the reason.
[[nodiscard]] std::string checkedDatabasePath(const NSString& path, const char* whose);

}  // namespace norvik::detail

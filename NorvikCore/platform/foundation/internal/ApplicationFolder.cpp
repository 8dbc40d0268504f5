#include "NorvikCore/platform/foundation/internal/ApplicationFolder.h"

#include "NorvikCore/platform/foundation/NSBundle.h"
#include "NorvikCore/platform/foundation/NSProcessInfo.h"
#include "NorvikCore/platform/values/NSException.h"

#include <cstdlib>

namespace norvik::detail {

NSString applicationName() {
  const std::optional<NSString> identifier = NSBundle::mainBundle().bundleIdentifier();
  return identifier ? *identifier : NSProcessInfo::processInfo().processName();
}

std::string pathInApplicationFolder(const char* variable, const std::string& usualFolder, const NSString& application,
                                    const char* file) {
  const std::string name = application.bytes();
  if (name.empty() || name == "." || name == ".." || name.find('/') != name.npos || name.find('\0') != name.npos) {
    NSException::raise(NSInvalidArgumentException, "\"" + application + "\" cannot be the name of a folder");
  }
  const char* folder = std::getenv(variable);
  return (folder && *folder == '/' ? folder : usualFolder) + "/" + name + "/" + file;
}

std::string checkedDatabasePath(const NSString& path, const char* whose) {
  std::string bytes = path.bytes();
  if (!bytes.starts_with('/') || bytes.find('\0') != bytes.npos) {
    NSException::raise(NSInvalidArgumentException,
                       NSString(whose) + " need the absolute path of a file, not \"" + path + "\"");
  }
  return bytes;
}

}  // namespace norvik::detail

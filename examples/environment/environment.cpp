// examples/environment/environment.cpp - the folders of a program's data, and properties of the program and the
// machine.
#include "NorvikCore/Categories/NSFileManager+DirectoryLocations.h"
#include "NorvikCore/Categories/NSFileManager+Norvik.h"
#include "NorvikCore/Categories/NSProcessInfo+Norvik.h"
#include "NorvikCore/platform/foundation/LinkedLibraries.h"
#include "NorvikCore/platform/foundation/NSBundle.h"

#include <iostream>

using namespace norvik;

int main() {
  NSBundle& bundle = NSBundle::mainBundle();
  bundle.setObject_forInfoDictionaryKey("payroll", "CFBundleExecutable");
  bundle.setObject_forInfoDictionaryKey("payroll-3", "NKBundleExecutablePreviousVersion");

  NSFileManager& files = NSFileManager::defaultManager();
  const std::optional<NSString> data = applicationSupportDirectory(files);  // made now, if it was missing
  if (!data) return 1;                                                      // a warning in the log says why
  const std::optional<NSString> earlier = applicationSupportDirectoryPreviousVersion(files);
  if (earlier && files.fileExistsAtPath(*earlier)) std::cout << "data of version 3 in " << *earlier << "\n";
  std::cout << "data in " << *data << "\n";

  Ref<NSError> error;
  const std::optional<NSString> year =
      findOrCreateDirectory(files, NSDocumentDirectory, NSUserDomainMask, "Payroll/2024", &error);
  if (!year) std::cout << error->localizedDescription() << "\n";
  const NSString exports = nk_createDirectoryAtPath(files, "/proc/Exports", *data);  // none can be made there
  std::cout << "exports in " << exports << "\n";

  const NSProcessInfo& info = NSProcessInfo::processInfo();
  std::cout << "system " << nk_operatingSystemVersionString() << "\n";
  std::cout << "machine " << nk_macHardwareModel(info).value_or("without a model") << "\n";
  for (const auto& [name, version] : linkedLibraries()) std::cout << name << " " << version << "\n";

  const auto open = NSMutableDictionary::dictionary();
  if (nk_validateOpenFileDescriptors(info, open) == 1) std::cout << "every open file is valid\n";
}

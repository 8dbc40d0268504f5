#include "NorvikCore/Categories/NSFileManager+DirectoryLocations.h"

#include "NorvikCore/logging/internal/LibraryWarning.h"
#include "NorvikCore/platform/foundation/NSBundle.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {

constexpr NSString DirectoryLocationDomain = "DirectoryLocationDomain";

namespace {

constexpr const char* fileName = "Categories/NSFileManager+DirectoryLocations";

/// Absent where the main bundle has no text under the key.
std::optional<NSString> bundleText(const NSString& key) {
  const Value value = NSBundle::mainBundle().objectForInfoDictionaryKey(key);
  const NSString* text = value.string();
  return text ? std::optional(*text) : std::nullopt;
}

}  // namespace

std::optional<NSString> pathForDirectory(const NSFileManager&, NSSearchPathDirectory directory,
                                         NSSearchPathDomainMask inDomain,
                                         const std::optional<NSString>& appendPathComponent, Ref<NSError>* error) {
  const Ref<NSArray> paths = NSSearchPathForDirectoriesInDomains(directory, inDomain, true);
  if (paths->count() == 0) {
    if (error) {
      *error = NSError::errorWithDomain(DirectoryLocationDomain, 0,
                                        NSDictionary::dictionaryWith({
                                            {NSLocalizedDescriptionKey, "No path found for directory in domain."},
                                            {"NSSearchPathDirectory", static_cast<std::uint64_t>(directory)},
                                            {"NSSearchPathDomainMask", static_cast<std::uint64_t>(inDomain)},
                                        }));
    }
    return std::nullopt;
  }
  const NSString path = paths->firstObject().as<NSString>();
  return appendPathComponent ? path.stringByAppendingPathComponent(*appendPathComponent) : path;
}

std::optional<NSString> findOrCreateDirectory(NSFileManager& manager, NSSearchPathDirectory directory,
                                              NSSearchPathDomainMask inDomain,
                                              const std::optional<NSString>& appendPathComponent, Ref<NSError>* error) {
  const std::optional<NSString> path = pathForDirectory(manager, directory, inDomain, appendPathComponent, error);
  if (!path) return std::nullopt;
  Ref<NSError> failure;
  bool isThere = false;
  try {
    isThere = manager.createDirectoryAtPath(*path, true, nullptr, &failure);
  } catch (const NSException&) {
    failure = nullptr;
  }
  if (error) *error = isThere ? nullptr : failure;
  return isThere ? path : std::nullopt;
}

std::optional<NSString> applicationSupportDirectory(NSFileManager& manager) {
  Ref<NSError> error;
  std::optional<NSString> path = findOrCreateDirectory(manager, NSApplicationSupportDirectory, NSUserDomainMask,
                                                       bundleText("CFBundleExecutable"), &error);
  if (!path) {
    detail::libraryWarning(fileName, "applicationSupportDirectory", __LINE__,
                           "Unable to find or create application support directory:\n%@", error);
  }
  return path;
}

std::optional<NSString> applicationSupportDirectoryPreviousVersion(const NSFileManager& manager) {
  return pathForDirectory(manager, NSApplicationSupportDirectory, NSUserDomainMask,
                          bundleText("NKBundleExecutablePreviousVersion"));
}

std::optional<NSString> userDocumentsDirectory(NSFileManager& manager) {
  Ref<NSError> error;
  std::optional<NSString> path =
      findOrCreateDirectory(manager, NSDocumentDirectory, NSUserDomainMask, std::nullopt, &error);
  if (!path) {
    detail::libraryWarning(fileName, "userDocumentsDirectory", __LINE__,
                           "Unable to find or create user documents directory:\n%@", error);
  }
  return path;
}

}  // namespace norvik

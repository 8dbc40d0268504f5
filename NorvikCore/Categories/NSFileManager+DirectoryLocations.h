// NorvikCore/Categories/NSFileManager+DirectoryLocations.h - where the application keeps its data and the user's files.
//
//   NSFileManager& files = NSFileManager::defaultManager();
//   if (std::optional<NSString> folder = applicationSupportDirectory(files)) open(*folder);
//   // "/home/pat/.local/share/payroll", which is there now
//   applicationSupportDirectoryPreviousVersion(files);   // "/home/pat/.local/share/payroll-3", there or not
//
// The folders follow the XDG conventions (platform/foundation/NSSearchPath.h). The application's names come from its
// main bundle (NSBundle.h).
//
// A component is appended as by NSString::stringByAppendingPathComponent. An empty component adds nothing, so the
// result is the folder itself. Slashes within it separate folders; slashes at its beginning and end are left out. ".."
// stays in the path and leads out of the folder, so a program must check a component that it did not choose itself. A
// component that contains a NUL names no folder, and creating one fails (ENOENT).
//
// New folders have the permissions 0777 less the process's umask; with a umask of 0 every user may write there. The
// permissions of existing folders are not changed. Any thread, while no thread changes the environment.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"
#include "NorvikCore/platform/foundation/NSSearchPath.h"

#include <optional>

namespace norvik {

/// The domain of the error that no folder of a kind is known; its code is 0. The user info has a description and two
/// numbers: "NSSearchPathDirectory" (the kind) and "NSSearchPathDomainMask" (the domains).
NK_EXPORT extern const NSString DirectoryLocationDomain;

/// The first path of that kind in those domains, tildes expanded, with the component appended if one is given. The
/// folder need not exist. If there is no path, the result is absent and the error is the one above; that happens for
/// the user's folders if no home is known. A successful call does not change the error.
[[nodiscard]] NK_EXPORT std::optional<NSString> pathForDirectory(
    const NSFileManager& manager, NSSearchPathDirectory directory, NSSearchPathDomainMask inDomain,
    const std::optional<NSString>& appendPathComponent = std::nullopt, Ref<NSError>* error = nullptr);

/// Returns the same path after creating the folder and the missing folders above it. A successful call empties the
/// error. The result is absent with an error if there is no path or if the folder cannot be created, for example
/// because a file has that path. The result is absent with an empty error if creating it raised an NSException, which
/// is swallowed. Other exceptions pass.
NK_EXPORT std::optional<NSString> findOrCreateDirectory(
    NSFileManager& manager, NSSearchPathDirectory directory, NSSearchPathDomainMask inDomain,
    const std::optional<NSString>& appendPathComponent = std::nullopt, Ref<NSError>* error = nullptr);

// If the bundle has no text under the key, the result is the folder for application support itself.

/// The application's folder for its data, created if it is missing. It is named by the text under "CFBundleExecutable"
/// and is in the user's folder for application support. If that fails, a warning is logged and the result is absent.
NK_EXPORT std::optional<NSString> applicationSupportDirectory(NSFileManager& manager);

/// The folder where an earlier version of the application kept its data, named by the text under
/// "NKBundleExecutablePreviousVersion". Creates nothing and logs nothing. Absent if the user has no folder for
/// application support.
[[nodiscard]] NK_EXPORT std::optional<NSString> applicationSupportDirectoryPreviousVersion(
    const NSFileManager& manager);

/// The user's folder for documents, created if it is missing. If that fails, a warning is logged and the result is
/// absent.
NK_EXPORT std::optional<NSString> userDocumentsDirectory(NSFileManager& manager);

}  // namespace norvik

// NorvikCore/Categories/NSFileManager+DirectoryLocations.h - where the application keeps its data and the user's files.
//
//   NSFileManager& files = NSFileManager::defaultManager();
//   if (std::optional<NSString> folder = applicationSupportDirectory(files)) open(*folder);
//   // "/home/pat/.local/share/payroll", which is there now
//   applicationSupportDirectoryPreviousVersion(files);   // "/home/pat/.local/share/payroll-3", there or not
//
// The folders are those of the XDG conventions (platform/foundation/NSSearchPath.h); the application's names are those
// of its main bundle (NSBundle.h).
//
// A component is appended as NSString::stringByAppendingPathComponent does it. An empty one adds nothing: the result is
// the folder itself. Slashes inside it separate folders; slashes at its beginning and end are left out. ".." stays in
// the path and leads out of the folder, so a program checks a component that it did not choose itself. A component that
// holds a NUL names no folder, and making one fails (ENOENT).
//
// New folders have the permissions 0777 less the process's umask, so that with a umask of 0 everybody may write there;
// the permissions of existing folders are not changed. Any thread, while no thread changes the environment.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"
#include "NorvikCore/platform/foundation/NSSearchPath.h"

#include <optional>

namespace norvik {

/// The domain of the error that no folder of a kind is known; its code is 0. The user info has a description,
/// "NSSearchPathDirectory" (the kind) and "NSSearchPathDomainMask" (the domains), numbers both.
NK_EXPORT extern const NSString DirectoryLocationDomain;

/// The first path of that kind in those domains, tildes expanded, with the component appended where one is given. There
/// need be no such folder. Absent with the error above where there is no path, as for the user's folders where no home
/// is known; an error of a call that succeeds is left as it was.
[[nodiscard]] NK_EXPORT std::optional<NSString> pathForDirectory(
    const NSFileManager& manager, NSSearchPathDirectory directory, NSSearchPathDomainMask inDomain,
    const std::optional<NSString>& appendPathComponent = std::nullopt, Ref<NSError>* error = nullptr);

/// The same path, once the folder and the missing ones above it are made. A call that succeeds empties the error.
/// Absent with the error where there is no path or the folder cannot be made, as when something else is there; and with
/// an empty error where making it raised an NSException, which is swallowed. Other exceptions pass.
NK_EXPORT std::optional<NSString> findOrCreateDirectory(
    NSFileManager& manager, NSSearchPathDirectory directory, NSSearchPathDomainMask inDomain,
    const std::optional<NSString>& appendPathComponent = std::nullopt, Ref<NSError>* error = nullptr);

// Without a text under the bundle's key, the folder for application support itself is meant.

/// The application's folder for its data, made where it is missing: named "CFBundleExecutable", in the user's folder
/// for application support. Absent, with a warning, where that fails.
NK_EXPORT std::optional<NSString> applicationSupportDirectory(NSFileManager& manager);

/// Where an earlier version of the application kept its data: named "NKBundleExecutablePreviousVersion". Makes nothing
/// and logs nothing; absent where the user has no folder for application support.
[[nodiscard]] NK_EXPORT std::optional<NSString> applicationSupportDirectoryPreviousVersion(
    const NSFileManager& manager);

/// The user's folder for documents, made where it is missing. Absent, with a warning, where that fails.
NK_EXPORT std::optional<NSString> userDocumentsDirectory(NSFileManager& manager);

}  // namespace norvik

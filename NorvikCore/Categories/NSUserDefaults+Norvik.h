// NorvikCore/Categories/NSUserDefaults+Norvik.h - colours and fonts as preferences, and the last opened folder.
//
//   NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
//   setColor(defaults, *NSColor::redColor(), NKAppMessageColor);
//   Ref<NSColor> colour = colorForKey(defaults, NKAppMessageColor);      // red; empty if none was stored
//
//   setNavLastRootDirectory("~/Documents/Payroll");      // a panel was closed there
//   navLastRootDirectory();                              // where the next one opens: "/home/pat/Documents/Payroll"
//
// A colour or font is stored as the data that NSArchiver makes from it, and is read back exactly. Data that hold
// anything else raise NSInvalidUnarchiveOperationException. Any thread.
#pragma once

#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSUserDefaults.h"

namespace norvik {

NK_EXPORT void setColor(NSUserDefaults& defaults, const NSColor& color, const NSString& forKey);
/// Empty if the key has no data.
[[nodiscard]] NK_EXPORT Ref<NSColor> colorForKey(const NSUserDefaults& defaults, const NSString& key);

NK_EXPORT void setFont(NSUserDefaults& defaults, const NSFont& font, const NSString& forKey);
/// Empty if the key has no data.
[[nodiscard]] NK_EXPORT Ref<NSFont> fontForKey(const NSUserDefaults& defaults, const NSString& key);

// The folder in which open and save panels begin. It is stored in the standard user defaults under
// "NSNavLastRootDirectory", with the home folder abbreviated to "~". A leading "~" in any of the paths is expanded.

/// The stored path if a folder is there, otherwise the user's home folder.
[[nodiscard]] NK_EXPORT NSString navLastRootDirectory();
[[nodiscard]] NK_EXPORT Ref<NSURL> navLastRootURL();
/// Does nothing if no folder is at the path.
NK_EXPORT void setNavLastRootDirectory(const NSString& path);
/// For a stored folder that has moved: calls setNavLastRootDirectory(newPath) if navLastRootDirectory() is `path`,
/// otherwise does nothing. navLastRootDirectory() ignores a folder that no longer exists, so both paths must exist, for
/// example when the old path has become a link.
NK_EXPORT void setNavLastRootDirectoryIfMatches(const NSString& path, const NSString& newPath);

}  // namespace norvik

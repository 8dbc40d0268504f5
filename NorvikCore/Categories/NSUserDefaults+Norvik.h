// NorvikCore/Categories/NSUserDefaults+Norvik.h - colours and fonts as preferences, and the folder that was last
// opened.
//
//   NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
//   setColor(defaults, *NSColor::redColor(), NKAppMessageColor);
//   Ref<NSColor> colour = colorForKey(defaults, NKAppMessageColor);      // red; empty where none was stored
//
//   setNavLastRootDirectory("~/Documents/Payroll");      // a panel was closed there
//   navLastRootDirectory();                              // where the next one opens: "/home/pat/Documents/Payroll"
//
// A colour or font is stored as the data that NSArchiver makes of it, and comes back exactly as it was. Data that hold
// anything else raise NSInvalidUnarchiveOperationException. Any thread.
#pragma once

#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSUserDefaults.h"

namespace norvik {

NK_EXPORT void setColor(NSUserDefaults& defaults, const NSColor& color, const NSString& forKey);
/// Empty where the key has no data.
[[nodiscard]] NK_EXPORT Ref<NSColor> colorForKey(const NSUserDefaults& defaults, const NSString& key);

NK_EXPORT void setFont(NSUserDefaults& defaults, const NSFont& font, const NSString& forKey);
/// Empty where the key has no data.
[[nodiscard]] NK_EXPORT Ref<NSFont> fontForKey(const NSUserDefaults& defaults, const NSString& key);

// The folder in which open and save panels begin, in the standard user defaults under "NSNavLastRootDirectory", the
// home folder abbreviated to "~". In each path a leading "~" is expanded.

/// The stored folder, where it is there and is a folder; else the user's home folder.
[[nodiscard]] NK_EXPORT NSString navLastRootDirectory();
[[nodiscard]] NK_EXPORT Ref<NSURL> navLastRootURL();
/// Does nothing where no folder is at the path.
NK_EXPORT void setNavLastRootDirectory(const NSString& path);
/// For a remembered folder that has a new path: setNavLastRootDirectory(newPath) where navLastRootDirectory() is
/// `path`, else nothing. A folder that is gone from its old path is remembered no more; so both must be there, as when
/// the old one has become a link.
NK_EXPORT void setNavLastRootDirectoryIfMatches(const NSString& path, const NSString& newPath);

}  // namespace norvik

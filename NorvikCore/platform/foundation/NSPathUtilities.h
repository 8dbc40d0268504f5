// NorvikCore/platform/foundation/NSPathUtilities.h - "~" in paths, for the user's home folder.
//
//   stringByExpandingTildeInPath("~/Pay/april.csv");               // "/home/pat/Pay/april.csv"
//   stringByExpandingTildeInPath("~sian/Pay");                     // "/home/sian/Pay", by the account database
//   stringByAbbreviatingWithTildeInPath("/home/pat/Pay");          // "~/Pay"
//
// The home folder is the value of HOME if it begins with '/', else that of the user's account. Nothing need exist.
// Trailing slashes are removed, unless the path consists of slashes only. Otherwise the text is not interpreted: "."
// and ".." stay, and a home folder reached by a link is not recognised. Any thread, as long as no thread changes the
// environment.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

/// "~" and "~name" at the beginning become that user's home folder; the name of an unknown user stays.
[[nodiscard]] NK_EXPORT NSString stringByExpandingTildeInPath(const NSString& path);

/// The user's own home folder at the beginning becomes "~", unless the home folder is "/".
[[nodiscard]] NK_EXPORT NSString stringByAbbreviatingWithTildeInPath(const NSString& path);

}  // namespace norvik

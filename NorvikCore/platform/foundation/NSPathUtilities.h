// NorvikCore/platform/foundation/NSPathUtilities.h - "~" in paths, for the user's home folder.
//
//   stringByExpandingTildeInPath("~/Pay/april.csv");               // "/home/pat/Pay/april.csv"
//   stringByExpandingTildeInPath("~sian/Pay");                     // "/home/sian/Pay", by the account database
//   stringByAbbreviatingWithTildeInPath("/home/pat/Pay");          // "~/Pay"
//
// The home folder is what HOME says where that begins with '/', else that of the user's account. Nothing need exist.
// Slashes at the end go, but for a path that is nothing else; otherwise the text counts as it stands: "." and ".."
// stay, and a home folder reached by a link is not recognised. Any thread, while nobody changes the environment.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

/// "~" and "~name" at the beginning become that user's home folder; with the name of an unknown user they stay.
[[nodiscard]] NK_EXPORT NSString stringByExpandingTildeInPath(const NSString& path);

/// The user's home folder at the beginning becomes "~"; not where the home folder is "/", and no other user's.
[[nodiscard]] NK_EXPORT NSString stringByAbbreviatingWithTildeInPath(const NSString& path);

}  // namespace norvik

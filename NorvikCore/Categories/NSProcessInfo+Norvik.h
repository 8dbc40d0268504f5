// NorvikCore/Categories/NSProcessInfo+Norvik.h - the system, the machine and the open files, for a diagnosis.
//
//   const NSProcessInfo& info = NSProcessInfo::processInfo();
//   nk_operatingSystemVersionString();                        // "12.0.0"
//   nk_macHardwareModel(info);                                // "OptiPlex 7010", absent where the machine has none
//   const auto files = NSMutableDictionary::dictionary();
//   nk_validateOpenFileDescriptors(info, files);              // 1: all of them are valid
//   files->objectForKey("/home/pat/Pay/april.payroll");       // 7, its descriptor
//
// Any thread.
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSProcessInfo.h"

#include <optional>

namespace norvik {

/// That of the distribution, or of the kernel where the distribution has no number. Read once per process.
[[nodiscard]] NK_EXPORT NSOperatingSystemVersion nk_operatingSystemVersion();

/// The same as "major.minor.patch": "10.15.7".
[[nodiscard]] NK_EXPORT NSString nk_operatingSystemVersionString();

/// What the maker calls the machine, one line without the zero at the end that the system may have there. A virtual
/// machine has the name that its hypervisor gives it, a container that of its host. Absent where there is none, or
/// where a container does not see it. Read each time.
[[nodiscard]] NK_EXPORT std::optional<NSString> nk_macHardwareModel(const NSProcessInfo& info);

/// Checks every open file of the process that has a path: files, folders, devices and named pipes; not sockets, pipes
/// and files in memory, nor a file whose path the system does not tell, as one of more than 4095 bytes.
///
/// | 0 | the open files could not be listed (a warning says so), as where there is no /proc         |
/// | 1 | all are valid, or there are none                                                            |
/// | 2 | one is bad: listed as open, and the system says EBADF; the system console has its path     |
/// | 3 | the check of one failed for another reason, as where a filter of system calls refuses it    |
///
/// The check stops at the first descriptor that is not valid. The dictionary, if one is given, receives the valid
/// descriptors under their paths; of several with one path, the largest. The path of a removed file ends with
/// " (deleted)".
///
/// Other threads may open and close files meanwhile. A file that is closed before it is checked is left out; a file
/// that is opened during the check may be missing. Some microseconds for each file.
NK_EXPORT int nk_validateOpenFileDescriptors(const NSProcessInfo& info,
                                             const Ref<NSMutableDictionary>& files = nullptr);

}  // namespace norvik

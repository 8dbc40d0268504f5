// NorvikCore/Categories/NSProcessInfo+Norvik.h - the system, the machine and the open files, for diagnoses.
//
//   const NSProcessInfo& info = NSProcessInfo::processInfo();
//   nk_operatingSystemVersionString();                        // "12.0.0"
//   nk_macHardwareModel(info);                                // "OptiPlex 7010"; absent if the machine has none
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

/// The version of the distribution, or of the kernel if the distribution has no number. Read once per process.
[[nodiscard]] NK_EXPORT NSOperatingSystemVersion nk_operatingSystemVersion();

/// The same as "major.minor.patch": "10.15.7".
[[nodiscard]] NK_EXPORT NSString nk_operatingSystemVersionString();

/// The manufacturer's name for the machine, one line, without the zero byte that the system may have at its end. In a
/// virtual machine it is the name that the hypervisor gives, in a container that of the host machine. Absent if there
/// is no name or if a container cannot see it. Read on each call.
[[nodiscard]] NK_EXPORT std::optional<NSString> nk_macHardwareModel(const NSProcessInfo& info);

/// Checks every open file of the process that has a path: files, folders, devices and named pipes. Sockets, pipes and
/// files in memory are not checked, nor is a file whose path the system does not report, such as a path of more than
/// 4095 bytes.
///
/// | 0 | the open files could not be listed, as without /proc; a warning is logged                   |
/// | 1 | all are valid, or there are none                                                            |
/// | 2 | one is bad: listed as open, but the system returns EBADF; its path is on the system console |
/// | 3 | the check of one failed for another reason, as when a filter of system calls refuses it     |
///
/// The check stops at the first descriptor that is not valid. The dictionary, if one is given, receives the valid
/// descriptors under their paths. If several descriptors have one path, it receives the largest. The path of a removed
/// file ends with " (deleted)".
///
/// Other threads may open and close files during the check. A file that is closed before it is checked is left out; a
/// file that is opened during the check may be missing. Cost: some microseconds for each file.
NK_EXPORT int nk_validateOpenFileDescriptors(const NSProcessInfo& info,
                                             const Ref<NSMutableDictionary>& files = nullptr);

}  // namespace norvik

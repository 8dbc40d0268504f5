// NorvikCore/logging/internal/LogFile.h - opens a log file for appending, and refuses anything that only has its name.
//
//   OpenLogFile file;
//   if (const LogFileRefusal refusal = openLogFile(path, LogFileOwner::user, file)) report(refusal.reason);
//   if (file.endsInsideLine) ...        // a process was killed in the middle of a line
//
// A log file is a regular file of this user with one name. Anything else in a log folder was put there by mistake or on
// purpose: writing to it would wait for a reader, give the lines to another user, or change a file elsewhere.
//
// Threads: any; the functions depend on the file system only.
#pragma once

#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/values/NSString.h"

#include <string>

namespace norvik::detail {

/// The owner whose files may be written to.
enum class LogFileOwner { user, anybody };

/// The reason why a file is not written to. `reason` continues a sentence that begins with the path: "is a folder".
struct LogFileRefusal {
  std::string reason;     // empty: the file may be written to
  int error = 0;          // the system's error; 0 if the system did not refuse
  bool isOfFile = false;  // another file in the same folder may work

  explicit operator bool() const noexcept { return !reason.empty(); }
};

struct OpenLogFile {
  kernel::FileDescriptor descriptor;  // appends
  kernel::FileStatus status;
  bool endsInsideLine = false;  // the file does not end with a line feed, or cannot be read
};

/// The reason against the file according to its status; empty if there is none.
[[nodiscard]] std::string reasonAgainst(const kernel::FileStatus& status, LogFileOwner owner);

/// Waits only for the disk. Sets `file` on success only. The last component of the path must not be a link; a folder of
/// the path may be one.
[[nodiscard]] LogFileRefusal openLogFile(const std::string& path, LogFileOwner owner, OpenLogFile& file);

/// The path, escaped for a line of the console, because a file's name may contain line feeds.
[[nodiscard]] std::string printable(const NSString& path);

}  // namespace norvik::detail

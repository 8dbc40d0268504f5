// NorvikCore/logging/internal/LogFile.h - opens a log file to append to it, and refuses what only has its name.
//
//   OpenLogFile file;
//   if (const LogFileRefusal refusal = openLogFile(path, LogFileOwner::user, file)) report(refusal.reason);
//   if (file.endsInsideLine) ...        // a process was killed in the middle of a line
//
// A log file is a regular file of this user with one name. Anything else in a log folder was put there by mistake or on
// purpose: writing would wait for a reader, give the lines to another user, or change a file elsewhere.
//
// Threads: pure functions of the file system.
#pragma once

#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/values/NSString.h"

#include <string>

namespace norvik::detail {

/// Whose file may be written to.
enum class LogFileOwner { user, anybody };

/// Why a file is not written to. `reason` goes on from the path: "is a folder".
struct LogFileRefusal {
  std::string reason;     // empty: it is written to
  int error = 0;          // the system's; 0 where the system did not refuse
  bool isOfFile = false;  // another file in the same folder may do

  explicit operator bool() const noexcept { return !reason.empty(); }
};

struct OpenLogFile {
  kernel::FileDescriptor descriptor;  // appends
  kernel::FileStatus status;
  bool endsInsideLine = false;  // no line feed at its end, or what is there may not be read
};

/// By what the file system says of it; empty where nothing is.
[[nodiscard]] std::string reasonAgainst(const kernel::FileStatus& status, LogFileOwner owner);

/// Waits for nothing but the disk. `file` is set on success only. The last name of the path is no link; the folder's
/// may be one.
[[nodiscard]] LogFileRefusal openLogFile(const std::string& path, LogFileOwner owner, OpenLogFile& file);

/// A path for a line of the console, escaped because a file's name may contain line feeds.
[[nodiscard]] std::string printable(const NSString& path);

}  // namespace norvik::detail

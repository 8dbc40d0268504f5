// programs/norvik-log/LogFolder.h - the log files of a folder, by the names that DDLogFileManagerDefault gives: "log-"
// and six characters of 0-9 and A-F, and then any text.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "FileSource.h"
#include "LogSource.h"

namespace norvik_log {

[[nodiscard]] bool isLogFileName(const std::string& name) noexcept;

/// The paths of a folder's log files, in the order of their start. A file's start is the time of its first line, or the
/// file's creation if that line does not begin with a time. An entry that is not a regular file is reported and left
/// out. Throws std::system_error.
[[nodiscard]] std::vector<std::string> logFilesIn(const std::string& folder, const WallClock& logClock,
                                                  Troubles& troubles);

/// Reads the log files of a folder, one after the other.
class FolderSource : public LogSource {
 public:
  /// A folder that cannot be listed, or has no log files, is reported.
  FolderSource(const std::string& folder, const Reading& reading);

  bool next(Batch& batch) override;

 private:
  const Reading& reading_;
  std::vector<std::string> paths_;
  std::size_t nextPath_ = 0;
  std::unique_ptr<FileSource> file_;
};

}  // namespace norvik_log

// programs/norvik-log/LogFolder.h - the log files of a folder, as DDLogFileManagerDefault names them: "log-" and six of
// 0-9 and A-F, whatever follows.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "FileSource.h"
#include "LogSource.h"

namespace norvik_log {

[[nodiscard]] bool isLogFileName(const std::string& name) noexcept;

/// The paths of a folder's log files, in the order in which they were begun: by the first message's time, and where
/// there is none by the file's creation. What is no regular file is reported and left out. Throws std::system_error.
[[nodiscard]] std::vector<std::string> logFilesIn(const std::string& folder, const WallClock& logClock,
                                                  Troubles& troubles);

/// The log files of a folder, one after the other.
class FolderSource : public LogSource {
 public:
  /// What cannot be listed is reported, and so is a folder without log files.
  FolderSource(const std::string& folder, const Reading& reading);

  bool next(Batch& batch) override;

 private:
  const Reading& reading_;
  std::vector<std::string> paths_;
  std::size_t nextPath_ = 0;
  std::unique_ptr<FileSource> file_;
};

}  // namespace norvik_log

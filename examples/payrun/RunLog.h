// examples/payrun/RunLog.h - the log of a pay run: one file logger, flushed before the program ends.
#pragma once

#include <filesystem>
#include <optional>

namespace payrun {

/// While it lives, what the library and the program log goes to files in `folder`, or without one in the library's own
/// folder for this program's logs. A file takes what is logged in a day, however much that is. Not more than one at a
/// time. Throws std::runtime_error where no file can be written there: a pay run leaves a log, or is not done.
class RunLog {
 public:
  explicit RunLog(const std::optional<std::filesystem::path>& folder);
  ~RunLog();
  RunLog(const RunLog&) = delete;
  RunLog& operator=(const RunLog&) = delete;
};

}  // namespace payrun

// examples/payrun/RunLog.h - the log of a pay run, flushed before the program ends.
#pragma once

#include "LogChoice.h"

namespace payrun {

/// While it lives, what the library and the program log goes where the choice says. A file takes what is logged in a
/// day, however much that is. Not more than one at a time. Throws std::runtime_error where files are chosen and none
/// can be written: a pay run leaves its log, or is not done. A crash leaves a report in the log.
class RunLog {
 public:
  explicit RunLog(const LogChoice& choice);
  ~RunLog();
  RunLog(const RunLog&) = delete;
  RunLog& operator=(const RunLog&) = delete;
};

}  // namespace payrun

// examples/payrun/RunLog.h - the log of a pay run, flushed before the program ends.
#pragma once

#include "LogChoice.h"

namespace payrun {

/// While this object exists, messages of the library and the program go to the chosen loggers. A log file takes all
/// messages of a day, whatever its size. At most one object at a time. Throws std::runtime_error if files are chosen
/// and none can be written, because a pay run must not run without its log. A crash writes a report to the log.
class RunLog {
 public:
  explicit RunLog(const LogChoice& choice);
  ~RunLog();
  RunLog(const RunLog&) = delete;
  RunLog& operator=(const RunLog&) = delete;
};

}  // namespace payrun

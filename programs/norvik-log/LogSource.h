// programs/norvik-log/LogSource.h - something that messages are read from: files, a folder of them, a database.
#pragma once

#include "Batch.h"

namespace norvik_log {

class LogSource {
 public:
  virtual ~LogSource();
  LogSource(const LogSource&) = delete;
  LogSource& operator=(const LogSource&) = delete;

  /// Adds the next messages that the filter admits, in their order; at times none. False once there are no more.
  virtual bool next(Batch& batch) = 0;

 protected:
  LogSource() = default;
};

}  // namespace norvik_log

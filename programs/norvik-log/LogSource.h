// programs/norvik-log/LogSource.h - a source of messages: a file, a folder of files, or a database.
#pragma once

#include "Batch.h"

namespace norvik_log {

class LogSource {
 public:
  virtual ~LogSource();
  LogSource(const LogSource&) = delete;
  LogSource& operator=(const LogSource&) = delete;

  /// Adds the next messages that the filter admits, in their order; it may add none. Returns false when there are no
  /// more.
  virtual bool next(Batch& batch) = 0;

 protected:
  LogSource() = default;
};

}  // namespace norvik_log

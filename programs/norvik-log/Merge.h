// programs/norvik-log/Merge.h - several sources as one, by time.
//
// The order within a source stays; of messages of one time that of the source named first comes first. A message
// without a time follows the one before it in its source.
#pragma once

#include <memory>
#include <vector>

#include "LogSource.h"

namespace norvik_log {

class Merge : public LogSource {
 public:
  explicit Merge(std::vector<std::unique_ptr<LogSource>> sources);
  ~Merge() override;

  bool next(Batch& batch) override;

 private:
  struct Head;
  struct Later;

  std::vector<std::unique_ptr<LogSource>> sources_;
  std::vector<Head> heads_;  // a heap, the earliest first
  bool isBegun_ = false;
};

}  // namespace norvik_log

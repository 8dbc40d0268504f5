// programs/norvik-log/Merge.h - merges several sources into one, by time.
//
// The order within a source is kept. Of messages with the same time, those of the source that was named first come
// first. A message without a time follows the previous message of its source.
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

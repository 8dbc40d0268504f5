// programs/norvik-log/LateSource.h - a followed database that may answer late, read by a thread of its own.
//
// Its messages are waited for, so that they are merged with those of others. If they do not come for two seconds, the
// others go on, and what comes later is handed out then.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

#include "DatabaseEntry.h"

namespace norvik_log {

class LateSource : public DatabaseSource {
 public:
  /// Where no thread can be started, the calling one reads.
  explicit LateSource(std::unique_ptr<DatabaseSource> source);
  ~LateSource() override;

  /// False also if what there is comes late.
  bool next(Batch& batch) override;
  /// Without effect while it is still read.
  void lookAgain() override;

 private:
  void work();
  void readAll();
  [[nodiscard]] bool deliver(Batch batch);

  const std::unique_ptr<DatabaseSource> source_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Batch> found_;
  std::size_t weight_ = 0;  // of what was found
  bool isReading_ = false, isLate_ = false, isStopped_ = false;
  std::exception_ptr failure_;
  std::thread thread_;
};

}  // namespace norvik_log

// programs/norvik-log/LateSource.h - a followed database that may answer late. A thread of its own reads it.
//
// next() waits for the database's messages, so that they are merged with those of other sources. If they do not arrive
// within two seconds, the other sources continue, and next() returns the late messages when they arrive.
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
  /// If no thread can be started, the calling thread reads.
  explicit LateSource(std::unique_ptr<DatabaseSource> source);
  ~LateSource() override;

  /// Also false if the messages are late.
  bool next(Batch& batch) override;
  /// Does nothing while the thread is reading or read messages are waiting.
  void lookAgain() override;

 private:
  void work();
  void readAll();
  [[nodiscard]] bool deliver(Batch batch);

  const std::unique_ptr<DatabaseSource> source_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Batch> found_;
  std::size_t weight_ = 0;  // total weight of `found_`
  bool isReading_ = false, isLate_ = false, isStopped_ = false;
  std::exception_ptr failure_;
  std::thread thread_;
};

}  // namespace norvik_log

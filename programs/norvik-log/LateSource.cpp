#include "LateSource.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace norvik_log {

LateSource::LateSource(std::unique_ptr<DatabaseSource> source) : source_(std::move(source)) {
  try {
    thread_ = std::thread([this] { work(); });
  } catch (const std::system_error&) {
    return;  // the system allows no more threads
  }
}

LateSource::~LateSource() {
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  changed_.notify_all();
  source_->stop();
  if (thread_.joinable()) thread_.join();
}

void LateSource::lookAgain() {
  if (!thread_.joinable()) return source_->lookAgain();
  const std::lock_guard lock(mutex_);
  if (failure_ || !found_.empty()) return;
  isReading_ = true;
  changed_.notify_all();
}

bool LateSource::next(Batch& batch) {
  if (!thread_.joinable()) return source_->next(batch);
  constexpr std::chrono::seconds patience(2);
  std::unique_lock lock(mutex_);
  const auto isAnswered = [this] { return !found_.empty() || !isReading_ || failure_; };
  if (!isLate_) changed_.wait_for(lock, patience, isAnswered);
  isLate_ = !isAnswered();
  if (isLate_) return false;
  if (found_.empty()) {
    if (failure_) std::rethrow_exception(failure_);
    return false;
  }
  batch = std::move(found_.front());
  found_.pop_front();
  weight_ -= batch.weight();
  changed_.notify_all();
  return true;
}

void LateSource::work() {
  std::unique_lock lock(mutex_);
  while (!failure_) {
    changed_.wait(lock, [this] { return isReading_ || isStopped_; });
    if (isStopped_) return;
    lock.unlock();
    std::exception_ptr failure;
    try {
      readAll();
    } catch (...) {
      failure = std::current_exception();
    }
    lock.lock();
    failure_ = failure;
    isReading_ = false;
    changed_.notify_all();
  }
}

void LateSource::readAll() {
  source_->lookAgain();
  for (bool isMore = true; isMore;) {
    Batch batch;
    isMore = source_->next(batch);
    if (!batch.isEmpty() && !deliver(std::move(batch))) return;
  }
}

bool LateSource::deliver(Batch batch) {
  constexpr std::size_t enough = 4 << 20;
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return isStopped_ || weight_ < enough; });
  if (isStopped_) return false;
  weight_ += batch.weight();
  found_.push_back(std::move(batch));
  changed_.notify_all();
  return true;
}

}  // namespace norvik_log

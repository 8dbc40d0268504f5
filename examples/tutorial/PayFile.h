// examples/tutorial/PayFile.h - docs/tutorial.md: a file that is written once a burst of changes is over.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/values/Decimal.h"

#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace payroll {

using namespace norvik;

/// Any thread may call set(). The file is written on a queue of its own.
class PayFile {
 public:
  /// `written` is called on the main thread with the number of amounts in the file.
  PayFile(std::string path, std::function<void(std::size_t)> written)
      : path_(std::move(path)), written_(std::move(written)) {}
  ~PayFile() {
    queue_->cancelAllTimers();
    queue_->dispatchBarrierSynchronously([] {});  // a block that is running uses this object
    if (unsaved_) write();
  }
  PayFile(const PayFile&) = delete;
  PayFile& operator=(const PayFile&) = delete;

  void set(const NSString& name, Decimal grossPay) {
    queue_->dispatchSynchronously([&] {
      pay_[name.utf8()] = grossPay;
      unsaved_ = true;
      queue_->scheduleTimerWithName("save", 0.05, TSKTimerRestart, [this] {
        write();
        TSKDispatchQueue::mainDispatchQueue()->dispatchAsynchronously(
            [written = written_, count = pay_.size()] { written(count); });
      });
    });
  }

 private:
  void write() {
    std::ofstream file(path_);
    for (const auto& [name, grossPay] : pay_) file << name << " " << grossPay << "\n";
    unsaved_ = false;
  }

  const Ref<TSKDispatchQueue> queue_ = TSKDispatchQueue::dispatchQueueWithLabel("pay file");
  const std::string path_;
  const std::function<void(std::size_t)> written_;
  std::map<std::string, Decimal> pay_;  // used only on the queue
  bool unsaved_ = false;                // used only on the queue
};

}  // namespace payroll

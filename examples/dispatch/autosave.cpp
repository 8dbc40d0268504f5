// examples/dispatch/autosave.cpp - hours that any thread may change. They save themselves after a burst of changes.
#include "NorvikCore/dispatch/TSKBlockOperation.h"
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"

#include <cstdio>
#include <map>
#include <string>
#include <utility>

using namespace norvik;

dispatch_semaphore_t saved = dispatch_semaphore_create(0);

class Hours {
 public:
  explicit Hours(std::map<std::string, int> hours) : hours_(std::move(hours)) {}
  ~Hours() {
    queue_->cancelAllTimers();
    queue_->dispatchBarrierSynchronously([] {});  // a save that is running uses this object
    if (unsaved_) save();
  }

  void set(const std::string& name, int hours) {
    queue_->dispatchSynchronously([&] {
      hours_[name] = hours;
      unsaved_ = true;
      queue_->scheduleTimerWithName("save", 0.05, TSKTimerRestart, [this] { save(); });
    });
  }

  /// Other threads see both changes or none. set() runs in place, because this is the queue already.
  void swap(const std::string& name, const std::string& other) {
    queue_->dispatchSynchronously([&] {
      const int hours = hours_[name];
      set(name, hours_[other]);
      set(other, hours);
    });
  }

  Ref<TSKBlockOperation> report() {
    return TSKBlockOperation::dispatchedOperationWithQueue(queue_, [this] { print("report"); });
  }

 private:
  void save() {
    print("saved");
    unsaved_ = false;
    dispatch_semaphore_signal(saved);
  }
  void print(const char* what) const {
    std::printf("%s:", what);
    for (const auto& [name, hours] : hours_) std::printf(" %s %d", name.c_str(), hours);
    std::printf("\n");
  }

  const Ref<TSKDispatchQueue> queue_ = TSKDispatchQueue::dispatchQueueWithLabel("hours");
  std::map<std::string, int> hours_;
  bool unsaved_ = false;
};

int main() {
  Hours hours({{"Ann", 38}, {"Bob", 20}});
  hours.swap("Ann", "Bob");
  dispatch_semaphore_wait(saved, DISPATCH_TIME_FOREVER);  // 50 ms after the last change
  const auto report = hours.report();
  report->waitUntilFinished();
  hours.set("Bob", 40);
}  // the destructor saves the last change

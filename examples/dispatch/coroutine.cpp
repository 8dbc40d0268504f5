// A coroutine that computes on a queue and shows the result on the main thread.
#include "NorvikCore/dispatch/TSKDispatchQueue_coroutine.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/Queue_coroutine.h"
#include "NorvikCore/platform/values/Decimal_literal.h"

#include <coroutine>
#include <cstdio>
#include <cstdlib>
#include <exception>

using namespace norvik;

/// A coroutine that starts at once. No code waits for its end.
struct Job {
  struct promise_type {
    Job get_return_object() { return {}; }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() {}
    void unhandled_exception() { std::terminate(); }
  };
};

class Payroll {
 public:
  // Parameters are copied into the coroutine: references could end before it does.
  Job pay(NSString name, Decimal gross) {
    co_await queue_;  // from here on in a block of the queue
    const Decimal net = gross - gross * 0.20_dec;
    total_ = total_ + net;
    co_await dispatch_get_main_queue();  // and from here on, on the main thread
    std::printf("%s: %s\n", name.str().c_str(), net.stringValue().c_str());
  }

  Decimal total() {
    return queue_->dispatchSynchronously([this] { return total_; }).value();
  }

 private:
  const Ref<TSKDispatchQueue> queue_ = TSKDispatchQueue::dispatchQueueWithLabel("payroll");
  Decimal total_;
};

int main() {
  static Payroll payroll;
  payroll.pay("Ann", 2500_dec);
  payroll.pay("Bob", 1800_dec);
  [](Payroll& all) -> Job {
    co_await TSKDispatchQueue::sharedConcurrentQueue();
    const Decimal total = all.total();   // waits for the queue "payroll"
    co_await dispatch_get_main_queue();  // after what both jobs show
    std::printf("total: %s\n", total.stringValue().c_str());
    std::exit(0);
  }(payroll);
  dispatch_main();
}

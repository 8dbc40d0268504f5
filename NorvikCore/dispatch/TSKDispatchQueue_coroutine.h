// NorvikCore/dispatch/TSKDispatchQueue_coroutine.h - `co_await wrapper`: the coroutine continues as an asynchronous
// block of the wrapper.
//
//   Job pay(Ref<TSKDispatchQueue> payroll, Employee employee) {  // Job: any coroutine type
//     co_await payroll;                                          // from here on in a block of `payroll`
//     payroll->dispatchSynchronously([&] { add(employee); });    // inside it already: as deadlockBehavior() says
//   }
//
// Queue_coroutine.h describes threads, memory and errors. co_await is never refused, because no thread waits. After it
// the coroutine is in a new queue stack, which holds the wrapper alone (none, for a concurrent wrapper): it has left
// the queues that it was inside before, and the part up to the next suspension is one block. A coroutine that waits
// retains the wrapper. co_await of an empty Ref raises NSInvalidArgumentException in the coroutine.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include <coroutine>
#include <utility>

namespace norvik {
namespace detail {

class WrapperAwaiter : private Item {
 public:
  explicit WrapperAwaiter(Ref<TSKDispatchQueue> wrapper) noexcept : wrapper_(std::move(wrapper)) {}
  WrapperAwaiter(const WrapperAwaiter&) = delete;
  WrapperAwaiter& operator=(const WrapperAwaiter&) = delete;

  [[nodiscard]] bool await_ready() const noexcept { return false; }
  void await_suspend(std::coroutine_handle<> coroutine) {
    // The coroutine may continue, and end, before enqueue() returns.
    const dispatch_queue_t queue = wrapper_ ? wrapper_->queue() : dispatch_queue_t();
    requireQueue(queue, "co_await");
    coroutine_ = coroutine;
    run = [](Item* item) {
      auto* const self = static_cast<WrapperAwaiter*>(item);
      const std::coroutine_handle<> waiting = self->coroutine_;
      const Ref<TSKDispatchQueue> wrapper = std::move(self->wrapper_);  // resume() may destroy the awaiter
      if (wrapper->concurrent()) return waiting.resume();
      wrapper->runInNewStack(blockCall(waiting));
    };
    enqueue(queue, this, Delivery::prompt, Order::normal);
  }
  void await_resume() const noexcept {}

 private:
  Ref<TSKDispatchQueue> wrapper_;
  std::coroutine_handle<> coroutine_;
};

}  // namespace detail

[[nodiscard]] inline detail::WrapperAwaiter operator co_await(Ref<TSKDispatchQueue> wrapper) noexcept {
  return detail::WrapperAwaiter(std::move(wrapper));
}
[[nodiscard]] inline detail::WrapperAwaiter operator co_await(TSKDispatchQueue& wrapper) {
  return detail::WrapperAwaiter(ref(wrapper));
}

}  // namespace norvik

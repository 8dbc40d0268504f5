// NorvikCore/platform/dispatch/Queue_coroutine.h - `co_await queue`: the coroutine continues as a block of the queue.
//
//   Job saveHours(dispatch_queue_t disk, Hours hours) {  // Job: any coroutine type
//     co_await disk;                                     // from here on in a block of `disk`
//     writeFile(hours);
//     co_await dispatch_get_main_queue();                // and from here on, on the main thread
//     showSaved();
//   }
//
// The coroutine is suspended and enqueued, as by dispatch_async(): always behind the blocks that wait already, also if
// it runs on that queue now. No thread waits, so nothing can deadlock. The part up to the next suspension, or to the
// end, is one block: it holds a serial queue for that time and no longer.
//
// Threads: any. The caller, which continues at once, and the coroutine may run at the same time. The coroutine must not
//          hold a lock across co_await, because another thread would release it.
// Memory:  nothing is allocated: the place in the queue is part of the coroutine's frame. The queue lives until the
//          coroutine has continued. A coroutine that waits for a queue must not be destroyed.
// Errors:  co_await of an empty handle raises NSInvalidArgumentException in the coroutine. An exception that the
//          coroutine's type lets out (unhandled_exception() throws) ends the process, as that of any asynchronous
//          block.
// Limits:  on a suspended queue the coroutine waits until the queue is resumed. In a child made by fork() a coroutine
//          that waited at the fork neither continues nor is destroyed, like a waiting block.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"

#include <coroutine>
#include <utility>

namespace norvik::detail {

class QueueAwaiter : private Item {
 public:
  explicit QueueAwaiter(dispatch_queue_t queue) noexcept : queue_(std::move(queue)) {}
  QueueAwaiter(const QueueAwaiter&) = delete;
  QueueAwaiter& operator=(const QueueAwaiter&) = delete;

  [[nodiscard]] bool await_ready() const noexcept { return false; }
  void await_suspend(std::coroutine_handle<> coroutine) {
    requireQueue(queue_, "co_await");
    coroutine_ = coroutine;
    run = [](Item* item) { static_cast<QueueAwaiter*>(item)->coroutine_.resume(); };
    // The coroutine may continue, and end, before enqueue() returns.
    const dispatch_queue_t queue = std::move(queue_);
    enqueue(queue, this, Delivery::prompt, Order::normal);
  }
  void await_resume() const noexcept {}

 private:
  dispatch_queue_t queue_;
  std::coroutine_handle<> coroutine_;
};

[[nodiscard]] inline QueueAwaiter operator co_await(dispatch_queue_t queue) noexcept {
  return QueueAwaiter(std::move(queue));
}

}  // namespace norvik::detail

// NorvikCore/platform/dispatch/Group.h - waiting for a number of blocks, on any queues.
//
//   auto group = dispatch_group_create();
//   for (auto& department : departments) dispatch_group_async(group, queue, [&] { department.sumUp(); });
//   dispatch_group_wait(group, DISPATCH_TIME_FOREVER);          // or at most 5s, dispatch_time(...)
//
// A group counts calls of enter that are not yet matched by a leave. It is empty at 0, and can be filled again.
// Synchronised. In a child made by fork() every group is empty, and a surplus leave has no effect.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"

#include <cstdint>

namespace norvik {

namespace detail {
class GroupCore;
NK_EXPORT void retainCore(GroupCore* group) noexcept;
NK_EXPORT void releaseCore(GroupCore* group) noexcept;
}  // namespace detail

using dispatch_group_t = detail::Handle<detail::GroupCore>;

[[nodiscard]] NK_EXPORT dispatch_group_t dispatch_group_create();

/// Adds one to the count. Each call needs a dispatch_group_leave(), which any thread may make.
NK_EXPORT void dispatch_group_enter(const dispatch_group_t& group);
/// Subtracts one from the count. Leaving an empty group aborts with a line "BUG: ..." on the system console.
NK_EXPORT void dispatch_group_leave(const dispatch_group_t& group);

/// Waits until the group is empty. Returns 0, or another value if `timeout` passed first. If no thread can be started,
/// a wait without a timeout runs the blocks of dispatch_group_async() itself.
NK_EXPORT std::intptr_t dispatch_group_wait(const dispatch_group_t& group, dispatch_time_t timeout);
/// Waits at most that long.
template <detail::ChronoDuration Duration>
std::intptr_t dispatch_group_wait(const dispatch_group_t& group, const Duration& timeout) {
  return dispatch_group_wait(group, dispatch_time(DISPATCH_TIME_NOW, timeout));
}
/// Waits until a Date, or until a time of std::chrono's system clock, at most.
template <detail::WallInstant Instant>
std::intptr_t dispatch_group_wait(const dispatch_group_t& group, const Instant& deadline) {
  return dispatch_group_wait(group, dispatch_walltime(deadline));
}
template <detail::PlainNumber Number>
std::intptr_t dispatch_group_wait(const dispatch_group_t&, Number) {
  static_assert(!sizeof(Number), "a plain number is no time: write a duration, such as 2s");
  return 0;
}

namespace detail {
/// Raises for an empty handle. Called before anything is allocated, so that nothing leaks.
NK_EXPORT void requireGroup(const dispatch_group_t& group, const char* function);
NK_EXPORT void enqueueForGroup(const dispatch_group_t& group, const dispatch_queue_t& queue, Item* item);
NK_EXPORT void notifyWhenEmpty(const dispatch_group_t& group, const dispatch_queue_t& queue, Item* item);

/// Leaves the group once the block that holds it has run and is destroyed.
class GroupMembership {
 public:
  explicit GroupMembership(const dispatch_group_t& group) : group_(group) { dispatch_group_enter(group_); }
  GroupMembership(GroupMembership&& other) noexcept = default;
  GroupMembership(const GroupMembership&) = delete;
  GroupMembership& operator=(const GroupMembership&) = delete;
  GroupMembership& operator=(GroupMembership&&) = delete;
  ~GroupMembership() {
    if (group_) dispatch_group_leave(group_);
  }

 private:
  dispatch_group_t group_;
};
}  // namespace detail

/// Enqueues a block that counts in the group until it has run and is destroyed.
template <class F>
void dispatch_group_async(const dispatch_group_t& group, const dispatch_queue_t& queue, F&& block) {
  detail::requireQueue(queue, "dispatch_group_async");
  struct Member {
    detail::GroupMembership membership;  // destroyed after the block
    std::decay_t<F> block;
    void operator()() && { std::move(block)(); }
  };
  detail::enqueueForGroup(group, queue,
                          detail::makeBlock(Member{detail::GroupMembership(group), std::forward<F>(block)}));
}

/// Enqueues a block once, when the group is empty; immediately if it is empty already.
template <class F>
void dispatch_group_notify(const dispatch_group_t& group, const dispatch_queue_t& queue, F&& block) {
  detail::requireGroup(group, "dispatch_group_notify");
  detail::requireQueue(queue, "dispatch_group_notify");
  detail::notifyWhenEmpty(group, queue, detail::makeBlock(std::forward<F>(block)));
}

}  // namespace norvik

// tests/platform/dispatch/Job.h - a coroutine that starts at once. No code waits for its end.
#pragma once

#include <coroutine>

namespace norvik::test {

struct Job {
  struct promise_type {
    Job get_return_object() noexcept { return {}; }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() noexcept {}
    void unhandled_exception() { throw; }
  };
};

}  // namespace norvik::test

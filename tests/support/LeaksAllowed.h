// tests/support/LeaksAllowed.h - allows leaks of objects that are allocated while a LeaksAllowed exists: objects in a
// reference cycle, and objects that are leaked on purpose because another thread may have been using them.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NORVIK_TEST_LOOKS_FOR_LEAKS
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define NORVIK_TEST_LOOKS_FOR_LEAKS
#endif

#if defined(NORVIK_TEST_LOOKS_FOR_LEAKS)
#include <sanitizer/lsan_interface.h>
#endif

namespace norvik::test {

/// Applies to allocations on this thread: `const LeaksAllowed leaks;`.
class LeaksAllowed {
 public:
  LeaksAllowed() {
#if defined(NORVIK_TEST_LOOKS_FOR_LEAKS)
    __lsan_disable();
#endif
  }
  ~LeaksAllowed() {
#if defined(NORVIK_TEST_LOOKS_FOR_LEAKS)
    __lsan_enable();
#endif
  }
  LeaksAllowed(const LeaksAllowed&) = delete;
  LeaksAllowed& operator=(const LeaksAllowed&) = delete;
};

}  // namespace norvik::test

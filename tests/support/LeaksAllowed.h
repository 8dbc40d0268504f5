// tests/support/LeaksAllowed.h - allows leaks of objects that are allocated while a LeaksAllowed exists: objects in a
// reference cycle, and objects that are leaked on purpose because another thread may have been using them.
#pragma once

#include "tests/support/Sanitizers.h"

#if defined(NK_TEST_ADDRESS_SANITIZER)
#include <sanitizer/lsan_interface.h>
#endif

namespace norvik::test {

/// Applies to allocations on this thread: `const LeaksAllowed leaks;`.
class LeaksAllowed {
 public:
  LeaksAllowed() {
#if defined(NK_TEST_ADDRESS_SANITIZER)
    __lsan_disable();
#endif
  }
  ~LeaksAllowed() {
#if defined(NK_TEST_ADDRESS_SANITIZER)
    __lsan_enable();
#endif
  }
  LeaksAllowed(const LeaksAllowed&) = delete;
  LeaksAllowed& operator=(const LeaksAllowed&) = delete;
};

}  // namespace norvik::test

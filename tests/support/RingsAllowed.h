// tests/support/RingsAllowed.h - objects that hold one another in a ring, made on purpose, are no leak while this
// lives.
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

namespace norvik_test {

/// For what is allocated on this thread: `RingsAllowed rings;`.
class RingsAllowed {
 public:
  RingsAllowed() {
#if defined(NORVIK_TEST_LOOKS_FOR_LEAKS)
    __lsan_disable();
#endif
  }
  ~RingsAllowed() {
#if defined(NORVIK_TEST_LOOKS_FOR_LEAKS)
    __lsan_enable();
#endif
  }
  RingsAllowed(const RingsAllowed&) = delete;
  RingsAllowed& operator=(const RingsAllowed&) = delete;
};

}  // namespace norvik_test

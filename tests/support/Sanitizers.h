// tests/support/Sanitizers.h - the sanitizer with which a test is built.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NK_TEST_ADDRESS_SANITIZER 1
#elif __has_feature(thread_sanitizer)
#define NK_TEST_THREAD_SANITIZER 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define NK_TEST_ADDRESS_SANITIZER 1
#elif defined(__SANITIZE_THREAD__)
#define NK_TEST_THREAD_SANITIZER 1
#endif

namespace norvik::test {

/// For tests of many random inputs, which take up to thirty times as long with a sanitizer.
#if defined(NK_TEST_ADDRESS_SANITIZER) || defined(NK_TEST_THREAD_SANITIZER)
inline constexpr bool isSanitized = true;
#else
inline constexpr bool isSanitized = false;
#endif

}  // namespace norvik::test

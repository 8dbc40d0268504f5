// tests/support/InChild.h - runs a part of a test in a child process, so that its changes to the process (limits,
// mounts, users, counters) have no effect on the other tests.
//
//   RUN_IN_CHILD({
//     setrlimit(...);
//     EXPECT_EQ(...);      // failures show, and fail the test
//   });
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#define RUN_IN_CHILD(...)                                    \
  do {                                                       \
    const auto inChild = [&]() __VA_ARGS__;                  \
    GTEST_FLAG_SET(death_test_style, "threadsafe");          \
    EXPECT_EXIT(                                             \
        {                                                    \
          inChild();                                         \
          std::fflush(nullptr);                              \
          std::_Exit(::testing::Test::HasFailure() ? 1 : 0); \
        },                                                   \
        ::testing::ExitedWithCode(0), "");                   \
  } while (false)

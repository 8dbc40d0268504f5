// tests/support/GrowingMemory.h - gives a logger too little memory for a message, and then more and more. Only one
// source file of a program includes this, because it includes LittleMemory.h.
#pragma once

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "tests/support/LittleMemory.h"

#include <cstdint>

namespace norvik::test {

/// Logs the message on the logger's queue again and again, each time with one more granted request for memory, until no
/// request is refused. Calls `afterEach` after each attempt. Returns the number of attempts.
template <class AfterEach>
std::uint64_t logWithGrowingMemory(DDAbstractLogger& logger, const DDLogMessage& message, AfterEach&& afterEach) {
  for (int granted = 0;; ++granted) {
    bool wasRefused = false;
    dispatch_sync(logger.loggerQueue(), [&] {
      const LittleMemory memory(granted);
      logger.logMessage(message);
      wasRefused = memory.wasRefused();
    });
    afterEach();
    if (!wasRefused) return static_cast<std::uint64_t>(granted) + 1;
  }
}

}  // namespace norvik::test

// tests/support/GrowingMemory.h - a logger that has too little memory for a message, and then a little more. One source
// of a program includes this, as LittleMemory.h.
#pragma once

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "tests/support/LittleMemory.h"

#include <cstdint>

namespace norvik::test {

/// Logs the message on the logger's queue, each time with one request of memory more, until none is refused. Calls
/// `afterEach` behind each. Returns how often that was.
template <class AfterEach>
std::uint64_t logWithGrowingMemory(DDAbstractLogger& logger, const DDLogMessage& message, AfterEach&& afterEach) {
  std::uint64_t logged = 0;
  bool wasRefused = true;
  for (int granted = 0; wasRefused; ++granted, ++logged) {
    dispatch_sync(logger.loggerQueue(), [&] {
      const LittleMemory memory(granted);
      logger.logMessage(message);
      wasRefused = memory.wasRefused();
    });
    afterEach();
  }
  return logged;
}

}  // namespace norvik::test

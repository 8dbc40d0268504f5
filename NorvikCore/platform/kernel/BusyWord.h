// NorvikCore/platform/kernel/BusyWord.h - a word that a thread takes and releases: the basis of locks.
//
//   if (word.exchangeAcquire(1) != 0) waitForBusy(word);
//   ...
//   if (word.exchangeRelease(0) != 1) wakeForBusy(word);
//
// Without contention each step is one exchange. A thread that finds the word taken sleeps. Not recursive, not fair.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/AtomicWord.h"

#include <cstdint>

namespace norvik::detail {

/// 0 is free, 1 taken, 2 taken and perhaps with waiting threads.
using BusyWord = AtomicWord<std::uint32_t>;
NK_EXPORT void waitForBusy(BusyWord& word) noexcept;  ///< returns when the calling thread has taken the word
NK_EXPORT void wakeForBusy(BusyWord& word) noexcept;  ///< wakes one waiting thread

}  // namespace norvik::detail

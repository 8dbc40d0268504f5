// NorvikCore/platform/kernel/BusyWord.h - one word that a thread takes and gives back: what locks are made of.
//
//   if (word.exchangeAcquire(1) != 0) waitForBusy(word);
//   ...
//   if (word.exchangeRelease(0) != 1) wakeForBusy(word);
//
// Free, it costs one exchange each way. A thread that finds it taken sleeps. Not recursive, not fair.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/AtomicWord.h"

#include <cstdint>

namespace norvik::detail {

/// 0 is free, 1 taken, 2 taken and perhaps waited for.
using BusyWord = AtomicWord<std::uint32_t>;
NK_EXPORT void waitForBusy(BusyWord& word) noexcept;  ///< takes it, once it is free
NK_EXPORT void wakeForBusy(BusyWord& word) noexcept;  ///< one of the threads that wait

}  // namespace norvik::detail

#include "NorvikCore/platform/kernel/BusyWord.h"

#include "NorvikCore/platform/kernel/internal/Futex.h"

namespace norvik::detail {

void waitForBusy(BusyWord& word) noexcept {
  while (word.exchangeAcquire(2) != 0) futexWait(word, 2);
}

void wakeForBusy(BusyWord& word) noexcept { futexWake(word); }

}  // namespace norvik::detail

#include "NorvikCore/Categories/NSDate+Mock.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"

namespace norvik {
namespace {

struct MockState {
  Mutex mutex;
  bool isActive NK_GUARDED_BY(mutex) = false;
  std::optional<Date> mockDate NK_GUARDED_BY(mutex);
  Date::CurrentDateSource dateBefore NK_GUARDED_BY(mutex) = nullptr;

  static MockState& shared() {
    return kernel::madeOnce([] { return new MockState; });
  }
};

/// The operation `mockCurrentDate` before the exchange and `date` after it.
std::optional<Date> storedMockDate() {
  auto& state = MockState::shared();
  MutexLock lock(state.mutex);
  return state.mockDate;
}

}  // namespace

void setMockDateStringValue(const NSString& text) {
  auto& state = MockState::shared();
  MutexLock lock(state.mutex);
  state.mockDate = Date::dateWithString(text.view());
  if (state.isActive) return;
  state.dateBefore = Date::setCurrentDateSource(&storedMockDate);
  state.isActive = true;
}

std::optional<Date> mockCurrentDate() {
  auto& state = MockState::shared();
  Date::CurrentDateSource dateBefore = nullptr;
  {
    MutexLock lock(state.mutex);
    if (!state.isActive) return state.mockDate;
    dateBefore = state.dateBefore;
  }
  return dateBefore ? dateBefore() : Date::systemDate();
}

}  // namespace norvik

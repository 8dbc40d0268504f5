// NorvikCore/formatters/internal/MainThreadFormatters.h - the date formatters that the main thread keeps.
//
// Date formatters are confined, and creating one is expensive. So the main thread reuses one formatter of each kind,
// and every other thread creates one for each call. No lock is needed.
#pragma once

#include "NorvikCore/formatters/NKUkDateFormatter.h"
#include "NorvikCore/formatters/NKUtcDateFormatter.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Thread.h"

#include <atomic>

namespace norvik::detail {

template <class Formatter>
class MainThreadFormatter {
 public:
  /// Calls `body` with the kept formatter or with a new one. The main thread keeps the new one after the call.
  template <class Body>
  auto use(Body body) {
    const bool isMain = kernel::isMainThread();
    Ref<Formatter> formatter = isMain ? kept_ : nullptr;
    if (!formatter) {
      formatter = make<Formatter>();
      made_.fetch_add(1, std::memory_order_relaxed);
    }
    auto result = body(*formatter);
    if (isMain && !kept_) kept_ = formatter;
    return result;
  }

  /// On the main thread only.
  [[nodiscard]] bool isFilled() const { return static_cast<bool>(kept_); }
  /// How many formatters were made on all threads.
  [[nodiscard]] unsigned made() const { return made_.load(std::memory_order_relaxed); }

 private:
  Ref<Formatter> kept_;  // used by the main thread only
  std::atomic<unsigned> made_{0};
};

struct MainThreadFormatters {
  MainThreadFormatter<NKUtcDateFormatter> utcStyle, utcPattern;
  MainThreadFormatter<NSDateFormatter> localPattern;
  MainThreadFormatter<NKUkDateFormatter> ukPattern;
};

[[nodiscard]] NK_EXPORT_FOR_TESTS MainThreadFormatters& mainThreadFormatters();

}  // namespace norvik::detail

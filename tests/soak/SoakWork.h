// tests/soak/SoakWork.h - the work that every thread of the soak, and every child that it forks, repeats. Each answer
// is compared with the one computed from the thread's number and the round's number.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/foundation/NSHTTPCookieStorage.h"
#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/object/NSObject.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace norvik::test {

/// Writes a line to the original standard error, and records that the soak has failed.
void soakFailed(const std::string& what);
[[nodiscard]] bool hasSoakFailed();
/// Call it before standard error becomes a pipe.
void keepReportDescriptor(int descriptor);

inline void expect(bool isRight, const std::string& what) {
  if (!isRight) soakFailed(what);
}

class SoakAccount : public NSObject {
  NK_OBJECT(SoakAccount, NSObject)
  NK_ATOMIC_PROPERTY(int, balance, setBalance)
};

/// The objects that all threads use at the same time.
class SoakWork {
 public:
  /// Preferences and cookies are stored in that folder.
  explicit SoakWork(const std::string& folder);

  /// Does everything once. The source is a number below 100000 that no other thread uses at the time.
  void round(int source, int number);
  /// Does the part of a child.
  void roundOfChild(int source, int number);
  /// Checks what a child of this source has stored.
  void checkTracesOfChild(int source, int number);
  /// Call it when all threads are done.
  void checkTotals();

 private:
  void observe(int source, int number);
  static void bind(int source, int number);
  void dispatch(int source, int number);
  static void query(int source, int number);
  void preferences(int source, int number);
  void cookies(int source, int number);

  const NSString defaultsPath_;
  const Ref<NSUserDefaults> defaults_;
  const Ref<NSHTTPCookieStorage> cookies_;
  const Ref<NSURL> url_;

  const Ref<SoakAccount> account_ = make<SoakAccount>();
  const Ref<FBKVOController> controller_;
  std::atomic<std::uint64_t> changes_ = 0, notifications_ = 0;

  const Ref<TSKDispatchQueue> queue_ = TSKDispatchQueue::dispatchQueueWithLabel("soak");
  std::atomic<std::uint64_t> dispatched_ = 0;
  std::uint64_t ran_ = 0;  // changed on the queue only
};

}  // namespace norvik::test

#include "NorvikCore/platform/dispatch/internal/ForkAware.h"

#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"

namespace norvik::detail {

class ForkRegistry {
 public:
  static ForkRegistry& shared() {
    return kernel::madeOnce([] { return new ForkRegistry; });
  }

  void add(ForkAware* object) {
    const QueueLock lock(mutex_);
    object->next_ = first_;
    if (first_ != nullptr) first_->previous_ = object;
    first_ = object;
  }

  void remove(ForkAware* object) {
    const QueueLock lock(mutex_);
    (object->previous_ != nullptr ? object->previous_->next_ : first_) = object->next_;
    if (object->next_ != nullptr) object->next_->previous_ = object->previous_;
  }

 private:
  ForkRegistry() { kernel::atForkAlone(&beforeFork, &afterForkInParent, &afterForkInChild); }

  static void beforeFork() NK_NO_THREAD_SAFETY_ANALYSIS { shared().mutex_.lock(); }
  static void afterForkInParent() NK_NO_THREAD_SAFETY_ANALYSIS { shared().mutex_.unlock(); }
  static void afterForkInChild() NK_NO_THREAD_SAFETY_ANALYSIS {
    for (ForkAware* object = shared().first_; object != nullptr; object = object->next_) object->resetAfterFork();
    shared().mutex_.resetAfterFork();
  }

  QueueMutex mutex_;
  ForkAware* first_ NK_GUARDED_BY(mutex_) = nullptr;
};

void ForkAware::watchForks() { ForkRegistry::shared().add(this); }
void ForkAware::unwatchForks() noexcept { ForkRegistry::shared().remove(this); }

}  // namespace norvik::detail

#include "NorvikCore/platform/object/Weak.h"

#include "NorvikCore/platform/dispatch/internal/ForkMutex.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/PointerTable.h"

#include <array>
#include <atomic>

namespace norvik::detail {

/// What the Weaks to one object share. It outlives the object as long as a Weak refers to it.
class WeakCell {
 public:
  explicit WeakCell(NSObject* object) : object_(object) {}

  void retain() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  /// Counts the object up unless its count has reached zero. The object's memory is there: going, it waits for this
  /// mutex.
  NSObject* lock() noexcept NK_EXCLUDES(mutex_) {
    const Lock lock(mutex_);
    return object_ && ObjectAccess::retainUnlessGoing(*object_) ? object_ : nullptr;
  }
  bool isGone() noexcept NK_EXCLUDES(mutex_) {
    const Lock lock(mutex_);
    return !object_ || ObjectAccess::isGoing(*object_);
  }
  void forget() noexcept NK_EXCLUDES(mutex_) {
    const Lock lock(mutex_);
    object_ = nullptr;
  }

 private:
  /// What it guards is one pointer, so a forked child finds nothing to put right.
  class NK_SCOPED_CAPABILITY Lock {
   public:
    explicit Lock(ForkMutex& mutex) noexcept NK_ACQUIRE(mutex) : mutex_(mutex) { static_cast<void>(mutex.lock()); }
    ~Lock() NK_RELEASE() { mutex_.unlock(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    ForkMutex& mutex_;
  };

  std::atomic<std::uint32_t> count_{1};
  ForkMutex mutex_;
  NSObject* object_ NK_GUARDED_BY(mutex_);
};

namespace {

/// The cells of living objects. The table holds one count of each cell.
struct Stripe {
  Mutex mutex;
  PointerTable<WeakCell*> cells NK_GUARDED_BY(mutex);
};

// A fork takes all of them at once, and the thread sanitizer follows 64 locks of a thread at most.
using Stripes = std::array<Stripe, 32>;

Stripes& stripes() {
  static auto& all = *new Stripes;
  return all;
}

Stripe& stripeOf(const NSObject* object) {
  return stripes()[(reinterpret_cast<std::uintptr_t>(object) >> 5) % stripes().size()];
}

void takeStripes() NK_NO_THREAD_SAFETY_ANALYSIS {
  for (Stripe& stripe : stripes()) stripe.mutex.lock();
}
void letGoOfStripes() NK_NO_THREAD_SAFETY_ANALYSIS {
  for (Stripe& stripe : stripes()) stripe.mutex.unlock();
}

// A forked child, which may log and set timers, finds no stripe taken for ever. Registered while the library is loaded:
// whoever waits for other threads before a fork does so before the stripes are taken. Only where a program loads the
// library later do its own earlier handlers run while they are taken: those must not use a Weak.
[[maybe_unused]] const bool takenAtForks = [] {
  kernel::atFork(takeStripes, letGoOfStripes, letGoOfStripes);
  return true;
}();

}  // namespace

WeakCell* weakCell(const NSObject* object) noexcept {
  if (ObjectAccess::isDying(*object)) return new WeakCell(nullptr);
  Stripe& stripe = stripeOf(object);
  MutexLock lock(stripe.mutex);
  WeakCell*& cell = stripe.cells[object];
  if (!cell) {
    cell = new WeakCell(const_cast<NSObject*>(object));
    ObjectAccess::setHasWeak(*object);
  }
  cell->retain();
  return cell;
}

void forgetWeak(const NSObject* object) noexcept {
  Stripe& stripe = stripeOf(object);
  WeakCell* cell = nullptr;
  {
    MutexLock lock(stripe.mutex);
    cell = stripe.cells.take(object);
  }
  if (!cell) return;
  cell->forget();
  cell->release();
}

void retain(WeakCell* cell) noexcept { cell->retain(); }
void release(WeakCell* cell) noexcept { cell->release(); }
NSObject* lock(WeakCell* cell) noexcept { return cell->lock(); }
bool isGone(WeakCell* cell) noexcept { return cell->isGone(); }

}  // namespace norvik::detail

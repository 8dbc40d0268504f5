#include "NorvikCore/platform/foundation/NSThread.h"

#include "NorvikCore/platform/kernel/CallStack.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"

#include <pthread.h>

#include <utility>

namespace norvik {
namespace {

// Released by the destructor of thread-specific data, after all thread-local objects of the program were destroyed.
thread_local constinit NSThread* current = nullptr;

void releaseCurrent(void*) { const auto last = Ref<NSThread>::adopt(std::exchange(current, nullptr)); }

void releaseAtThreadEnd() {
  struct Key {
    pthread_key_t key{};
    bool made = pthread_key_create(&key, releaseCurrent) == 0;
  };
  const auto& end = kernel::madeOnce([] { return new Key; });
  if (end.made) pthread_setspecific(end.key, &current);
}

}  // namespace

NSThread::NSThread() : id_(kernel::currentThreadId()) {}
NSThread::~NSThread() = default;

Ref<NSThread> NSThread::currentThread() {
  // In a child made by fork(), the copied thread has another id.
  if (current && current->id_ != kernel::currentThreadId()) releaseCurrent(nullptr);
  if (!current) {
    current = make<NSThread>().take();
    releaseAtThreadEnd();
  }
  return ref(*current);
}

bool NSThread::isMainThread() { return kernel::isMainThread(); }

// Never inlined, because it omits its own frame.
[[gnu::noinline]] Ref<NSArray> NSThread::callStackSymbols() { return NSArray::arrayFrom(kernel::callStackSymbols(1)); }

NSString NSThread::name() const {
  if (id_ == kernel::currentThreadId()) return NSString::fromBytes(kernel::currentThreadName());
  const MutexLock lock(mutex_);
  return name_;
}

void NSThread::setName(const NSString& name) {
  if (id_ != kernel::currentThreadId()) {
    NSException::raise(NSInvalidArgumentException, "NSThread setName: must be called on the thread that gets the name");
  }
  kernel::setCurrentThreadName(name.utf8());
  const MutexLock lock(mutex_);
  name_ = name;
}

NSString NSThread::description() const {
  return stringWithFormat("<NSThread: %p>{number = %u, name = %@}", static_cast<const void*>(this), id_, name());
}

}  // namespace norvik

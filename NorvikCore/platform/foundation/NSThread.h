// NorvikCore/platform/foundation/NSThread.h - a thread as an object, and the call stack of the calling thread.
//
//   NSThread::currentThread()->setName("Import of bank files");
//   if (!NSThread::isMainThread()) NSLog("%@", NSThread::callStackSymbols());
//
// There is one object per thread. It is created when it is first requested.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <cstdint>

namespace norvik {

class NK_EXPORT NSThread : public NSObject {
  NK_OBJECT(NSThread, NSObject)

  NSThread();
  ~NSThread() override;

  /// The same object each time on the same thread. It may be retained beyond the end of the thread.
  [[nodiscard]] static Ref<NSThread> currentThread();
  /// True on the thread whose id is the process id.
  [[nodiscard]] static bool isMainThread();
  /// The callers, innermost first, one text per frame; kernel/CallStack.h describes the texts.
  [[nodiscard]] static Ref<NSArray> callStackSymbols();

  /// The full name, even if the kernel truncates it. For a thread without a name, it is the kernel's name on that
  /// thread and the empty text on other threads.
  [[nodiscard]] NSString name() const;
  /// An empty text removes the name. Raises NSInvalidArgumentException if it is called on another thread.
  void setName(const NSString& name);
  /// The kernel's id of the thread.
  [[nodiscard]] std::uint32_t threadID() const noexcept { return id_; }

  [[nodiscard]] NSString description() const override;

 private:
  std::uint32_t id_;
  mutable Mutex mutex_;
  NSString name_ NK_GUARDED_BY(mutex_);
};

}  // namespace norvik

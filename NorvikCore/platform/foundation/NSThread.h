// NorvikCore/platform/foundation/NSThread.h - the calling thread as an object, and how it got where it is.
//
//   NSThread::currentThread()->setName("Import of bank files");
//   if (!NSThread::isMainThread()) NSLog("%@", NSThread::callStackSymbols());
//
// There is one object per thread, made when it is first asked for.
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

  /// The same object each time on the same thread; it may be kept beyond the thread's end.
  [[nodiscard]] static Ref<NSThread> currentThread();
  /// True on the thread whose id is the process id.
  [[nodiscard]] static bool isMainThread();
  /// The callers, innermost first, one text a frame; kernel/CallStack.h says what is in it.
  [[nodiscard]] static Ref<NSArray> callStackSymbols();

  /// In full, whatever the kernel keeps of it. On its own thread a thread without a name has the kernel's, elsewhere it
  /// has none: then the text is empty.
  [[nodiscard]] NSString name() const;
  /// An empty text takes the name back. Raises NSInvalidArgumentException on another thread than its own.
  void setName(const NSString& name);
  /// The kernel's number of the thread.
  [[nodiscard]] std::uint32_t threadID() const noexcept { return id_; }

  [[nodiscard]] NSString description() const override;

 private:
  std::uint32_t id_;
  mutable Mutex mutex_;
  NSString name_ NK_GUARDED_BY(mutex_);
};

}  // namespace norvik

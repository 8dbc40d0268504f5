// NorvikCore/qt/internal/QtLink.h - lets any thread call functions on a QObject's thread while the object lives.
#pragma once

#include "NorvikCore/platform/kernel/Mutex.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace norvik::detail {

/// Copies share the object. Synchronised. A posted call that has not begun when the object is destroyed is discarded.
///
/// The calls are passed under the link's own mutex, and Qt carries only an empty event, so that the thread sanitizer
/// sees the order of the two threads: Qt itself is not built for it.
class QtLink {
 public:
  /// On the object's thread.
  QtLink() : state_(std::make_shared<State>()) { state_->receiver = std::make_unique<Receiver>(*state_); }

  /// To be called by the object's destructor, before its members are destroyed.
  void close() const {
    std::unique_ptr<Receiver> last;
    std::vector<std::function<void()>> discarded;
    const MutexLock lock(state_->mutex);
    last.swap(state_->receiver);
    discarded.swap(state_->calls);
  }
  [[nodiscard]] bool isOpen() const {
    const MutexLock lock(state_->mutex);
    return state_->receiver != nullptr;
  }
  void post(std::function<void()> function) const {
    const MutexLock lock(state_->mutex);
    if (state_->receiver == nullptr) return;
    state_->calls.push_back(std::move(function));
    if (state_->calls.size() == 1) QCoreApplication::postEvent(state_->receiver.get(), new QEvent(QEvent::User));
  }

 private:
  class Receiver;
  struct State : std::enable_shared_from_this<State> {
    Mutex mutex;
    std::unique_ptr<Receiver> receiver NK_GUARDED_BY(mutex);
    std::vector<std::function<void()>> calls NK_GUARDED_BY(mutex);
  };
  class Receiver : public QObject {
   public:
    explicit Receiver(State& state) : state_(state) {}

    bool event(QEvent* event) override {
      const std::shared_ptr<State> state = state_.shared_from_this();  // a call may close the link
      std::vector<std::function<void()>> calls;
      {
        const MutexLock lock(state->mutex);  // before the event is read: it was made under this mutex
        if (event->type() == QEvent::User) calls.swap(state->calls);
      }
      if (calls.empty()) return QObject::event(event);
      for (auto& call : calls) {
        {
          const MutexLock lock(state->mutex);
          if (state->receiver == nullptr) break;
        }
        call();
      }
      return true;
    }

   private:
    State& state_;
  };

  std::shared_ptr<State> state_;
};

}  // namespace norvik::detail

#include "NorvikCore/platform/foundation/NSNotificationCenter.h"

#include "NorvikCore/platform/foundation/internal/ProcessEnd.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace norvik {

NSNotification::NSNotification(NSString name, Ref<NSObject> object, Ref<NSDictionary> userInfo)
    : name_(std::move(name)), object_(std::move(object)), userInfo_(std::move(userInfo)) {}
NSNotification::~NSNotification() = default;

Ref<NSNotification> NSNotification::notificationWithName(NSString name, Ref<NSObject> object,
                                                         Ref<NSDictionary> userInfo) {
  return make<NSNotification>(std::move(name), std::move(object), std::move(userInfo));
}

NSString NSNotification::description() const {
  return stringWithFormat("%@ {object = %@; userInfo = %@}", name_, object_, userInfo_);
}

namespace detail {

// One registration of one observer. Observers and senders are identified by their addresses; the weak references show
// whether the object at the address is still the same one.
class NotificationWish {
 public:
  NotificationWish(NSObject& observer, std::optional<NSString> name, const Ref<NSObject>& sender)
      : name_(std::move(name)),
        observer_(&observer),
        sender_(sender.get()),
        observerAlive_(&observer),
        senderAlive_(sender) {}
  NotificationWish(const NotificationWish&) = delete;
  NotificationWish& operator=(const NotificationWish&) = delete;
  virtual ~NotificationWish() = default;

  /// Calls the observer if the notification matches and the observer still exists.
  void tell(const NSNotification& notification) {
    if (removed_.load(std::memory_order_acquire)) return;
    if (name_ && *name_ != notification.name()) return;
    if (sender_ && (sender_ != notification.object().get() || !senderAlive_.lock())) return;
    if (const Ref<NSObject> observer = observerAlive_.lock()) call(*observer, notification);
  }

  [[nodiscard]] bool isOf(const NSObject& observer, const std::optional<NSString>& name, const NSObject* sender) const {
    return observer_ == &observer && (!name || name_ == name) && (!sender || sender_ == sender);
  }
  /// Must not be called under a lock, because the observer may be destroyed meanwhile, and the objects it retains with
  /// it.
  [[nodiscard]] bool isOver() const { return !observerAlive_.lock(); }
  void remove() noexcept { removed_.store(true, std::memory_order_release); }

 private:
  virtual void call(NSObject& observer, const NSNotification& notification) = 0;

  std::optional<NSString> name_;
  const NSObject *observer_, *sender_;
  Weak<NSObject> observerAlive_, senderAlive_;
  std::atomic<bool> removed_{false};
};

/// The result of addObserverForName().
class ClosureObserver final : public NSObject {
  NK_OBJECT(ClosureObserver, NSObject)
};

}  // namespace detail

/// The registrations in the order in which they were added. A posting uses the list as it was at its beginning.
class NSNotificationCenter::Registrations {
 public:
  using Wish = std::shared_ptr<detail::NotificationWish>;
  using List = std::shared_ptr<const std::vector<Wish>>;

  [[nodiscard]] List all() const NK_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return list_;
  }

  void add(const Wish& wish) NK_EXCLUDES(mutex_) {
    for (;;) {
      const List before = all();
      auto changed = std::make_shared<std::vector<Wish>>();
      changed->reserve(before->size() + 1);
      std::copy_if(before->begin(), before->end(), std::back_inserter(*changed),
                   [](const auto& each) { return !each->isOver(); });
      changed->push_back(wish);
      const MutexLock lock(mutex_);
      if (list_ != before) continue;  // another thread has changed the list
      list_ = std::move(changed);
      return;
    }
  }

  void remove(const NSObject& observer, const std::optional<NSString>& name, const NSObject* sender)
      NK_EXCLUDES(mutex_) {
    auto changed = std::make_shared<std::vector<Wish>>();
    List before;  // outlives the lock, because closures are destroyed with it
    const MutexLock lock(mutex_);
    before = list_;
    for (const auto& each : *before) {
      if (each->isOf(observer, name, sender)) {
        each->remove();
      } else {
        changed->push_back(each);
      }
    }
    list_ = std::move(changed);
  }

 private:
  mutable Mutex mutex_;
  List list_ NK_GUARDED_BY(mutex_) = std::make_shared<const std::vector<Wish>>();  ///< replaced, never changed
};

NSNotificationCenter::NSNotificationCenter() : registrations_(new Registrations) {}
NSNotificationCenter::~NSNotificationCenter() = default;

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
  return kernel::madeOnce([] {
    detail::postTerminationAtExit();
    return make<NSNotificationCenter>().take();
  });
}

Ref<NSObject> NSNotificationCenter::addObserverForName(std::optional<NSString> name, const Ref<NSObject>& object,
                                                       Block<void(const NSNotification&)> block) {
  class ByClosure final : public detail::NotificationWish {
   public:
    ByClosure(const Ref<NSObject>& observer, std::optional<NSString> wanted, const Ref<NSObject>& sender,
              Block<void(const NSNotification&)> closure)
        : NotificationWish(*observer, std::move(wanted), sender), kept_(observer), closure_(std::move(closure)) {}

   private:
    void call(NSObject&, const NSNotification& notification) override { closure_(notification); }
    Ref<NSObject> kept_;
    Block<void(const NSNotification&)> closure_;
  };
  if (!block) NSException::raise(NSInvalidArgumentException, "addObserverForName: needs a closure");
  Ref<NSObject> observer = make<detail::ClosureObserver>();
  registrations_->add(std::make_shared<ByClosure>(observer, std::move(name), object, std::move(block)));
  return observer;
}

void NSNotificationCenter::addObserver(NSObject& observer, SEL selector, std::optional<NSString> name,
                                       const Ref<NSObject>& object) {
  class BySelector final : public detail::NotificationWish {
   public:
    BySelector(NSObject& target, SEL operation, std::optional<NSString> wanted, const Ref<NSObject>& sender)
        : NotificationWish(target, std::move(wanted), sender), operation_(operation) {}

   private:
    void call(NSObject& target, const NSNotification& notification) override {
      if (operation_.argumentCount() == 0) {
        target.performSelector(operation_);
      } else {
        target.performSelector(operation_, Value(ref(const_cast<NSNotification&>(notification))));
      }
    }
    SEL operation_;
  };
  if (selector.argumentCount() > 1 || !observer.respondsToSelector(selector)) {
    NSException::raise(NSInvalidArgumentException, stringWithFormat("addObserver: %@ cannot be notified by \"%@\"",
                                                                    observer.description(), selector.name()));
  }
  registrations_->add(std::make_shared<BySelector>(observer, selector, std::move(name), object));
}

void NSNotificationCenter::removeObserver(const NSObject& observer) { removeObserver(observer, std::nullopt, nullptr); }

void NSNotificationCenter::removeObserver(const NSObject& observer, const std::optional<NSString>& name,
                                          const Ref<NSObject>& object) {
  registrations_->remove(observer, name, object.get());
}

void NSNotificationCenter::postNotification(const NSNotification& notification) {
  if (this == &defaultCenter()) detail::noteNotification(notification.name());
  const auto all = registrations_->all();
  for (const auto& each : *all) each->tell(notification);
}

void NSNotificationCenter::postNotificationName(NSString name, Ref<NSObject> object, Ref<NSDictionary> userInfo) {
  postNotification(*NSNotification::notificationWithName(std::move(name), std::move(object), std::move(userInfo)));
}

}  // namespace norvik

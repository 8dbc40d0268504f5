#include "NorvikCore/platform/foundation/NSNotificationCenter.h"

#include "NorvikCore/platform/foundation/internal/ProcessEnd.h"
#include "NorvikCore/platform/runtime/Format.h"
#include "NorvikCore/platform/runtime/NSException.h"
#include "NorvikCore/platform/runtime/Weak.h"

#include <algorithm>
#include <atomic>
#include <utility>

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

// One wish of one observer. Observers and senders are told apart by their addresses; the weak references tell whether
// what is at the address is still what was meant.
class NSNotificationCenter::Registration {
 public:
  Registration(NSObject& observer, std::optional<NSString> name, const Ref<NSObject>& sender)
      : name_(std::move(name)),
        observer_(&observer),
        sender_(sender.get()),
        observerAlive_(&observer),
        senderAlive_(sender) {}
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;
  virtual ~Registration() = default;

  /// Tells the observer, if it wants to know and is still there.
  void tell(const NSNotification& notification) {
    if (removed_.load(std::memory_order_acquire)) return;
    if (name_ && *name_ != notification.name()) return;
    if (sender_ && (sender_ != notification.object().get() || !senderAlive_.lock())) return;
    if (const Ref<NSObject> observer = observerAlive_.lock()) call(*observer, notification);
  }

  [[nodiscard]] bool isOf(const NSObject& observer, const std::optional<NSString>& name, const NSObject* sender) const {
    return observer_ == &observer && (!name || name_ == name) && (!sender || sender_ == sender);
  }
  /// Not to be asked under a lock: what it looks at may go meanwhile, and with it whatever it holds.
  [[nodiscard]] bool isOver() const { return !observerAlive_.lock(); }
  void remove() noexcept { removed_.store(true, std::memory_order_release); }

 private:
  virtual void call(NSObject& observer, const NSNotification& notification) = 0;

  std::optional<NSString> name_;
  const NSObject *observer_, *sender_;
  Weak<NSObject> observerAlive_, senderAlive_;
  std::atomic<bool> removed_{false};
};

namespace detail {

/// What addObserverForName() answers.
class ClosureObserver final : public NSObject {
  NK_OBJECT(ClosureObserver, NSObject)
};

}  // namespace detail

NSNotificationCenter::NSNotificationCenter() : registrations_(std::make_shared<Registrations>()) {}
NSNotificationCenter::~NSNotificationCenter() = default;

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
  static auto& center = []() -> NSNotificationCenter& {
    detail::postTerminationAtExit();
    return *make<NSNotificationCenter>().take();
  }();
  return center;
}

Ref<NSObject> NSNotificationCenter::addObserverForName(std::optional<NSString> name, const Ref<NSObject>& object,
                                                       Block<void(const NSNotification&)> block) {
  class ByClosure final : public Registration {
   public:
    ByClosure(const Ref<NSObject>& observer, std::optional<NSString> wanted, const Ref<NSObject>& sender,
              Block<void(const NSNotification&)> closure)
        : Registration(*observer, std::move(wanted), sender), kept_(observer), closure_(std::move(closure)) {}

   private:
    void call(NSObject&, const NSNotification& notification) override { closure_(notification); }
    Ref<NSObject> kept_;
    Block<void(const NSNotification&)> closure_;
  };
  if (!block) throw NSException(NSInvalidArgumentException, "addObserverForName: needs a closure");
  Ref<NSObject> observer = make<detail::ClosureObserver>();
  add(std::make_shared<ByClosure>(observer, std::move(name), object, std::move(block)));
  return observer;
}

void NSNotificationCenter::addObserver(NSObject& observer, SEL selector, std::optional<NSString> name,
                                       const Ref<NSObject>& object) {
  class BySelector final : public Registration {
   public:
    BySelector(NSObject& target, SEL operation, std::optional<NSString> wanted, const Ref<NSObject>& sender)
        : Registration(target, std::move(wanted), sender), operation_(operation) {}

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
    throw NSException(NSInvalidArgumentException,
                      stringWithFormat("addObserver: %@ cannot be told of notifications by \"%@\"",
                                       observer.description(), selector.name()));
  }
  add(std::make_shared<BySelector>(observer, selector, std::move(name), object));
}

void NSNotificationCenter::add(const std::shared_ptr<Registration>& registration) {
  for (;;) {
    const auto before = registrations();
    auto changed = std::make_shared<Registrations>();
    changed->reserve(before->size() + 1);
    std::copy_if(before->begin(), before->end(), std::back_inserter(*changed),
                 [](const auto& each) { return !each->isOver(); });
    changed->push_back(registration);
    const MutexLock lock(mutex_);
    if (registrations_ != before) continue;  // somebody was faster
    registrations_ = std::move(changed);
    return;
  }
}

void NSNotificationCenter::removeObserver(const NSObject& observer) { removeObserver(observer, std::nullopt, nullptr); }

void NSNotificationCenter::removeObserver(const NSObject& observer, const std::optional<NSString>& name,
                                          const Ref<NSObject>& object) {
  auto changed = std::make_shared<Registrations>();
  std::shared_ptr<const Registrations> before;  // lives longer than the lock: closures go with it
  const MutexLock lock(mutex_);
  before = registrations_;
  for (const auto& each : *before) {
    if (each->isOf(observer, name, object.get())) {
      each->remove();
    } else {
      changed->push_back(each);
    }
  }
  registrations_ = std::move(changed);
}

std::shared_ptr<const NSNotificationCenter::Registrations> NSNotificationCenter::registrations() const {
  const MutexLock lock(mutex_);
  return registrations_;
}

void NSNotificationCenter::postNotification(const NSNotification& notification) {
  if (this == &defaultCenter()) detail::noteNotification(notification.name());
  const auto all = registrations();
  for (const auto& each : *all) each->tell(notification);
}

void NSNotificationCenter::postNotificationName(NSString name, Ref<NSObject> object, Ref<NSDictionary> userInfo) {
  postNotification(*NSNotification::notificationWithName(std::move(name), std::move(object), std::move(userInfo)));
}

}  // namespace norvik

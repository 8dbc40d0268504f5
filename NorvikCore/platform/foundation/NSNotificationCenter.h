// NorvikCore/platform/foundation/NSNotificationCenter.h - notifies observers of events.
//
//   NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
//   Ref<NSObject> token = center.addObserverForName("PayRunDidEnd", nullptr, [](const NSNotification& note) {
//     NSLog("%@ ended", note.object());
//   });
//   center.postNotificationName("PayRunDidEnd", payRun);
//   center.removeObserver(*token);
//
// Posting calls the observers one after another, in the order in which they were added, on the posting thread, and
// returns when all have been called. No lock is held during the calls, so an observer may post, add and remove
// observers:
// - An observer that is added during a posting is first called by the next one.
// - An observer that is removed is not called any more, not even by a posting that is running. A call that another
//   thread has already begun may still be running when removeObserver() returns.
// - An exception raised by an observer leaves the posting, and the observers after it are not called.
//
// Observers and senders are not retained: an observer that has been destroyed is not called and need not be removed. An
// observer is retained during its call. A closure is retained until it is removed.
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/Block.h"

#include <optional>

namespace norvik {

/// The name of the event, its sender and additional data. Immutable.
class NK_EXPORT NSNotification : public NSObject {
  NK_OBJECT(NSNotification, NSObject)

  NSNotification(NSString name, Ref<NSObject> object, Ref<NSDictionary> userInfo);
  ~NSNotification() override;

  [[nodiscard]] static Ref<NSNotification> notificationWithName(NSString name, Ref<NSObject> object = nullptr,
                                                                Ref<NSDictionary> userInfo = nullptr);

  [[nodiscard]] const NSString& name() const noexcept { return name_; }
  /// The sender; may be empty.
  [[nodiscard]] const Ref<NSObject>& object() const noexcept { return object_; }
  /// May be empty.
  [[nodiscard]] const Ref<NSDictionary>& userInfo() const noexcept { return userInfo_; }
  NK_METHOD(name)
  NK_METHOD(object)
  NK_METHOD(userInfo)

  [[nodiscard]] NSString description() const override;

 private:
  NSString name_;
  Ref<NSObject> object_;
  Ref<NSDictionary> userInfo_;
};

class NK_EXPORT NSNotificationCenter : public NSObject {
  NK_OBJECT(NSNotificationCenter, NSObject)

  NSNotificationCenter();
  ~NSNotificationCenter() override;

  /// The center of the application.
  [[nodiscard]] static NSNotificationCenter& defaultCenter();

  /// Calls the closure for notifications of that name (absent: any name) from that sender (empty: any sender). Returns
  /// an observer, by which the closure is removed; the center retains it and the closure until then.
  Ref<NSObject> addObserverForName(std::optional<NSString> name, const Ref<NSObject>& object,
                                   Block<void(const NSNotification&)> block);

  /// Performs `selector` on the observer; the notification is passed if the operation takes an argument. Raises
  /// NSInvalidArgumentException if the observer has no such operation. An observer that is added twice is called twice.
  void addObserver(NSObject& observer, SEL selector, std::optional<NSString> name, const Ref<NSObject>& object);

  /// Removes all registrations of the observer.
  void removeObserver(const NSObject& observer);
  /// Removes the observer's registrations with this name and this sender; an absent name or empty sender means any.
  void removeObserver(const NSObject& observer, const std::optional<NSString>& name, const Ref<NSObject>& object);

  void postNotification(const NSNotification& notification);
  void postNotificationName(NSString name, Ref<NSObject> object = nullptr, Ref<NSDictionary> userInfo = nullptr);

 private:
  class Registrations;

  detail::Hidden<Registrations> registrations_;
};

}  // namespace norvik

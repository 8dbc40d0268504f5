// NorvikCore/platform/foundation/NSNotificationCenter.h - who wants to know is told what happened.
//
//   NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
//   Ref<NSObject> token = center.addObserverForName("PayRunDidEnd", nullptr, [](const NSNotification& note) {
//     NSLog("%@ ended", note.object());
//   });
//   center.postNotificationName("PayRunDidEnd", payRun);
//   center.removeObserver(*token);
//
// Posting calls the observers one after another, in the order in which they were added, on the poster's thread, and
// returns when all have been called. No lock is held meanwhile, so an observer may post, add and remove as it likes:
// - one that is added during a posting hears of the next one;
// - one that is removed is not called any more, not even by a posting under way; a call that another thread has
//   already begun may still be running when removeObserver() returns;
// - an exception that leaves an observer leaves the posting, and the observers after it are not called.
//
// Observers and senders are not kept: an observer that is gone is not called, and need not be removed. During a call it
// is kept. A closure is kept until it is removed.
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/Block.h"

#include <optional>

namespace norvik {

/// What happened, to whom, and what else is to be said. Immutable.
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

  /// The one that everybody uses.
  [[nodiscard]] static NSNotificationCenter& defaultCenter();

  /// Calls the closure for notifications of that name (absent: any name) from that sender (empty: any sender). The
  /// result is the observer, to be removed by; the center keeps it and the closure until then.
  Ref<NSObject> addObserverForName(std::optional<NSString> name, const Ref<NSObject>& object,
                                   Block<void(const NSNotification&)> block);

  /// Performs `selector` on the observer, with the notification where it takes an argument. An observer that has no
  /// such operation raises NSInvalidArgumentException. What is added twice is called twice.
  void addObserver(NSObject& observer, SEL selector, std::optional<NSString> name, const Ref<NSObject>& object);

  /// Everything the observer was added for.
  void removeObserver(const NSObject& observer);
  /// What the observer was added for with this name and this sender; an absent name or empty sender stands for all.
  void removeObserver(const NSObject& observer, const std::optional<NSString>& name, const Ref<NSObject>& object);

  void postNotification(const NSNotification& notification);
  void postNotificationName(NSString name, Ref<NSObject> object = nullptr, Ref<NSDictionary> userInfo = nullptr);

 private:
  class Registrations;

  detail::Hidden<Registrations> registrations_;
};

}  // namespace norvik

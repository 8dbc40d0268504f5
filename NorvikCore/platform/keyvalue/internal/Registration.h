// NorvikCore/platform/keyvalue/internal/Registration.h - one observer of one key path of one object.
#pragma once

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Weak.h"

#include <atomic>
#include <memory>
#include <vector>

namespace norvik::detail {

class ChangeDelivery;

/// A registration is in the list of every object along its path, under the next key of the path. So a change anywhere
/// is noticed. If an object along the path is replaced, the entries behind it move to the objects that are now there.
class NK_EXPORT_FOR_TESTS Registration : public NSObject {
 public:
  Registration(NSObject& observer, NSString keyPath, NSKeyValueObservingOptions options, void* context);
  ~Registration() override;

  [[nodiscard]] static SideRecord* recordOf(const Weak<NSObject>& object) noexcept;

  [[nodiscard]] bool wants(NSKeyValueObservingOptions option) const noexcept { return (options_ & option) != 0; }
  [[nodiscard]] NSKeyValueObservingOptions options() const noexcept {
    return static_cast<NSKeyValueObservingOptions>(options_);
  }
  [[nodiscard]] const NSString& keyPath() const noexcept { return keyPath_; }
  [[nodiscard]] void* context() const noexcept { return context_; }
  [[nodiscard]] std::uint32_t hash32() const noexcept { return hash_; }
  /// The hash of a registration with that observer, path and context. The path is not included for observers that are
  /// never destroyed: these belong to the library, and each of their registrations is passed as its own context.
  [[nodiscard]] static std::uint32_t hashOf(const NSObject& observer, const NSString& keyPath,
                                            const void* context) noexcept;
  /// True if it was made for this observer, and not for a destroyed one at the same address.
  [[nodiscard]] bool isOf(const NSObject& observer) const noexcept;
  [[nodiscard]] bool isObserverGone() const noexcept {
    return !isObserverPermanent_ && detail::isGone(observerRecord_);
  }
  /// True if the observer may be destroyed without being removed.
  [[nodiscard]] bool canLoseObserver() const noexcept { return !isObserverPermanent_; }
  /// Null if it is destroyed; otherwise `kept` retains it if necessary.
  [[nodiscard]] NSObject* observer(Ref<NSObject>& kept) const noexcept;
  /// Calls the observer about the delivery's change of the value that the path leads to from `root`. False, without a
  /// call, if the observer is destroyed.
  virtual bool deliver(ChangeDelivery& delivery, NSObject& root);
  /// Call it before the registration is attached.
  void setRoot(NSObject& root);
  /// The object on which the registration was made, empty once it is being destroyed; `here` is the object at `depth`.
  [[nodiscard]] Ref<NSObject> root(NSObject& here, std::size_t depth) const noexcept;

  [[nodiscard]] std::size_t length() const noexcept { return path_ ? path_->keys.size() : 1; }
  [[nodiscard]] const NSString& key(std::size_t depth) const noexcept { return path_ ? path_->keys[depth] : keyPath_; }
  [[nodiscard]] bool isLast(std::size_t depth) const noexcept { return depth + 1 == length(); }
  /// True if the same object may occur at two places of the path.
  [[nodiscard]] bool isCircular() const noexcept { return path_ && path_->isCircular.load(std::memory_order_relaxed); }

  [[nodiscard]] bool isActive() const noexcept { return isActive_.load(std::memory_order_acquire); }
  /// Ends the registration; true for the one caller that ended it.
  [[nodiscard]] bool end() noexcept { return isActive_.exchange(false, std::memory_order_acq_rel); }
  /// Ends a registration that no other thread can end.
  void stop() noexcept { isActive_.store(false, std::memory_order_release); }

  /// The value at the end of the path, from the object at `depth` on; the null marker if the path ends early.
  [[nodiscard]] Value valueFrom(const NSObject& object, std::size_t depth) const;
  /// Raises unless every key along the path exists, as far as objects or their declared classes show that.
  void check(const NSObject& root) const;
  /// Moves the entries behind the root to the objects that are now along the path, as far as it can be read. Then
  /// rethrows an exception from reading it.
  void follow(NSObject& root);
  /// Removes the entries behind the root, after the registration has ended.
  void leavePath();
  /// Called when the object at `depth` is being destroyed and its list no longer exists.
  void objectGoes(const NSObject& object, std::size_t depth);

 protected:
  /// For an observer that passes the changes to the receiver and is not checked for being destroyed. The receiver is
  /// given by its recordOf() a Weak, and the registration must end before that Weak is destroyed.
  Registration(NSObject& observer, SideRecord* receiver, NSString keyPath, NSKeyValueObservingOptions options,
               void* context);
  /// The receiver, which lives until the delivery's next call; null if it is destroyed or the registration has ended.
  [[nodiscard]] NSObject* receiver(ChangeDelivery& delivery) const noexcept;

 private:
  friend class ObserverList;  // for position_, of its entry in the list of the root, guarded by the lock of that list

  struct Path {
    std::vector<NSString> keys, rests;  ///< rests[i]: the path from keys[i] on
    Weak<NSObject> root;
    std::atomic<bool> isCircular{false};
    Mutex mutex;
    /// For each element except the first: the object at which the registration is attached, or null. These are
    /// addresses only; a destroyed object takes its list with it.
    std::vector<NSObject*> places NK_GUARDED_BY(mutex);
    std::uint64_t version NK_GUARDED_BY(mutex) = 0;  ///< how many times `places` was updated
  };

  [[nodiscard]] static std::unique_ptr<Path> makePath(const NSString& keyPath);
  void findObjectsBehind(const NSObject& root, std::vector<Ref<NSObject>>& objects) const;
  [[nodiscard]] bool arrange(const NSObject& root, const std::vector<Ref<NSObject>>& objects, std::uint64_t version);
  void place(std::size_t depth, NSObject* object) NK_REQUIRES(path_->mutex);

  NSObject* const observer_;
  SideRecord* observerRecord_ = nullptr;  ///< of the observer, with one count, or of the receiver, without a count
  const NSString keyPath_;
  void* const context_;
  std::unique_ptr<Path> path_;  ///< null for a path with one key
  const std::uint32_t options_;
  const std::uint32_t hash_;
  std::uint32_t position_ = 0;
  std::atomic<bool> isActive_{true};
  const bool isObserverPermanent_;
};

}  // namespace norvik::detail

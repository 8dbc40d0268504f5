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

/// A registration stands in the list of every object along its path, under the key that leads on from there: so a
/// change anywhere is heard. When an object along the path is exchanged, the entries behind it move to the objects now
/// found there.
class NK_EXPORT Registration : public NSObject {
 public:
  Registration(NSObject& observer, NSString keyPath, NSKeyValueObservingOptions options, void* context);
  ~Registration() override;

  [[nodiscard]] bool wants(NSKeyValueObservingOptions option) const noexcept { return (options_ & option) != 0; }
  [[nodiscard]] NSKeyValueObservingOptions options() const noexcept { return options_; }
  [[nodiscard]] const NSString& keyPath() const noexcept { return keyPath_; }
  [[nodiscard]] void* context() const noexcept { return context_; }
  [[nodiscard]] std::uint32_t hash32() const noexcept { return hash_; }
  /// The hash of a registration of that observer, path and context. The observers that are never destroyed are this
  /// library's, and have a context for each registration: the path has no say there.
  [[nodiscard]] static std::uint32_t hashOf(const NSObject& observer, const NSString& keyPath,
                                            const void* context) noexcept;
  /// Made for this observer, not for an earlier one that was destroyed and had the same address.
  [[nodiscard]] bool isOf(const NSObject& observer) const noexcept;
  [[nodiscard]] bool isObserverGone() const noexcept { return observerRecord_ && detail::isGone(observerRecord_); }
  /// Null where it is gone; else `kept` holds it as far as that is needed.
  [[nodiscard]] NSObject* observer(Ref<NSObject>& kept) const noexcept;
  /// Before it is attached anywhere.
  void setRoot(NSObject& root);
  /// The object the registration was made on, empty once it goes; `here` is the object at `depth`.
  [[nodiscard]] Ref<NSObject> root(NSObject& here, std::size_t depth) const noexcept;

  [[nodiscard]] std::size_t length() const noexcept { return path_ ? path_->keys.size() : 1; }
  [[nodiscard]] const NSString& key(std::size_t depth) const noexcept { return path_ ? path_->keys[depth] : keyPath_; }
  [[nodiscard]] bool isLast(std::size_t depth) const noexcept { return depth + 1 == length(); }
  /// The same object can stand at two places of the path.
  [[nodiscard]] bool isCircular() const noexcept { return path_ && path_->isCircular.load(std::memory_order_relaxed); }

  [[nodiscard]] bool isActive() const noexcept { return isActive_.load(std::memory_order_acquire); }
  /// True for the one caller that ended it.
  [[nodiscard]] bool end() noexcept { return isActive_.exchange(false, std::memory_order_acq_rel); }
  /// The same for one that nobody else ends.
  void stop() noexcept { isActive_.store(false, std::memory_order_release); }

  /// What is found at the end of the path from the object at `depth` on, the null marker where it breaks off.
  [[nodiscard]] Value valueFrom(const NSObject& object, std::size_t depth) const;
  /// Raises unless every key along the path exists, as far as objects or their stated classes tell.
  void check(const NSObject& root) const;
  /// Moves the entries behind the root to the objects that stand along the path now, as far as it can be read; what
  /// reading it raises passes afterwards.
  void follow(NSObject& root);
  /// Takes the entries behind the root away, after the end.
  void leavePath();
  /// The object at `depth` is going, and its list is gone.
  void objectGoes(const NSObject& object, std::size_t depth);

 private:
  struct Path {
    std::vector<NSString> keys, rests;  ///< rests[i]: keys[i] and what follows it
    Weak<NSObject> root;
    std::atomic<bool> isCircular{false};
    Mutex mutex;
    /// For each element but the first the object at which the registration is attached, or null. Only addresses: an
    /// object that goes takes its list with it.
    std::vector<NSObject*> places NK_GUARDED_BY(mutex);
    std::uint64_t version NK_GUARDED_BY(mutex) = 0;  ///< how often `places` was brought up to date
  };

  [[nodiscard]] static std::unique_ptr<Path> makePath(const NSString& keyPath);
  void findObjectsBehind(const NSObject& root, std::vector<Ref<NSObject>>& objects) const;
  [[nodiscard]] bool arrange(const NSObject& root, const std::vector<Ref<NSObject>>& objects, std::uint64_t version);
  void place(std::size_t depth, NSObject* object) NK_REQUIRES(path_->mutex);

  NSObject* const observer_;
  SideRecord* observerRecord_ = nullptr;  ///< with one count; null for an observer that is never destroyed
  const std::uint32_t hash_;
  const NSString keyPath_;
  void* const context_;
  std::unique_ptr<Path> path_;  ///< of a path with several keys
  const NSKeyValueObservingOptions options_;
  std::atomic<bool> isActive_{true};
};

}  // namespace norvik::detail

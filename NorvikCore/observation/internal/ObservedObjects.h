// NorvikCore/observation/internal/ObservedObjects.h - the objects that one controller observes, and the observations of
// each.
#pragma once

#include "NorvikCore/observation/internal/_FBKVOInfo.h"
#include "NorvikCore/platform/collections/internal/IdentityMap.h"
#include "NorvikCore/platform/object/internal/WordMutex.h"

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace norvik::detail {

/// The observations of one object, retained, with distinct key paths. It has the size of a pointer, because a table
/// with a place for each object holds it; most objects have one observation, which needs no further memory.
class InfoSet {
 public:
  InfoSet() noexcept = default;
  InfoSet(InfoSet&& other) noexcept : content_(std::exchange(other.content_, nullptr)) {}
  InfoSet& operator=(InfoSet&& other) noexcept {
    std::swap(content_, other.content_);
    return *this;
  }
  ~InfoSet() {
    if (content_) releaseAll();
  }

  /// Adds an observation to which the caller has the only Ref. False if the key path is already in the set.
  bool add(_FBKVOInfo& info);
  /// Removes and returns the observation with that key path; empty if there is none.
  [[nodiscard]] Ref<_FBKVOInfo> take(const NSString& keyPath);
  [[nodiscard]] std::span<_FBKVOInfo* const> infos() const noexcept {
    if (const auto* several = many()) return *several;
    return {&content_, content_ ? std::size_t{1} : std::size_t{0}};
  }

 private:
  using Many = std::vector<_FBKVOInfo*>;

  void releaseAll() noexcept;
  [[nodiscard]] Many* many() const noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(content_);
    return (address & 1) != 0 ? reinterpret_cast<Many*>(address - 1) : nullptr;
  }

  _FBKVOInfo* content_ = nullptr;  ///< the only observation, or a Many at one address lower; null for none
};

/// Synchronised: the objects are used through Locked.
class ObservedObjects {
 public:
  using Map = IdentityMap<InfoSet>;

  explicit ObservedObjects(bool keepsObjects) noexcept : map_(keepsObjects) {}

  /// The side record of the controller's observer, which the controller's Weak retains.
  [[nodiscard]] SideRecord* receiver() const noexcept { return receiver_; }
  /// Call it while the controller is constructed.
  void setReceiver(SideRecord* receiver) noexcept { receiver_ = receiver; }

  /// The objects, for one thread from construction to destruction.
  class NK_SCOPED_CAPABILITY Locked {
   public:
    explicit Locked(ObservedObjects& objects) noexcept NK_ACQUIRE(objects.mutex_) : objects_(objects) {
      objects_.mutex_.lock();
    }
    ~Locked() NK_RELEASE() { objects_.mutex_.unlock(); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
    Map* operator->() const noexcept NK_NO_THREAD_SAFETY_ANALYSIS { return &objects_.map_; }

   private:
    ObservedObjects& objects_;
  };

 private:
  SideRecord* receiver_ = nullptr;
  /// A thread that uses a controller has a Ref to it, and releases that only after unlocking, or it has the mutex of
  /// the list of controllers. So no controller is destroyed while its mutex is being unlocked.
  WordMutex mutex_;
  Map map_ NK_GUARDED_BY(mutex_);
};

}  // namespace norvik::detail

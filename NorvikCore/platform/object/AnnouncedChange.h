// NorvikCore/platform/object/AnnouncedChange.h - a change of a key, and its announcement to the observers of its
// object.
//
//   detail::changeProperty(*this, "limit", [&] { limit_.store(limit); });
//
// For an object that is not observed the cost is one relaxed load.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace norvik::detail {

/// A change of one key, from its announcement to prior observers until all observers were notified. If the object is
/// observed, it lives as long as its change. If the change is destroyed before complete(), observers are not notified.
class NK_EXPORT AnnouncedChange {
 public:
  /// `key` stays valid until the change is complete. Changes of one thread must be destroyed in the opposite order to
  /// their construction.
  AnnouncedChange(NSObject& object, std::string_view key);
  /// A change that may be destroyed in another order.
  struct InAnyOrder {};
  AnnouncedChange(NSObject& object, std::string_view key, InAnyOrder);
  ~AnnouncedChange();
  AnnouncedChange(const AnnouncedChange&) = delete;
  AnnouncedChange& operator=(const AnnouncedChange&) = delete;

  void complete();

 private:
  enum class Hold : std::uint32_t { OuterClaim, Claim, Counts };

  /// Announces nothing yet. The other constructors begin with it, so that the destructor runs if an observer raises
  /// while the change is announced.
  AnnouncedChange(NSObject& object, std::string_view key, Hold hold) noexcept
      : object_(object), key_(key), hold_(hold) {}
  void retain();
  void announce();
  void announceToAll();
  void completeForAll();
  [[nodiscard]] const Value& oldValue(std::size_t index) const;

  NSObject& object_;
  const std::string_view key_;
  const NSObject* observers_ = nullptr;  ///< the observers at the time of the announcement; null if there are none
  std::uint32_t oldValueCount_ = 0;      ///< number of observers that asked for the old value
  Hold hold_;                            ///< how the object and the observers are kept alive
  Value firstOldValue_;
  std::vector<Value> furtherOldValues_;
};

template <class Store>
[[gnu::noinline]] void changeObservedProperty(NSObject& object, std::string_view key, Store&& store) {
  AnnouncedChange change(object, key);
  store();
  change.complete();
}

/// Calls `store`, and announces the change of that key around it if the object is observed. The object must not be used
/// afterwards: an observer may have released it.
template <class Store>
inline void changeProperty(NSObject& object, std::string_view key, Store&& store) {
  if (!object.isObserved()) [[likely]] {
    store();
  } else {
    changeObservedProperty(object, key, store);
  }
}

}  // namespace norvik::detail

// NorvikCore/platform/keyvalue/internal/ChangeDelivery.h - what the calls to the observers of one change share.
//
// Each is made once and reused as long as consecutive observers need the same: the retained observer, the change, and
// the dictionary for blocks. So one more observer costs little more than its call.
#pragma once

#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/keyvalue/internal/ChangeDictionary.h"
#include "NorvikCore/platform/object/NSObject.h"

#include <optional>

namespace norvik::detail {

class SideRecord;

class ChangeDelivery {
 public:
  /// The changed object; it must live as long as the delivery.
  explicit ChangeDelivery(NSObject& object) noexcept : object_(object) {}
  ~ChangeDelivery() {
    if (keptRecord_) leave();
  }
  ChangeDelivery(const ChangeDelivery&) = delete;
  ChangeDelivery& operator=(const ChangeDelivery&) = delete;

  /// The observer with that side record, which lives until the next call of this function; null if it is destroyed or
  /// is being destroyed.
  [[nodiscard]] NSObject* kept(SideRecord* record) noexcept;

  void setChange(Value oldValue, Value newValue, bool isPrior) {
    dictionary_.reset();
    made_.emplace(std::move(oldValue), std::move(newValue), isPrior);
    change_ = &*made_;
  }
  /// A change without values, which all deliveries share. A new delivery has it.
  void setChangeWithoutValues() noexcept {
    dictionary_.reset();
    change_ = &withoutValues();
  }
  [[nodiscard]] const KeyValueChange& change() const noexcept { return *change_; }
  /// The change as a dictionary that also holds the key path, under `pathKey`.
  [[nodiscard]] const NSDictionary& dictionary(const NSString& pathKey, const NSString& keyPath);

 private:
  [[nodiscard]] static const KeyValueChange& withoutValues() noexcept;
  void leave() noexcept;
  [[nodiscard]] bool isLeft() const noexcept;

  NSObject& object_;
  SideRecord* keptRecord_ = nullptr;
  NSObject* kept_ = nullptr;
  bool isClaimed_ = false;   ///< by this delivery, which must end the claim
  bool isRetained_ = false;  ///< with one count, because it could not be claimed
  const KeyValueChange* change_ = &withoutValues();
  std::optional<KeyValueChange> made_;
  std::optional<ChangeDictionary> dictionary_;
};

}  // namespace norvik::detail

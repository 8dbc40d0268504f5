// NorvikCore/platform/keyvalue/internal/ChangeDictionary.h - the dictionary that a block handler receives.
//
// An ordinary NSDictionary. If the handler did not keep it, it is reused for the thread's next change of the same
// shape, because creating a dictionary takes four allocations and refilling one takes none.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

namespace norvik::detail {

class ChangeDictionary {
 public:
  /// The entries of the change after the key path, which has the key `pathKey`.
  ChangeDictionary(const NSString& pathKey, const NSString& keyPath, const KeyValueChange& change);
  ~ChangeDictionary();
  ChangeDictionary(const ChangeDictionary&) = delete;
  ChangeDictionary& operator=(const ChangeDictionary&) = delete;

  [[nodiscard]] bool isOf(const NSString& keyPath) const noexcept;
  const NSDictionary& operator*() const noexcept { return *dictionary_; }

 private:
  const std::size_t shape_;  ///< which of the new value, the old value and the prior mark are present
  Ref<NSDictionary> dictionary_;
};

}  // namespace norvik::detail

// NorvikCore/observation/internal/ChangeDictionary.h - the dictionary that a block handler is given.
//
// An NSDictionary like any other. One that its handler did not keep is filled anew for the thread's next change of the
// same shape: making a dictionary takes four allocations, filling one none.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

namespace norvik::detail {

class ChangeDictionary {
 public:
  ChangeDictionary(const NSString& keyPath, const KeyValueChange& change);
  ~ChangeDictionary();
  ChangeDictionary(const ChangeDictionary&) = delete;
  ChangeDictionary& operator=(const ChangeDictionary&) = delete;

  const NSDictionary& operator*() const noexcept { return *dictionary_; }

 private:
  const std::size_t shape_;  ///< which of the new value, the old value and the prior mark there are
  Ref<NSDictionary> dictionary_;
};

}  // namespace norvik::detail

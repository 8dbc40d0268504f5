// NorvikCore/values/NKSequenceState.h - the position of an iteration over a sequence, and the values that it stores.
//
//   auto state = make<NKSequenceState>();
//   state->increment();                                // 0; the position is 1 now
//   (*state)["total"] = 12.50_dec;
//   (*state)["total"];                                 // 12.50
//   state->reset();                                    // the position is 0 again; what was stored stays
//
// The reference to the store may be read and set on any thread. Otherwise confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik {

class NK_EXPORT NKSequenceState : public NSObject {
  NK_OBJECT(NKSequenceState, NSObject)
  NK_PROPERTY(std::int64_t, position, setPosition)
  NK_ATOMIC_PROPERTY(Ref<NSMutableDictionary>, store, setStore)
  ~NKSequenceState() override;

  void reset() { setPosition(0); }
  NK_METHOD(reset)
  /// Returns the position, then adds 1 to it. After the greatest integer comes the least.
  std::int64_t increment();
  NK_METHOD(increment)

  /// Absent if nothing is stored under the key or there is no store.
  [[nodiscard]] Value objectForKeyedSubscript(const Value& key) const;
  NK_METHOD(objectForKeyedSubscript)
  /// An absent object removes the entry. Creates the store if there is none.
  void setObject(const Value& object, const Value& key);
  NK_METHOD_AS(setObject, "setObject:forKeyedSubscript:")

  /// The result of `state[key]`: reading it gives the object, assigning to it stores one.
  class Entry {
   public:
    operator Value() const { return state_.objectForKeyedSubscript(key_); }  // NOLINT(google-explicit-constructor)
    void operator=(const Value& object) {
      state_.setObject(object, key_);
    }  // NOLINT(misc-unconventional-assign-operator)

   private:
    friend class NKSequenceState;
    Entry(NKSequenceState& state, Value key) : state_(state), key_(std::move(key)) {}
    NKSequenceState& state_;
    const Value key_;
  };
  [[nodiscard]] Entry operator[](const Value& key) { return {*this, key}; }
  [[nodiscard]] Value operator[](const Value& key) const { return objectForKeyedSubscript(key); }

 protected:
  bool init() override;
};

}  // namespace norvik

// NorvikCore/values/NKSequenceState.h - where a run over a sequence stands, and what it keeps on the way.
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
  /// The position as it was; then adds 1 to it. Behind the greatest integer comes the least.
  std::int64_t increment();
  NK_METHOD(increment)

  /// Absent where nothing is stored under the key, or there is no store.
  [[nodiscard]] Value objectForKeyedSubscript(const Value& key) const;
  NK_METHOD(objectForKeyedSubscript)
  /// An absent object removes the entry. Where there is no store, one is made.
  void setObject(const Value& object, const Value& key);
  NK_METHOD_AS(setObject, "setObject:forKeyedSubscript:")

  /// What `state[key]` is: read as the object, assigned to store one.
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

#include "NorvikCore/values/NKSequenceState.h"

namespace norvik {

NKSequenceState::~NKSequenceState() = default;

bool NKSequenceState::init() {
  setStore(NSMutableDictionary::dictionaryWithCapacity(5));
  return NSObject::init();
}

std::int64_t NKSequenceState::increment() {
  const std::int64_t before = position();
  setPosition(static_cast<std::int64_t>(static_cast<std::uint64_t>(before) + 1));
  return before;
}

Value NKSequenceState::objectForKeyedSubscript(const Value& key) const {
  const Ref<NSMutableDictionary> entries = store();
  return entries && !key.isAbsent() ? entries->objectForKey(key) : Value();
}

void NKSequenceState::setObject(const Value& object, const Value& key) {
  Ref<NSMutableDictionary> entries = store();
  if (object.isAbsent()) {
    if (entries && !key.isAbsent()) entries->removeObjectForKey(key);
    return;
  }
  if (!entries) {
    entries = NSMutableDictionary::dictionaryWithCapacity(5);
    setStore(entries);
  }
  entries->setObject(object, key);
}

}  // namespace norvik

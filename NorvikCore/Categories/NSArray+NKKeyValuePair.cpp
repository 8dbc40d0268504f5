#include "NorvikCore/Categories/NSArray+NKKeyValuePair.h"

namespace norvik {

Ref<NKKeyValuePair> nk_keyValuePairWithId(const NSArray& pairs, std::int32_t id) {
  return NKKeyValuePair::pairWithId(id, pairs);
}

Value nk_pairNameWithId(const NSArray& pairs, std::int32_t id) {
  const Ref<NKKeyValuePair> pair = nk_keyValuePairWithId(pairs, id);
  return pair ? pair->name() : Value();
}

}  // namespace norvik

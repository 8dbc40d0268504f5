#include "NorvikCore/Categories/NSDictionary+Norvik.h"

#include "NorvikCore/values/NKKeyValuePair.h"

namespace norvik {

Ref<NSMutableArray> keyValuePairs(const NSDictionary& dictionary) {
  return NKKeyValuePair::pairsFromDictionary(dictionary);
}

}  // namespace norvik

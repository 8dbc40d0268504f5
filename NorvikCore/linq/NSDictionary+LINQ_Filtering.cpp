#include "NorvikCore/linq/NSDictionary+LINQ_Filtering.h"

namespace norvik {

Ref<NSDictionary> linq_ofTypeKey(const NSDictionary& receiver, const Class& wanted) {
  return linq_whereKey(receiver, [&](const Value& key) { return key.classObject().isSubclassOf(wanted); });
}

Ref<NSDictionary> linq_ofTypeValue(const NSDictionary& receiver, const Class& wanted) {
  return linq_whereValue(receiver, [&](const Value& value) { return value.classObject().isSubclassOf(wanted); });
}

}  // namespace norvik

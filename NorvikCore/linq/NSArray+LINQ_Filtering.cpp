#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"

namespace norvik {

Ref<NSArray> linq_ofType(const NSArray& receiver, const Class& wanted) {
  std::vector<Value> passed;
  for (const Value& element : receiver) {
    if (element.classObject().isSubclassOf(wanted)) passed.push_back(element);
  }
  return make<NSArray>(std::move(passed));
}

}  // namespace norvik

#include "NorvikCore/linq/NSArray+LINQ_Projection.h"

#include "NorvikCore/linq/internal/ReceivingClass.h"

namespace norvik {

Ref<NSArray> detail::emptyLike(const NSArray& receiver) { return emptyOfClassOf(receiver); }

void detail::appendElements(std::vector<Value>& elements, const Value& array) {
  if (array.isAbsent() || array.isNull()) return;
  const auto& added = elementAs<NSArray>(array);
  elements.insert(elements.end(), added.begin(), added.end());
}

}  // namespace norvik

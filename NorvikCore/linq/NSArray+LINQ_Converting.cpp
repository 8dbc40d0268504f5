#include "NorvikCore/linq/NSArray+LINQ_Converting.h"

namespace norvik {

Ref<NSDictionary> linq_toDictionary(const NSArray& receiver) {
  auto none = nullptr;
  return make<NSDictionary>(detail::keyedEntries(receiver, none, none));
}

}  // namespace norvik

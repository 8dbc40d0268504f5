#include "NorvikCore/linq/NSDictionary+LINQ_Converting.h"

namespace norvik {

Ref<NSMutableArray> linq_toArray(const NSDictionary& receiver) { return receiver.allValues()->mutableCopy(); }

}  // namespace norvik

#include "NorvikCore/linq/NSDictionary+LINQ_Generation.h"

#include "NorvikCore/linq/internal/ReceivingClass.h"

namespace norvik {

Ref<NSDictionary> detail::indexed(const Class& receivingClass, std::vector<Value> values) {
  auto dictionary = collectionOf<NSDictionary>(receivingClass, receivingClass.makeObject());
  std::vector<NSDictionary::Entry> entries;
  entries.reserve(values.size());
  for (Value& value : values) entries.push_back({entries.size(), std::move(value)});
  fill(*dictionary, std::move(entries));
  return dictionary;
}

}  // namespace norvik

#include "NorvikCore/linq/internal/ReceivingClass.h"

#include "NorvikCore/platform/collections/internal/CollectionAccess.h"

namespace norvik::detail {
namespace {

template <class Collection>
Ref<Collection> emptyOfClass(const Class& receivingClass) {
  for (const Class* c = &receivingClass; c; c = c->superclass()) {
    auto empty = refCast<Collection>(c->makeObject());
    if (empty && empty->count() == 0) return empty;
  }
  return make<Collection>();
}

}  // namespace

Ref<NSArray> emptyOfClassOf(const NSArray& receiver) { return emptyOfClass<NSArray>(receiver.classObject()); }

Ref<NSDictionary> emptyOfClassOf(const NSDictionary& receiver) {
  return emptyOfClass<NSDictionary>(receiver.classObject());
}

void fill(NSDictionary& dictionary, std::vector<NSDictionary::Entry> entries) {
  auto& table = CollectionAccess::table(dictionary);
  table.reserve(entries.size());
  for (NSDictionary::Entry& entry : entries) table.insert(std::move(entry));
}

}  // namespace norvik::detail

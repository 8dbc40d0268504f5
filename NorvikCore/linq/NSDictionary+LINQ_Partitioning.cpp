#include "NorvikCore/linq/NSDictionary+LINQ_Partitioning.h"

#include "NorvikCore/linq/internal/ReceivingClass.h"

namespace norvik {
namespace {

/// The entries at the positions from `first` to `end`, excluding `end`. Empty if the receiver has at most `count`
/// entries.
Ref<NSDictionary> part(const NSDictionary& receiver, std::size_t count, std::size_t first, std::size_t end) {
  const Ref<NSDictionary> result = detail::emptyOfClassOf(receiver);
  if (receiver.count() <= count) return result;
  std::vector<NSDictionary::Entry> entries;
  std::size_t position = 0;
  for (const NSDictionary::Entry& entry : receiver) {
    if (position == end) break;
    if (position++ >= first) entries.push_back(entry);
  }
  detail::fill(*result, std::move(entries));
  return result;
}

}  // namespace

Ref<NSDictionary> linq_skip(const NSDictionary& receiver, std::size_t count) {
  return part(receiver, count, count, receiver.count());
}

Ref<NSDictionary> linq_take(const NSDictionary& receiver, std::size_t count) { return part(receiver, count, 0, count); }

}  // namespace norvik

#include "NorvikCore/platform/collections/OrderedTable.h"

#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace norvik::detail {

void PositionIndex::reserve(std::size_t count) { hashes_.reserve(count); }

void PositionIndex::append(std::uint32_t hash) {
  if (hashes_.size() >= std::numeric_limits<std::uint32_t>::max() - 1) {
    NSException::raise(NSRangeException, "a dictionary or a set holds at most 4294967294 entries");
  }
  if (hashes_.size() >= greatestUnindexed && (hashes_.size() + 1) * 4 > slots_.size() * 3) {
    std::vector<Slot> slots(std::bit_ceil((hashes_.size() + 1) * 2));
    hashes_.push_back(hash);
    slots_.swap(slots);
    for (std::size_t position = 0; position < hashes_.size(); ++position) enter(position);
  } else {
    hashes_.push_back(hash);
    if (!slots_.empty()) enter(hashes_.size() - 1);
  }
}

void PositionIndex::keepFirst(std::size_t count) noexcept {
  hashes_.resize(count);
  slots_.resize(count <= greatestUnindexed ? 0 : std::min(slots_.size(), std::bit_ceil(count * 2)));  // never grows
  std::ranges::fill(slots_, Slot());
  if (slots_.empty()) return;
  for (std::size_t position = 0; position < count; ++position) enter(position);
}

void PositionIndex::clear() noexcept {
  hashes_.clear();
  slots_.clear();
}

void PositionIndex::enter(std::size_t position) noexcept {
  const std::uint32_t hash = hashes_[position];
  std::size_t at = hash & mask();
  while (slots_[at].next != 0) at = (at + 1) & mask();
  slots_[at] = {hash, static_cast<std::uint32_t>(position + 1)};
}

}  // namespace norvik::detail

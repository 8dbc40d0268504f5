#include "NorvikCore/platform/values/internal/StringIndex.h"

#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/values/Utf8.h"
#include "NorvikCore/platform/values/internal/Utf8Words.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <utility>

namespace norvik::detail {

StringPlace walkUnits(std::string_view text, StringPlace from, std::size_t units, std::size_t* steps) noexcept {
  std::size_t left = units + (from.secondHalf ? 1 : 0), at = from.byte;
  // The place is in the first character whose units reach beyond `left`. Its continuation bytes add none, so a word may
  // begin within a character.
  for (; text.size() - at >= 8; at += 8) {
    const std::uint64_t reached = unitsReachedInWord(text.data() + at);
    const std::size_t inWord = reached >> 56;
    if (inWord > left) {
      const std::size_t byte = firstByteBeyond(reached, left);
      if (steps != nullptr) *steps += at + byte - from.byte;
      return {at + byte, left != unitsBefore(reached, byte)};
    }
    left -= inWord;
  }
  for (; at < text.size(); ++at) {
    const std::size_t ofByte = utf8::unitCount(text.substr(at, 1));
    if (ofByte > left) break;
    left -= ofByte;
  }
  if (steps != nullptr) *steps += at - from.byte;
  return {at, left == 1};
}

StringIndex::StringIndex(std::string_view text) : length_(unitCountByWords(text)) {
  marks_.reserve(length_ / stride + 1);
  blocks_.reserve(length_ / blockUnits + 1);
  StringPlace at;
  for (std::size_t unit = 0; unit <= length_; unit += stride) {
    if (unit != 0) at = walkUnits(text, at, stride);
    if (unit % blockUnits == 0) blocks_.push_back(at.byte);
    marks_.push_back(static_cast<std::uint16_t>(2 * (at.byte - blocks_.back()) + (at.secondHalf ? 1 : 0)));
  }
}

StringPlace StringIndex::place(std::string_view text, std::size_t unit, std::size_t* steps) const noexcept {
  return walkUnits(text, placeOfMark(unit / stride), unit % stride, steps);
}

std::size_t StringIndex::unit(std::string_view text, std::size_t byte) const noexcept {
  const auto block = static_cast<std::size_t>(std::ranges::upper_bound(blocks_, byte) - blocks_.begin()) - 1;
  const auto first = marks_.begin() + static_cast<std::ptrdiff_t>(block * marksPerBlock);
  const auto last = std::min(first + static_cast<std::ptrdiff_t>(marksPerBlock), marks_.end());
  const std::size_t distance = byte - blocks_[block];
  const auto mark = std::upper_bound(first, last, distance,
                                     [](std::size_t wanted, std::uint16_t each) { return wanted < each / 2u; }) -
                    1;  // the first mark of a block is at its first byte
  const auto number = static_cast<std::size_t>(mark - marks_.begin());
  const StringPlace nearest = placeOfMark(number);
  return number * stride - (nearest.secondHalf ? 1 : 0) +
         unitCountByWords(text.substr(nearest.byte, byte - nearest.byte));
}

const StringIndex& permanentIndex(std::string_view text) {
  using Key = std::pair<const char*, std::size_t>;
  const kernel::ForkHold hold;  // otherwise a child could inherit a locked mutex
  static constinit std::shared_mutex mutex;
  auto& indexes = kernel::madeOnce([] { return new std::map<Key, std::unique_ptr<const StringIndex>>; });
  const Key key(text.data(), text.size());
  {
    const std::shared_lock lock(mutex);
    if (const auto found = indexes.find(key); found != indexes.end()) return *found->second;
  }
  auto index = std::make_unique<const StringIndex>(text);
  const std::unique_lock lock(mutex);
  return *indexes.try_emplace(key, std::move(index)).first->second;
}

}  // namespace norvik::detail

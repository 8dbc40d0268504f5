#include "NorvikCore/platform/values/internal/StringIndex.h"

#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/values/Utf8.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <utility>

namespace norvik::detail {

StringPlace walkUnits(std::string_view text, StringPlace from, std::size_t units, std::size_t* steps) noexcept {
  std::size_t left = units + (from.secondHalf ? 1 : 0), at = from.byte, passed = 0;
  for (; left > 0 && at < text.size(); ++passed) {
    const unsigned char lead = utf8::byteAt(text.data() + at);
    if (lead >= 0xF0 && left == 1) break;
    left -= lead >= 0xF0 ? 2 : 1;
    at += lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  }
  if (steps != nullptr) *steps += passed;
  return {at, left == 1};
}

StringIndex::StringIndex(std::string_view text) : length_(utf8::unitCount(text)) {
  marks_.reserve(length_ / stride + 1);
  marks_.push_back({});
  for (std::size_t unit = stride; unit <= length_; unit += stride) {
    marks_.push_back(walkUnits(text, marks_.back(), stride));
  }
}

StringPlace StringIndex::place(std::string_view text, std::size_t unit, std::size_t* steps) const noexcept {
  return walkUnits(text, marks_[unit / stride], unit % stride, steps);
}

std::size_t StringIndex::unit(std::string_view text, std::size_t byte) const noexcept {
  const auto after = std::upper_bound(marks_.begin(), marks_.end(), byte,
                                      [](std::size_t wanted, const StringPlace& mark) { return wanted < mark.byte; });
  const auto mark = after - 1;  // the first mark is at byte 0
  const std::size_t unitOfMark = static_cast<std::size_t>(mark - marks_.begin()) * stride;
  return unitOfMark - (mark->secondHalf ? 1 : 0) + utf8::unitCount(text.substr(mark->byte, byte - mark->byte));
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

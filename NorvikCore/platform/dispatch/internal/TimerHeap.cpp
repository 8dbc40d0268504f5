#include "NorvikCore/platform/dispatch/internal/TimerHeap.h"

#include "NorvikCore/platform/kernel/internal/Prefetch.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

namespace norvik::detail {
namespace {

/// The exponent of the largest power of two that fits the leeway. Deadlines are moved up to its next multiple, so that
/// timers of equal or larger leeways coincide. A period is not stretched by more than half.
std::uint8_t leewayBits(std::uint64_t leeway, std::uint64_t interval) {
  if (interval != 0) leeway = std::min(leeway, interval / 2);
  return leeway == 0 ? std::uint8_t{0} : static_cast<std::uint8_t>(std::bit_width(leeway) - 1);
}

void prefetchEntry(const TimerEntry& entry) {
  const auto* memory = reinterpret_cast<const std::byte*>(&entry);
  kernel::prefetchForWrite(memory);
  kernel::prefetchForWrite(memory + 64);
}

}  // namespace

std::uint64_t TimerHeap::latestDeadline(const TimerEntry& entry) noexcept {
  const std::uint64_t below = (std::uint64_t{1} << entry.leewayBits_) - 1;
  return entry.deadline_ > noMoment - below ? noMoment : (entry.deadline_ + below) & ~below;
}

void TimerHeap::add(TimerEntry& entry, const TimerSetting& setting) {
  nodes_.push_back({});
  entry.heap_ = this;
  entry.generation_ = generation_;
  entry.deadline_ = setting.deadline;
  entry.interval_ = setting.interval;
  entry.leewayBits_ = leewayBits(setting.leeway, setting.interval);
  entry.setting_ = setting.number;
  entry.age_ = added_++;
  siftUp(nodes_.size() - 1, {latestDeadline(entry), &entry});
}

void TimerHeap::remove(TimerEntry& entry) noexcept {
  TimerHeap* heap = std::exchange(entry.heap_, nullptr);
  if (heap != nullptr && heap->generation_ == entry.generation_) heap->removeAt(entry.index_);
}

void TimerHeap::takeDue(std::uint64_t now, std::size_t limit, std::vector<DueTimer>& due) {
  const std::size_t earlier = due.size();
  for (; limit > 0 && !nodes_.empty() && nodes_[0].deadline <= now; --limit) {
    TimerEntry& entry = *nodes_[0].entry;
    if (nodes_.size() > childCount) prefetchEntry(*nodes_[leastChild(1)].entry);  // the next one
    const std::uint64_t count = entry.interval_ == 0 ? 1 : 1 + (now - entry.deadline_) / entry.interval_;
    due.push_back({&entry, count, entry.setting_});
    if (entry.interval_ == 0) {
      entry.heap_ = nullptr;
      removeAt(0);
    } else {
      const std::uint64_t step = count * entry.interval_;
      entry.deadline_ = step < noMoment - entry.deadline_ ? entry.deadline_ + step : noMoment;
      entry.age_ = added_++;
      siftDown(0, {latestDeadline(entry), &entry});
    }
  }
  // Not in the loop: an atomic operation waits until the processor has stored every index that siftDown() has changed.
  for (std::size_t taken = earlier; taken < due.size(); ++taken) due[taken].entry->keepUntilFired();
}

void TimerHeap::siftUp(std::size_t index, const Node& node, std::size_t top) noexcept {
  while (index > top) {
    const std::size_t parent = (index - 1) / childCount;
    if (!before(node, nodes_[parent])) break;
    place(index, nodes_[parent]);
    index = parent;
  }
  place(index, node);
}

/// The least of four children, computed without a branch that the processor could mispredict.
std::size_t TimerHeap::leastChild(std::size_t first) const noexcept {
  const Node* children = &nodes_[first];
  const std::size_t low = before(children[1], children[0]) ? 1 : 0;
  const std::size_t high = before(children[3], children[2]) ? 3 : 2;
  return first + (before(children[high], children[low]) ? high : low);
}

/// Prefetches the children of four adjacent nodes, which are adjacent too, before it is known whose children are needed
/// next. Half the time of a large heap's siftDown() would be spent waiting for them.
void TimerHeap::prefetchChildrenOfFour(std::size_t first) const noexcept {
  const std::size_t children = childCount * first + 1;
  if (children + childCount * childCount > nodes_.size()) return;
  for (std::size_t group = 0; group < childCount; ++group)
    kernel::prefetchForWrite(&nodes_[children + group * childCount]);
}

/// The node usually comes from the bottom of the heap and belongs there. So the gap moves down to the bottom without
/// comparing the node, and then the node moves up to its place.
void TimerHeap::siftDown(std::size_t index, const Node& node) noexcept {
  const std::size_t top = index;
  std::size_t first = childCount * index + 1;
  for (; first + childCount <= nodes_.size(); first = childCount * index + 1) {
    prefetchChildrenOfFour(first);
    const std::size_t least = leastChild(first);
    place(index, nodes_[least]);
    index = least;
  }
  if (first < nodes_.size()) {
    std::size_t least = first;
    for (std::size_t child = first + 1; child < nodes_.size(); ++child) {
      if (before(nodes_[child], nodes_[least])) least = child;
    }
    place(index, nodes_[least]);
    index = least;
  }
  siftUp(index, node, top);
}

void TimerHeap::removeAt(std::size_t index) noexcept {
  const Node last = nodes_.back();
  nodes_.pop_back();
  if (index == nodes_.size()) return;
  if (index > 0 && before(last, nodes_[(index - 1) / childCount])) {
    siftUp(index, last);
  } else {
    siftDown(index, last);
  }
}

void TimerHeap::forgetAll() noexcept {
  ++generation_;
  new (&nodes_) std::vector<Node>;  // the old vector is never freed, because another thread may have been changing it
}

}  // namespace norvik::detail

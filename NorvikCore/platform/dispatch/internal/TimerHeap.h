// NorvikCore/platform/dispatch/internal/TimerHeap.h - a heap of timers, ordered by deadline and then by age.
//
// A node has four children, which are adjacent in memory together with their deadlines. That takes half the steps of a
// binary heap, and an entry is read only if two deadlines are equal.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace norvik::detail {

class FiredItems;

/// When a timer fires. `interval` 0: once. The timer may fire up to `leeway` after its deadline, and so may each
/// period, if other timers fire then.
struct TimerSetting {
  std::uint64_t deadline = 0;
  std::uint64_t interval = 0;
  std::uint64_t leeway = 0;
  std::uint32_t number = 0;  // passed to fired()
};

/// An object that a timer fires. It is in at most one heap at a time.
class NK_EXPORT_FOR_TESTS TimerEntry {
 public:
  TimerEntry() = default;
  virtual ~TimerEntry() = default;
  TimerEntry(const TimerEntry&) = delete;
  TimerEntry& operator=(const TimerEntry&) = delete;

  /// Called under the clock's mutex. The entry must then stay alive until fired() has returned.
  virtual void keepUntilFired() noexcept = 0;
  /// Called under no mutex. `count`: how many periods have passed; `setting`: the number of the setting in which they
  /// passed. It adds the items that it enqueues to `items`.
  virtual void fired(std::uint64_t count, std::uint32_t setting, FiredItems& items) = 0;

 private:
  friend class TimerHeap;
  class TimerHeap* heap_ = nullptr;
  std::uint64_t deadline_ = 0;  // before any leeway
  std::uint64_t interval_ = 0;
  std::uint64_t age_ = 0;  // raised with each deadline; orders equal deadlines
  std::uint32_t index_ = 0;
  std::uint32_t setting_ = 0;
  std::uint32_t generation_ = 0;
  std::uint8_t leewayBits_ = 0;
};

/// An entry that was due when it was taken from the heap.
struct DueTimer {
  TimerEntry* entry;
  std::uint64_t count;
  std::uint32_t setting;
};

class NK_EXPORT_FOR_TESTS TimerHeap {
 public:
  static constexpr std::uint64_t noMoment = ~std::uint64_t{0};

  /// The entry must be in no heap.
  void add(TimerEntry& entry, const TimerSetting& setting);
  /// Removes the entry from its heap, if any.
  static void remove(TimerEntry& entry) noexcept;
  /// Takes up to `limit` entries that are due. Repeating entries get their next deadline after `now`, on their grid.
  void takeDue(std::uint64_t now, std::size_t limit, std::vector<DueTimer>& due);

  [[nodiscard]] std::uint64_t nextDeadline() const noexcept { return nodes_.empty() ? noMoment : nodes_[0].deadline; }
  [[nodiscard]] std::size_t size() const noexcept { return nodes_.size(); }
  /// In a child made by fork(): afterwards the entries are in no heap. The heap's memory is not freed.
  void forgetAll() noexcept;

 private:
  struct Node {
    std::uint64_t deadline;
    TimerEntry* entry;
  };
  static constexpr std::size_t childCount = 4;

  static bool before(const Node& a, const Node& b) noexcept {
    if (a.deadline == b.deadline) [[unlikely]]
      return a.entry->age_ < b.entry->age_;
    return a.deadline < b.deadline;
  }
  static std::uint64_t latestDeadline(const TimerEntry& entry) noexcept;
  [[nodiscard]] std::size_t leastChild(std::size_t first) const noexcept;
  void prefetchChildrenOfFour(std::size_t first) const noexcept;
  void place(std::size_t index, const Node& node) noexcept {
    nodes_[index] = node;
    node.entry->index_ = static_cast<std::uint32_t>(index);
  }
  void siftUp(std::size_t index, const Node& node, std::size_t top = 0) noexcept;
  void siftDown(std::size_t index, const Node& node) noexcept;
  void removeAt(std::size_t index) noexcept;

  std::vector<Node> nodes_;
  std::uint64_t added_ = 0;
  std::uint32_t generation_ = 0;  // an entry of another generation is not in the heap
};

}  // namespace norvik::detail

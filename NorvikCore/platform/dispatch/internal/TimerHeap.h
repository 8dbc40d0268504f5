// NorvikCore/platform/dispatch/internal/TimerHeap.h - what fires next: an exact binary heap, by deadline, then by age.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace norvik::detail {

/// Something that a timer fires. In at most one heap at a time.
class NK_EXPORT TimerEntry {
 public:
  TimerEntry() = default;
  virtual ~TimerEntry() = default;
  TimerEntry(const TimerEntry&) = delete;
  TimerEntry& operator=(const TimerEntry&) = delete;

  /// Under the clock's mutex: the entry stays until fired() is over, whatever else happens.
  virtual void keepUntilFired() noexcept = 0;
  /// Under no mutex. `count`: how many periods have passed; `setting`: the setting they passed in.
  virtual void fired(std::uint64_t count, std::uint64_t setting) = 0;

 private:
  friend class TimerHeap;
  static constexpr std::size_t kNowhere = ~std::size_t{0};
  class TimerHeap* heap_ = nullptr;
  std::size_t index_ = kNowhere;
  std::uint64_t interval_ = 0;
  std::uint64_t setting_ = 0;
};

/// An entry whose time had come when it was taken from the heap.
struct DueTimer {
  TimerEntry* entry;
  std::uint64_t count;
  std::uint64_t setting;
};

class NK_EXPORT TimerHeap {
 public:
  static constexpr std::uint64_t kNever = ~std::uint64_t{0};

  /// `interval` 0: once. The entry must be in no heap.
  void add(TimerEntry& entry, std::uint64_t deadline, std::uint64_t interval, std::uint64_t setting);
  /// Takes the entry from the heap it is in, if any.
  static void remove(TimerEntry& entry) noexcept;
  /// Takes up to `limit` entries that are due; repeating ones get their next deadline after `now`, on their grid.
  void takeDue(std::uint64_t now, std::size_t limit, std::vector<DueTimer>& due);

  [[nodiscard]] std::uint64_t nextDeadline() const noexcept { return nodes_.empty() ? kNever : nodes_[0].deadline; }
  [[nodiscard]] std::size_t size() const noexcept { return nodes_.size(); }
  /// In a child made by fork(): the entries are in no heap any more, the heap's memory is the parent's.
  void forgetAll() noexcept;

 private:
  struct Node {
    std::uint64_t deadline;
    std::uint64_t age;
    TimerEntry* entry;
    [[nodiscard]] bool before(const Node& other) const noexcept {
      return deadline != other.deadline ? deadline < other.deadline : age < other.age;
    }
  };
  void place(std::size_t index, const Node& node) noexcept {
    nodes_[index] = node;
    node.entry->index_ = index;
  }
  void siftUp(std::size_t index, const Node& node) noexcept;
  void siftDown(std::size_t index, const Node& node) noexcept;
  void removeAt(std::size_t index) noexcept;

  std::vector<Node> nodes_;
  std::uint64_t added_ = 0;
};

}  // namespace norvik::detail

#include "NorvikCore/platform/dispatch/internal/TimerHeap.h"

#include <new>
#include <utility>

namespace norvik::detail {

void TimerHeap::add(TimerEntry& entry, std::uint64_t deadline, std::uint64_t interval, std::uint64_t setting) {
  const Node node{deadline, added_++, &entry};
  nodes_.push_back(node);
  entry.heap_ = this;
  entry.interval_ = interval;
  entry.setting_ = setting;
  siftUp(nodes_.size() - 1, node);
}

void TimerHeap::remove(TimerEntry& entry) noexcept {
  if (entry.heap_ != nullptr) entry.heap_->removeAt(entry.index_);
}

void TimerHeap::takeDue(std::uint64_t now, std::size_t limit, std::vector<DueTimer>& due) {
  for (; limit > 0 && !nodes_.empty() && nodes_[0].deadline <= now; --limit) {
    Node node = nodes_[0];
    TimerEntry& entry = *node.entry;
    const std::uint64_t count = entry.interval_ == 0 ? 1 : 1 + (now - node.deadline) / entry.interval_;
    due.push_back({&entry, count, entry.setting_});
    entry.keepUntilFired();
    if (entry.interval_ == 0) {
      removeAt(0);
    } else {
      const std::uint64_t step = count * entry.interval_;
      node.deadline = step < kNever - node.deadline ? node.deadline + step : kNever;
      node.age = added_++;
      siftDown(0, node);
    }
  }
}

void TimerHeap::siftUp(std::size_t index, const Node& node) noexcept {
  while (index > 0) {
    const std::size_t parent = (index - 1) / 2;
    if (!node.before(nodes_[parent])) break;
    place(index, nodes_[parent]);
    index = parent;
  }
  place(index, node);
}

void TimerHeap::siftDown(std::size_t index, const Node& node) noexcept {
  for (;;) {
    std::size_t child = 2 * index + 1;
    if (child >= nodes_.size()) break;
    if (child + 1 < nodes_.size() && nodes_[child + 1].before(nodes_[child])) ++child;
    if (!nodes_[child].before(node)) break;
    place(index, nodes_[child]);
    index = child;
  }
  place(index, node);
}

void TimerHeap::removeAt(std::size_t index) noexcept {
  TimerEntry& entry = *nodes_[index].entry;
  entry.heap_ = nullptr;
  entry.index_ = TimerEntry::kNowhere;
  const Node last = nodes_.back();
  nodes_.pop_back();
  if (index == nodes_.size()) return;
  if (index > 0 && last.before(nodes_[(index - 1) / 2])) {
    siftUp(index, last);
  } else {
    siftDown(index, last);
  }
}

void TimerHeap::forgetAll() noexcept {
  for (const Node& node : nodes_) {
    node.entry->heap_ = nullptr;
    node.entry->index_ = TimerEntry::kNowhere;
  }
  new std::vector<Node>(std::move(nodes_));  // never freed: another thread may have been changing it
  nodes_.clear();
}

}  // namespace norvik::detail

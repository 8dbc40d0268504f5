#include "Merge.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace norvik_log {

struct Merge::Head {
  LogSource* source = nullptr;
  std::size_t order = 0;
  Batch batch;
  std::size_t at = 0;
  std::int64_t time = std::numeric_limits<std::int64_t>::min();  // of the record, or of the previous one if it has none

  /// Moves to the source's next record. False if there is none.
  bool read() {
    while (at == batch.size()) {
      batch = Batch();
      at = 0;
      if (!source->next(batch) && batch.isEmpty()) return false;
    }
    time = batch[at].time.value_or(time);
    return true;
  }
};

struct Merge::Later {
  bool operator()(const Head& a, const Head& b) const noexcept {
    return a.time != b.time ? a.time > b.time : a.order > b.order;
  }
};

Merge::Merge(std::vector<std::unique_ptr<LogSource>> sources) : sources_(std::move(sources)) {}

Merge::~Merge() = default;

bool Merge::next(Batch& batch) {
  if (!std::exchange(isBegun_, true)) {
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      Head head;
      head.source = sources_[i].get();
      head.order = i;
      if (head.read()) heads_.push_back(std::move(head));
    }
    std::make_heap(heads_.begin(), heads_.end(), Later());
  }
  constexpr std::size_t enough = 256 << 10;
  while (!heads_.empty() && batch.weight() < enough) {
    std::pop_heap(heads_.begin(), heads_.end(), Later());
    Head& head = heads_.back();
    // While the next record of this source is the earliest, the loop takes it without going through the heap.
    bool isMore = true;
    do {
      batch.add(head.batch[head.at++]);
      isMore = head.read();
    } while (isMore && batch.weight() < enough && (heads_.size() == 1 || !Later()(head, heads_.front())));
    if (isMore) {
      std::push_heap(heads_.begin(), heads_.end(), Later());
    } else {
      heads_.pop_back();
    }
  }
  return !batch.isEmpty();
}

}  // namespace norvik_log

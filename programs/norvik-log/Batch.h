// programs/norvik-log/Batch.h - records with a copy of their bytes, which outlives the block in which they were found.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "LogLine.h"

namespace norvik_log {

class Batch {
 public:
  void add(const Record& record) {
    begins_.push_back(bytes_.size());
    bytes_.insert(bytes_.end(), record.bytes.begin(), record.bytes.end());
    records_.push_back(record);
  }
  /// The approximate number of bytes of memory.
  [[nodiscard]] std::size_t weight() const noexcept { return bytes_.size() + records_.size() * sizeof(Record); }
  [[nodiscard]] std::size_t size() const noexcept { return records_.size(); }
  [[nodiscard]] bool isEmpty() const noexcept { return records_.empty(); }
  /// Valid until the next add().
  [[nodiscard]] Record operator[](std::size_t index) const {
    Record record = records_[index];
    record.bytes = std::string_view(bytes_.data() + begins_[index], record.bytes.size());
    return record;
  }

 private:
  std::vector<char> bytes_;
  std::vector<std::size_t> begins_;
  std::vector<Record> records_;
};

}  // namespace norvik_log

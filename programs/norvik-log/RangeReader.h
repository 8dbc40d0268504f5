// programs/norvik-log/RangeReader.h - the records that begin in a range of a log, read in blocks of whole records.
//
// A record of more than a mebibyte is read in pieces. Each piece is a record of its own that continues the one before,
// so that memory stays flat whatever the log.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "BlockScan.h"

namespace norvik_log {

/// Reads up to `size` bytes at an offset; 0 at the end.
using ReadAt = std::function<std::size_t(char* into, std::size_t size, std::int64_t offset)>;

/// Where a piece of a line that goes on may end: what follows is not taken for a time. Of longestHeadTime bytes at
/// least.
[[nodiscard]] std::size_t endOfPiece(std::string_view line) noexcept;

class RangeReader {
 public:
  static constexpr std::int64_t toTheEnd = std::numeric_limits<std::int64_t>::max();
  static constexpr std::size_t longestRecord = 1 << 20;

  /// Called with each block before it is scanned.
  using Watch = std::function<void(std::string_view lines, std::int64_t offset)>;

  /// What is given outlives it.
  RangeReader(ReadAt read, BlockScan& scan, IsSecondPass isSecondPass, std::string_view source, const WallClock& clock,
              Watch watch = nullptr);

  /// Begins with the first record that begins at `from` or behind it, ends with the last that begins before `to`.
  void begin(std::int64_t from, std::int64_t to);
  /// Adds what the next block has; false where there is none.
  bool step(Batch& found);

 private:
  void fill(std::size_t wanted);
  [[nodiscard]] std::size_t usualSize() const noexcept;
  void drop(std::size_t count);
  [[nodiscard]] bool skipToFirstRecord();
  [[nodiscard]] std::size_t endOfLines() const noexcept;
  /// The first record that begins at `to_` or behind it, in so many bytes.
  [[nodiscard]] std::optional<std::size_t> recordBehindRange(std::size_t size) const noexcept;
  void scan(std::size_t size, Batch& found);
  void continueFrom(std::size_t size);

  ReadAt read_;
  BlockScan& scan_;
  IsSecondPass isSecondPass_;
  const std::string_view source_;
  WallClock clock_;
  Watch watch_;
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_ = 0, begin_ = 0, size_ = 0;  // the bytes read and not yet scanned
  std::int64_t base_ = 0, to_ = 0;                   // where they are in the log
  bool isAtEnd_ = false, isDone_ = true, isBegun_ = false;
  std::optional<Record> continued_;
};

}  // namespace norvik_log

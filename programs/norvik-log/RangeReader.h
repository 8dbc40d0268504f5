// programs/norvik-log/RangeReader.h - reads the records that begin in a range of a log, in blocks of whole records.
//
// A record of more than a mebibyte is read in pieces, so that the use of memory is bounded. Each piece is a record that
// continues the one before.
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

/// Reads up to `size` bytes at an offset. Returns 0 at the end.
using ReadAt = std::function<std::size_t(char* into, std::size_t size, std::int64_t offset)>;

/// The size of a piece of a line that continues, chosen so that the rest does not begin with something like a time. The
/// line must have at least longestHeadTime bytes.
[[nodiscard]] std::size_t endOfPiece(std::string_view line) noexcept;

class RangeReader {
 public:
  static constexpr std::int64_t toTheEnd = std::numeric_limits<std::int64_t>::max();
  static constexpr std::size_t longestRecord = 1 << 20;

  /// Called with each block before the block is scanned.
  using Watch = std::function<void(std::string_view lines, std::int64_t offset)>;

  /// The arguments must outlive the RangeReader.
  RangeReader(ReadAt read, BlockScan& scan, IsSecondPass isSecondPass, std::string_view source, const WallClock& clock,
              Watch watch = nullptr);

  /// Starts a range: from the first record that begins at or after `from` to the last one that begins before `to`.
  void begin(std::int64_t from, std::int64_t to);
  /// Adds the records of the next block. Returns false if there is none.
  bool step(Batch& found);

 private:
  void fill(std::size_t wanted);
  [[nodiscard]] std::size_t usualSize() const noexcept;
  void drop(std::size_t count);
  [[nodiscard]] bool skipToFirstRecord();
  [[nodiscard]] std::size_t endOfLines() const noexcept;
  /// The first record within `size` bytes that begins at or after `to_`.
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
  std::size_t capacity_ = 0, begin_ = 0, size_ = 0;  // the buffer, and the bytes read but not scanned
  std::int64_t base_ = 0, to_ = 0;                   // base_: the position of the first of these bytes in the log
  bool isAtEnd_ = false, isDone_ = true, isBegun_ = false;
  std::optional<Record> continued_;
};

}  // namespace norvik_log

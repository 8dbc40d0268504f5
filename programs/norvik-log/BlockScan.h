// programs/norvik-log/BlockScan.h - finds the records of a block of a log that a filter admits.
//
// The scan searches the block for the rarest part of the filter, and parses only the lines around each hit. That part
// is the text, or a text that every match of the pattern contains, or the pattern itself. For a level, the scan looks
// at the level's place in each line. It then checks the records around a hit one by one, so that the result is the same
// as if every record had been parsed.
//
// Threads: confined. Cost: linear in the block.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "Batch.h"
#include "ByteSearch.h"
#include "Filter.h"
#include "WallClock.h"

namespace norvik_log {

/// True if a wall time that occurred twice was written at its second occurrence, at this offset of the file.
using IsSecondPass = std::function<bool(std::int64_t offset, std::int64_t wallTime)>;

class BlockScan {
 public:
  /// The filter must outlive the BlockScan. `clock` has the zone of times without an offset.
  BlockScan(const Filter& filter, const WallClock& clock);

  /// Adds the admitted records in order. `block` begins at the start of a record or in the middle of `continued`, and
  /// ends at the end of a record. `offset` is its position in the file.
  void scan(std::string_view block, std::int64_t offset, const Record* continued, const IsSecondPass& isSecondPass,
            std::string_view source, Batch& found);
  /// The number of searches for the pattern that were given up since the last call.
  std::size_t takeGivenUp();

 private:
  void scanForText(Batch& found);
  void scanInPlace(Pattern::Matcher& matcher, const char* at, Batch& found);
  void scanForLevel(Batch& found);
  void scanAll(Batch& found);
  /// Checks the record that contains `at` and begins at or after `low`. Returns its end.
  const char* judgeAround(const char* low, const char* at, Batch& found);
  void judge(const char* begin, const char* end, const std::optional<HeadTime>& time, Batch& found);

  FilterCheck check_;
  WallClock clock_;
  std::vector<ByteSearch> searches_;  // for a text, and for its escaped form if that differs
  bool levelInitials_[256] = {};
  const char *begin_ = nullptr, *end_ = nullptr;  // the block
  std::int64_t offset_ = 0;
  const Record* continued_ = nullptr;
  const IsSecondPass* isSecondPass_ = nullptr;
  std::string_view source_;
};

/// The end of the record that contains `at`: after the line feed before the next line with a time, or `end`.
[[nodiscard]] const char* endOfRecord(const char* at, const char* end) noexcept;
/// The start of the last line that begins with a time, after `begin`; `begin` if there is none.
[[nodiscard]] const char* lastHead(const char* begin, const char* end) noexcept;
/// A record that continues `record`: it has the time, level, line, names and source of `record`, but no bytes yet.
[[nodiscard]] Record continuationOf(const Record& record);
/// A record of a block, with its time.
[[nodiscard]] Record timedRecord(std::string_view bytes, const HeadTime& time, WallClock& clock,
                                 const IsSecondPass& isSecondPass, std::int64_t offset);

}  // namespace norvik_log

// programs/norvik-log/BlockScan.h - the records of a block of a log that a filter admits.
//
// The block is searched for what is rarest in the filter, and only the lines around a find are parsed: for the text,
// for a text that the pattern contains, or for the pattern itself. A level is looked up at its place in each line. The
// lines around are then judged one by one, so that the answer is the same as if each had been parsed.
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

/// Whether a time that the clocks showed twice was shown the second time, at this place of the file.
using IsSecondPass = std::function<bool(std::int64_t offset, std::int64_t wallTime)>;

class BlockScan {
 public:
  /// The filter outlives it. `clock` is of the zone that times without an offset are of.
  BlockScan(const Filter& filter, const WallClock& clock);

  /// Adds the records in order. `block` begins where a record does, or in the middle of `continued`, and ends where one
  /// does; `offset` is its place in the file.
  void scan(std::string_view block, std::int64_t offset, const Record* continued, const IsSecondPass& isSecondPass,
            std::string_view source, Batch& found);
  /// How often the pattern was given up on since the last call.
  std::size_t takeGivenUp();

 private:
  void scanForText(Batch& found);
  void scanInPlace(Pattern::Matcher& matcher, const char* at, Batch& found);
  void scanForLevel(Batch& found);
  void scanAll(Batch& found);
  /// Judges the record that `at` lies in, which begins at `low` or later; returns its end.
  const char* judgeAround(const char* low, const char* at, Batch& found);
  void judge(const char* begin, const char* end, const std::optional<HeadTime>& time, Batch& found);

  FilterCheck check_;
  WallClock clock_;
  std::vector<ByteSearch> searches_;  // for a text as it is, and escaped where that differs
  bool levelInitials_[256] = {};
  const char *begin_ = nullptr, *end_ = nullptr;  // the block
  std::int64_t offset_ = 0;
  const Record* continued_ = nullptr;
  const IsSecondPass* isSecondPass_ = nullptr;
  std::string_view source_;
};

/// Where the record ends that `at` lies in: behind a line feed, where a line begins with a time, or at `end`.
[[nodiscard]] const char* endOfRecord(const char* at, const char* end) noexcept;
/// Where the last line begins that begins with a time, behind `begin`; `begin` where there is none.
[[nodiscard]] const char* lastHead(const char* begin, const char* end) noexcept;
/// The record that a continuation of `record` is of.
[[nodiscard]] Record continuationOf(const Record& record);
/// A record as it stands in a block, with its time.
[[nodiscard]] Record timedRecord(std::string_view bytes, const HeadTime& time, WallClock& clock,
                                 const IsSecondPass& isSecondPass, std::int64_t offset);

}  // namespace norvik_log

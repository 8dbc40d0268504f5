// tests/programs/norvik-log/FoundIn.h - the records that the reader finds in a text, as in a file with that content.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "Folds.h"
#include "RangeReader.h"

namespace norvik_log_test {

/// A record with a copy of its bytes.
struct Found {
  std::string bytes, text;
  norvik_log::Record record;
};

/// Reads the log in chunks of `chunk` bytes.
inline std::vector<Found> foundIn(const std::string& log, const norvik_log::Filter& filter, std::size_t chunk = 1 << 20,
                                  const char* zone = "UTC") {
  using namespace norvik_log;
  const WallClock clock(norvik::NSTimeZone::timeZoneWithName(zone));
  Folds folds(clock);
  folds.pass(log, 0);
  BlockScan scan(filter, clock);
  const ReadAt read = [&log](char* into, std::size_t size, std::int64_t offset) -> std::size_t {
    const auto at = std::min(static_cast<std::size_t>(offset), log.size());
    const std::size_t count = std::min(size, log.size() - at);
    std::memcpy(into, log.data() + at, count);
    return count;
  };
  RangeReader reader(
      read, scan, [&](std::int64_t offset, std::int64_t wall) { return folds.isSecondPass(offset, wall); }, "log",
      clock);
  std::vector<Found> found;
  for (std::size_t from = 0; from == 0 || from < log.size(); from += chunk) {
    reader.begin(static_cast<std::int64_t>(from), static_cast<std::int64_t>(from + chunk));
    for (bool isMore = true; isMore;) {
      Batch batch;
      isMore = reader.step(batch);
      for (std::size_t i = 0; i < batch.size(); ++i) {
        const Record record = batch[i];
        std::string held;
        found.push_back({std::string(record.bytes), std::string(textOf(record, held)), record});
      }
    }
  }
  return found;
}

inline std::vector<std::string> bytesOf(const std::vector<Found>& found) {
  std::vector<std::string> bytes;
  for (const Found& one : found) bytes.push_back(one.bytes);
  return bytes;
}

}  // namespace norvik_log_test

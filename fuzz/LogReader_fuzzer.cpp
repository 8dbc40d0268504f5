// fuzz/LogReader_fuzzer.cpp - compares the reader of log files with a slow and simple one. The first bytes choose the
// filter and how the file is divided; the rest is the file.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "programs/norvik-log/Output.h"
#include "programs/norvik-log/RangeReader.h"
#include "programs/norvik-log/VisibleText.h"
#include "tests/programs/norvik-log/PlainReader.h"

namespace {

using namespace norvik_log;

/// The filter's settings. The simple reader tests the same by the standard library.
struct Wanted {
  int level = 0;
  std::string text, pattern;
};

std::vector<std::string> readByReader(const std::string& log, const Filter& filter, std::size_t chunk) {
  const WallClock clock(norvik::NSTimeZone::timeZoneForSecondsFromGMT(0));
  BlockScan scan(filter, clock);
  const ReadAt read = [&log](char* into, std::size_t size, std::int64_t offset) -> std::size_t {
    const auto at = std::min(static_cast<std::size_t>(offset), log.size());
    // Short reads, as from pipes.
    const std::size_t count = std::min({size, log.size() - at, std::size_t{61}});
    std::memcpy(into, log.data() + at, count);
    return count;
  };
  std::vector<std::string> found;
  RangeReader reader(
      read, scan, [](std::int64_t, std::int64_t) { return false; }, "log", clock);
  for (std::size_t from = 0; from == 0 || from < log.size(); from += chunk) {
    reader.begin(static_cast<std::int64_t>(from), static_cast<std::int64_t>(from + chunk));
    for (bool isMore = true; isMore;) {
      Batch batch;
      isMore = reader.step(batch);
      for (std::size_t i = 0; i < batch.size(); ++i) {
        found.emplace_back(batch[i].bytes);
        std::string json, visible;
        appendJson(json, batch[i]);
        if (json.find('\n') != json.size() - 1) std::abort();
        appendVisible(visible, batch[i].bytes, LineFeeds::Escaped);
        if (visible.find_first_of("\n\x1b\x7f") != visible.npos) std::abort();
      }
    }
  }
  return found;
}

std::vector<std::string> readByModel(const std::string& log, const Wanted& wanted) {
  std::vector<std::string> found;
  for (const auto& message : norvik_log_test::readPlainly(log)) {
    if (wanted.level != 0) {
      const bool isNamed =
          message.flag == 1 || message.flag == 2 || message.flag == 4 || message.flag == 8 || message.flag == 16;
      if (!isNamed || message.flag > wanted.level) continue;
    }
    if (message.text.find(wanted.text) == std::string::npos) continue;
    if (!wanted.pattern.empty()) {
      // The pattern is "a.?b" in characters; only ASCII is tested.
      bool matches = false;
      for (std::size_t i = 0; i + 1 < message.text.size(); ++i) {
        if (message.text[i] != 'a') continue;
        matches |= message.text[i + 1] == 'b' || (i + 2 < message.text.size() && message.text[i + 1] >= '0' &&
                                                  message.text[i + 1] <= '9' && message.text[i + 2] == 'b');
      }
      if (!matches) continue;
    }
    found.push_back(message.bytes);
  }
  return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t head = 3, longest = 1900;  // longest: the simple reader's expressions take stack by length
  if (size < head || size > longest) return 0;
  const int levels[] = {0, 1, 2, 4, 8, 16};
  const std::string texts[] = {"", "a", "\\", "\n", "paid", "a\tb", "\xc3\xab", "2021"};
  Wanted wanted;
  wanted.level = levels[data[0] % 6];
  wanted.text = texts[data[1] % 8];
  if ((data[1] & 0x80) != 0) wanted.pattern = "a[0-9]?b";
  const std::size_t chunk = data[2] == 0 ? longest : data[2] * 7u;
  const std::string log(reinterpret_cast<const char*>(data) + head, size - head);
  Filter filter;
  if (wanted.level != 0) filter.level = wanted.level;
  if (!wanted.text.empty()) filter.text = wanted.text;
  if (!wanted.pattern.empty()) {
    filter.pattern = std::make_shared<Pattern>(wanted.pattern, Pattern::Kind::Regular, false);
  }
  if (readByReader(log, filter, chunk) != readByModel(log, wanted)) std::abort();
  return 0;
}

#include "RangeReader.h"

#include <gtest/gtest.h>

#include "tests/programs/norvik-log/FoundIn.h"

namespace norvik_log {
namespace {

using norvik_log_test::bytesOf;
using norvik_log_test::foundIn;

std::string joined(const std::vector<std::string>& pieces) {
  std::string all;
  for (const std::string& piece : pieces) all += piece;
  return all;
}

TEST(RangeReader, EachRecordBelongsToTheRangeInWhichItBegins) {
  std::string log = "foreign\n";
  std::vector<std::string> expected = {"foreign"};
  for (int i = 0; i < 40; ++i) {
    expected.push_back("2021-05-10 13:30:12 message " + std::to_string(i) + (i % 3 == 0 ? "\nof two lines" : ""));
    log += expected.back() + "\n";
  }
  for (std::size_t chunk = 1; chunk < 120; ++chunk)
    EXPECT_EQ(bytesOf(foundIn(log, Filter(), chunk)), expected) << chunk;
}

TEST(RangeReader, AVeryLongMessageIsReadInPiecesThatKnowWhatTheyAreOf) {
  const std::string head = "2021-05-10T13:30:12.045Z WARN    [q:7] a.cpp:1  ";
  const std::string next = "2021-05-10T13:30:13.000Z INFO    [q:7] a.cpp:2  next";
  const std::string text(5 * RangeReader::longestRecord / 2, 'x');
  const auto found = foundIn(head + text + "\n" + next + "\n", Filter());
  ASSERT_GE(found.size(), 3u);
  std::string all;
  for (std::size_t i = 0; i + 1 < found.size(); ++i) {
    all += found[i].bytes;
    EXPECT_EQ(found[i].record.flag, 2);
    Record record = found[i].record;
    record.bytes = found[i].bytes;
    EXPECT_EQ(namesOf(record).thread, "7");
    EXPECT_EQ(found[i].record.time, 1620653412045);
    EXPECT_EQ(found[i].record.continued != nullptr, i > 0);
    EXPECT_LE(found[i].bytes.size(), 2 * RangeReader::longestRecord);
  }
  EXPECT_EQ(all, head + text);
  EXPECT_EQ(found.back().bytes, next);
  EXPECT_FALSE(found.back().record.continued);
  Filter errors;
  errors.level = 1;
  EXPECT_TRUE(foundIn(head + text + "\n" + next + "\n", errors).empty());
}

TEST(RangeReader, NoPieceOfALineIsTakenForAMessage) {
  const std::string time = "2021-05-10 13:30:12 ";
  for (std::size_t before = 0; before < 60; ++before) {
    std::string line = "x" + std::string(before, '.');
    while (line.size() < 3 * RangeReader::longestRecord) line += time;
    const auto found = foundIn(line + "\n", Filter());
    for (const auto& piece : found) EXPECT_FALSE(piece.record.time) << before;
    EXPECT_EQ(joined(bytesOf(found)), line);
    if (before > 3) before += 18;
  }
}

TEST(RangeReader, AFileOfOtherLinesIsReadWhole) {
  std::string log;
  while (log.size() < 3 * RangeReader::longestRecord) log += "nothing that begins with a time\n";
  for (int i = 0; i < 30'000; ++i) log += "2021-05-10 13:30:12 and then times\n";
  Filter filter;
  std::size_t count = 0;
  for (const std::string& bytes : bytesOf(foundIn(log, filter, 1 << 18))) count += bytes.size() + 1;
  EXPECT_EQ(count, log.size());
  EXPECT_TRUE(foundIn("", filter).empty());
}

}  // namespace
}  // namespace norvik_log

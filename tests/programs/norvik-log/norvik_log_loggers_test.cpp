// tests/programs/norvik-log/norvik_log_loggers_test.cpp - the reader on logs of the same messages by several loggers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "tests/programs/norvik-log/ReaderProgram.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik_log_test {
namespace {

using norvik::test::ChildProgram;
using norvik::test::TemporaryFolder;
using testing::EndsWith;

/// The lines of JSON without their sources.
std::vector<std::string> entriesOf(const Result& result) {
  EXPECT_EQ(result.err, "");
  std::vector<std::string> entries;
  for (std::size_t at = 0; at < result.out.size();) {
    const std::size_t end = result.out.find('\n', at);
    entries.push_back(result.out.substr(at, result.out.rfind(",\"source\":", end) - at));
    at = end + 1;
  }
  return entries;
}

TEST(NorvikLogLoggers, AFolderAndADatabaseHaveTheSameEntriesEachOnceInOrder) {
  const TemporaryFolder folder;
  const std::string logs = folder.path("logs"), database = folder.path("log.db");
  {
    ChildProgram writer({"/usr/bin/env", "NORVIK_LOG_WRITER_SQLITE=" + database, NORVIK_LOG_WRITER, "line", logs});
    const auto write = [&](const std::string& command) {
      writer.write(command + "\n");
      EXPECT_EQ(writer.readLine(), "done");
    };
    write("many 500 paid");
    write("roll now");
    write("tick now");
    write("log warn Zo\xc3\xab\\nSmith \"\\\\ has no account");
    write("log error \x1b[2J \xe2\x80\xae 100%");
    write("many 500 filed");
    EXPECT_EQ(writer.wait(), 0);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(logs), {}), 2);
  const std::vector<std::string> all = entriesOf(runReader({"--json", logs}));
  ASSERT_EQ(all.size(), 1002u);
  EXPECT_EQ(entriesOf(runReader({"--json", database})), all);
  EXPECT_THAT(all[0], EndsWith("\"text\":\"paid 0\""));
  EXPECT_THAT(all[499], EndsWith("\"text\":\"paid 499\""));
  EXPECT_THAT(all[501], EndsWith("\"text\":\"\\u001b[2J \\u202e 100%\""));
  EXPECT_THAT(all[1001], EndsWith("\"text\":\"filed 499\""));
  // Both sources at once, ordered by time: each entry of each source appears once.
  std::vector<std::string> merged = entriesOf(runReader({"--json", logs, database}));
  ASSERT_EQ(merged.size(), 2004u);
  EXPECT_TRUE(std::is_sorted(merged.begin(), merged.end(), [](const std::string& a, const std::string& b) {
    return a.substr(0, 33) < b.substr(0, 33);  // the first 33 bytes end after the time
  }));
  const struct {
    std::vector<std::string> options;
    std::size_t count;
  } rows[] = {{{"-l", "warn"}, 2},
              {{"-l", "error"}, 1},
              {{"-t", "filed"}, 500},
              {{"-e", "^paid [0-9]$"}, 10},
              {{"-i", "-t", "SMITH"}, 1},
              {{"--since", "10 minutes ago"}, 1002},
              {{"--until", "10 minutes ago"}, 0},
              {{"--since", "10 minutes ago", "-l", "warn", "-e", "^Smith"}, 1}};
  for (const auto& row : rows) {
    std::vector<std::string> ofFiles = {"--json", logs}, ofDatabase = {"--json", database};
    ofFiles.insert(ofFiles.end(), row.options.begin(), row.options.end());
    ofDatabase.insert(ofDatabase.end(), row.options.begin(), row.options.end());
    const std::vector<std::string> entries = entriesOf(runReader(ofFiles));
    EXPECT_EQ(entries.size(), row.count) << testing::PrintToString(row.options);
    EXPECT_EQ(entriesOf(runReader(ofDatabase)), entries) << testing::PrintToString(row.options);
  }
}

TEST(NorvikLogLoggers, AMessageHasTheSameMillisecondInAFolderAndInADatabase) {
  const struct {
    const char *fraction, *shown;  // the nanoseconds of the time, the milliseconds of the JSON
  } rows[] = {{"011000000", "011"}, {"011998500", "011"}, {"011998999", "012"}, {"011999400", "012"},
              {"011999500", "012"}, {"011999999", "012"}, {"012000000", "012"}, {"012000100", "012"},
              {"499998500", "499"}, {"499999400", "500"}, {"500000000", "500"}, {"999999600", "999"}};
  const TemporaryFolder folder;
  const std::string logs = folder.path("logs"), database = folder.path("log.db");
  std::vector<std::string> expected;
  {
    ChildProgram writer({"/usr/bin/env", "NORVIK_LOG_WRITER_SQLITE=" + database, NORVIK_LOG_WRITER, "line", logs});
    // In 2021, and in 2035, when a double of seconds has a lower resolution.
    for (const std::string second : {"1620653412", "2062560612"}) {
      for (const auto& row : rows) {
        writer.write("at " + second + "." + row.fraction + " " + row.fraction + "\n");
        EXPECT_EQ(writer.readLine(), "done");
        const std::string start = second == "1620653412" ? "2021-05-10T13:30:12." : "2035-05-12T05:30:12.";
        expected.push_back(start + row.shown + "Z " + row.fraction);
      }
    }
    // Each step of a tenth of a microsecond around the start of a millisecond.
    for (int step = 0; step < 40; ++step) {
      writer.write("at 1620653413.0" + std::to_string(11'997'000 + 100 * step) + " step\n");
      EXPECT_EQ(writer.readLine(), "done");
    }
    EXPECT_EQ(writer.wait(), 0);
  }
  const std::vector<std::string> ofFiles = entriesOf(runReader({"--json", logs}));
  ASSERT_EQ(ofFiles.size(), expected.size() + 40);
  std::vector<std::string> shown;
  for (const std::string& entry : ofFiles) {
    const std::string text = entry.substr(entry.find("\"text\":\"") + 8);
    shown.push_back(entry.substr(9, 24) + " " + text.substr(0, text.size() - 1));
  }
  shown.resize(expected.size());
  EXPECT_EQ(shown, expected);
  EXPECT_EQ(entriesOf(runReader({"--json", database})), ofFiles);
}

}  // namespace
}  // namespace norvik_log_test

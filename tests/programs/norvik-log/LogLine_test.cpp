#include "LogLine.h"

#include <gtest/gtest.h>

#include <deque>

#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "Output.h"

namespace norvik_log {
namespace {

std::optional<HeadTime> timeOf(const std::string& line) { return headTime(line.data(), line.data() + line.size()); }

/// A record of bytes that are kept until the program ends.
Record recordIn(const std::string& text) {
  static std::deque<std::string> kept;
  const std::string& bytes = kept.emplace_back(text);
  const auto time = timeOf(bytes);
  EXPECT_TRUE(time) << bytes;
  return time ? recordOf(bytes, *time) : Record();
}

TEST(LogLine, ALineThatBeginsWithATimeBeginsAMessage) {
  const struct {
    const char *line, *time;
    std::size_t size;
    std::optional<int> offset;
  } rows[] = {
      {"2021/05/10 14:30:12:045  paid", "2021-05-10T14:30:12.045Z", 23, std::nullopt},
      {"2021-05-10T13:30:12.045Z WARN", "2021-05-10T13:30:12.045Z", 24, 0},
      {"2021-05-10 13:30:12", "2021-05-10T13:30:12.000Z", 19, std::nullopt},
      {"2021-05-10 13:30:12\n", "2021-05-10T13:30:12.000Z", 19, std::nullopt},
      {"2021-05-10 13:30:12,5 x", "2021-05-10T13:30:12.500Z", 21, std::nullopt},
      {"2021-05-10 13:30:12.123456789+01:00\tx", "2021-05-10T13:30:12.123Z", 35, 3600},
      {"2021-05-10 13:30:12-0530 x", "2021-05-10T13:30:12.000Z", 24, -19800},
      {"2020-02-29 00:00:00 x", "2020-02-29T00:00:00.000Z", 19, std::nullopt},
      {"9999-12-31 23:59:59.999 x", "9999-12-31T23:59:59.999Z", 23, std::nullopt},
      {"0001-01-01 00:00:00 x", "0001-01-01T00:00:00.000Z", 19, std::nullopt},
  };
  for (const auto& row : rows) {
    const auto time = timeOf(row.line);
    ASSERT_TRUE(time) << row.line;
    EXPECT_EQ(utcTime(time->milliseconds), row.time) << row.line;
    EXPECT_EQ(time->size, row.size) << row.line;
    EXPECT_EQ(time->offsetSeconds, row.offset) << row.line;
  }
}

TEST(LogLine, ALineThatBeginsOtherwiseDoesNot) {
  for (const char* const line : {"",
                                 "paid",
                                 " 2021-05-10 13:30:12 x",
                                 "2021-05-10",
                                 "2021-05-10 13:30",
                                 "2021-05-10 13:30:1",
                                 "2021-05/10 13:30:12",
                                 "2021-02-29 13:30:12",
                                 "2021-00-10 13:30:12",
                                 "2021-13-10 13:30:12",
                                 "2021-04-31 13:30:12",
                                 "2021-05-10 24:00:00",
                                 "2021-05-10 13:60:12",
                                 "2021-05-10 13:30:60",
                                 "0000-05-10 13:30:12",
                                 "2021-05-10_13:30:12",
                                 "2021-05-10 13:30:12x",
                                 "2021-05-10 13:30:12.x",
                                 "2021-05-10 13:30:12.1234567890 x",
                                 "2021-05-10 13:30:12+24:00 x",
                                 "2021-05-10 13:30:12+1:00 x",
                                 "20a1-05-10 13:30:12"}) {
    EXPECT_FALSE(timeOf(line)) << line;
  }
}

TEST(LogLine, OfTheLineFormEverythingIsKnown) {
  const std::string line =
      "2021-05-10T13:30:12.045Z WARN    [com.norvik.main-thread:4711] PayRun.cpp:42  Zo\xc3\xab\\nSmith \\\\ \\x1b "
      "\\xff";
  const Record record = recordIn(line);
  EXPECT_EQ(record.flag, 2);
  const Names names = namesOf(record);
  EXPECT_EQ(names.label, "com.norvik.main-thread");
  EXPECT_EQ(names.thread, "4711");
  EXPECT_EQ(names.file, "PayRun.cpp");
  EXPECT_EQ(record.line, 42);
  std::string held;
  EXPECT_EQ(textOf(record, held), "Zo\xc3\xab\nSmith \\ \x1b \xff");
}

TEST(LogLine, LabelsAndFilesAreUnescaped) {
  const Record record = recordIn("2021-05-10T13:30:12.045Z 64      [pay\\x5d:[x:7] a\\x20b:c:-3  ");
  EXPECT_EQ(record.flag, 64);
  EXPECT_EQ(namesOf(record).label, "pay]:[x");
  EXPECT_EQ(namesOf(record).thread, "7");
  EXPECT_EQ(namesOf(record).file, "a b:c");
  EXPECT_EQ(record.line, -3);
  std::string held;
  EXPECT_EQ(textOf(record, held), "");
}

TEST(LogLine, WhatIsNearlyTheLineFormHasATimeAndAText) {
  const struct {
    const char *line, *text;
  } rows[] = {
      {"2021-05-10T13:30:12.045Z WARN   [q:1] a:1  text", "WARN   [q:1] a:1  text"},
      {"2021-05-10T13:30:12.045Z LOUD    [q:1] a:1  text", "LOUD    [q:1] a:1  text"},
      {"2021-05-10T13:30:12.045Z WARN    [q:x] a:1  text", "WARN    [q:x] a:1  text"},
      {"2021-05-10T13:30:12.045Z WARN    [q] a:1  text", "WARN    [q] a:1  text"},
      {"2021-05-10T13:30:12.045Z WARN    [q:1] a  text", "WARN    [q:1] a  text"},
      {"2021-05-10T13:30:12.045Z WARN    [q:1] a:1 text", "WARN    [q:1] a:1 text"},
      {"2021-05-10T13:30:12.045Z WARN    [q:1", "WARN    [q:1"},
      {"2021-05-10T13:30:12.045Z", ""},
      {"2021/05/10 14:30:12:045  C:\\new", "C:\\new"},
      {"2021/05/10 14:30:12:045    indented", "  indented"},
      {"2021/05/10 14:30:12:045 one", "one"},
      {"2021/05/10 14:30:12:045  two\nlines", "two\nlines"},
  };
  for (const auto& row : rows) {
    const std::string line = row.line;
    const Record record = recordIn(line);
    std::string held;
    EXPECT_EQ(record.flag, 0) << row.line;
    EXPECT_EQ(textOf(record, held), row.text) << row.line;
    EXPECT_EQ(namesOf(record).thread, "") << row.line;
  }
}

TEST(LogLine, LinesBehindOneOfTheLineFormStandAsTheyAre) {
  const Record record = recordIn("2021-05-10T13:30:12.045Z INFO    [q:1] a:1  x\\ty\nraw\\ty");
  std::string held;
  EXPECT_EQ(textOf(record, held), "x\ty\nraw\\ty");
}

TEST(LogLine, TakesBackWhatTheFormatterEscaped) {
  for (const std::string& text :
       {std::string("plain"), std::string("\\ \n\r\t"), std::string("\0\x01\x7f", 3), std::string("\xff\xc3(\x80"),
        std::string("\xc2\x85 \xe2\x80\xa8 \xe2\x80\xae \xf0\x9f\x92\xb7")}) {
    const std::string escaped = norvik::DDLogLineFormatter::escaped(norvik::NSString(text)).str();
    std::string result = "> ";
    EXPECT_TRUE(appendUnescaped(result, escaped)) << escaped;
    EXPECT_EQ(result, "> " + text) << escaped;
  }
  for (const char* const wrong : {"\\", "\\q", "\\x1", "\\xg0", "\\u12", "ok\\"}) {
    std::string result = "> ";
    EXPECT_FALSE(appendUnescaped(result, wrong)) << wrong;
    EXPECT_EQ(result, "> ") << wrong;
  }
}

TEST(LogLine, LevelsHaveNamesAndOtherFlagsNumbers) {
  EXPECT_EQ(levelNamed("error"), 1);
  EXPECT_EQ(levelNamed("WARN"), 2);
  EXPECT_EQ(levelNamed("Warning"), 2);
  EXPECT_EQ(levelNamed("info"), 4);
  EXPECT_EQ(levelNamed("debug"), 8);
  EXPECT_EQ(levelNamed("verbose"), 16);
  EXPECT_EQ(levelNamed("64"), 64);
  for (const char* const wrong : {"", "0", "-1", "loud", "1x", "99999999999"}) EXPECT_FALSE(levelNamed(wrong)) << wrong;
  EXPECT_EQ(levelName(1), "ERROR");
  EXPECT_EQ(levelName(16), "VERBOSE");
  EXPECT_EQ(levelName(64), "64");
  EXPECT_EQ(levelName(0), "");
}

}  // namespace
}  // namespace norvik_log

#include "BlockScan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "Output.h"
#include "tests/programs/norvik-log/FoundIn.h"
#include "tests/programs/norvik-log/PlainReader.h"
#include "tests/support/Sanitizers.h"

namespace norvik_log {
namespace {

using norvik_log_test::bytesOf;
using norvik_log_test::foundIn;
using testing::ElementsAre;
using testing::IsEmpty;

std::int64_t instant(const std::string& text) {
  const auto time = headTime(text.data(), text.data() + text.size());
  return time ? time->milliseconds : 0;
}

std::string line(const char* time, const char* level, const char* text, const char* thread = "main:7") {
  return std::string("2021-05-10T") + time + "Z " + level + " [" + thread + "] a.cpp:1  " + text;
}

const std::string first = line("13:00:00.000", "ERROR  ", "first"), second = line("13:00:00.001", "WARN   ", "second"),
                  third = line("13:00:00.002", "INFO   ", "third"), fourth = line("13:00:00.003", "VERBOSE", "fourth"),
                  odd = line("13:00:00.004", "64     ", "odd");
const std::string log = first + "\n" + second + "\n" + third + "\n" + fourth + "\n" + odd + "\n";

TEST(BlockScan, ALevelIsThatAndTheMoreSevere) {
  const auto atLevel = [](int level) {
    Filter filter;
    filter.level = level;
    return bytesOf(foundIn(log, filter));
  };
  EXPECT_THAT(atLevel(1), ElementsAre(first));
  EXPECT_THAT(atLevel(2), ElementsAre(first, second));
  EXPECT_THAT(atLevel(4), ElementsAre(first, second, third));
  EXPECT_THAT(atLevel(8), ElementsAre(first, second, third));
  EXPECT_THAT(atLevel(16), ElementsAre(first, second, third, fourth));
  EXPECT_THAT(atLevel(64), ElementsAre(odd));
  EXPECT_THAT(atLevel(32), IsEmpty());
}

TEST(BlockScan, SinceIsIncludedAndUntilIsNot) {
  const auto between = [](const char* since, const char* until) {
    Filter filter;
    if (*since != '\0') filter.since = instant(std::string("2021-05-10T") + since + "Z");
    if (*until != '\0') filter.until = instant(std::string("2021-05-10T") + until + "Z");
    return bytesOf(foundIn(log, filter));
  };
  EXPECT_THAT(between("13:00:00.003", ""), ElementsAre(fourth, odd));
  EXPECT_THAT(between("13:00:00.004", ""), ElementsAre(odd));
  EXPECT_THAT(between("13:00:00.005", ""), IsEmpty());
  EXPECT_THAT(between("", "13:00:00.001"), ElementsAre(first));
  EXPECT_THAT(between("", "13:00:00.000"), IsEmpty());
  EXPECT_THAT(between("13:00:00.001", "13:00:00.003"), ElementsAre(second, third));
}

TEST(BlockScan, AThreadIsItsNumberItsNameOrBoth) {
  const std::string other = line("13:00:00.005", "INFO   ", "other", "worker:71");
  const auto onThread = [&](const char* thread) {
    Filter filter;
    filter.thread = thread;
    return bytesOf(foundIn(first + "\n" + other + "\n2021/05/10 14:00:00:000  7\n", filter));
  };
  EXPECT_THAT(onThread("7"), ElementsAre(first));
  EXPECT_THAT(onThread("71"), ElementsAre(other));
  EXPECT_THAT(onThread("worker"), ElementsAre(other));
  EXPECT_THAT(onThread("main:7"), ElementsAre(first));
  EXPECT_THAT(onThread("main:71"), IsEmpty());
  EXPECT_THAT(onThread("wor"), IsEmpty());
}

TEST(BlockScan, ATextIsSearchedInWhatWasLoggedNotInTheLine) {
  const std::string escaped = line("13:00:01.000", "INFO   ", "C:\\\\pay\\nn\\x1b");
  const std::string plain = "2021/05/10 14:00:00:000  C:\\pay\nn";
  const auto withText = [&](const char* text, bool ignoresCase = false) {
    Filter filter;
    filter.text = text;
    filter.ignoresCase = ignoresCase;
    return bytesOf(foundIn(log + escaped + "\n" + plain + "\n", filter));
  };
  EXPECT_THAT(withText("second"), ElementsAre(second));
  EXPECT_THAT(withText("SECOND"), IsEmpty());
  EXPECT_THAT(withText("SECOND", true), ElementsAre(second));
  EXPECT_THAT(withText("main"), IsEmpty());  // a thread's name
  EXPECT_THAT(withText("2021"), IsEmpty());  // a time
  EXPECT_THAT(withText("C:\\pay"), ElementsAre(escaped, plain));
  EXPECT_THAT(withText("c:\\PAY", true), ElementsAre(escaped, plain));
  EXPECT_THAT(withText("y\nn"), ElementsAre(escaped, plain));
  EXPECT_THAT(withText("\\n"), IsEmpty());  // an escape in the file is not a part of the text
  EXPECT_THAT(withText("1b"), IsEmpty());
  EXPECT_THAT(withText("\x1b"), ElementsAre(escaped));
}

TEST(BlockScan, LinesWithoutTimeBelongToTheMessageBefore) {
  const std::string log2 = "before\nall\n2021/05/10 14:00:00:000  one\n two\n\nfour\n2021/05/10 14:00:00:001  five";
  Filter filter;
  EXPECT_THAT(bytesOf(foundIn(log2, filter)), ElementsAre("before\nall", "2021/05/10 14:00:00:000  one\n two\n\nfour",
                                                          "2021/05/10 14:00:00:001  five"));
  filter.text = "four";
  EXPECT_THAT(bytesOf(foundIn(log2, filter)), ElementsAre("2021/05/10 14:00:00:000  one\n two\n\nfour"));
  filter.text = "all";
  EXPECT_THAT(bytesOf(foundIn(log2, filter)), ElementsAre("before\nall"));
  filter.since = 0;
  EXPECT_THAT(bytesOf(foundIn(log2, filter)), IsEmpty());
}

TEST(BlockScan, OfTimesThatTheClocksShowedTwiceTheSecondBeginWhereTheyStepBack) {
  const std::string log2 =
      "2021/10/31 01:10:00:000  first\n2021/10/31 01:50:00:000  first\n2021/10/31 01:05:00:000  second\n"
      "2021/10/31 01:50:00:000  second\n2021/10/31 02:00:00:000  after\n";
  std::vector<std::string> times;
  for (const auto& found : foundIn(log2, Filter(), 1 << 20, "Europe/London"))
    times.push_back(utcTime(*found.record.time));
  EXPECT_THAT(times, ElementsAre("2021-10-31T00:10:00.000Z", "2021-10-31T00:50:00.000Z", "2021-10-31T01:05:00.000Z",
                                 "2021-10-31T01:50:00.000Z", "2021-10-31T02:00:00.000Z"));
}

TEST(BlockScan, APatternWhoseTextIsInEveryLineFindsTheSame) {
  std::string text;
  std::vector<std::string> expected;
  for (int i = 0; i < 2000; ++i) {
    const bool isMatch = i % 37 == 0, isEscaped = i % 111 == 0;
    const std::string number = isMatch ? (isEscaped ? "12\\x3456" : "123456") : "12345";
    const std::string message = line("13:00:00.000", "INFO   ", ("payslip " + number + " of many").c_str());
    text += message + "\n";
    if (isMatch) expected.push_back(message);
  }
  Filter filter;
  filter.pattern = std::make_shared<Pattern>("[0-9]{5,6}[6] of", Pattern::Kind::Regular, false);
  // \x34 is not an escape here, because the formatter would not have written it for a 4.
  std::erase_if(expected, [](const std::string& message) { return message.find('\\') != message.npos; });
  EXPECT_EQ(bytesOf(foundIn(text, filter)), expected);
  filter.pattern = std::make_shared<Pattern>("12456 of", Pattern::Kind::Regular, false);
  EXPECT_THAT(bytesOf(foundIn(text, filter)), IsEmpty());
  filter.pattern = std::make_shared<Pattern>("[0-9]{3}56 of", Pattern::Kind::Regular, false);
  EXPECT_EQ(bytesOf(foundIn(text, filter)).size(), 36u);
}

/// Logs made of pieces that are easily confused with each other.
std::string randomLog(std::mt19937& dice) {
  const std::string pieces[] = {"2021-05-10T13:30:12.045Z ",
                                "WARN    [q:1] a:1  ",
                                "ERROR   [q:2] b:2  ",
                                "\n",
                                "\n",
                                "2021/05/10 14:30:12:045  ",
                                "paid",
                                "a",
                                "b",
                                "7",
                                "\\",
                                "\\n",
                                "\\x61",
                                " ",
                                "\xff",
                                "\xc3\xab",
                                std::string("\0", 1),
                                "2021-05-10T13:30:12.045Z INFO    [q:1] a:1  ",
                                "INFO   "};
  std::string text;
  for (int i = 0, count = static_cast<int>(dice() % 60); i < count; ++i) text += pieces[dice() % std::size(pieces)];
  return text;
}

TEST(BlockScan, FindsWhatAPlainReaderFinds) {
  std::mt19937 dice(20210510);  // NOLINT(cert-msc51-cpp): the same logs each time
  for (int round = 0; round < (norvik::test::isSanitized ? 300 : 3000); ++round) {
    const std::string text = randomLog(dice);
    const std::size_t chunk = 1 + dice() % 200;
    for (const char* const wanted : {"", "a", "paid", "\\", "\n", "\xff"}) {
      for (const int level : {0, 1, 2}) {
        Filter filter;
        if (*wanted != '\0') filter.text = wanted;
        if (level != 0) filter.level = level;
        std::vector<std::string> expected;
        for (const auto& message : norvik_log_test::readPlainly(text)) {
          const bool isLevel = level == 0 || (message.flag != 0 && message.flag <= level);
          if (isLevel && message.text.find(wanted) != std::string::npos) expected.push_back(message.bytes);
        }
        ASSERT_EQ(bytesOf(foundIn(text, filter, chunk)), expected) << text << "\nin chunks of " << chunk;
      }
    }
    for (const char* const wanted : {"a7?b", "[ab]+7", "\\bpaid\\b", "^a", "a.b", "paid|7", "\\\\", "\\s7"}) {
      Filter filter;
      filter.pattern = std::make_shared<Pattern>(wanted, Pattern::Kind::Regular, false);
      Pattern::Matcher matcher(*filter.pattern);
      std::vector<std::string> expected;
      for (const auto& message : norvik_log_test::readPlainly(text)) {
        if (matcher.matches(message.text)) expected.push_back(message.bytes);
      }
      ASSERT_EQ(bytesOf(foundIn(text, filter, chunk)), expected)
          << wanted << " in " << text << "\nin chunks of " << chunk;
    }
  }
}

}  // namespace
}  // namespace norvik_log

// The checks of lines must detect what they are made for.
#include "tests/soak/SoakLines.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik::test {
namespace {

TEST(SoakLines, ATextIsFoundBehindWhatALoggerPutsBeforeIt) {
  const auto line = parseSoakLine("2021/05/10 14:30:12:045  " + soakText(3, 17));
  ASSERT_TRUE(line);
  EXPECT_EQ(line->source, 3);
  EXPECT_EQ(line->number, 17);
  EXPECT_EQ(soakText(0, 0), "soak 0 0 abcde Zoë;");
}

TEST(SoakLines, WhatIsNotAWholeLineIsRefused) {
  const std::string whole = soakText(3, 17);
  for (const std::string& line :
       {std::string(), std::string("soak"), std::string("soak "), std::string("soak 3"), std::string("soak 3 "),
        std::string("soak x 17"), std::string("soak -1 17 a"), std::string("soak 99999999999 17 a"),
        std::string("soak 3 -17 a"), std::string("soak 3 2147483647 a"), std::string("soak 3 17 "),
        whole.substr(0, whole.size() - 1), whole + " ", whole + soakText(3, 18), "soak 3 18" + whole.substr(9)}) {
    EXPECT_FALSE(parseSoakLine(line)) << line;
    EXPECT_EQ(ArrivingLines().take(line), "not a line of the soak: " + line);
    EXPECT_EQ(CompleteLines().take(line), "not a line of the soak: " + line);
  }
}

TEST(SoakLines, ArrivingLinesAreCountedOnceAndInTheOrderOfTheirSource) {
  ArrivingLines lines;
  EXPECT_EQ(lines.take(soakText(0, 0)), "");
  EXPECT_EQ(lines.take(soakText(1, 0)), "");
  EXPECT_EQ(lines.take(soakText(0, 2)), "");
  EXPECT_EQ(lines.take(soakText(0, 2)), "twice or out of order: " + soakText(0, 2));
  EXPECT_EQ(lines.take(soakText(0, 1)), "twice or out of order: " + soakText(0, 1));
  EXPECT_EQ(lines.take(soakText(1, 1)), "");
  EXPECT_EQ(lines.count(), 4U);
  EXPECT_EQ(lines.last().source, 1);
}

TEST(SoakLines, CompleteLinesComeInAnyOrderAndOnce) {
  CompleteLines lines;
  EXPECT_EQ(lines.take(soakText(0, 2)), "");
  EXPECT_EQ(lines.take(soakText(0, 0)), "");
  EXPECT_EQ(lines.take(soakText(0, 2)), "twice: " + soakText(0, 2));
  EXPECT_EQ(lines.missing(0, 3), 1U);
  EXPECT_EQ(lines.missing(1, 3), 3U);
  EXPECT_EQ(lines.missing(1, 0), 0U);
  EXPECT_EQ(lines.take(soakText(0, 1)), "");
  EXPECT_EQ(lines.missing(0, 3), 0U);
}

}  // namespace
}  // namespace norvik::test

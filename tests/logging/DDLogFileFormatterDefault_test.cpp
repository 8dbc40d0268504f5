#include "NorvikCore/logging/DDLogFileFormatterDefault.h"

#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "tests/support/RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>

namespace norvik {
namespace {

Ref<DDLogMessage> messageOf(const NSString& text) {
  return DDLogMessage::initWithLogMsg(text, 31, 1, 0, "f", "g", 1, Value(), 0);
}

TEST(DDLogFileFormatterDefault, HeaderExample) {
  const auto logger = make<test::RecordingLogger>();
  const auto usual = make<DDLogFileFormatterDefault>();
  logger->setLogFormatter(usual);
  EXPECT_EQ(logger->logFormatter(), usual);
  const auto isoFormatter = make<NSDateFormatter>();
  isoFormatter->setDateFormat("yyyy-MM-dd'T'HH:mm:ss");
  logger->setLogFormatter(DDLogFileFormatterDefault::initWithDateFormatter(isoFormatter));
  const std::string line = logger->logFormatter()->formatLogMessage(*messageOf("40 payslips written"))->str();
  EXPECT_THAT(line,
              ::testing::MatchesRegex("20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}  40 payslips written"));
  EXPECT_THAT(
      usual->formatLogMessage(*messageOf("40 payslips written"))->str(),
      ::testing::MatchesRegex("20[0-9]{2}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]{3}  40 payslips written"));
}

TEST(DDLogFileFormatterDefault, ALineIsTheTimeTwoBlanksAndTheText) {
  const auto made = messageOf("40 payslips written");
  const std::string line = make<DDLogFileFormatterDefault>()->formatLogMessage(*made)->str();
  const std::time_t seconds = static_cast<std::time_t>(made->timestamp().timeIntervalSince1970());
  std::tm fields{};
  localtime_r(&seconds, &fields);
  char expected[32];
  ASSERT_EQ(std::strftime(expected, sizeof expected, "%Y/%m/%d %H:%M:%S:", &fields), 20U);
  EXPECT_EQ(line.substr(0, 20), expected);
  EXPECT_EQ(line.substr(23), "  40 payslips written");
}

TEST(DDLogFileFormatterDefault, AnotherDateFormatterIsUsedWhereOneIsGiven) {
  const auto dates = make<NSDateFormatter>();
  dates->setTimeZone(NSTimeZone::timeZoneWithName("UTC"));
  dates->setDateFormat("'at' yyyy");
  const auto made = messageOf("text");
  const double years = made->timestamp().timeIntervalSinceReferenceDate() / 86400 / 365.2425;
  EXPECT_EQ(DDLogFileFormatterDefault::initWithDateFormatter(dates)->formatLogMessage(*made),
            "at " + std::to_string(2001 + static_cast<int>(years)) + "  text");
}

TEST(DDLogFileFormatterDefault, WithoutADateFormatterTheUsualOneIsMade) {
  const auto made = messageOf("text");
  EXPECT_EQ(DDLogFileFormatterDefault::initWithDateFormatter(nullptr)->formatLogMessage(*made),
            make<DDLogFileFormatterDefault>()->formatLogMessage(*made));
}

TEST(DDLogFileFormatterDefault, AppendingGivesTheSameLine) {
  const auto formatter = make<DDLogFileFormatterDefault>();
  for (const NSString& text : {NSString("text"), NSString("Zoë"), NSString("")}) {
    const auto made = messageOf(text);
    std::string appended = "before ";
    formatter->appendLogMessage(appended, *made);
    EXPECT_EQ(appended, "before " + formatter->formatLogMessage(*made)->str());
  }
}

TEST(DDLogFileFormatterDefault, ALoneHalfOfACharacterIsWrittenAsItsReplacement) {
  std::string line;
  make<DDLogFileFormatterDefault>()->appendLogMessage(line, *messageOf(NSString("😀").substringToIndex(1)));
  EXPECT_EQ(line.substr(23), "  \uFFFD");
}

}  // namespace
}  // namespace norvik

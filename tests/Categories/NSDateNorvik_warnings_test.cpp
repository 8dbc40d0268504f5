// Warnings of the date operations. These tests share the process's one log, so each starts and ends without loggers.
#include <gtest/gtest.h>

#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDate+Norvik_Coercion.h"
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/Categories/NSDateFormatter+Norvik.h"
#include "NorvikCore/formatters/NKUtcDateFormatter.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "tests/support/RecordingLogger.h"

namespace norvik {
namespace {

using test::RecordingLogger;

struct Warning {
  std::string text, file, function;
  int flag, context;
  bool hasTag;
};

class NSDateNorvikWarnings : public test::CleanDDLog {
 protected:
  void SetUp() override {
    test::CleanDDLog::SetUp();
    logger_ = make<RecordingLogger>();
    logger_->onMessage = [this](const DDLogMessage& message) {
      warnings_.push_back({message.logMsg().str(), message.file(), message.function(), message.logFlag(),
                           message.logContext(), !message.tag().isAbsent()});
    };
    DDLog::addLogger(logger_);
  }
  void TearDown() override {
    ddLogLevel = LOG_LEVEL_WARN;
    test::CleanDDLog::TearDown();
  }

  /// The messages logged since the last call.
  std::vector<Warning> logged() {
    DDLog::flushLog();
    return std::exchange(warnings_, {});
  }

 private:
  Ref<RecordingLogger> logger_;
  std::vector<Warning> warnings_;
};

TEST_F(NSDateNorvikWarnings, ComparingWithNothingWarnsAndComparesAsTheSame) {
  const Date date = "2021-05-10"_date;
  const struct {
    const char* operation;
    bool (*compare)(Date, std::optional<Date>);
    bool expected;
  } rows[] = {
      {"nk_isLessThan:", nk_isLessThan, false},
      {"nk_isLessThanOrEqualTo:", nk_isLessThanOrEqualTo, true},
      {"nk_isGreaterThan:", nk_isGreaterThan, false},
      {"nk_isGreaterThanOrEqualTo:", nk_isGreaterThanOrEqualTo, true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.compare(date, std::nullopt), row.expected) << row.operation;
    const std::vector<Warning> warnings = logged();
    ASSERT_EQ(warnings.size(), 1u) << row.operation;
    EXPECT_EQ(warnings[0].text.rfind("Argument for NSDate -compare: is nil. Comparison result is undefined.\n", 0), 0u);
    EXPECT_NE(warnings[0].text.find("libNorvikCore"), std::string::npos) << "the call stack: " << warnings[0].text;
    EXPECT_EQ(warnings[0].text.back(), '\n');
    EXPECT_EQ(warnings[0].file, "Categories/NSDate+Norvik");
    EXPECT_EQ(warnings[0].function, row.operation);
    EXPECT_EQ(warnings[0].flag, LOG_FLAG_WARN);
    EXPECT_EQ(warnings[0].context, 0);
    EXPECT_FALSE(warnings[0].hasTag);
  }
}

TEST_F(NSDateNorvikWarnings, TheLaterAndTheEarlierWarnThroughTheirComparison) {
  const Date date = "2021-05-10"_date;
  EXPECT_EQ(nk_max(date, std::nullopt), date);
  EXPECT_EQ(nk_min(date, std::nullopt), date);
  const std::vector<Warning> warnings = logged();
  ASSERT_EQ(warnings.size(), 2u);
  EXPECT_EQ(warnings[0].function, "nk_isGreaterThanOrEqualTo:");
  EXPECT_EQ(warnings[1].function, "nk_isLessThanOrEqualTo:");
}

TEST_F(NSDateNorvikWarnings, TheFreeFunctionsWarnOfTheirSecondArgumentOnly) {
  const Date date = "2021-05-10"_date;
  EXPECT_EQ(nk_MinDate(date, std::nullopt), std::nullopt);
  EXPECT_EQ(nk_MaxDate(date, std::nullopt), date);
  const std::vector<Warning> warnings = logged();
  ASSERT_EQ(warnings.size(), 2u);
  EXPECT_EQ(warnings[0].function, "nk_MinDate");
  EXPECT_EQ(warnings[1].function, "nk_MaxDate");

  EXPECT_EQ(nk_MinDate(std::nullopt, date), date);
  EXPECT_EQ(nk_MaxDate(std::nullopt, date), std::nullopt);
  EXPECT_EQ(logged().size(), 0u);
}

TEST_F(NSDateNorvikWarnings, NothingIsLoggedWhereTheLevelAdmitsNoWarnings) {
  ddLogLevel = LOG_LEVEL_ERROR;
  EXPECT_FALSE(nk_isLessThan("2021-05-10"_date, std::nullopt));
  EXPECT_EQ(nk_nearestStartOfDayWithLoggedWarning("2021-05-10 12:00:00"_date, true), "2021-05-10"_date);
  EXPECT_EQ(nk_utcDateStringWithFormat("2021-01-01"_date, "YYYY"), "2020");
  EXPECT_EQ(logged().size(), 0u);
}

TEST_F(NSDateNorvikWarnings, ATimeOfDayIsLoggedWhereThatIsAskedFor) {
  EXPECT_EQ(nk_nearestStartOfDayWithLoggedWarning("2021-05-10 13:00:00"_date, true), "2021-05-11"_date);
  const std::vector<Warning> warnings = logged();
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0].text, "Date time component is non zero : 2021-05-10 13:00:00 +0000");
  EXPECT_EQ(warnings[0].file, "Categories/NSDate+Norvik");
  EXPECT_EQ(warnings[0].function, "nk_nearestStartOfDayWithLoggedWarning:");

  (void)nk_nearestStartOfDayWithLoggedWarning("2021-05-10 13:00:00"_date, false);
  (void)nk_nearestStartOfDay("2021-05-10 13:00:00"_date);
  (void)nk_nearestStartOfDayWithLoggedWarning("2021-05-10 00:00:00.4 +0000"_date, true);
  EXPECT_EQ(logged().size(), 0u);
}

TEST_F(NSDateNorvikWarnings, APatternOfTheWeeksYearWarnsOnceWhileItIsKept) {
  const auto formatter = make<NKUtcDateFormatter>();
  EXPECT_EQ(nk_stringFromDate(*formatter, "2021-01-01"_date, "dd/MM/YYYY"), "01/01/2020");
  std::vector<Warning> warnings = logged();
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0].text,
            "Format string dd/MM/YYYY contains YY symbols which will give erroneous year values on occasion. Use yy "
            "instead.");
  EXPECT_EQ(warnings[0].file, "Categories/NSDateFormatter+Norvik");
  EXPECT_EQ(warnings[0].function, "nk_stringFromDate:format:");

  EXPECT_EQ(nk_stringFromDate(*formatter, "2021-01-02"_date, "dd/MM/YYYY"), "02/01/2020");
  EXPECT_EQ(logged().size(), 0u) << "the pattern is the formatter's already";
  EXPECT_EQ(nk_stringFromDate(*formatter, "2021-01-02"_date, "yyyy"), "2021");
  EXPECT_EQ(logged().size(), 0u);
  EXPECT_EQ(nk_stringFromDate(*formatter, "2021-01-02"_date, "dd/MM/YYYY"), "02/01/2020");
  EXPECT_EQ(logged().size(), 1u) << "a new pattern again";
}

TEST_F(NSDateNorvikWarnings, TheKeptUtcFormatterWarnsOnceToo) {
  EXPECT_EQ(nk_utcDateStringWithFormat("2021-01-01"_date, "yyyy"), "2021");
  EXPECT_EQ(nk_utcDateStringWithFormat("2021-01-01"_date, "YYYY"), "2020");
  EXPECT_EQ(nk_utcDateStringWithFormat("2021-01-01"_date, "YYYY"), "2020");
  EXPECT_EQ(logged().size(), 1u);
  EXPECT_EQ(nk_utcDateStringWithFormat("2021-01-01"_date, "yyyy"), "2021");
  EXPECT_EQ(logged().size(), 0u);
}

}  // namespace
}  // namespace norvik

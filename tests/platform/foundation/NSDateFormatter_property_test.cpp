// The formatter must write what ICU writes on each of its code paths. The reference is ICU's own formatter with its own
// calendar and time zone.
#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

class IcuReference {
 public:
  IcuReference(const char* zone, const char* locale, const char* pattern) {
    UErrorCode status = U_ZERO_ERROR;
    auto* calendar = new icu::GregorianCalendar(icu::TimeZone::createTimeZone(icu::UnicodeString(zone)),
                                                icu::Locale(locale), status);
    calendar->setGregorianChange(-1e20, status);
    format_ = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(pattern), icu::Locale(locale), status);
    format_->adoptCalendar(calendar);
  }

  std::string text(double milliseconds) const {
    icu::UnicodeString text;
    std::string utf8;
    format_->format(milliseconds, text).toUTF8String(utf8);
    return utf8;
  }

 private:
  std::unique_ptr<icu::SimpleDateFormat> format_;
};

void expectIcusTexts(const char* zone, const char* locale, const char* pattern, int count) {
  const IcuReference icu(zone, locale, pattern);
  auto formatter = make<NSDateFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
  formatter->setTimeZone(NSTimeZone::timeZoneWithName(zone));
  formatter->setDateFormat(pattern);
  std::mt19937_64 random(1582);
  std::uniform_int_distribution<std::int64_t> farMilliseconds(-62'135'596'800'000,
                                                              253'402'300'799'999);    // years 1 to 9999
  std::uniform_int_distribution<std::int64_t> nearMilliseconds(0, 2'145'916'800'000);  // 1970 to 2037
  for (int i = 0; i < count; ++i) {
    const std::int64_t milliseconds = i % 2 ? farMilliseconds(random) : nearMilliseconds(random);
    const Date date = Date::dateWithTimeIntervalSince1970(static_cast<double>(milliseconds) / 1000);
    ASSERT_EQ(formatter->stringFromDate(date).str(), icu.text(static_cast<double>(milliseconds)))
        << zone << ' ' << locale << ' ' << pattern << ' ' << milliseconds;
    // Another time of the same second, for which the formatter reuses the text.
    const std::int64_t within = (milliseconds % 1000 + 1000) % 1000;
    const std::int64_t other = milliseconds - within + static_cast<std::int64_t>(random() % 1000);
    std::string text;
    formatter->appendStringFromDate(Date::dateWithTimeIntervalSince1970(static_cast<double>(other) / 1000), text);
    ASSERT_EQ(text, icu.text(static_cast<double>(other)))
        << zone << ' ' << locale << ' ' << pattern << ' ' << milliseconds << ' ' << other;
  }
}

TEST(NSDateFormatterProperty, PatternsOfDigitsAreWrittenAsIcuWritesThem) {
  for (const char* zone : {"UTC", "Etc/GMT+5", "Asia/Tokyo"}) {
    for (const char* pattern :
         {"yyyy/MM/dd HH:mm:ss:SSS", "dd/MM/yyyy", "d.M.yy", "yyyy-MM-dd'T'HH:mm:ss.SSSZ", "hh:mm K:m k:ss", "D y",
          "YYYY-ww", "YY w", "S SS SSSS SSSSSS", "yyyyyy yyy y", "'it''s' H 'o''clock'", "LL/ddd/HHH"}) {
      if (std::string(zone) == "Asia/Tokyo" && std::string(pattern).find('Z') != std::string::npos) continue;
      expectIcusTexts(zone, "en_GB", pattern, 400);
    }
  }
}

TEST(NSDateFormatterProperty, PatternsOfWordsAreWrittenAsIcuWritesThem) {
  for (const char* locale :
       {"en_GB", "en_US", "de_DE", "fr_FR", "pl_PL", "cy_GB", "ja_JP", "zh_CN", "th_TH", "ar_EG", "fa_IR", "he_IL"}) {
    for (const char* pattern :
         {"EEEE d MMMM yyyy G", "EEE dd MMM yy h:mm a", "EEE d MMM yyyy HH:mm", "d MMMM yyyy", "LLLL y", "LLL cccc ccc",
          "EEEEE EEEEEE MMMMM LLLLL", "ccccc cccccc c cc", "QQQQ y QQQ Q", "qqqq qqq qq", "GGGG GGGGG aaaa aaaaa",
          "EE, MMM d, ''yy 'at' HH", "dd/MM/yyyy HH:mm:ss.SSS xxx"})
      expectIcusTexts("UTC", locale, pattern, 60);
  }
  expectIcusTexts("Asia/Tokyo", "en_GB", "EEEE d MMMM yyyy HH:mm", 400);
}

constexpr const char* locales[] = {"en_GB", "en_US", "de_DE", "fr_FR", "pl_PL", "cy_GB", "ja_JP", "zh_CN",
                                   "th_TH", "ar_EG", "fa_IR", "he_IL", "vi_VN", "hi_IN", "bn_BD", "fi_FI"};

/// Each determines the day and, except for the last ones, the second.
constexpr const char* patterns[] = {"dd/MM/yyyy HH:mm:ss",
                                    "d.M.y H:m:s",
                                    "yyyyMMddHHmmss",
                                    "EEEE d MMMM yyyy HH:mm:ss",
                                    "EEE dd MMM yyyy h:mm:ss a",
                                    "cccc, d LLLL y K:mm:ss aaaa",
                                    "YYYY-'W'ww-e kk:mm:ss",
                                    "yyyy-DDD HH:mm:ss",
                                    "yyyy-MM-dd'T'HH:mm:ss.SSSXXX",
                                    "d MMM y G HH:mm:ss",
                                    "B h:mm:ss, d LLL y",
                                    "d MMM y, h:mm:ss b",
                                    "g A",
                                    "uuuu QQQ dd/MM HH:mm:ss Z",
                                    "EEE W MM yyyy HH:mm:ss",
                                    "EEEE F M yyyy HH:mm:ss",
                                    "'o''clock' HH:mm:ss, EEEEE EEEEEE dd/MM/yyyy",
                                    "dd/MM/yyyy HH:mm:ss zzzz"};

Ref<NSDateFormatter> utcFormatter(const char* locale, const char* pattern, bool isLenient) {
  auto formatter = make<NSDateFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
  formatter->setTimeZone(NSTimeZone::timeZoneWithName("UTC"));
  formatter->setDateFormat(pattern);
  formatter->setLenient(isLenient);
  return formatter;
}

/// A second of the years 1583 to 2400, one in four on the hour.
Date anySecond(std::mt19937_64& random) {
  std::uniform_int_distribution<std::int64_t> seconds(-12'212'553'600, 13'601'087'999);  // since 1970
  const std::int64_t second = seconds(random);
  return Date::dateWithTimeIntervalSince1970(static_cast<double>(random() % 4 == 0 ? second / 3600 * 3600 : second));
}

TEST(NSDateFormatterProperty, WhatIsWrittenIsReadInBothManners) {
  std::mt19937_64 random(2400);
  for (const char* locale : locales) {
    for (const char* pattern : patterns) {
      // ICU does not read the name that it writes itself: "UTC-yleisaika".
      if (std::string_view(locale) == "fi_FI" && std::string_view(pattern).ends_with("zzzz")) continue;
      const auto strict = utcFormatter(locale, pattern, false), lenient = utcFormatter(locale, pattern, true);
      for (int i = 0; i < 60; ++i) {
        const Date date = anySecond(random);
        const NSString text = strict->stringFromDate(date);
        ASSERT_EQ(strict->dateFromString(text), date) << locale << ' ' << pattern << ' ' << text;
        ASSERT_EQ(lenient->dateFromString(text), date) << locale << ' ' << pattern << ' ' << text;
      }
    }
  }
}

/// For different neighbours of a name in the pattern: letters that could belong to it, periods, digits, nothing.
TEST(NSDateFormatterProperty, LenientReadingTakesEveryTextThatStrictReadingTakes) {
  constexpr const char* names[] = {"EEE", "EEEE",  "EEEEEE", "ccc", "LLL", "MMM",   "MMMM",  "QQQ",
                                   "a",   "aaaaa", "b",      "B",   "G",   "GGGGG", "EEEEE", "MMMMM"};
  constexpr const char* texts[] = {"'T'", "'de'", "'m'", "'.'", "", " "};
  int compared = 0;
  for (const char* locale : {"de_DE", "en_GB", "fr_FR", "nl_NL", "pl_PL", "ca_ES", "vi_VN", "ja_JP", "ar_EG"}) {
    for (const std::string name : names) {
      const std::string rest = name.find_first_of("abB") == 0 ? "h:mm:ss dd.MM.yyyy" : "dd.MM.yyyy H";
      for (const std::string text : texts) {
        const std::string pattern = name + text + rest;
        const auto strict = utcFormatter(locale, pattern.c_str(), false),
                   lenient = utcFormatter(locale, pattern.c_str(), true);
        for (int i = 0; i < 12; ++i) {
          const Date date =
              dateFromReferenceDay(referenceDay(2021, 1 + i, 3 + 2 * i)).dateByAddingTimeInterval(i * 7200);
          const NSString written = strict->stringFromDate(date);
          const std::optional<Date> read = strict->dateFromString(written);
          if (!read) continue;  // a month "1" before a day "01" reads as 10
          ++compared;
          ASSERT_EQ(lenient->dateFromString(written), read) << locale << ' ' << pattern << ' ' << written;
        }
      }
    }
  }
  EXPECT_GT(compared, 10'000);
}

TEST(NSDateFormatterProperty, StrictReadingTakesNoTextThatIsNotWritten) {
  std::mt19937_64 random(99);
  const auto upTo = [&](std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(random); };
  const std::string pieces[] = {" ", "0", "1", "9", "/", "-", "a", "A", "\u00A0", "\u0661", "\uFF11", "May", "pm", "+"};
  int taken = 0;
  for (const char* locale : {"en_GB", "de_DE", "ja_JP", "ar_EG"}) {
    for (const char* pattern : patterns) {
      if (std::string_view(pattern).find_first_of("zZX") != std::string_view::npos) continue;  // accepts other zones
      const auto strict = utcFormatter(locale, pattern, false), lenient = utcFormatter(locale, pattern, true);
      for (int i = 0; i < 300; ++i) {
        std::u16string text = strict->stringFromDate(anySecond(random)).toUtf16();
        for (std::size_t changes = 1 + upTo(1); changes > 0; --changes) {
          const std::u16string piece = NSString(pieces[upTo(std::size(pieces) - 1)]).toUtf16();
          text.replace(upTo(text.size() - 1), upTo(1), piece);
        }
        const NSString changed = NSString::fromUtf16(text);
        const std::optional<Date> date = strict->dateFromString(changed);
        if (!date) continue;
        ASSERT_EQ(lenient->dateFromString(changed), date) << locale << ' ' << pattern << ' ' << changed;
        if (*date > "9999-12-31"_date) continue;  // a double is too short for milliseconds far from now
        ++taken;
        ASSERT_EQ(strict->stringFromDate(*date), changed) << locale << ' ' << pattern;
      }
    }
  }
  EXPECT_GT(taken, 200);
}

}  // namespace
}  // namespace norvik

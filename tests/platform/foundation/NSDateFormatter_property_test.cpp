// The formatter writes what ICU writes, whichever of its ways it takes: the reference here is ICU's own formatter with
// its own calendar and time zone.
#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <memory>
#include <random>
#include <string>

#include "NorvikCore/platform/foundation/NSDateFormatter.h"
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
    // Another time of the same second, for which the text is not made anew.
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

}  // namespace
}  // namespace norvik

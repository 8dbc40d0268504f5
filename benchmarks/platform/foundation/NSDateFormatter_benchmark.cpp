// Compares a date formatter that is kept with ICU's own kept formatter on the same pattern, and calendar fields in
// London with ICU's calendar.
//
// 2026-11-23, Intel Xeon of 2.5 GHz (Cascade Lake), two virtual cores, very busy, g++ 12.2, -O2; CPU ns, medians of 5
// runs:
//   log stamp in London 41, ICU 3018 (73 times as fast)      date, shuffled, in London 41, ICU 1466 (36)
//   date and time in UTC 30, ICU 1926 (63)                   payment date 57, ICU 1078 (19)
//   message date in London 70, ICU 1997 (29)                 words in London 55, ICU 1932 (35)
//   hour in London 27, ICU 306 (11)
#include "NorvikCore/platform/foundation/NSDateFormatter.h"

#include <benchmark/benchmark.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using norvik::Date;
using norvik::make;
using norvik::NSCalendar;
using norvik::NSDateFormatter;
using norvik::NSLocale;
using norvik::NSTimeZone;
using norvik::Ref;

constexpr std::size_t count = 1024;

/// A pay year of instants in whole milliseconds: in order, as in a log, or shuffled, as in a list of records.
std::vector<Date> dates(bool inOrder) {
  std::mt19937_64 random(1);
  std::vector<Date> result(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t milliseconds = inOrder ? i * 1'234 : random() % (365ULL * 86'400'000);
    result[i] = Date::dateWithTimeIntervalSince1970(1'617'667'200.0 + static_cast<double>(milliseconds) / 1000);
  }
  return result;
}

Ref<NSDateFormatter> ours(const char* pattern, const char* zone) {
  auto formatter = make<NSDateFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  formatter->setTimeZone(NSTimeZone::timeZoneWithName(zone));
  formatter->setDateFormat(pattern);
  return formatter;
}

std::unique_ptr<icu::SimpleDateFormat> icus(const char* pattern, const char* zone) {
  UErrorCode status = U_ZERO_ERROR;
  auto formatter = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(pattern), icu::Locale::getUK(), status);
  formatter->adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString(zone)));
  return formatter;
}

std::string icuText(const icu::SimpleDateFormat& formatter, Date date) {
  icu::UnicodeString text;
  std::string utf8;
  formatter.format(std::round(date.timeIntervalSince1970() * 1000), text).toUTF8String(utf8);
  return utf8;
}

void pair(const std::string& name, const char* pattern, const char* zone, bool inOrder) {
  const auto all = std::make_shared<std::vector<Date>>(dates(inOrder));
  const Ref<NSDateFormatter> kept = ours(pattern, zone);
  const std::shared_ptr<icu::SimpleDateFormat> peer = icus(pattern, zone);
  for (const Date date : *all) {
    if (kept->stringFromDate(date).str() == icuText(*peer, date)) continue;
    std::fprintf(stderr, "%s: \"%s\", but ICU has \"%s\"\n", name.c_str(), kept->stringFromDate(date).str().c_str(),
                 icuText(*peer, date).c_str());
    std::exit(1);
  }
  benchmark::RegisterBenchmark((name + "/ours").c_str(), [=](benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
      auto text = kept->stringFromDate((*all)[i++ % count]);
      benchmark::DoNotOptimize(text);
    }
  });
  benchmark::RegisterBenchmark((name + "/ICU").c_str(), [=](benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
      auto text = icuText(*peer, (*all)[i++ % count]);
      benchmark::DoNotOptimize(text);
    }
  });
}

void registerLondonFields() {
  static const std::vector<Date> all = dates(false);
  static const Ref<NSCalendar> calendar = [] {
    Ref<NSCalendar> made = NSCalendar::calendarWithIdentifier(norvik::NSGregorianCalendar);
    made->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
    return made;
  }();
  benchmark::RegisterBenchmark("hour in London/ours", [](benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(calendar->component(norvik::NSCalendarUnitHour, all[i++ % count]));
  });
  benchmark::RegisterBenchmark("hour in London/ICU", [](benchmark::State& state) {
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar peer(icu::TimeZone::createTimeZone("Europe/London"), icu::Locale::getUK(), status);
    std::size_t i = 0;
    for (auto _ : state) {
      peer.setTime(all[i++ % count].timeIntervalSince1970() * 1000, status);
      benchmark::DoNotOptimize(peer.get(UCAL_HOUR_OF_DAY, status));
    }
  });
}

}  // namespace

int main(int argc, char** argv) {
  pair("log stamp in London", "yyyy/MM/dd HH:mm:ss:SSS", "Europe/London", true);
  pair("date, shuffled, in London", "dd/MM/yyyy", "Europe/London", false);
  pair("date and time in UTC", "dd/MM/yyyy HH:mm", "UTC", false);
  pair("payment date", "d MMMM yyyy", "UTC", false);
  pair("message date in London", "EEE d MMM yyyy HH:mm", "Europe/London", false);
  pair("words in London", "EEEE d MMMM yyyy, HH:mm", "Europe/London", true);
  registerLondonFields();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}

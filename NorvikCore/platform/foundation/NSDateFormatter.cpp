#include "NorvikCore/platform/foundation/NSDateFormatter.h"

#include "NorvikCore/platform/foundation/internal/DateNames.h"
#include "NorvikCore/platform/foundation/internal/DatePattern.h"
#include "NorvikCore/platform/foundation/internal/DateReader.h"
#include "NorvikCore/platform/foundation/internal/IcuText.h"
#include "NorvikCore/platform/foundation/internal/LocaleData.h"
#include "NorvikCore/platform/foundation/internal/ZoneRules.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/ReferenceDate.h"
#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/internal/ShownMillisecond.h"

#include <unicode/gregocal.h>
#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>

#include <limits>
#include <memory>

namespace norvik {
namespace {

using kernel::referenceDateInUnixSeconds;
using Moment = detail::ShownMoment;
constexpr std::int64_t lastIcuSecond = 183'800'000'000'000;  // since 1970; in the year 5,826,359

icu::DateFormat::EStyle icuStyle(NSDateFormatterStyle style) {
  switch (style) {
    case NSDateFormatterShortStyle:
      return icu::DateFormat::kShort;
    case NSDateFormatterMediumStyle:
      return icu::DateFormat::kMedium;
    case NSDateFormatterLongStyle:
      return icu::DateFormat::kLong;
    case NSDateFormatterFullStyle:
      return icu::DateFormat::kFull;
    case NSDateFormatterNoStyle:
      break;
  }
  return icu::DateFormat::kNone;
}

NSString patternOfStyles(NSDateFormatterStyle dateStyle, NSDateFormatterStyle timeStyle, const NSLocale& locale) {
  if (dateStyle == NSDateFormatterNoStyle && timeStyle == NSDateFormatterNoStyle) return "";
  const kernel::ForkHold hold;
  const std::unique_ptr<icu::DateFormat> format(
      icu::DateFormat::createDateTimeInstance(icuStyle(dateStyle), icuStyle(timeStyle), detail::icuLocale(locale)));
  icu::UnicodeString pattern;
  if (const auto* simple = dynamic_cast<const icu::SimpleDateFormat*>(format.get())) simple->toPattern(pattern);
  return detail::stringFromIcu(pattern);
}

/// The pattern contains a zone's name, for which ICU needs the zone and not only its offset.
bool namesZone(std::string_view pattern) {
  bool isQuoted = false;
  for (const char c : pattern) {
    if (c == '\'') isQuoted = !isQuoted;
    if (!isQuoted && (c == 'z' || c == 'v' || c == 'V')) return true;
  }
  return false;
}

}  // namespace

/// The formatter that the settings result in: a compiled pattern if it has digits and names only, else ICU's formatter.
struct NSDateFormatter::Engine {
  explicit Engine(const NSDateFormatter& settings)
      : pattern(settings.pattern_),
        locale(settings.locale_),
        zone(settings.timeZone_),
        calendar(settings.calendar_),
        isLenient(settings.lenient_),
        namesItsZone(namesZone(pattern.view())) {
    if (!locale->data().writesAsciiDigits() || !pattern.isWellFormed()) return;
    compiled = detail::DatePattern::compile(pattern.view());
    if (!compiled && !namesItsZone) {
      const auto& names = detail::DateNames::ofLocale(detail::icuLocale(*locale));
      compiled = detail::DatePattern::compile(pattern.view(), &names);
    }
    if (compiled && compiled->needsWeek()) {
      const Ref<NSCalendar> week = settings.calendar();
      compiledFields.firstWeekday = static_cast<std::int32_t>(week->firstWeekday());
      compiledFields.minimumDays = static_cast<std::int32_t>(week->minimumDaysInFirstWeek());
    }
  }

  NSString string(Date date) {
    const Moment moment(date);
    const std::string_view text = compiledText(moment);
    return text.empty() ? icuText(moment) : NSString(text);
  }

  void append(Date date, std::string& to) {
    const Moment moment(date);
    if (const std::string_view text = compiledText(moment); !text.empty()) [[likely]] {
      to += text;
    } else {
      to += icuText(moment).utf8();
    }
  }

  std::optional<Date> date(const NSString& text, const NSDateFormatter& settings) {
    const kernel::ForkHold hold;
    if (!reader) {
      const Ref<NSCalendar> week = settings.calendar();
      const detail::DateReader::Manner manner{isLenient, static_cast<std::int32_t>(week->firstWeekday()),
                                              static_cast<std::int32_t>(week->minimumDaysInFirstWeek())};
      reader = std::make_unique<const detail::DateReader>(pattern.view(), detail::icuLocale(*locale), manner);
    }
    const std::optional<detail::DateReader::Reading> reading = reader->read(text.view());
    if (!reading) return std::nullopt;
    const detail::ZoneRules& rules = reading->zone ? *reading->zone : zone->rules();
    const std::int64_t instant =
        reading->offset ? reading->localSeconds - *reading->offset : rules.instantOfLocal(reading->localSeconds);
    return Date::fromReferenceSeconds(static_cast<double>(instant) + reading->fraction);
  }

 private:
  /// In UTF-8; empty if the pattern is not compiled or does not support the year. Valid until the next call.
  std::string_view compiledText(Moment moment) {
    if (moment.seconds == kept.second) {
      if (kept.millisecondAt != nowhere)
        detail::DatePattern::writeMillisecond(kept.text + kept.millisecondAt, moment.millisecond);
      return {kept.text, kept.length};
    }
    if (!compiled) return {};
    enterSpan(moment.seconds);
    const std::int64_t local = moment.seconds + span.type->offset;
    compiledFields.day = detail::floorDivide(local, detail::secondsPerDay);
    compiledFields.secondOfDay = static_cast<std::int32_t>(local - compiledFields.day * detail::secondsPerDay);
    compiledFields.millisecond = moment.millisecond;
    compiledFields.offset = span.type->offset;
    kept.millisecondAt = nowhere;
    kept.length = compiled->write(kept.text, compiledFields, &kept.millisecondAt);
    kept.second = kept.length > 0 && compiled->isSteadyWithinSecond() ? moment.seconds : never;
    return {kept.text, kept.length};
  }

  void enterSpan(std::int64_t seconds) {
    if (seconds >= span.from && seconds < span.until && span.type) return;
    span = zone->rules().spanAt(seconds);
    zoneIsCurrent = false;
  }

  icu::SimpleDateFormat& icuFormat() {
    if (icu) return *icu;
    UErrorCode status = U_ZERO_ERROR;
    auto fields =
        std::make_unique<icu::GregorianCalendar>(*icu::TimeZone::getGMT(), detail::icuLocale(*locale), status);
    fields->setGregorianChange(-1e20, status);  // the Gregorian calendar for all times
    if (calendar) {
      fields->setFirstDayOfWeek(static_cast<UCalendarDaysOfWeek>(calendar->firstWeekday()));
      fields->setMinimalDaysInFirstWeek(static_cast<std::uint8_t>(calendar->minimumDaysInFirstWeek()));
    }
    icu = std::make_unique<icu::SimpleDateFormat>(detail::icuString(pattern), detail::icuLocale(*locale), status);
    icu->adoptCalendar(fields.release());
    return *icu;
  }

  /// Gives ICU the offset of this library's rules. If the pattern contains the zone's name, ICU gets the zone itself,
  /// provided that its data has the same offset.
  void setIcuZone(double milliseconds) {
    const std::int32_t offset = span.type->offset * 1000;
    if (fixedZone && !namesItsZone) {
      fixedZone->setRawOffset(offset);
      return;
    }
    const icu::UnicodeString name = detail::icuString(zone->name());
    if (namesItsZone) {
      std::unique_ptr<icu::TimeZone> named(icu::TimeZone::createTimeZone(name));
      UErrorCode status = U_ZERO_ERROR;
      std::int32_t raw = 0, saving = 0;
      named->getOffset(milliseconds, false, raw, saving, status);
      if (U_SUCCESS(status) && raw + saving == offset && *named != icu::TimeZone::getUnknown()) {
        icu->adoptTimeZone(named.release());
        fixedZone = nullptr;
        return;
      }
    }
    fixedZone = new icu::SimpleTimeZone(offset, name);
    icu->adoptTimeZone(fixedZone);
  }

  NSString icuText(Moment moment) {
    const kernel::ForkHold hold;
    enterSpan(moment.seconds);
    const std::int64_t since1970 = detail::clamped(moment.seconds + referenceDateInUnixSeconds, lastIcuSecond);
    const double milliseconds = static_cast<double>(since1970) * 1000 + moment.millisecond;
    icu::SimpleDateFormat& format = icuFormat();
    if (!zoneIsCurrent) {
      setIcuZone(milliseconds);
      zoneIsCurrent = true;
    }
    icu::UnicodeString text;
    format.format(milliseconds, text);
    return detail::stringFromIcu(text);
  }

  const NSString pattern;
  const Ref<NSLocale> locale;
  const Ref<NSTimeZone> zone;
  const Ref<NSCalendar> calendar;  // an empty Ref means the locale's
  const bool isLenient, namesItsZone;
  std::optional<detail::DatePattern> compiled;
  detail::DatePattern::Fields compiledFields;
  static constexpr std::int64_t never = std::numeric_limits<std::int64_t>::min();
  static constexpr std::size_t nowhere = detail::DatePattern::maximalLength;
  /// The last text, reused for other times of the same second.
  struct {
    std::int64_t second = never;
    std::size_t length = 0, millisecondAt = nowhere;
    char text[detail::DatePattern::maximalLength];
  } kept;
  detail::ZoneSpan span;  // the span of the last date, which usually contains the next one too
  std::unique_ptr<icu::SimpleDateFormat> icu;
  icu::SimpleTimeZone* fixedZone = nullptr;  // owned by icu; null if icu has a named zone
  bool zoneIsCurrent = false;                // icu has the zone of `span`
  std::unique_ptr<const detail::DateReader> reader;
};

NSDateFormatter::NSDateFormatter() : locale_(NSLocale::currentLocale()), timeZone_(NSTimeZone::defaultTimeZone()) {}

NSDateFormatter::~NSDateFormatter() = default;

NSString NSDateFormatter::localizedStringFromDate(Date date, NSDateFormatterStyle dateStyle,
                                                  NSDateFormatterStyle timeStyle) {
  const auto formatter = make<NSDateFormatter>();
  formatter->setDateStyle(dateStyle);
  formatter->setTimeStyle(timeStyle);
  return formatter->stringFromDate(date);
}

NSDateFormatter::Engine& NSDateFormatter::engine() const {
  if (!engine_) [[unlikely]]
    engine_ = detail::Hidden<Engine>(new Engine(*this));
  return *engine_;
}

NSString NSDateFormatter::stringFromDate(Date date) const {
  return pattern_.empty() ? NSString() : engine().string(date);
}

void NSDateFormatter::appendStringFromDate(Date date, std::string& text) const {
  if (!pattern_.empty()) engine().append(date, text);
}

std::optional<Date> NSDateFormatter::dateFromString(const NSString& text) const {
  return pattern_.empty() || text.empty() ? std::nullopt : engine().date(text, *this);
}

std::optional<NSString> NSDateFormatter::stringForObjectValue(const Value& value) const {
  const Date* date = value.date();
  return date ? std::optional(stringFromDate(*date)) : std::nullopt;
}

bool NSDateFormatter::getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                                NSString* error) const {
  const std::optional<Date> date = dateFromString(text);
  if (!date) {
    if (error) *error = "\"" + text + "\" is not a date of the form " + pattern_;
    return false;
  }
  value = *date;
  return true;
}

NSString NSDateFormatter::dateFormat() const { return pattern_; }

void NSDateFormatter::setDateFormat(const NSString& pattern) {
  pattern_ = pattern;
  dateStyle_ = timeStyle_ = NSDateFormatterNoStyle;
  engine_.reset();
}

void NSDateFormatter::setDateStyle(NSDateFormatterStyle style) {
  dateStyle_ = style;
  pattern_ = patternOfStyles(dateStyle_, timeStyle_, *locale_);
  engine_.reset();
}

void NSDateFormatter::setTimeStyle(NSDateFormatterStyle style) {
  timeStyle_ = style;
  pattern_ = patternOfStyles(dateStyle_, timeStyle_, *locale_);
  engine_.reset();
}

void NSDateFormatter::setLocale(const Ref<NSLocale>& locale) {
  locale_ = locale ? locale : NSLocale::currentLocale();
  if (dateStyle_ != NSDateFormatterNoStyle || timeStyle_ != NSDateFormatterNoStyle)
    pattern_ = patternOfStyles(dateStyle_, timeStyle_, *locale_);
  engine_.reset();
}

void NSDateFormatter::setTimeZone(const Ref<NSTimeZone>& timeZone) {
  timeZone_ = timeZone ? timeZone : NSTimeZone::defaultTimeZone();
  engine_.reset();
}

Ref<NSCalendar> NSDateFormatter::calendar() const {
  if (calendar_) return calendar_;
  Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  calendar->setLocale(locale_);
  calendar->setTimeZone(timeZone_);
  return calendar;
}

void NSDateFormatter::setCalendar(const Ref<NSCalendar>& calendar) {
  calendar_ = calendar;
  engine_.reset();
}

void NSDateFormatter::setLenient(bool lenient) {
  lenient_ = lenient;
  engine_.reset();
}

namespace {

NSDateFormatterStyle decodeStyle(NSCoder& coder, const NSString& key) {
  const auto number = coder.decode<std::uint64_t>(key);
  if (number > NSDateFormatterFullStyle) {
    NSException::raise(NSInvalidUnarchiveOperationException, "a date formatter's " + key.utf8() + " is damaged");
  }
  return static_cast<NSDateFormatterStyle>(number);
}

}  // namespace

void NSDateFormatter::encodeWithCoder(NSCoder& coder) const {
  coder.encodeObject(locale_, "locale");
  coder.encodeObject(timeZone_, "timeZone");
  coder.encodeObject(calendar_, "calendar");
  coder.encodeInteger(dateStyle_, "dateStyle");
  coder.encodeInteger(timeStyle_, "timeStyle");
  coder.encodeObject(pattern_, "dateFormat");
  coder.encodeBool(lenient_, "lenient");
  coder.encodeInteger(behavior_, "formatterBehavior");
}

bool NSDateFormatter::initWithCoder(NSCoder& coder) {
  setLocale(coder.decode<Ref<NSLocale>>("locale"));
  setTimeZone(coder.decode<Ref<NSTimeZone>>("timeZone"));
  setCalendar(coder.decode<Ref<NSCalendar>>("calendar"));
  setDateFormat(coder.decode<NSString>("dateFormat"));
  const NSDateFormatterStyle date = decodeStyle(coder, "dateStyle"), time = decodeStyle(coder, "timeStyle");
  if (date != NSDateFormatterNoStyle) setDateStyle(date);
  if (time != NSDateFormatterNoStyle) setTimeStyle(time);
  setLenient(coder.decodeBoolForKey("lenient"));
  behavior_ = coder.decode<NSDateFormatterBehavior>("formatterBehavior");
  return true;
}

}  // namespace norvik

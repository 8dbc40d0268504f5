#include "NorvikCore/platform/foundation/internal/PosixZoneRule.h"

#include "NorvikCore/platform/values/CivilDate.h"

#include <algorithm>

namespace norvik::detail {
namespace {

/// After this instant the rule is not evaluated any more, and clocks stay as they are. The calendar ends 20 years
/// later.
constexpr std::int64_t lastInstant = (maximalReferenceDay - 20 * 366) * secondsPerDay;

}  // namespace

/// Reads a rule from left to right.
class PosixZoneRuleReader {
 public:
  explicit PosixZoneRuleReader(std::string_view text) : text_(text) {}

  std::optional<PosixZoneRule> read() {
    PosixZoneRule rule;
    if (!readName(rule.standard_.abbreviation) || !readOffset(rule.standard_.offset)) return std::nullopt;
    if (text_.empty()) return rule;
    rule.hasDaylight_ = rule.daylight_.isDaylight = true;
    if (!readName(rule.daylight_.abbreviation)) return std::nullopt;
    rule.daylight_.offset = rule.standard_.offset + 3600;
    if (!text_.empty() && text_.front() != ',' && !readOffset(rule.daylight_.offset)) return std::nullopt;
    if (!readChange(rule.start_) || !readChange(rule.end_) || !text_.empty()) return std::nullopt;
    rule.isPlain_ = isPlain(rule.start_) && isPlain(rule.end_) && rule.start_.month != rule.end_.month;
    return rule;
  }

 private:
  bool accept(char c) {
    if (text_.empty() || text_.front() != c) return false;
    text_.remove_prefix(1);
    return true;
  }

  static bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
  static bool isDigit(char c) { return c >= '0' && c <= '9'; }

  /// At least three letters; between angle brackets, digits and signs too.
  bool readName(std::string& name) {
    const bool isQuoted = accept('<');
    std::size_t length = 0;
    while (length < text_.size() &&
           (isLetter(text_[length]) ||
            (isQuoted && (isDigit(text_[length]) || text_[length] == '+' || text_[length] == '-'))))
      ++length;
    if (length < 3 || length > 32) return false;
    name.assign(text_.substr(0, length));
    text_.remove_prefix(length);
    return !isQuoted || accept('>');
  }

  bool readNumber(std::int32_t low, std::int32_t high, std::int32_t& value) {
    if (text_.empty() || !isDigit(text_.front())) return false;
    value = 0;
    for (int digits = 0; !text_.empty() && isDigit(text_.front()); ++digits) {
      if (digits == 3) return false;
      value = value * 10 + (text_.front() - '0');
      text_.remove_prefix(1);
    }
    return value >= low && value <= high;
  }

  /// [+-]hours[:minutes[:seconds]]
  bool readTime(std::int32_t maximalHours, std::int32_t& seconds) {
    const bool isNegative = accept('-');
    if (!isNegative) accept('+');
    std::int32_t hour = 0, minute = 0, second = 0;
    if (!readNumber(0, maximalHours, hour)) return false;
    if (accept(':') && (!readNumber(0, 59, minute) || (accept(':') && !readNumber(0, 59, second)))) return false;
    seconds = (isNegative ? -1 : 1) * (hour * 3600 + minute * 60 + second);
    return true;
  }

  /// In the text, offsets west of Greenwich are positive.
  bool readOffset(std::int32_t& offset) {
    std::int32_t west = 0;
    if (!readTime(24, west)) return false;
    offset = -west;
    return true;
  }

  bool readChange(PosixZoneRule::Change& change) {
    using Kind = PosixZoneRule::Change::Kind;
    if (!accept(',')) return false;
    if (accept('M')) {
      change.kind = Kind::MonthWeekDay;
      if (!readNumber(1, 12, change.month) || !accept('.') || !readNumber(1, 5, change.week) || !accept('.') ||
          !readNumber(0, 6, change.day))
        return false;
    } else if (accept('J')) {
      change.kind = Kind::JulianWithoutLeapDay;
      if (!readNumber(1, 365, change.day)) return false;
    } else {
      change.kind = Kind::ZeroBasedDay;
      if (!readNumber(0, 365, change.day)) return false;
    }
    return !accept('/') || readTime(167, change.time);
  }

  /// In every year, changes by such rules are in their month or at most a week outside it.
  static bool isPlain(const PosixZoneRule::Change& change) {
    return change.kind == PosixZoneRule::Change::Kind::MonthWeekDay && change.month > 1 && change.month < 12 &&
           change.time >= 0 && change.time <= secondsPerDay;
  }

  std::string_view text_;
};

std::optional<PosixZoneRule> PosixZoneRule::parse(std::string_view text) { return PosixZoneRuleReader(text).read(); }

std::int64_t PosixZoneRule::Change::localSecondsIn(std::int64_t year) const noexcept {
  std::int64_t dayOfChange = 0;
  switch (kind) {
    case Kind::JulianWithoutLeapDay:
      dayOfChange = referenceDay(year, 1, 1) + day - 1 + (isLeapYear(year) && day >= 60);
      break;
    case Kind::ZeroBasedDay:
      dayOfChange = referenceDay(year, 1, 1) + day;
      break;
    case Kind::MonthWeekDay: {
      const std::int64_t first = referenceDay(year, month, 1);
      const std::int64_t offset = floorModulo(day - (weekday(first) - 1), 7) + 7 * (week - 1);
      dayOfChange = first + (offset < daysInMonth(year, month) ? offset : offset - 7);
      break;
    }
  }
  return dayOfChange * secondsPerDay + time;
}

std::int64_t PosixZoneRule::localYearAt(std::int64_t instant) const noexcept {
  return civilDate(floorDivide(instant + standard_.offset, secondsPerDay)).year;
}

std::int64_t PosixZoneRule::startIn(std::int64_t year) const noexcept {
  return start_.localSecondsIn(year) - standard_.offset;
}

std::int64_t PosixZoneRule::endIn(std::int64_t year) const noexcept {
  return end_.localSecondsIn(year) - daylight_.offset;
}

const ZoneType& PosixZoneRule::typeAt(std::int64_t instant) const noexcept {
  if (!hasDaylight_) return standard_;
  instant = clamped(instant, lastInstant);
  if (!isPlain_) [[unlikely]]
    return *spanOfOddRule(instant).type;
  const std::int64_t year = localYearAt(instant);
  const std::int64_t start = startIn(year), end = endIn(year);
  return type(start < end ? start <= instant && instant < end : instant < end || start <= instant);
}

ZoneSpan PosixZoneRule::spanAt(std::int64_t instant) const noexcept {
  if (!hasDaylight_) return {INT64_MIN, INT64_MAX, &standard_};
  const std::int64_t known = clamped(instant, lastInstant);
  ZoneSpan span = isPlain_ ? spanOfPlainRule(known) : spanOfOddRule(known);
  if (span.from < -lastInstant) span.from = INT64_MIN;
  if (span.until > lastInstant) span.until = INT64_MAX;
  return span;
}

ZoneSpan PosixZoneRule::spanOfPlainRule(std::int64_t instant) const noexcept {
  const std::int64_t year = localYearAt(instant);
  const std::int64_t start = startIn(year), end = endIn(year);
  const bool startsFirst = start < end;
  const std::int64_t first = std::min(start, end), second = std::max(start, end);
  if (instant < first) return {startsFirst ? endIn(year - 1) : startIn(year - 1), first, &type(!startsFirst)};
  if (instant < second) return {first, second, &type(startsFirst)};
  return {second, startsFirst ? startIn(year + 1) : endIn(year + 1), &type(!startsFirst)};
}

/// For rules whose changes may coincide, change their order or fall into another year: sorts the changes of the
/// surrounding years. Eight years in each direction contain a leap day. If a start and an end are at the same instant,
/// the start counts. A change to the type that is already in force is ignored.
ZoneSpan PosixZoneRule::spanOfOddRule(std::int64_t instant) const noexcept {
  constexpr std::int64_t years = 9;
  struct Event {
    std::int64_t instant;
    bool isStart;
    auto operator<=>(const Event&) const = default;
  };
  std::array<Event, 2 * (2 * years + 1)> events{};
  const std::int64_t middle = localYearAt(instant);
  std::size_t count = 0;
  for (std::int64_t year = middle - years; year <= middle + years; ++year) {
    events[count++] = {startIn(year), true};
    events[count++] = {endIn(year), false};
  }
  std::sort(events.begin(), events.end());

  ZoneSpan span;
  bool isDaylight = false;
  for (std::size_t i = 0; i + 4 < count; ++i) {  // events that coincide with the last ones may be missing
    if (events[i + 1].instant == events[i].instant) continue;
    const bool isChange = span.type && events[i].isStart != isDaylight;
    if (events[i].instant > instant && span.type) {
      if (!isChange) continue;
      span.until = events[i].instant;
      break;
    }
    if (isChange) span.from = events[i].instant;
    isDaylight = events[i].isStart;
    span.type = &type(isDaylight);
  }
  return span;
}

}  // namespace norvik::detail

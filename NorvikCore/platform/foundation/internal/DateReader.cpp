#include "NorvikCore/platform/foundation/internal/DateReader.h"

#include "NorvikCore/platform/foundation/internal/IcuText.h"
#include "NorvikCore/platform/foundation/internal/ZoneDatabase.h"
#include "NorvikCore/platform/kernel/ReferenceDate.h"
#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/Utf8.h"
#include "NorvikCore/platform/values/internal/TextSearch.h"

#include <unicode/gregocal.h>
#include <unicode/numsys.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace norvik::detail {
namespace {

using kernel::referenceDateInUnixSeconds;
constexpr std::int64_t julianDayOfReferenceDate = 2'451'911;
constexpr std::size_t mostFields = 64;
constexpr std::size_t longestZoneName = 200;  // in bytes
constexpr char16_t utcName[] = u"Etc/UTC";

bool isOneOf(char letter, std::string_view letters) { return letters.find(letter) != std::string_view::npos; }
bool isYear(char letter) { return isOneOf(letter, "yYuUr"); }

std::size_t naturalDigits(char letter) {
  if (isYear(letter) || letter == 'g') return 9;
  if (letter == 'S') return 18;
  if (letter == 'A') return 8;
  if (letter == 'D') return 3;
  return isOneOf(letter, "QqecFW") ? 1 : 2;
}

std::optional<UTimeZoneFormatStyle> zoneStyle(char letter, std::size_t count) {
  switch (letter) {
    case 'z':
      return count <= 3   ? std::optional(UTZFMT_STYLE_SPECIFIC_SHORT)
             : count == 4 ? std::optional(UTZFMT_STYLE_SPECIFIC_LONG)
                          : std::nullopt;
    case 'v':
      return count == 1   ? std::optional(UTZFMT_STYLE_GENERIC_SHORT)
             : count == 4 ? std::optional(UTZFMT_STYLE_GENERIC_LONG)
                          : std::nullopt;
    case 'V': {
      constexpr UTimeZoneFormatStyle styles[] = {UTZFMT_STYLE_ZONE_ID_SHORT, UTZFMT_STYLE_ZONE_ID,
                                                 UTZFMT_STYLE_EXEMPLAR_LOCATION, UTZFMT_STYLE_GENERIC_LOCATION};
      return count <= 4 ? std::optional(styles[count - 1]) : std::nullopt;
    }
    case 'O':
      return count == 1   ? std::optional(UTZFMT_STYLE_LOCALIZED_GMT_SHORT)
             : count == 4 ? std::optional(UTZFMT_STYLE_LOCALIZED_GMT)
                          : std::nullopt;
    case 'Z':
      return count == 4 ? std::optional(UTZFMT_STYLE_LOCALIZED_GMT) : std::nullopt;
    default:
      return std::nullopt;
  }
}

bool isSpace(char32_t point) { return u_isUWhiteSpace(static_cast<UChar32>(point)) != 0; }
bool isSign(char32_t point) { return u_ispunct(static_cast<UChar32>(point)) != 0; }
bool isDigit(char32_t point) { return u_isdigit(static_cast<UChar32>(point)) != 0; }
bool isLetter(char32_t point) {
  const auto type = U_MASK(u_charType(static_cast<UChar32>(point)));
  return (type & (U_GC_L_MASK | U_GC_M_MASK)) != 0;
}

/// The first day of the first week of the month or year that begins on `first`.
std::int64_t startOfFirstWeek(std::int64_t first, const DateReader::Manner& manner) {
  const std::int64_t daysBefore = floorModulo(weekday(first) - manner.firstWeekday, 7);
  return first - daysBefore + (7 - daysBefore >= manner.minimumDays ? 0 : 7);
}

/// The texts that the locale writes for the field, for every value that may change the text.
std::vector<std::pair<std::string, std::uint64_t>> writtenNames(icu::SimpleDateFormat& format, char letter,
                                                                std::size_t count) {
  std::vector<std::pair<std::string, std::uint64_t>> names;
  const bool isPeriod = isOneOf(letter, "abB");
  // Noon and midnight are written only on the exact minute if the pattern has minutes.
  const icu::UnicodeString suffix(isPeriod ? u"mmss" : u"");
  const auto letters = static_cast<std::int32_t>(count);
  format.applyPattern(icu::UnicodeString(letters, static_cast<UChar32>(letter), letters) + suffix);
  const int times = isPeriod ? 48 : isOneOf(letter, "ML") ? 12 : isOneOf(letter, "Eec") ? 7 : letter == 'G' ? 2 : 4;
  for (int i = 0; i < times; ++i) {
    std::int64_t day = referenceDay(2001, 1, 7) + (isPeriod ? 0 : i);  // a Sunday
    if (isOneOf(letter, "MLQq")) day = referenceDay(2001, isOneOf(letter, "ML") ? i + 1 : 3 * i + 1, 15);
    if (letter == 'G') day = referenceDay(i == 0 ? -100 : 2001, 1, 1);
    const std::int64_t second = day * secondsPerDay + (isPeriod ? i * 1800 : 0) + referenceDateInUnixSeconds;
    icu::UnicodeString text;
    format.format(static_cast<double>(second) * 1000, text);
    if (isPeriod) text.truncate(text.moveIndex32(text.length(), -4));
    const std::string name = utf8FromIcu(text);
    const auto same = std::find_if(names.begin(), names.end(), [&](const auto& known) { return known.first == name; });
    if (same == names.end()) {
      names.emplace_back(name, std::uint64_t{1} << i);
    } else {
      same->second |= std::uint64_t{1} << i;
    }
  }
  return names;
}

std::int64_t yearOfTwoDigits(std::int64_t value) { return value + (value < 50 ? 2000 : 1900); }

}  // namespace

/// The unread part of the text.
struct DateReader::Scanner {
  std::string_view rest;
  char32_t last = 0;  // the character before `rest`

  [[nodiscard]] char32_t peek() const { return rest.empty() ? 0 : utf8::decode(rest.data()).point; }
  void skip(std::size_t size) {
    if (size == 0) return;
    std::size_t before = size - 1;
    while (utf8::isContinuation(rest[before])) --before;
    last = utf8::decode(rest.data() + before).point;
    rest.remove_prefix(size);
  }
  bool take(std::string_view text) {
    if (!rest.starts_with(text)) return false;
    skip(text.size());
    return true;
  }
  bool takeFolded(std::string_view text) {
    const auto match = matchAtEdge(rest, text, {.ignoresCase = true});
    if (match) skip(match->to);
    return match.has_value();
  }
  /// Skips spaces, and up to `signs` punctuation characters; returns whether there were any.
  bool skipSeparators(std::size_t signs) {
    bool hasSkipped = false;
    for (; !rest.empty(); hasSkipped = true) {
      const utf8::Character next = utf8::decode(rest.data());
      if (!isSpace(next.point)) {
        if (signs == 0 || !isSign(next.point)) break;
        --signs;
      }
      skip(next.size);
    }
    return hasSkipped;
  }
  /// Takes exactly `count` digits 0 to 9.
  std::optional<std::int32_t> takeAsciiDigits(std::size_t count) {
    if (rest.size() < count) return std::nullopt;
    std::int32_t value = 0;
    for (const char digit : rest.substr(0, count)) {
      if (digit < '0' || digit > '9') return std::nullopt;
      value = value * 10 + (digit - '0');
    }
    skip(count);
    return value;
  }
};

/// The fields that were read. If a field occurs twice, the last one counts.
struct DateReader::Fields {
  std::optional<std::int64_t> era, year, weekYear, month, day, dayOfYear, julianDay;
  std::optional<std::int64_t> week, weekOfMonth, weekdayOrdinal, weekday, quarter;  // weekday 0 is Sunday
  std::optional<std::int64_t> hour, halfDayHour, minute, second, millisecondOfDay;
  std::uint64_t periods = 0;  // the times of day that a period may mean
  double fraction = 0;
  bool isAmbiguous = false;  // a month or weekday has a name that others share

  std::unique_ptr<icu::TimeZone> zone;
  UTimeZoneFormatTimeType zoneTime = UTZFMT_TIME_TYPE_UNKNOWN;
  UTimeZoneFormatStyle zoneStyle = UTZFMT_STYLE_SPECIFIC_SHORT;
  icu::UnicodeString zoneText;

  void take(const Field& field, const Manner& manner) {
    const bool isName = field.item->kind == Kind::Words;
    // The index, from 0, of a name that has one meaning only.
    const auto nameValue = [&]() -> std::optional<std::int64_t> {
      if (std::has_single_bit(field.values)) return std::countr_zero(field.values);
      isAmbiguous = true;
      return std::nullopt;
    };
    switch (field.item->letter) {
      case 'G':
        era = nameValue();
        break;
      case 'y':
      case 'u':
      case 'U':
      case 'r':
        year = field.value;
        break;
      case 'Y':
        weekYear = field.value;
        break;
      case 'M':
      case 'L':
        month = field.value;
        if (isName) {
          month = nameValue();
          if (month) ++*month;
        }
        break;
      case 'Q':
      case 'q':
        quarter = field.value;
        if (isName) {
          quarter = nameValue();
          if (quarter) ++*quarter;
        }
        break;
      case 'd':
        day = field.value;
        break;
      case 'D':
        dayOfYear = field.value;
        break;
      case 'g':
        julianDay = field.value;
        break;
      case 'w':
        week = field.value;
        break;
      case 'W':
        weekOfMonth = field.value;
        break;
      case 'F':
        weekdayOrdinal = field.value;
        break;
      case 'E':
      case 'e':
      case 'c':
        weekday = isName ? nameValue() : floorModulo(field.value - 1 + manner.firstWeekday - 1, 7);
        break;
      case 'H':
        hour = field.value;
        break;
      case 'k':
        hour = field.value == 24 ? 0 : field.value;
        break;
      case 'h':
      case 'K':
        halfDayHour = field.value;
        break;
      case 'a':
      case 'b':
      case 'B':
        periods = field.values;
        break;
      case 'm':
        minute = field.value;
        break;
      case 's':
        second = field.value;
        break;
      case 'S':
        fraction = static_cast<double>(field.value) / std::pow(10.0, static_cast<double>(field.digits));
        break;
      case 'A':
        millisecondOfDay = field.value;
        break;
    }
  }
};

/// The local time that results from the fields, for checking whether all fields agree.
struct DateReader::Civil {
  Civil(std::int64_t ofDay, std::int64_t ofSecond) : day(ofDay), second(ofSecond), date(civilDate(ofDay)) {}
  std::int64_t day, second;
  CivilDate date;
};

DateReader::DateReader(std::string_view pattern, const icu::Locale& locale, Manner manner) : manner_(manner) {
  if (manner.isLenient) {
    manner.isLenient = false;
    strict_ = std::make_unique<const DateReader>(pattern, locale, manner);
  }
  compile(pattern);
  UErrorCode status = U_ZERO_ERROR;
  for (std::size_t i = 0; i < 10; ++i) digits_[i] = U'0' + static_cast<char32_t>(i);
  const std::unique_ptr<icu::NumberingSystem> numbers(icu::NumberingSystem::createInstance(locale, status));
  if (U_SUCCESS(status) && numbers && !numbers->isAlgorithmic()) {
    const icu::UnicodeString digits = numbers->getDescription();
    for (std::int32_t i = 0; i < 10 && digits.countChar32() == 10; ++i)
      digits_[static_cast<std::size_t>(i)] = static_cast<char32_t>(digits.char32At(digits.moveIndex32(0, i)));
  }
  for (Item& item : items_) {
    const bool isMonth = item.kind == Kind::Number && (item.letter == 'M' || item.letter == 'L');
    if (item.kind == Kind::Words || (isMonth && manner_.isLenient)) findNames(item, locale);
    if (item.kind == Kind::ZoneName && !zoneNames_) {
      status = U_ZERO_ERROR;
      zoneNames_.reset(icu::TimeZoneFormat::createInstance(locale, status));
      if (U_FAILURE(status)) isReadable_ = false;
    }
    if (item.kind == Kind::ZoneName && isReadable_) {
      const std::unique_ptr<icu::TimeZone> utc(icu::TimeZone::createTimeZone(utcName));
      icu::UnicodeString name;
      zoneNames_->format(*zoneStyle(item.letter, item.count), *utc, 0, name);
      item.text = utf8FromIcu(name);
    }
  }
}

DateReader::~DateReader() = default;

void DateReader::compile(std::string_view pattern) {
  const auto appendText = [this](char c) {
    if (items_.empty() || items_.back().kind != Kind::Text) items_.emplace_back();
    items_.back().text += c;
  };
  bool isQuoted = false;
  std::size_t fields = 0;
  for (std::size_t i = 0; i < pattern.size();) {
    const char c = pattern[i];
    if (c == '\'') {
      const bool isDoubled = i + 1 < pattern.size() && pattern[i + 1] == '\'';
      if (isDoubled) appendText(c);
      isQuoted = isQuoted != !isDoubled;
      i += isDoubled ? 2 : 1;
      continue;
    }
    if (isQuoted || !((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'))) {
      appendText(c);
      ++i;
      continue;
    }
    Item item;
    item.kind = Kind::Number;
    item.letter = c;
    while (i < pattern.size() && pattern[i] == c) ++i, ++item.count;
    if (isOneOf(c, "GEabB") || (isOneOf(c, "MLQqec") && item.count > 2)) {
      item.kind = Kind::Words;
    } else if (zoneStyle(c, item.count)) {
      item.kind = Kind::ZoneName;
    } else if (isOneOf(c, "ZXx")) {
      item.kind = Kind::Offset;
    }
    const bool isKnown = item.kind == Kind::ZoneName ||
                         isOneOf(c, item.kind == Kind::Number ? "yYuUrMLQqdDgwWFecHkhKmsSA" : "GEabBMLQqecZXx");
    // The limits ensure that every value fits, also as seconds.
    const std::size_t most = item.kind == Kind::Number ? isOneOf(c, "SA") ? 18 : 9 : item.kind == Kind::Offset ? 5 : 6;
    if (!isKnown || item.count > most || ++fields > mostFields) isReadable_ = false;
    hasEra_ |= c == 'G';
    if (!items_.empty() && items_.back().kind == Kind::Number && item.kind == Kind::Number) item.followsNumber = true;
    items_.push_back(std::move(item));
  }
  // If numbers follow each other without a separator, the first one has the remaining digits.
  for (std::size_t i = items_.size(), after = 0; i-- > 0;) {
    items_[i].digitsAfter = after;
    after = items_[i].followsNumber ? after + items_[i].count : 0;
  }
}

void DateReader::findNames(Item& item, const icu::Locale& locale) const {
  UErrorCode status = U_ZERO_ERROR;
  icu::SimpleDateFormat format(icu::UnicodeString(u"y"), locale, status);
  format.adoptCalendar(new icu::GregorianCalendar(*icu::TimeZone::getGMT(), locale, status));
  if (U_FAILURE(status)) return;
  const auto append = [&](std::vector<Name>& names, char letter, std::size_t count) {
    for (const auto& written : writtenNames(format, letter, count)) {
      const auto same =
          std::find_if(names.begin(), names.end(), [&](const Name& name) { return name.text == written.first; });
      if (same != names.end()) {
        same->values |= written.second;
      } else if (!written.first.empty()) {
        names.push_back({written.first, written.second});
      }
    }
  };
  if (item.kind == Kind::Words) append(item.names, item.letter, item.count);
  if (manner_.isLenient) {
    const std::string_view letters = isOneOf(item.letter, "ML")    ? "ML"
                                     : isOneOf(item.letter, "Eec") ? "Ec"
                                     : isOneOf(item.letter, "Qq")  ? "Qq"
                                     : item.letter == 'G'          ? "G"
                                                                   : "a";
    for (const char letter : letters) {
      append(item.names, letter, 3);
      append(item.names, letter, 4);
      if (isOneOf(letter, "MLEc")) append(item.fullNames, letter, 4);
    }
    if (item.letter == 'a') append(item.names, 'a', 5);
  }
  std::stable_sort(item.names.begin(), item.names.end(),
                   [](const Name& a, const Name& b) { return a.text.size() > b.text.size(); });
}

std::optional<DateReader::Reading> DateReader::read(std::string_view text) const {
  if (!isReadable_) return std::nullopt;
  if (strict_) {
    if (std::optional<Reading> reading = strict_->read(text)) return reading;
  }
  Reading reading;
  Fields fields;
  Field read[mostFields];
  std::size_t count = 0;
  Scanner scanner{text};
  if (manner_.isLenient) scanner.skipSeparators(0);
  for (const Item& item : items_) {
    if (manner_.isLenient && item.kind != Kind::Text && !item.followsNumber) scanner.skipSeparators(0);
    Field field{&item};
    bool isRead = false;
    switch (item.kind) {
      case Kind::Text:
        isRead = manner_.isLenient ? readTextLeniently(scanner, item) : scanner.take(item.text);
        break;
      case Kind::Number:
        isRead = readNumber(scanner, item, field);
        break;
      case Kind::Words:
        isRead = readName(scanner, item, field);
        break;
      case Kind::Offset:
        isRead = readOffset(scanner, item, reading);
        break;
      case Kind::ZoneName:
        isRead = readZoneName(scanner, item, fields);
        break;
    }
    if (!isRead) return std::nullopt;
    if (item.kind != Kind::Number && item.kind != Kind::Words) continue;
    fields.take(field, manner_);
    read[count++] = field;
  }
  if (manner_.isLenient) scanner.skipSeparators(0);
  if (!scanner.rest.empty()) return std::nullopt;

  const std::optional<std::int64_t> day = dayOf(fields), second = secondOfDay(fields);
  if (!day || !second) return std::nullopt;
  if (!manner_.isLenient) {
    const std::span<const Field> all(read, count);
    if (*second >= secondsPerDay) return std::nullopt;
    if (!agree(all, *day, *second) && !agreeInAnotherMonth(all, fields, *second)) return std::nullopt;
  }
  reading.localSeconds = *day * secondsPerDay + *second;
  reading.fraction = fields.fraction;
  if (fields.millisecondOfDay) reading.fraction = static_cast<double>(*fields.millisecondOfDay % 1000) / 1000;
  if (fields.zone && !placeZone(fields, reading)) return std::nullopt;
  return reading;
}

bool DateReader::readTextLeniently(Scanner& scanner, const Item& item) const {
  const Item* const next = &item == &items_.back() ? nullptr : &item + 1;
  const bool keepsSigns = next != nullptr && (next->kind == Kind::Offset || next->kind == Kind::ZoneName ||
                                              next->letter == 'u' || next->letter == 'r');
  std::string_view wanted = item.text;
  while (!wanted.empty()) {
    std::size_t size = 0, signs = 0;
    const auto isSeparator = [](char32_t point) { return isSpace(point) || isSign(point); };
    const bool separates = isSeparator(utf8::decode(wanted.data()).point);
    while (size < wanted.size()) {
      const utf8::Character c = utf8::decode(wanted.data() + size);
      if (isSeparator(c.point) != separates) break;
      if (isSign(c.point)) ++signs;
      size += c.size;
    }
    if (separates) {
      const char32_t before = scanner.last;
      const std::size_t most = std::max<std::size_t>(signs, keepsSigns ? 0 : 1);
      if (!scanner.skipSeparators(most) && isDigit(before) && isDigit(scanner.peek())) return false;
    } else {
      scanner.skipSeparators(0);
      if (!scanner.takeFolded(wanted.substr(0, size))) return false;
    }
    wanted.remove_prefix(size);
  }
  return true;
}

bool DateReader::readNumber(Scanner& scanner, const Item& item, Field& field) const {
  const bool isNegative = (item.letter == 'u' || item.letter == 'r') && scanner.take("-");
  const std::size_t natural = naturalDigits(item.letter);
  const std::size_t most = item.followsNumber ? item.count : std::max(natural, item.count);
  // One digit more than can be taken is read, to detect that there are too many.
  const std::size_t looked = item.followsNumber ? most : most + item.digitsAfter + 1;
  std::int64_t values[19 + mostFields * 18];
  std::size_t ends[19 + mostFields * 18];
  std::size_t digits = 0;
  for (std::size_t at = 0; digits < looked && at < scanner.rest.size();) {
    const utf8::Character c = utf8::decode(scanner.rest.data() + at);
    const auto digit = std::find(digits_.begin(), digits_.end(), c.point);
    if (digit != digits_.end()) {
      values[digits] = digit - digits_.begin();
    } else if (manner_.isLenient && c.point >= U'0' && c.point <= U'9') {
      values[digits] = static_cast<std::int64_t>(c.point - U'0');
    } else {
      break;
    }
    ends[digits++] = at += c.size;
  }
  if (digits == 0 && manner_.isLenient && !item.names.empty()) return readName(scanner, item, field);
  if (digits <= item.digitsAfter && !item.followsNumber) return false;
  const std::size_t taken = item.followsNumber ? item.count : digits - item.digitsAfter;
  if (taken == 0 || taken > digits || taken > most) return false;
  for (std::size_t i = 0; i < taken; ++i) field.value = field.value * 10 + values[i];
  field.digits = taken;
  if (!hasTheDigitsOf(item, field, values[0] == 0)) return false;
  if (isNegative) field.value = -field.value;
  if (field.value == 0 && isOneOf(item.letter, "yU")) return false;  // because eras begin with year 1
  scanner.skip(ends[taken - 1]);
  return true;
}

bool DateReader::hasTheDigitsOf(const Item& item, Field& field, bool startsWithZero) const {
  const bool isShortYear = item.count == 2 && isOneOf(item.letter, "yYU");
  if (isYear(item.letter) && (!hasEra_ || isShortYear)) {
    if (manner_.isLenient || isShortYear) {
      if (field.digits == 2) field.value = yearOfTwoDigits(field.value);
      return field.digits == 2 || (manner_.isLenient && field.digits >= 4);
    }
    if (field.digits < 4) return false;
  }
  if (manner_.isLenient) return true;
  if (item.letter == 'S') return field.digits == item.count;
  return field.digits == item.count || (field.digits > item.count && !startsWithZero);
}

bool DateReader::readName(Scanner& scanner, const Item& item, Field& field) const {
  const auto takeName = [&](bool asWords) {
    for (const Name& name : item.names) {
      Scanner ahead = scanner;
      if (!(manner_.isLenient ? ahead.takeFolded(name.text) : ahead.take(name.text))) continue;
      if (asWords && isLetter(ahead.last) && isLetter(ahead.peek())) continue;
      scanner = ahead;
      field.values = name.values;
      return;
    }
  };
  if (manner_.isLenient) {
    takeName(true);
    if (field.values == 0) takeAbbreviation(scanner, item, field);
  }
  if (field.values == 0) takeName(false);
  for (const std::size_t digits : {std::size_t{2}, std::size_t{1}}) {
    if (field.values != 0 || !manner_.isLenient || item.kind != Kind::Words || !isOneOf(item.letter, "ML")) break;
    const std::optional<std::int32_t> month = scanner.takeAsciiDigits(digits);
    if (month && *month >= 1 && *month <= 12) field.values = std::uint64_t{1} << (*month - 1);
  }
  if (field.values == 0) return false;
  if (item.kind == Kind::Number) field.value = std::countr_zero(field.values) + 1;
  return item.kind == Kind::Words || std::has_single_bit(field.values);
}

/// Takes the first letters, three or more, of exactly one full name.
void DateReader::takeAbbreviation(Scanner& scanner, const Item& item, Field& field) const {
  constexpr std::size_t mostLetters = 64;
  std::size_t size = 0, letters = 0;
  for (; size < scanner.rest.size() && letters < mostLetters; ++letters) {
    const utf8::Character c = utf8::decode(scanner.rest.data() + size);
    if (!isLetter(c.point)) break;
    size += c.size;
  }
  if (letters < 3) return;
  std::uint64_t values = 0;
  for (const Name& name : item.fullNames) {
    if (matchAtEdge(name.text, scanner.rest.substr(0, size), {.ignoresCase = true})) values |= name.values;
  }
  if (!std::has_single_bit(values)) return;
  field.values = values;
  scanner.skip(size);
}

bool DateReader::readOffset(Scanner& scanner, const Item& item, Reading& reading) const {
  const bool isExtended = item.letter == 'Z' ? item.count == 5 : item.count == 3 || item.count == 5;
  const bool knowsZulu = item.letter == 'X' || (item.letter == 'Z' && item.count == 5);
  bool namesUtc = false;
  if (manner_.isLenient) {
    namesUtc = scanner.takeFolded("GMT") || scanner.takeFolded("UTC") || scanner.takeFolded("Z");
  } else if (knowsZulu) {
    namesUtc = scanner.take("Z");
  }
  const bool isWest = scanner.take("-") || (manner_.isLenient && scanner.take("\u2212"));
  if (!isWest && !scanner.take("+")) {
    reading.offset = 0;
    return namesUtc;
  }
  if (namesUtc && !manner_.isLenient) return false;
  std::optional<std::int32_t> hour = scanner.takeAsciiDigits(2);
  if (!hour && manner_.isLenient) hour = scanner.takeAsciiDigits(1);
  if (!hour || *hour > 23) return false;
  std::int32_t parts[2] = {0, 0};  // minute and second
  for (int i = 0; i < 2; ++i) {
    const bool isAllowed = i == 0 || manner_.isLenient || item.letter == 'Z' || item.count >= 4;
    if (!isAllowed) break;
    Scanner ahead = scanner;
    const bool hasColon = ahead.take(":");
    const std::optional<std::int32_t> part = ahead.takeAsciiDigits(2);
    if (!part || (!manner_.isLenient && hasColon != isExtended)) {
      const bool isWanted = i == 0 && !manner_.isLenient && (item.letter == 'Z' || item.count > 1);
      if (isWanted) return false;
      break;
    }
    if (*part > 59) return false;
    // In strict reading, optional parts must not be zero, because the pattern would not write them.
    const bool mayBeMissing = i == 1 || (item.letter != 'Z' && item.count == 1);
    if (!manner_.isLenient && mayBeMissing && *part == 0) return false;
    parts[i] = *part;
    scanner = ahead;
  }
  const std::int32_t offset = *hour * 3600 + parts[0] * 60 + parts[1];
  if (!manner_.isLenient && isWest && offset == 0) return false;
  reading.offset = isWest ? -offset : offset;
  return true;
}

bool DateReader::readZoneName(Scanner& scanner, const Item& item, Fields& fields) const {
  std::size_t size = std::min(scanner.rest.size(), longestZoneName);
  while (size > 0 && size < scanner.rest.size() && utf8::isContinuation(scanner.rest[size])) --size;
  const icu::UnicodeString text = icuString(scanner.rest.substr(0, size));
  fields.zoneStyle = *zoneStyle(item.letter, item.count);
  icu::ParsePosition end(0);
  fields.zone.reset(zoneNames_->parse(fields.zoneStyle, text, end, &fields.zoneTime));
  text.extract(0, end.getIndex(), fields.zoneText);
  const std::string taken = utf8FromIcu(fields.zoneText);
  // ICU reads the names of UTC as those of other zones, or as the beginning of one.
  if (item.text.size() >= taken.size() && scanner.take(item.text)) {
    fields.zone.reset(icu::TimeZone::createTimeZone(utcName));
    fields.zoneTime = UTZFMT_TIME_TYPE_STANDARD;
    fields.zoneText = icuString(std::string_view(item.text));
    return true;
  }
  return fields.zone && end.getIndex() != 0 && scanner.take(taken);
}

/// In strict reading, the text must be the one that the pattern writes for the zone in one of its seasons.
bool DateReader::placeZone(Fields& fields, Reading& reading) const {
  const double local = static_cast<double>(reading.localSeconds + referenceDateInUnixSeconds) * 1000;
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t standard = 0, saving = 0;
  fields.zone->getOffset(local, true, standard, saving, status);
  if (U_FAILURE(status)) return false;
  if (fields.zoneTime == UTZFMT_TIME_TYPE_STANDARD) saving = 0;
  if (fields.zoneTime == UTZFMT_TIME_TYPE_DAYLIGHT && saving == 0) saving = fields.zone->getDSTSavings();
  if (!manner_.isLenient) {
    constexpr double halfYear = 182.0 * 86'400'000;
    bool isWritten = false;
    for (const double distance : {0.0, halfYear, -halfYear}) {
      icu::UnicodeString written;
      zoneNames_->format(fields.zoneStyle, *fields.zone, local - standard - saving + distance, written);
      isWritten |= written == fields.zoneText;
    }
    if (!isWritten) return false;
  }
  icu::UnicodeString id;
  const std::string name = utf8FromIcu(fields.zone->getID(id));
  if (fields.zoneTime == UTZFMT_TIME_TYPE_UNKNOWN) reading.zone = zoneNamed(name);
  if (reading.zone == nullptr) reading.offset = (standard + saving) / 1000;
  return true;
}

std::optional<std::int64_t> DateReader::dayOf(const Fields& fields) const {
  constexpr std::int64_t lastYear = 5'800'000;  // the last year that can be written
  std::int64_t year = fields.year.value_or(fields.weekYear.value_or(2000));
  if (fields.era == 0) year = 1 - year;
  if (year > lastYear || year < -lastYear) return std::nullopt;
  if (fields.julianDay) return *fields.julianDay - julianDayOfReferenceDate;
  if (fields.dayOfYear && !fields.month) return normalizedReferenceDay(year, 1, *fields.dayOfYear);
  if (fields.isAmbiguous && !(fields.month && fields.day)) return std::nullopt;

  const bool hasDate = fields.day || fields.month || fields.quarter;
  const std::int64_t month = fields.month.value_or(fields.quarter ? *fields.quarter * 3 - 2 : 1);
  const auto weekdayIndex =
      floorModulo(fields.weekday.value_or(manner_.firstWeekday - 1) + 1 - manner_.firstWeekday, 7);
  if (!hasDate && (fields.week || (fields.weekYear && !fields.year))) {
    const std::int64_t weekYear = fields.weekYear.value_or(year);
    if (weekYear > lastYear) return std::nullopt;
    const std::int64_t first = startOfFirstWeek(referenceDay(weekYear, 1, 1), manner_);
    return first + 7 * (fields.week.value_or(1) - 1) + weekdayIndex;
  }
  const std::int64_t first = normalizedReferenceDay(year, month, 1);
  if (!fields.day && fields.weekOfMonth)
    return startOfFirstWeek(first, manner_) + 7 * (*fields.weekOfMonth - 1) + weekdayIndex;
  const auto weekYearOf = [&](std::int64_t day) {
    return weekOfYear(day, manner_.firstWeekday, manner_.minimumDays).year;
  };
  const bool hasWeekYearOnly = fields.weekYear && !fields.year;
  if (!fields.day) {
    std::int64_t day = first;
    // The first days of January may belong to a week of the previous year.
    while (hasWeekYearOnly && weekYearOf(day) < *fields.weekYear) ++day;
    if (fields.weekday) day += floorModulo(*fields.weekday + 1 - weekday(day), 7);
    return day + 7 * (fields.weekdayOrdinal.value_or(1) - 1);
  }
  const std::int64_t day = normalizedReferenceDay(year, month, *fields.day);
  if (!hasWeekYearOnly || weekYearOf(day) == year) return day;
  for (const std::int64_t other : {year + 1, year - 1}) {
    const std::int64_t near = normalizedReferenceDay(other, month, *fields.day);
    if (weekYearOf(near) == year) return near;
  }
  return day;
}

std::optional<std::int64_t> DateReader::secondOfDay(const Fields& fields) const {
  if (fields.millisecondOfDay) return *fields.millisecondOfDay / 1000;
  const std::int64_t minute = fields.minute.value_or(0), second = fields.second.value_or(0);
  const auto isInPeriod = [&](std::int64_t hour) {
    const std::int64_t place = floorModulo(hour, 24) * 2 + (minute == 0 && second == 0 ? 0 : 1);
    return fields.periods == 0 || (fields.periods >> place & 1) != 0;
  };
  std::int64_t hour = 0;
  if (fields.hour) {
    hour = *fields.hour;
    if (!isInPeriod(hour)) return std::nullopt;
  } else if (fields.halfDayHour) {
    hour = *fields.halfDayHour;
    const bool isOfHalfDay = hour <= 12;
    if (!isOfHalfDay && !manner_.isLenient) return std::nullopt;
    if (isOfHalfDay) hour %= 12;
    if (!isInPeriod(hour) && isOfHalfDay) hour += 12;
    if (!isInPeriod(hour)) return std::nullopt;
  } else if (fields.periods != 0) {
    while (hour < 24 && !isInPeriod(hour)) ++hour;
    if (hour == 24) return std::nullopt;
  }
  if (hour > 24) return std::nullopt;
  return hour * 3600 + minute * 60 + second;
}

bool DateReader::agree(std::span<const Field> fields, std::int64_t day, std::int64_t second) const {
  const Civil civil(day, second);
  return std::all_of(fields.begin(), fields.end(), [&](const Field& field) { return agrees(field, civil); });
}

/// If the pattern has no year or no month, checks whether it writes the text for a date of another year or month.
bool DateReader::agreeInAnotherMonth(std::span<const Field> all, Fields& fields, std::int64_t second) const {
  const bool hasYear = fields.year || fields.weekYear, hasMonth = fields.month.has_value();
  if (!fields.day || fields.julianDay || (fields.dayOfYear && !hasMonth)) return false;
  constexpr std::int64_t yearsOfCycle = 28;  // in which each day of leap and common years falls on every weekday
  for (std::int64_t year = 2000; year < 2000 + yearsOfCycle; ++year) {
    if (!hasYear) fields.year = year;
    for (std::int64_t month = 1; month <= 12; ++month) {
      if (!hasMonth) fields.month = month;
      const std::optional<std::int64_t> day = dayOf(fields);
      if (day && agree(all, *day, second)) return true;
      if (hasMonth) break;
    }
    if (hasYear) break;
  }
  return false;
}

bool DateReader::agrees(const Field& field, const Civil& civil) const {
  const std::int64_t hour = civil.second / 3600, minute = civil.second / 60 % 60, second = civil.second % 60;
  const CivilDate& date = civil.date;
  if (field.item->kind == Kind::Words) {
    const auto says = [&](std::int64_t value) { return (field.values >> value & 1) != 0; };
    switch (field.item->letter) {
      case 'G':
        return says(date.year > 0 ? 1 : 0);
      case 'M':
      case 'L':
        return says(date.month - 1);
      case 'Q':
      case 'q':
        return says((date.month - 1) / 3);
      case 'E':
      case 'e':
      case 'c':
        return says(weekday(civil.day) - 1);
      default:
        return says(hour * 2 + (minute == 0 && second == 0 ? 0 : 1));
    }
  }
  const auto expected = [&]() -> std::int64_t {
    switch (field.item->letter) {
      case 'y':
      case 'U':
        return hasEra_ && date.year <= 0 ? 1 - date.year : date.year;
      case 'u':
      case 'r':
        return date.year;
      case 'Y':
        return weekOfYear(civil.day, manner_.firstWeekday, manner_.minimumDays).year;
      case 'M':
      case 'L':
        return date.month;
      case 'Q':
      case 'q':
        return (date.month + 2) / 3;
      case 'd':
        return date.day;
      case 'D':
        return dayOfYear(civil.day);
      case 'g':
        return civil.day + julianDayOfReferenceDate;
      case 'w':
        return weekOfYear(civil.day, manner_.firstWeekday, manner_.minimumDays).week;
      case 'W':
        return floorDivide(civil.day - startOfFirstWeek(civil.day - date.day + 1, manner_), 7) + 1;
      case 'F':
        return (date.day - 1) / 7 + 1;
      case 'e':
      case 'c':
        return floorModulo(weekday(civil.day) - manner_.firstWeekday, 7) + 1;
      case 'H':
        return hour;
      case 'k':
        return hour == 0 ? 24 : hour;
      case 'K':
        return hour % 12;
      case 'h':
        return hour % 12 == 0 ? 12 : hour % 12;
      case 'm':
        return minute;
      case 's':
        return second;
      default:  // fractions of a second always agree
        return field.value;
    }
  };
  return expected() == field.value;
}

}  // namespace norvik::detail

// NorvikCore/platform/foundation/internal/DateReader.h - reads texts as dates by a pattern, strictly or leniently.
//
//   DateReader reader("dd/MM/yyyy", icu::Locale("en_GB"), {.isLenient = true});
//   reader.read("1/5/21");                         // 2021-05-01 00:00 of local time
//
// NSDateFormatter.h describes what each letter accepts. Reading takes time linear in the text. Immutable value.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/internal/ZoneRules.h"

#include <unicode/locid.h>
#include <unicode/tzfmt.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::detail {

class NK_EXPORT_FOR_TESTS DateReader {
 public:
  struct Manner {
    bool isLenient = false;
    std::int32_t firstWeekday = 2, minimumDays = 4;  ///< for Y, w, W, e and c
  };
  struct Reading {
    std::int64_t localSeconds = 0;  ///< since the reference date
    double fraction = 0;            ///< of a second
    /// If the text has a zone: its offset or its rules.
    std::optional<std::int32_t> offset;
    const ZoneRules* zone = nullptr;
  };

  DateReader(std::string_view pattern, const icu::Locale& locale, Manner manner);
  ~DateReader();
  DateReader(const DateReader&) = delete;
  DateReader& operator=(const DateReader&) = delete;

  /// Nothing unless the whole text is a date in the pattern.
  [[nodiscard]] std::optional<Reading> read(std::string_view text) const;

 private:
  /// The meanings of a name, as bits: one for each month from January, weekday from Sunday, quarter, era, or, for the
  /// periods of a day, two for each hour (the full hour, and any other time in it).
  struct Name {
    std::string text;
    std::uint64_t values;
  };
  enum class Kind : std::uint8_t { Text, Number, Words, Offset, ZoneName };
  struct Item {
    Kind kind = Kind::Text;
    char letter = 0;
    std::size_t count = 0;
    std::size_t digitsAfter = 0;  // the digits of the numbers that follow without a separator
    bool followsNumber = false;   // without a separator
    std::string text;             // of Kind::ZoneName, the name of UTC
    std::vector<Name> names;      // as the pattern writes them; for lenient reading, in every width
    std::vector<Name> fullNames;  // for lenient reading of abbreviations
  };
  struct Field {
    const Item* item;
    std::int64_t value = 0;
    std::uint64_t values = 0;  // for a field in words
    std::size_t digits = 0;
  };
  struct Fields;
  struct Scanner;
  struct Civil;

  void compile(std::string_view pattern);
  void findNames(Item& item, const icu::Locale& locale) const;

  [[nodiscard]] bool readTextLeniently(Scanner& scanner, const Item& item) const;
  [[nodiscard]] bool readNumber(Scanner& scanner, const Item& item, Field& field) const;
  [[nodiscard]] bool hasTheDigitsOf(const Item& item, Field& field, bool startsWithZero) const;
  [[nodiscard]] bool readName(Scanner& scanner, const Item& item, Field& field) const;
  void takeAbbreviation(Scanner& scanner, const Item& item, Field& field) const;
  [[nodiscard]] bool readOffset(Scanner& scanner, const Item& item, Reading& reading) const;
  [[nodiscard]] bool readZoneName(Scanner& scanner, const Item& item, Fields& fields) const;
  [[nodiscard]] bool placeZone(Fields& fields, Reading& reading) const;
  [[nodiscard]] std::optional<std::int64_t> dayOf(const Fields& fields) const;
  [[nodiscard]] std::optional<std::int64_t> secondOfDay(const Fields& fields) const;
  [[nodiscard]] bool agree(std::span<const Field> fields, std::int64_t day, std::int64_t second) const;
  [[nodiscard]] bool agreeInAnotherMonth(std::span<const Field> all, Fields& fields, std::int64_t second) const;
  [[nodiscard]] bool agrees(const Field& field, const Civil& civil) const;

  const Manner manner_;
  std::unique_ptr<const DateReader> strict_;  // of a lenient reader, which tries it first
  std::vector<Item> items_;
  bool isReadable_ = true, hasEra_ = false;
  std::array<char32_t, 10> digits_{};
  std::unique_ptr<icu::TimeZoneFormat> zoneNames_;  // if the pattern has names of zones
};

}  // namespace norvik::detail

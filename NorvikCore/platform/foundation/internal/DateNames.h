// NorvikCore/platform/foundation/internal/DateNames.h - the names that a locale uses in dates.
#pragma once

#include "NorvikCore/platform/export.h"

#include <unicode/locid.h>

#include <string>
#include <vector>

namespace norvik::detail {

/// ICU's names for each field of a date pattern that is written in words.
struct NK_EXPORT_FOR_TESTS DateNames {
  explicit DateNames(const icu::Locale& locale);
  DateNames(const DateNames&) = delete;
  DateNames& operator=(const DateNames&) = delete;

  /// The names that `count` letters `field` in a pattern stand for: months from January, weekdays from Sunday,
  /// quarters, before and after noon, before and since year 1. Null if the field is not written by such names or ICU
  /// has no complete set of them.
  [[nodiscard]] const std::vector<std::string>* of(char field, std::size_t count) const noexcept;

  /// The names of the locale. They are looked up in ICU once and kept until the process ends.
  [[nodiscard]] static const DateNames& ofLocale(const icu::Locale& locale);

 private:
  /// Indexed by the number of letters, which gives the width: 3 abbreviated, 4 wide, 5 narrow, 6 short.
  struct Widths {
    std::vector<std::string> words[4];
    [[nodiscard]] const std::vector<std::string>* of(std::size_t count) const noexcept;
  };

  Widths months_, monthsAlone_, weekdays_, weekdaysAlone_, quarters_, quartersAlone_, halfDays_, eras_;
};

}  // namespace norvik::detail

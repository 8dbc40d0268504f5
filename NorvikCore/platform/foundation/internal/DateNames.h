// NorvikCore/platform/foundation/internal/DateNames.h - the words that dates are written with in a locale.
#pragma once

#include "NorvikCore/platform/export.h"

#include <unicode/locid.h>

#include <string>
#include <vector>

namespace norvik::detail {

/// The words, as ICU has them, of each field of a date pattern that is written in words.
struct NK_EXPORT DateNames {
  explicit DateNames(const icu::Locale& locale);
  DateNames(const DateNames&) = delete;
  DateNames& operator=(const DateNames&) = delete;

  /// What `count` letters `field` in a pattern choose from: months from January, weekdays from Sunday, quarters, before
  /// and after noon, before and since year 1. Null where they are written otherwise, or ICU has no full set of them.
  [[nodiscard]] const std::vector<std::string>* of(char field, std::size_t count) const noexcept;

  /// The names of the locale: looked up in ICU once, kept as long as the process.
  [[nodiscard]] static const DateNames& ofLocale(const icu::Locale& locale);

 private:
  /// By the number of letters, which say the width: 3 abbreviated, 4 wide, 5 narrow, 6 short.
  struct Widths {
    std::vector<std::string> words[4];
    [[nodiscard]] const std::vector<std::string>* of(std::size_t count) const noexcept;
  };

  Widths months_, monthsAlone_, weekdays_, weekdaysAlone_, quarters_, quartersAlone_, halfDays_, eras_;
};

}  // namespace norvik::detail

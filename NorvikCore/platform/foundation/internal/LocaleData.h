// NorvikCore/platform/foundation/internal/LocaleData.h - the ICU data of a locale.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSLocale.h"

#include <unicode/locid.h>

#include <atomic>
#include <string>
#include <utility>

namespace norvik::detail {

struct LocaleData {
  explicit LocaleData(icu::Locale of) : locale(std::move(of)) {}

  /// Numbers are written with the digits 0 to 9. Determined on first use; any thread.
  [[nodiscard]] bool writesAsciiDigits() const;

  const icu::Locale locale;

 private:
  mutable std::atomic<int> asciiDigits_{-1};  // -1 until it is determined
};

[[nodiscard]] inline const icu::Locale& icuLocale(const NSLocale& locale) { return locale.data().locale; }

/// The locale identifier that results from the values of these environment variables (null if not set): that of the
/// first one that is not empty.
[[nodiscard]] NK_EXPORT_FOR_TESTS std::string localeIdentifierFromEnvironment(const char* all, const char* time,
                                                                              const char* language);

}  // namespace norvik::detail

#include "NorvikCore/platform/foundation/internal/DateNames.h"

#include "NorvikCore/platform/foundation/internal/IcuText.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <unicode/dtfmtsym.h>
#include <unicode/smpdtfmt.h>

#include <memory>
#include <unordered_map>

namespace norvik::detail {
namespace {

using Symbols = icu::DateFormatSymbols;

/// `wanted` names from the one at `first` on; none if there are fewer.
std::vector<std::string> names(const icu::UnicodeString* all, std::int32_t count, std::int32_t first,
                               std::int32_t wanted) {
  std::vector<std::string> result;
  if (!all || count < first + wanted) return result;
  for (std::int32_t i = first; i < first + wanted; ++i) result.push_back(utf8FromIcu(all[i]));
  return result;
}

constexpr Symbols::DtWidthType widths[] = {Symbols::ABBREVIATED, Symbols::WIDE, Symbols::NARROW, Symbols::SHORT};

}  // namespace

const std::vector<std::string>* DateNames::Widths::of(std::size_t count) const noexcept {
  if (count < 3 || count > 6 || words[count - 3].empty()) return nullptr;
  return &words[count - 3];
}

DateNames::DateNames(const icu::Locale& locale) {
  const kernel::ForkHold hold;
  UErrorCode status = U_ZERO_ERROR;
  // The formatter's own symbols, because they depend on the locale's calendar.
  const icu::SimpleDateFormat format(icu::UnicodeString(u"y"), locale, status);
  if (U_FAILURE(status)) return;
  const Symbols& symbols = *format.getDateFormatSymbols();
  std::int32_t count = 0;
  for (int i = 0; i < 4; ++i) {
    const Symbols::DtWidthType width = widths[i];
    for (const auto context : {Symbols::FORMAT, Symbols::STANDALONE}) {
      const bool alone = context == Symbols::STANDALONE;
      const icu::UnicodeString* all = symbols.getWeekdays(count, context, width);
      (alone ? weekdaysAlone_ : weekdays_).words[i] = names(all, count, 1, 7);
      if (width == Symbols::SHORT) continue;
      all = symbols.getMonths(count, context, width);
      (alone ? monthsAlone_ : months_).words[i] = names(all, count, 0, 12);
      if (width == Symbols::NARROW) continue;
      all = symbols.getQuarters(count, context, width);
      (alone ? quartersAlone_ : quarters_).words[i] = names(all, count, 0, 4);
    }
  }
  const icu::UnicodeString* all = symbols.getAmPmStrings(count);
  halfDays_.words[0] = names(all, count, 0, 2);
  all = symbols.getEras(count);
  eras_.words[0] = names(all, count, 0, 2);
  all = symbols.getEraNames(count);
  eras_.words[1] = names(all, count, 0, 2);
  all = symbols.getNarrowEras(count);
  eras_.words[2] = names(all, count, 0, 2);
}

const std::vector<std::string>* DateNames::of(char field, std::size_t count) const noexcept {
  const std::size_t abbreviated = count < 3 ? 3 : count;
  switch (field) {
    case 'M':
      return months_.of(count);
    case 'L':
      return monthsAlone_.of(count);
    case 'E':
      return weekdays_.of(abbreviated);
    case 'c':
      return weekdaysAlone_.of(count);
    case 'Q':
      return quarters_.of(count);
    case 'q':
      return quartersAlone_.of(count);
    case 'a':
      return halfDays_.of(abbreviated);
    case 'G':
      return eras_.of(abbreviated);
    default:
      return nullptr;
  }
}

const DateNames& DateNames::ofLocale(const icu::Locale& locale) {
  static constinit Mutex mutex;
  auto& all = kernel::madeOnce([] { return new std::unordered_map<std::string, std::unique_ptr<const DateNames>>; });
  const std::string key = locale.getName();
  {
    const MutexLock lock(mutex);
    if (const auto found = all.find(key); found != all.end()) return *found->second;
  }
  auto made = std::make_unique<const DateNames>(locale);
  const MutexLock lock(mutex);
  return *all.try_emplace(key, std::move(made)).first->second;
}

}  // namespace norvik::detail

#include "TaxMonth.h"

#include "NorvikCore/Categories/NSDate+Norvik.h"

namespace payrun {

using namespace norvik;

namespace {

constexpr int monthsBeforeApril = 3;
constexpr int firstDay = 6;

}  // namespace

Days taxMonth(int year, int month) {
  const Date first = nk_dateWithYear(year, monthsBeforeApril + month, firstDay);  // month 13 is next January
  return {first, nk_addDays(nk_addMonths(first, 1), -1)};
}

Days taxYear(int year) { return {taxMonth(year, 1).first, taxMonth(year, 12).last}; }

std::string taxYearName(int year) {
  const std::string next = std::to_string((year + 1) % 100);
  return std::to_string(year) + "-" + (next.size() < 2 ? "0" : "") + next;
}

}  // namespace payrun

#include "PayslipValues.h"

#include <algorithm>

#include "Characters.h"
#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "Report.h"

namespace payrun {

using namespace norvik;

namespace {

using Source = PayslipSource;

/// One line for each part between commas, as on an envelope.
std::string onLines(std::string_view address) {
  std::string result;
  while (!address.empty()) {
    const std::size_t comma = std::min(address.find(','), address.size());
    std::string_view part = address.substr(0, comma);
    address.remove_prefix(std::min(comma + 1, address.size()));
    part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
    part = part.substr(0, part.find_last_not_of(' ') + 1);
    if (!part.empty()) result.append(result.empty() ? "" : "\n").append(part);
  }
  return result;
}

Ref<NSDateFormatter> dates(const char* pattern) {
  const auto formatter = make<NSDateFormatter>();
  formatter->setLocale(nk_defaultLocale());
  formatter->setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(0));
  formatter->setDateFormat(pattern);
  return formatter;
}

// Formatters are confined to a thread, and creating one for each date would cost more than the payslip.
std::string longDate(Date day) {
  thread_local const Ref<NSDateFormatter> kept = dates("d MMMM yyyy");
  return kept->stringFromDate(day).str();
}
std::string shortDate(Date day) {
  thread_local const Ref<NSDateFormatter> kept = dates("d MMM yyyy");
  return kept->stringFromDate(day).str();
}

std::string kindText(ItemKind kind) {
  switch (kind) {
    case ItemKind::Pay:
      return "Pay";
    case ItemKind::Bonus:
      return "Bonus";
    case ItemKind::Deduction:
      break;
  }
  return "Deduction";
}

constexpr Placeholder text(std::string_view name, std::string (*text)(const Source&)) { return {name, text}; }
constexpr Placeholder amount(std::string_view name, Decimal (*amount)(const Source&)) {
  return {name, nullptr, amount};
}
constexpr Placeholder ofItem(Placeholder placeholder) {
  placeholder.isOfItem = true;
  return placeholder;
}

constexpr Placeholder placeholders[] = {
    text("employer", [](const Source& source) { return source.employer().name; }),
    text("payeReference", [](const Source& source) { return source.employer().payeReference; }),
    text("employee", [](const Source& source) { return source.employee().name; }),
    text("number", [](const Source& source) { return source.employee().number; }),
    text("address", [](const Source& source) { return onLines(source.employee().address); }),
    text("department",
         [](const Source& source) { return source.employer().departments()[source.employee().department].name; }),
    text("sortCode", [](const Source& source) { return source.employee().sortCode; }),
    text("account", [](const Source& source) { return source.employee().account; }),
    text("taxMonth", [](const Source& source) { return std::to_string(source.run.month()); }),
    text("taxYear", [](const Source& source) { return taxYearName(source.employer().taxYear); }),
    text("firstDay", [](const Source& source) { return longDate(source.run.days().first); }),
    text("lastDay", [](const Source& source) { return longDate(source.run.days().last); }),
    amount("pay", [](const Source& source) { return source.payslip().month.pay; }),
    amount("deductions", [](const Source& source) { return source.payslip().month.deductions; }),
    amount("net", [](const Source& source) { return source.payslip().month.net(); }),
    amount("payToDate", [](const Source& source) { return source.payslip().toDate.pay; }),
    amount("deductionsToDate", [](const Source& source) { return source.payslip().toDate.deductions; }),
    amount("netToDate", [](const Source& source) { return source.payslip().toDate.net(); }),
    text("netInWords", [](const Source& source) { return amountInWords(source.payslip().month.net()); }),
    text("warning",
         [](const Source& source) {
           return std::string(source.payslip().month.net() < 0 ? "The net pay is below zero." : "");
         }),
    ofItem(text("date", [](const Source& source) { return shortDate(source.item->day); })),
    ofItem(text("kind", [](const Source& source) { return kindText(source.item->kind); })),
    ofItem(text("description", [](const Source& source) { return source.item->description.utf8(); })),
    ofItem(amount("amount", [](const Source& source) { return source.item->amount; })),
};

/// CR LF and CR become LF. Every other control character becomes a space.
std::string withoutControls(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t control = controlCharacter(text);
    if (text.starts_with("\r\n")) {
      text.remove_prefix(1);
      continue;
    }
    if (control == 0) {
      result += text.front();
    } else {
      result += text.front() == '\n' || text.front() == '\r' ? '\n' : ' ';
    }
    text.remove_prefix(std::max<std::size_t>(control, 1));
  }
  return result;
}

}  // namespace

std::string Placeholder::valueFor(const PayslipSource& source, bool inPounds) const {
  if (amount != nullptr) return inPounds ? poundsText(amount(source)) : amountText(amount(source));
  std::string value = text(source);
  return isOfItem && hasControlCharacter(value) ? withoutControls(value) : value;
}

const Placeholder* placeholderNamed(std::string_view name) {
  const auto* const found = std::ranges::find(placeholders, name, &Placeholder::name);
  return found == std::end(placeholders) ? nullptr : found;
}

std::string placeholderNames() {
  std::string names;
  for (const Placeholder& placeholder : placeholders) {
    names.append(names.empty() ? "" : ", ").append(placeholder.name);
  }
  return names;
}

}  // namespace payrun

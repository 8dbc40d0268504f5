#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"

#include "NorvikCore/formatters/internal/DecimalTerms.h"
#include "NorvikCore/formatters/internal/PayrollCalendars.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Thread.h"

namespace norvik {
namespace {

detail::DecimalTerms& moneyTerms() {
  return kernel::madeOnce([] { return new detail::DecimalTerms; });
}

Ref<NKMonetaryTermDecimalNumberFormatter> formatterInDefaultLocale() {
  auto formatter = make<NKMonetaryTermDecimalNumberFormatter>();
  formatter->setLocale(detail::defaultLocale());
  return formatter;
}

/// The formatter that a thread other than the main thread reuses until other bounds are defined: each text has the
/// bounds that are defined at that time, as if a formatter were created for it. A thread may format amounts while its
/// thread-local objects are being destroyed; then one is created.
struct ThreadFormatter {
  Ref<NKMonetaryTermDecimalNumberFormatter> formatter;
  std::uint64_t revision = 0;
  ~ThreadFormatter() { isGone = true; }
  static thread_local bool isGone;
};
constinit thread_local bool ThreadFormatter::isGone = false;

NSString stringOnThread(const NSNumber& number) {
  if (ThreadFormatter::isGone) [[unlikely]]
    return formatterInDefaultLocale()->stringFromNumber(number);
  static thread_local ThreadFormatter kept;
  const std::uint64_t revision = moneyTerms().revision();
  if (!kept.formatter || kept.revision != revision) [[unlikely]] {
    kept.formatter = formatterInDefaultLocale();
    kept.revision = revision;
  }
  return kept.formatter->stringFromNumber(number);
}

}  // namespace

NKMonetaryTermDecimalNumberFormatter::~NKMonetaryTermDecimalNumberFormatter() = default;

void NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(std::optional<Decimal> maximum,
                                                                std::optional<Decimal> minDecimalTerm) {
  moneyTerms().define(maximum, minDecimalTerm);
}

void NKMonetaryTermDecimalNumberFormatter::setup() {
  Super::setup();
  moneyTerms().applyTo(*this, "#,##0.00##");
}

NSString NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(const NSNumber& number) {
  if (!kernel::isMainThread()) return stringOnThread(number);
  const auto& kept =
      kernel::madeOnce([] { return new Ref<NKMonetaryTermDecimalNumberFormatter>(formatterInDefaultLocale()); });
  return kept->stringFromNumber(number);
}

}  // namespace norvik

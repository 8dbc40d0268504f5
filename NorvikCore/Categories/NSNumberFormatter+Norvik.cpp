#include "NorvikCore/Categories/NSNumberFormatter+Norvik.h"

#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/platform/kernel/Thread.h"

namespace norvik {

constinit const NSString kSharedNumberFormatterLock = "kSharedNumberFormatterLock";

namespace {

/// Holds the slot's formatter and never releases it, so that numbers can still be formatted while the process ends.
union Slot {
  constexpr Slot() noexcept : formatter() {}
  ~Slot() {}  // NOLINT(modernize-use-equals-default): defaulted, it would be deleted
  Ref<NSNumberFormatter> formatter;
};

constinit Slot slot;

}  // namespace

constinit Ref<NSNumberFormatter>& m_sharedNumberFormatter = slot.formatter;

NSString nk_defaultStringFromNumber(const NSNumber& number, NSNumberFormatterStyle numberStyle) {
  const bool onMainThread = kernel::isMainThread();
  Ref<NSNumberFormatter> formatter = onMainThread ? m_sharedNumberFormatter : nullptr;
  if (!formatter) {
    formatter = make<NSNumberFormatter>();
    formatter->setLocale(nk_defaultLocale());
  }
  if (formatter->numberStyle() != numberStyle) formatter->setNumberStyle(numberStyle);
  NSString text = formatter->stringFromNumber(number);
  if (onMainThread && !m_sharedNumberFormatter) m_sharedNumberFormatter = formatter;
  return text;
}

}  // namespace norvik

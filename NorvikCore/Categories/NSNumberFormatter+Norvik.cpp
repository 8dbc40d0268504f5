#include "NorvikCore/Categories/NSNumberFormatter+Norvik.h"

#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/platform/kernel/Thread.h"

namespace norvik {

constinit const NSString kSharedNumberFormatterLock = "kSharedNumberFormatterLock";

Ref<NSNumberFormatter>& m_sharedNumberFormatter() {
  static auto& slot = *new Ref<NSNumberFormatter>;
  return slot;
}

NSString nk_defaultStringFromNumber(const NSNumber& number, NSNumberFormatterStyle numberStyle) {
  const bool onMainThread = kernel::isMainThread();
  Ref<NSNumberFormatter> formatter = onMainThread ? m_sharedNumberFormatter() : nullptr;
  if (!formatter) {
    formatter = make<NSNumberFormatter>();
    formatter->setLocale(nk_defaultLocale());
  }
  if (formatter->numberStyle() != numberStyle) formatter->setNumberStyle(numberStyle);
  NSString text = formatter->stringFromNumber(number);
  if (onMainThread && !m_sharedNumberFormatter()) m_sharedNumberFormatter() = formatter;
  return text;
}

}  // namespace norvik

#include "Summary.h"

#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "Report.h"

namespace payrun {

using namespace norvik;

Ref<Summary> Summary::of(const Ref<LiveTotals>& totals) {
  const auto summary = make<Summary>();
  for (const char* amount : {"pay", "deductions", "net"}) {
    nk_bind_toObject_withKeyPath_block(*summary, amount, *totals, amount,
                                       [](const Decimal& pay) { return amountText(pay); });
  }
  return summary;
}

std::string Summary::line() const {
  const auto text = [](const NSString& amount) { return std::string(amount.view()); };
  return "total: pay " + text(pay()) + ", deductions " + text(deductions()) + ", net " + text(net());
}

}  // namespace payrun

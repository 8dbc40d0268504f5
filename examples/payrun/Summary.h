// examples/payrun/Summary.h - the printed totals: texts that bindings keep equal to the amounts of the model.
#pragma once

#include <string>

#include "LiveTotals.h"

namespace payrun {

class Summary : public norvik::NSObject {
  NK_OBJECT(Summary, norvik::NSObject)
  NK_PROPERTY(norvik::NSString, pay, setPay)
  NK_PROPERTY(norvik::NSString, deductions, setDeductions)
  NK_PROPERTY(norvik::NSString, net, setNet)

 public:
  /// Creates a summary whose texts follow the totals, each through a closure that formats an amount.
  static norvik::Ref<Summary> of(const norvik::Ref<LiveTotals>& totals);

  [[nodiscard]] std::string line() const;
};

}  // namespace payrun

// examples/payrun/LiveTotals.h - the employer's totals of the month, as a model object whose properties can be
// observed.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/ObjectMacros.h"
#include "NorvikCore/platform/values/Decimal.h"

namespace payrun {

class LiveTotals : public norvik::NSObject {
  NK_OBJECT(LiveTotals, norvik::NSObject)
  NK_PROPERTY(norvik::Decimal, pay, setPay)
  NK_PROPERTY(norvik::Decimal, deductions, setDeductions)
  NK_COMPUTED_PROPERTY(norvik::Decimal, net)
  NK_AFFECTED_BY(net, pay)
  NK_AFFECTED_BY(net, deductions)

 public:
  [[nodiscard]] norvik::Decimal net() const { return pay() - deductions(); }
};

}  // namespace payrun

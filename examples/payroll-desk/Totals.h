// examples/payroll-desk/Totals.h - the sums of all people, which follow each person's bonus.
#pragma once

#include <cstdint>

#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "Person.h"

namespace desk {

class Totals : public norvik::NSObject {
  NK_OBJECT(Totals, norvik::NSObject)
  NK_PROPERTY(std::int64_t, people, setPeople)
  NK_PROPERTY(norvik::Decimal, gross, setGross)
  NK_PROPERTY(norvik::Decimal, deductions, setDeductions)
  NK_COMPUTED_PROPERTY(norvik::Decimal, net)
  NK_AFFECTED_BY(net, gross)
  NK_AFFECTED_BY(net, deductions)

 public:
  [[nodiscard]] norvik::Decimal net() const { return gross() - deductions(); }
  /// Adds the people up and follows them from now on. Any thread, before they are shown.
  void follow(const norvik::NSArray& people);

 private:
  norvik::Ref<norvik::FBKVOController> observations_;
};

}  // namespace desk

#include "Totals.h"

namespace desk {

using namespace norvik;

void Totals::follow(const NSArray& people) {
  observations_ = FBKVOController::controllerWithObserver(*this);
  Decimal gross, deductions;
  for (const Value& each : people) {
    const Person& person = *each.object<Person>();
    gross = gross + person.gross();
    deductions = deductions + person.deductions();
    observations_->observe_keyPath_options_block(
        each.as<Ref<NSObject>>(), "bonus", NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld,
        [](NSObject& observer, NSObject&, const NSDictionary& change) {
          auto& totals = static_cast<Totals&>(observer);
          totals.setGross(totals.gross() + change[NSKeyValueChangeNewKey].as<Decimal>() -
                          change[NSKeyValueChangeOldKey].as<Decimal>());
        });
  }
  setPeople(static_cast<std::int64_t>(people.count()));
  setGross(gross);
  setDeductions(deductions);
}

}  // namespace desk

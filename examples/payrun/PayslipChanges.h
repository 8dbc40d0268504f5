// examples/payrun/PayslipChanges.h - observes payslips and collects their changes.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "LivePayslip.h"
#include "NorvikCore/observation/FBKVOController.h"

namespace payrun {

class PayslipChanges : public norvik::NSObject {
  NK_OBJECT(PayslipChanges, norvik::NSObject)

 public:
  bool init() override;

  /// Adds a new payslip and observes it from now on.
  void add(const norvik::Ref<LivePayslip>& payslip);
  /// Removes a payslip and stops observing it.
  void remove(const norvik::Ref<LivePayslip>& payslip);
  /// A line for each payslip that was changed, added or removed since the last call, in the order of the first change.
  std::string take();

 private:
  enum class Kind { Changed, New, Gone };
  struct Entry {
    Kind kind;
    norvik::Ref<LivePayslip> payslip;
    std::vector<std::pair<std::string, std::string>> before;  // property in words, and its text before the change
  };
  Entry& entryOf(const norvik::Ref<LivePayslip>& payslip, Kind kind);
  static std::string lineOf(const Entry& entry);

  std::vector<Entry> entries_;
  norvik::Ref<norvik::FBKVOController> controller_;
};

}  // namespace payrun

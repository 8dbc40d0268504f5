// examples/payrun/PayslipChanges.h - which payslips changed and how, collected by observing them.
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

  /// A payslip that is new, and observed from now on.
  void add(const norvik::Ref<LivePayslip>& payslip);
  /// A payslip that goes.
  void remove(const norvik::Ref<LivePayslip>& payslip);
  /// A line for each payslip that changed, came or went since the last call, in the order in which that began.
  std::string take();

 private:
  enum class Kind { Changed, New, Gone };
  struct Entry {
    Kind kind;
    norvik::Ref<LivePayslip> payslip;
    std::vector<std::pair<std::string, std::string>> before;  // what changed, in words, and its text before
  };
  Entry& entryOf(const norvik::Ref<LivePayslip>& payslip, Kind kind);
  static std::string lineOf(const Entry& entry);

  std::vector<Entry> entries_;
  norvik::Ref<norvik::FBKVOController> controller_;
};

}  // namespace payrun

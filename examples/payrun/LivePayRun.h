// examples/payrun/LivePayRun.h - a pay run whose payslips and totals are model objects that follow the files.
//
// Confined to one queue.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "LivePayslip.h"
#include "LiveTotals.h"
#include "PayRun.h"
#include "PayslipChanges.h"
#include "Summary.h"

namespace payrun {

class LivePayRun {
 public:
  /// Reads the employer's files. Throws InputError.
  LivePayRun(const std::filesystem::path& folder, int month);

  [[nodiscard]] std::string report() const;
  /// As they are now; for the caller to read from, until the next readAgain().
  [[nodiscard]] const PayRun& run() const { return state_->run; }

  /// Something changed that readAgain() has to read: the people as well, or the items only.
  void noteChange(bool people) { peopleChanged_ |= people; }
  /// Reads the files that changed, updates the model, and gives a line for each payslip that changed, came or went, and
  /// one with the totals. Throws InputError, and then everything is as it was and stays to be read.
  std::string readAgain();

 private:
  /// An employer and the run that refers to it.
  struct State {
    std::shared_ptr<const Employer> employer;
    PayRun run;
  };
  std::unique_ptr<const State> readWith(std::shared_ptr<const Employer> employer) const;
  void update();

  const std::filesystem::path folder_;
  const int month_;
  bool peopleChanged_ = false;
  std::unique_ptr<const State> state_;
  std::map<std::string, norvik::Ref<LivePayslip>> payslips_;  // by employee's number
  norvik::Ref<LiveTotals> totals_;
  norvik::Ref<PayslipChanges> changes_;
  norvik::Ref<Summary> summary_;
};

}  // namespace payrun

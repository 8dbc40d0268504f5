// examples/payrun/LivePayRun.h - a pay run whose payslips and totals are model objects that are updated from the files.
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
  /// The current run. Valid until the next readAgain().
  [[nodiscard]] const PayRun& run() const { return state_->run; }

  /// Notes that a file changed, which readAgain() then reads: the files of people if `people`, otherwise only the
  /// items.
  void noteChange(bool people) { peopleChanged_ |= people; }
  /// Reads the files that changed and updates the model. Returns a line for each payslip that was changed, added or
  /// removed, and one with the totals. Throws InputError; then nothing is changed, and the next call reads the files
  /// again.
  std::string readAgain();

 private:
  /// An employer, and the run that refers to it.
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
  std::map<std::string, norvik::Ref<LivePayslip>> payslips_;  // by the employee's number
  norvik::Ref<LiveTotals> totals_;
  norvik::Ref<PayslipChanges> changes_;
  norvik::Ref<Summary> summary_;
};

}  // namespace payrun

#include "LivePayRun.h"

#include <unordered_set>

#include "InputReader.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "Report.h"

namespace payrun {

using namespace norvik;

LivePayRun::LivePayRun(const std::filesystem::path& folder, int month)
    : folder_(folder),
      month_(month),
      state_(readWith(std::make_shared<const Employer>(readEmployer(folder)))),
      totals_(make<LiveTotals>()),
      changes_(make<PayslipChanges>()),
      summary_(Summary::of(totals_)) {
  update();
  changes_->take();  // discards the changes, because at the start every payslip is new
}

std::string LivePayRun::report() const { return payrun::report(state_->run); }

std::string LivePayRun::readAgain() {
  state_ = readWith(peopleChanged_ ? std::make_shared<const Employer>(readEmployer(folder_)) : state_->employer);
  peopleChanged_ = false;
  update();
  const std::string changes = changes_->take();
  return (changes.empty() ? "no payslip changed\n" : changes) + summary_->line() + "\n";
}

std::unique_ptr<const LivePayRun::State> LivePayRun::readWith(std::shared_ptr<const Employer> employer) const {
  auto state = std::make_unique<State>(State{employer, PayRun(*employer, month_)});
  const std::size_t items = readItems(folder_, *employer, [&](const PayItem& item) { state->run.add(item); });
  DDLogInfo("%s: %zu employees, %zu items", folder_.c_str(), employer->employees().size(), items);
  return state;
}

void LivePayRun::update() {
  std::unordered_set<std::string> present;
  const std::vector<Employee>& employees = state_->employer->employees();
  for (std::size_t i = 0; i < employees.size(); ++i) {
    const std::string& number = *present.insert(employees[i].number).first;
    Ref<LivePayslip>& payslip = payslips_[number];
    const bool isNew = !payslip;
    if (isNew) payslip = make<LivePayslip>();
    payslip->update(state_->run, i);
    if (isNew) changes_->add(payslip);
  }
  for (auto at = payslips_.begin(); at != payslips_.end();) {
    if (present.contains(at->first)) {
      ++at;
    } else {
      changes_->remove(at->second);
      at = payslips_.erase(at);
    }
  }
  const Amounts total = state_->run.total().month;
  totals_->setPay(total.pay);
  totals_->setDeductions(total.deductions);
}

}  // namespace payrun

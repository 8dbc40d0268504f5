#include "PayRun.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "NorvikCore/linq/LINQ.h"

namespace payrun {

using namespace norvik;

namespace {

template <class Payslips, class Member>
Decimal sum(const Payslips& payslips, Amounts Payslip::*amounts, Member Amounts::*member) {
  if (std::empty(payslips)) return {};
  const Value sum =
      payslips | linq_select([=](const Payslip* payslip) { return payslip->*amounts.*member; }) | linq_sum();
  return sum.as<Decimal>();
}

DepartmentTotal totalOf(const std::vector<const Payslip*>& payslips) {
  const auto added = [&](Amounts Payslip::*amounts) {
    return Amounts{sum(payslips, amounts, &Amounts::pay), sum(payslips, amounts, &Amounts::deductions)};
  };
  return {payslips.size(), added(&Payslip::month), added(&Payslip::toDate)};
}

}  // namespace

PayRun::PayRun(const Employer& employer, int month)
    : employer_(employer),
      month_(month),
      days_(taxMonth(employer.taxYear, month)),
      payslips_(employer.employees().size()),
      lists_(employer.employees().size()) {
  for (std::size_t i = 0; i < payslips_.size(); ++i) payslips_[i].department = employer.employees()[i].department;
}

void PayRun::add(const PayItem& item) {
  if (item.moved && (days_.contains(item.day) || days_.contains(item.moved->day))) {
    movedItems_.push_back({item.employee, item.moved->line, std::string(item.moved->date), item.day});
  }
  if (item.day > days_.last) return;
  Payslip& payslip = payslips_[item.employee];
  const auto count = [&](Amounts& amounts) {
    (item.kind == ItemKind::Deduction ? amounts.deductions : amounts.pay) += item.amount;
  };
  count(payslip.toDate);
  if (!days_.contains(item.day)) return;
  count(payslip.month);
  keep(item);
}

void PayRun::keep(const PayItem& item) {
  auto description = descriptions_.find(item.description);
  if (description == descriptions_.end()) {
    description = descriptions_.emplace(item.description, NSString(item.description)).first;
  }
  if (items_.size() == none) throw std::length_error("more items in a month than can be kept");
  const auto index = static_cast<std::uint32_t>(items_.size());
  items_.push_back({{item.day, item.kind, item.amount, description->second}, none});
  List& list = lists_[item.employee];
  (list.first == none ? list.first : items_[list.last].next) = index;
  list.last = index;
}

std::vector<PayslipItem> PayRun::itemsOf(std::size_t employee) const {
  std::vector<PayslipItem> items;
  for (std::uint32_t i = lists_[employee].first; i != none; i = items_[i].next) items.push_back(items_[i].item);
  std::ranges::stable_sort(items, {}, &PayslipItem::day);
  return items;
}

std::vector<DepartmentTotal> PayRun::departmentTotals() const {
  std::vector<DepartmentTotal> totals(employer_.departments().size());
  const auto address = [](const Payslip& payslip) { return &payslip; };
  const auto department = [](const Payslip* payslip) { return payslip->department; };
  for (const auto& group : payslips_ | linq_select(address) | linq_groupBy(department)) {
    totals[group.key.template as<std::size_t>()] = totalOf(group.elements);
  }
  return totals;
}

DepartmentTotal PayRun::total() const {
  return totalOf(payslips_ | linq_select([](const Payslip& payslip) { return &payslip; }));
}

std::vector<std::size_t> PayRun::employeesBelowZero() const {
  const auto address = [](const Payslip& payslip) { return &payslip; };
  const auto isBelowZero = [](const Payslip* payslip) { return payslip->month.net() < 0; };
  const auto index = [&](const Payslip* payslip) { return static_cast<std::size_t>(payslip - payslips_.data()); };
  return payslips_ | linq_select(address) | linq_where(isBelowZero) | linq_select(index);
}

}  // namespace payrun

#include "PayslipChanges.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "Report.h"

namespace payrun {

using namespace norvik;

namespace {

/// The properties that a payslip shows: key path, and name in words.
constexpr std::pair<const char*, const char*> shown[] = {
    {"name", "name"},
    {"department", "department"},
    {"sortCode", "sort code"},
    {"account", "account"},
    {"pay", "pay"},
    {"deductions", "deductions"},
    {"payToDate", "pay to date"},
    {"deductionsToDate", "deductions to date"},
};

std::string inWords(const NSString& keyPath) {
  for (const auto& [key, words] : shown) {
    if (keyPath == key) return words;
  }
  return std::string(keyPath.view());
}

std::string textOf(const Value& value) {
  return value.isNumber() ? amountText(value.as<Decimal>()) : std::string(value.as<NSString>().view());
}

Ref<NSArray> shownKeyPaths() {
  const auto keyPaths = make<NSMutableArray>();
  for (const auto& [key, words] : shown) keyPaths->addObject(NSString(key));
  return keyPaths;
}

}  // namespace

bool PayslipChanges::init() {
  controller_ = FBKVOController::controllerWithObserver(*this);
  return NSObject::init();
}

void PayslipChanges::add(const Ref<LivePayslip>& payslip) {
  static const Ref<NSArray>& keyPaths = *new Ref<NSArray>(shownKeyPaths());
  entryOf(payslip, Kind::New);
  controller_->observe_keyPaths_options_block(
      payslip, *keyPaths, NSKeyValueObservingOptionOld,
      [](NSObject& observer, NSObject& object, const NSDictionary& change) {
        auto& changes = static_cast<PayslipChanges&>(observer);
        Entry& entry = changes.entryOf(ref(static_cast<LivePayslip&>(object)), Kind::Changed);
        entry.before.emplace_back(change[FBKVONotificationKeyPathKey].as<NSString>().view(),
                                  textOf(change[NSKeyValueChangeOldKey]));
      });
}

void PayslipChanges::remove(const Ref<LivePayslip>& payslip) {
  controller_->unobserve(payslip);
  entryOf(payslip, Kind::Gone);
}

std::string PayslipChanges::take() {
  std::string lines;
  for (const Entry& entry : entries_) lines += lineOf(entry);
  entries_.clear();
  return lines;
}

/// Returns the last entry if it belongs to the payslip, because all changes of one payslip come one after the other.
/// Otherwise adds an entry.
PayslipChanges::Entry& PayslipChanges::entryOf(const Ref<LivePayslip>& payslip, Kind kind) {
  if (entries_.empty() || entries_.back().payslip != payslip) entries_.push_back({kind, payslip, {}});
  return entries_.back();
}

std::string PayslipChanges::lineOf(const Entry& entry) {
  const LivePayslip& payslip = *entry.payslip;
  const auto line = [&](const char* what, const std::string& details) {
    return std::string(what) + ": " + std::string(payslip.number().view()) + " " + std::string(payslip.name().view()) +
           details + "\n";
  };
  switch (entry.kind) {
    case Kind::New:
      return line("new", ": pay " + amountText(payslip.pay()) + ", deductions " + amountText(payslip.deductions()));
    case Kind::Gone:
      return line("gone", "");
    case Kind::Changed:
      break;
  }
  std::string details;
  for (const auto& [keyPath, before] : entry.before) {
    details += (details.empty() ? ": " : ", ") + inWords(keyPath) + " " + before + " -> " +
               textOf(payslip.valueForKeyPath(keyPath));
  }
  return line("changed", details);
}

}  // namespace payrun

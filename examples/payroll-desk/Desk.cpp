#include "Desk.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "Counted.h"
#include "DocumentPDF.h"
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/values/Format.h"
#include "OutputFile.h"
#include "PayslipSheet.h"
#include "TaxMonth.h"

namespace desk {

using namespace norvik;

namespace {

Ref<TSKDispatchQueue> mainQueue() { return TSKDispatchQueue::mainDispatchQueue(); }

NSString searchText(const Person& person) {
  return lowercaseString(person.name() + "\n" + person.number() + "\n" + person.department());
}

NSString peopleText(std::size_t count) { return counted(count, "person", "people"); }

NSString periodOf(const payrun::PayRun& run) {
  const auto day = [](Date date) { return nk_utcDateStringWithFormat(date, "d MMMM yyyy"); };
  return stringWithFormat("Tax month %d of %@, %@ to %@", run.month(),
                          NSString(payrun::taxYearName(run.employer().taxYear)), day(run.days().first),
                          day(run.days().last));
}

}  // namespace

/// The texts in which a search looks. Never changes.
struct Desk::Index {
  std::vector<std::pair<NSString, Ref<Person>>> entries;
};

struct Desk::Opened {
  std::shared_ptr<const EmployerFolder> folder;
  std::shared_ptr<const Index> index;
  Ref<NSArray> people;
  Ref<Totals> totals;
};

bool Desk::init() {
  files_ = TSKDispatchQueue::dispatchQueueWithLabel("desk.files");
  searches_ = TSKDispatchQueue::dispatchQueueWithLabel("desk.searches");
  edits_ = FBKVOController::controllerWithObserver(*this);
  selection_ = FBKVOController::controllerWithObserver(*this);
  selection_->observe_keyPath_options_block(
      *this, "selected", NSKeyValueObservingOptionNew,
      [](NSObject& observer, NSObject&, const NSDictionary&) { static_cast<Desk&>(observer).followSelected(); });
  setTotals(make<Totals>());
  return NSObject::init();
}

void Desk::work(const NSString& status, std::function<void()> work) {
  setIsBusy(true);
  setStatus(status);
  files_->dispatchAsynchronously([self = ref(*this), work = std::move(work)] {
    NSString problem;
    try {
      return work();
    } catch (const std::exception& error) {
      problem = error.what();
    }
    DDLogError("%@", problem);
    mainQueue()->dispatchAsynchronously([self, problem] { self->finish(problem); });
  });
}

void Desk::finish(const NSString& status) {
  setIsBusy(false);
  setStatus(status);
}

void Desk::open(const std::filesystem::path& folder, int month) {
  work("Opening " + NSString(folder.filename().string()) + "\u2026", [self = ref(*this), folder, month] {
    Opened opened;
    opened.folder = std::make_shared<const EmployerFolder>(folder, month);
    const payrun::PayRun& run = opened.folder->run();
    std::vector<Value> people;
    auto index = std::make_shared<Index>();
    for (std::size_t i = 0; i < run.payslips().size(); ++i) {
      const payrun::Employee& employee = run.employer().employees()[i];
      auto person = make<Person>(i);
      person->setNumber(employee.number);
      person->setName(employee.name);
      person->setDepartment(run.employer().departments()[employee.department].name);
      person->setSortCode(employee.sortCode);
      person->setAccount(employee.account);
      person->setPay(run.payslips()[i].month.pay);
      person->setDeductions(run.payslips()[i].month.deductions);
      index->entries.emplace_back(searchText(*person), person);
      people.emplace_back(person);
    }
    opened.people = make<NSArray>(std::move(people));
    opened.index = std::move(index);
    opened.totals = make<Totals>();
    opened.totals->follow(*opened.people);
    DDLogInfo("Opened %@: %@, %lu with a net pay below zero", NSString(folder.string()),
              peopleText(opened.people->count()), run.employeesBelowZero().size());
    mainQueue()->dispatchAsynchronously([self, opened]() mutable { self->show(std::move(opened)); });
  });
}

void Desk::show(Opened opened) {
  const Ref<Person> before = selected();
  Opened former{std::move(folder_), std::move(index_), people(), totals()};
  folder_ = std::move(opened.folder);
  index_ = std::move(opened.index);
  edited_.clear();
  setIsEdited(false);
  setEmployer(folder_->employer().name);
  setPeriod(periodOf(folder_->run()));
  setTotals(opened.totals);
  setPeople(opened.people);
  setShown(opened.people);
  // Saved people are selected again; another folder begins with its first person.
  const bool isSame = former.folder && former.folder->path() == folder_->path();
  const std::size_t selectedIndex = isSame && before ? before->index : 0;
  setSelected(selectedIndex < people()->count() ? people()->objectAtIndex(selectedIndex).as<Ref<Person>>() : nullptr);
  finish("Opened " + peopleText(people()->count()));
  shownSearch_ = ++searchNumber_;  // a search of the former people ends without effect
  if (!words_.empty()) search(words_);
  // Thousands of objects are destroyed: not on this thread.
  files_->dispatchAsynchronously([former = std::move(former)]() mutable { former = {}; });
}

void Desk::followSelected() {
  edits_->unobserveAll();
  if (!selected()) return;
  const auto paths = NSArray::arrayWithObjects("name", "sortCode", "account", "bonus", "bonusReason");
  edits_->observe_keyPaths_options_block(selected(), *paths, NSKeyValueObservingOptionNew,
                                         [](NSObject& observer, NSObject& person, const NSDictionary&) {
                                           static_cast<Desk&>(observer).noteEdit(static_cast<Person&>(person));
                                         });
}

void Desk::noteEdit(Person& person) {
  const auto isThis = [&](const Ref<Person>& each) { return each.get() == &person; };
  if (std::none_of(edited_.begin(), edited_.end(), isThis)) {
    edited_.push_back(ref(person));
    DDLogInfo("%@ (%@) was edited", person.name(), person.number());
  }
  setIsEdited(true);
}

void Desk::search(const NSString& words) {
  words_ = words;
  if (!index_) return;
  const std::uint64_t number = ++searchNumber_;
  searches_->dispatchAsynchronously([self = ref(*this), index = index_, words, number] {
    std::vector<NSString> wanted;
    for (const NSString& word : lowercaseString(words).componentsSeparatedBy(" ")) {
      if (!word.empty()) wanted.push_back(word);
    }
    std::vector<Value> found;
    for (const auto& [text, person] : index->entries) {
      const auto hasWord = [&text = text](const NSString& word) { return text.containsString(word); };
      if (std::all_of(wanted.begin(), wanted.end(), hasWord)) found.emplace_back(person);
    }
    mainQueue()->dispatchAsynchronously([self, index, number, people = make<NSArray>(std::move(found))] {
      if (number != self->searchNumber_ || index != self->index_) return;
      self->setShown(people);
      self->shownSearch_ = number;
    });
  });
}

Edited Desk::editsOf(const Person& person) const {
  return {person.index,
          person.name().utf8(),
          person.sortCode().utf8(),
          person.account().utf8(),
          person.bonusReason().utf8(),
          person.bonus()};
}

void Desk::save() {
  if (!folder_ || edited_.empty()) return;
  std::vector<Edited> edits;
  for (const Ref<Person>& person : edited_) edits.push_back(editsOf(*person));
  work("Saving\u2026", [self = ref(*this), folder = folder_, edits] {
    folder->save(edits);
    DDLogInfo("Saved the edits of %@", peopleText(edits.size()));
    mainQueue()->dispatchAsynchronously([self, folder] { self->open(folder->path(), folder->run().month()); });
  });
}

void Desk::preview(std::function<void(const QString& html)> use) {
  const std::uint64_t number = ++previewNumber_;
  if (!folder_ || !selected()) return use({});
  searches_->dispatchAsynchronously(
      [self = ref(*this), folder = folder_, edited = editsOf(*selected()), number, use = std::move(use)] {
        mainQueue()->dispatchAsynchronously([self, html = sheetOf(folder->payslip(edited)), number, use] {
          if (number == self->previewNumber_) use(html);
        });
      });
}

void Desk::print(const std::filesystem::path& target) {
  if (!folder_ || !selected()) return;
  work("Printing\u2026", [self = ref(*this), folder = folder_, edited = editsOf(*selected()), target] {
    const std::filesystem::path file = target / folder->payslipFileName(edited);
    payrun::writeWhole(file, payrun::pdfDocument(folder->payslip(edited)));
    DDLogInfo("Printed %@", NSString(file.string()));
    mainQueue()->dispatchAsynchronously(
        [self, name = file.filename().string()] { self->finish("Printed " + NSString(name)); });
  });
}

}  // namespace desk

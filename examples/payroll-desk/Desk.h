// examples/payroll-desk/Desk.h - the state of the window: an open folder, the people that are shown, the selected one.
//
// Files are read, searched, drawn and written on two serial queues; the properties change on the main thread only.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QString>

#include "EmployerFolder.h"
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "Person.h"
#include "Totals.h"

namespace desk {

class Desk : public norvik::NSObject {
  NK_OBJECT(Desk, norvik::NSObject)
  NK_PROPERTY(norvik::NSString, employer, setEmployer)
  NK_PROPERTY(norvik::NSString, period, setPeriod)
  NK_PROPERTY(norvik::NSString, status, setStatus)
  NK_PROPERTY(bool, isBusy, setIsBusy)
  NK_PROPERTY(bool, isEdited, setIsEdited)
  NK_PROPERTY(norvik::Ref<norvik::NSArray>, people, setPeople)
  NK_PROPERTY(norvik::Ref<norvik::NSArray>, shown, setShown)
  NK_PROPERTY(norvik::Ref<Person>, selected, setSelected)
  NK_PROPERTY(norvik::Ref<Totals>, totals, setTotals)

 public:
  /// Reads the folder and shows it. If it cannot be read, `status` says why and the former folder stays.
  void open(const std::filesystem::path& folder, int month);
  /// Shows the people whose name, number or department contains each of the words. Case is ignored.
  void search(const norvik::NSString& words);
  /// Writes the edits and reads the folder again.
  void save();
  /// Calls `use` on the main thread with the selected person's payslip as rich text, unless another one was requested
  /// meanwhile. The text is empty if no person is selected.
  void preview(std::function<void(const QString& html)> use);
  /// Writes the selected person's payslip as a PDF file to the folder.
  void print(const std::filesystem::path& folder);

  [[nodiscard]] bool isOpen() const { return folder_ != nullptr; }
  /// The people of the last search are not shown yet.
  [[nodiscard]] bool isSearching() const { return shownSearch_ != searchNumber_; }
  [[nodiscard]] std::filesystem::path path() const { return folder_ ? folder_->path() : std::filesystem::path(); }
  [[nodiscard]] int month() const { return folder_ ? folder_->run().month() : 1; }

 protected:
  bool init() override;

 private:
  struct Opened;
  struct Index;
  void show(Opened opened);
  void followSelected();
  void noteEdit(Person& person);
  [[nodiscard]] Edited editsOf(const Person& person) const;
  /// Does the work on the queue; its error, if any, becomes the status.
  void work(const norvik::NSString& status, std::function<void()> work);
  void finish(const norvik::NSString& status);

  norvik::Ref<norvik::TSKDispatchQueue> files_, searches_;
  std::shared_ptr<const EmployerFolder> folder_;
  std::shared_ptr<const Index> index_;
  std::vector<norvik::Ref<Person>> edited_;
  norvik::NSString words_;
  std::uint64_t searchNumber_ = 0, shownSearch_ = 0, previewNumber_ = 0;
  norvik::Ref<norvik::FBKVOController> selection_, edits_;
};

}  // namespace desk

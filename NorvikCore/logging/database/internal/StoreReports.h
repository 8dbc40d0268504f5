// NorvikCore/logging/database/internal/StoreReports.h - a logger's reports on the system console about a store that
// does not take its entries: each cause once, and the number of lost entries when the store takes entries again.
//
//   StoreReports reports("DDSQLiteLogger", path);
//   reports.failed("the disk is full");    // one line; no other until the cause changes
//   reports.lost();                        // one line with the first
//   reports.worked();                      // one line with the number, if entries were lost
//
// Threads: confined.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <string>

namespace norvik::detail {

class NK_EXPORT StoreReports {
 public:
  /// `store` is the name of the store on the console.
  StoreReports(const char* logger, std::string store);
  StoreReports(const StoreReports&) = delete;
  StoreReports& operator=(const StoreReports&) = delete;
  /// Reports the number of lost entries, if that was not reported yet.
  ~StoreReports();

  void failed(const std::string& reason);
  /// An entry was lost because the buffer is full.
  void lost();
  /// Entries were lost because the store refuses them at every attempt, such as an entry that is too long.
  void refused(std::uint64_t entries, const std::string& reason);
  /// A save has worked. That says nothing of deletions.
  void worked();
  void failedToDelete(const std::string& reason);
  /// A deletion has worked from beginning to end. A later failure is reported again.
  void deleted();
  /// In a child made by fork(): drops the failures of the parent.
  void forget() noexcept;

  [[nodiscard]] bool isFailing() const noexcept { return !failure_.empty(); }
  /// The number of entries lost since this object was created.
  [[nodiscard]] std::uint64_t lostCount() const noexcept { return lostCount_; }

 private:
  void sayLost();

  const char* const logger_;
  const std::string store_;
  std::string failure_;        // the last reported cause; empty: the store works
  std::string deleteFailure_;  // the last reported cause of a failed deletion
  std::uint64_t lostCount_ = 0;
  std::uint64_t unsaidCount_ = 0;  // the part of lostCount_ that was not reported yet
};

}  // namespace norvik::detail

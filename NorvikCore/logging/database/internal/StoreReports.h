// NorvikCore/logging/database/internal/StoreReports.h - what a logger says on the system console of the store that does
// not take its entries: each cause once, and how many entries were lost, once the store takes them again.
//
//   StoreReports reports("DDSQLiteLogger", path);
//   reports.failed("the disk is full");    // one line; no other until the cause changes
//   reports.lost();                        // one line with the first
//   reports.worked();                      // one line with the number, where any were lost
//
// Threads: confined.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <string>

namespace norvik::detail {

class NK_EXPORT StoreReports {
 public:
  /// `store` is how the console names the store.
  StoreReports(const char* logger, std::string store);
  StoreReports(const StoreReports&) = delete;
  StoreReports& operator=(const StoreReports&) = delete;
  /// Says how many were lost, if that was not said yet.
  ~StoreReports();

  void failed(const std::string& reason);
  /// An entry was lost because the buffer is full.
  void lost();
  /// Entries were lost because the store refuses them whenever they are sent, such as one that is too long.
  void refused(std::uint64_t entries, const std::string& reason);
  void worked();
  void failedToDelete(const std::string& reason);
  /// In a child made by fork(): what failed before is the parent's.
  void forget() noexcept;

  [[nodiscard]] bool isFailing() const noexcept { return !failure_.empty(); }
  /// All that were lost since this was made.
  [[nodiscard]] std::uint64_t lostCount() const noexcept { return lostCount_; }

 private:
  void sayLost();

  const char* const logger_;
  const std::string store_;
  std::string failure_;        // as it was said last; empty: the store works
  std::string deleteFailure_;  // the same of deleting
  std::uint64_t lostCount_ = 0;
  std::uint64_t unsaidCount_ = 0;  // of them, those whose number was not said yet
};

}  // namespace norvik::detail

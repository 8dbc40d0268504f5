#include "NorvikCore/logging/database/internal/StoreReports.h"

#include "NorvikCore/platform/foundation/NSLog.h"

#include <utility>

namespace norvik::detail {

StoreReports::StoreReports(const char* logger, std::string store) : logger_(logger), store_(std::move(store)) {}

StoreReports::~StoreReports() { sayLost(); }

void StoreReports::failed(const std::string& reason) {
  const std::string& why = reason.empty() ? "unknown" : reason;
  if (why == failure_) return;
  failure_ = why;
  NSLog("%s: entries cannot be saved to %@: %@; they are kept until they can be saved", logger_, store_, why);
}

void StoreReports::lost() {
  ++lostCount_;
  if (unsaidCount_++ == 0)
    NSLog("%s: the buffer for %@ is full; entries are lost until they can be saved", logger_, store_);
}

void StoreReports::refused(std::uint64_t entries, const std::string& reason) {
  lostCount_ += entries;
  NSLog("%s: %@ refuses some entries: %@; entries lost: %llu", logger_, store_, reason, entries);
}

void StoreReports::worked() {
  failure_.clear();
  sayLost();
}

void StoreReports::failedToDelete(const std::string& reason) {
  if (reason == deleteFailure_) return;
  deleteFailure_ = reason;
  NSLog("%s: old entries cannot be deleted from %@: %@", logger_, store_, reason);
}

void StoreReports::deleted() { deleteFailure_.clear(); }

void StoreReports::sayLost() {
  if (unsaidCount_ == 0) return;
  NSLog("%s: the buffer for %@ had no room; entries lost: %llu", logger_, store_, std::exchange(unsaidCount_, 0));
}

void StoreReports::forget() noexcept {
  failure_.clear();
  deleteFailure_.clear();
  lostCount_ = unsaidCount_ = 0;
}

}  // namespace norvik::detail

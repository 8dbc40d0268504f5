#include "NorvikCore/logging/internal/CrashFiles.h"

#include "NorvikCore/platform/kernel/FileStatus.h"

namespace norvik::detail {

constinit CrashFiles::File CrashFiles::files[mostFiles];

void CrashFiles::note(const DDLogger* logger, int descriptor, std::uint64_t device, std::uint64_t inode) noexcept {
  forget(logger);
  for (File& file : files) {
    const DDLogger* nobody = nullptr;
    if (!file.logger.compare_exchange_strong(nobody, logger)) continue;
    file.device = device;
    file.inode = inode;
    file.descriptor = descriptor;
    return;
  }
}

void CrashFiles::forget(const DDLogger* logger) noexcept {
  for (File& file : files) {
    if (file.logger.load(std::memory_order_relaxed) != logger) continue;
    file.descriptor = -1;
    file.logger = nullptr;
  }
}

CrashFiles::File* CrashFiles::find(const DDLogger* logger) noexcept {
  for (File& file : files) {
    if (file.logger.load() != logger || file.descriptor.load() < 0) continue;
    return kernel::isOpenFile(file.descriptor, file.device, file.inode) ? &file : nullptr;
  }
  return nullptr;
}

}  // namespace norvik::detail

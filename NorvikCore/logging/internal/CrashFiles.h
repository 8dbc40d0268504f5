// NorvikCore/logging/internal/CrashFiles.h - the open files of the file loggers. If loggers cannot write after a crash,
// the remaining messages are written to these files without them.
//
// Threads: note() and forget() on the logger's queue; everything else on any thread, also in signal handlers.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace norvik {
class DDLogger;
}

namespace norvik::detail {

class CrashFiles {
 public:
  struct File {
    std::atomic<const DDLogger*> logger{nullptr};
    std::atomic<int> descriptor{-1};
    std::atomic<std::uint64_t> device{0}, inode{0};
    // After a crash: the mailbox position up to which letters are written, and whether the report is written.
    std::atomic<std::uint64_t> position{0};
    std::atomic<bool> isReported{false};
  };
  static constexpr std::size_t mostFiles = 16;  // further files are not written to after a crash

  static void note(const DDLogger* logger, int descriptor, std::uint64_t device, std::uint64_t inode) noexcept;
  static void forget(const DDLogger* logger) noexcept;

  /// The file of a logger; null if it has none, or if the descriptor refers to another file by now.
  [[nodiscard]] static File* find(const DDLogger* logger) noexcept;

 private:
  static File files[mostFiles];
};

}  // namespace norvik::detail

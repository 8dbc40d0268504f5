// NorvikCore/logging/internal/CrashFiles.h - which loggers write to which open files, for a crash after which they can
// write no more: what remains is then written to their files without them.
//
// Threads: note() and forget() on the logger's queue; everything else on any thread, in signal handlers too.
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
    // After a crash: up to which position of the mailbox the letters are written, and whether the report is.
    std::atomic<std::uint64_t> position{0};
    std::atomic<bool> isReported{false};
  };
  static constexpr std::size_t mostFiles = 16;  // those beyond are not written to

  static void note(const DDLogger* logger, int descriptor, std::uint64_t device, std::uint64_t inode) noexcept;
  static void forget(const DDLogger* logger) noexcept;

  /// The file of a logger; null where it has none, or the descriptor is another file's by now.
  [[nodiscard]] static File* find(const DDLogger* logger) noexcept;

 private:
  static File files[mostFiles];
};

}  // namespace norvik::detail

// NorvikCore/platform/kernel/GatherWrite.h - several pieces of bytes, written by one system call.
//
//   const std::string_view line[] = {time, " ", text, "\n"};
//   std::size_t written = 0;
//   const std::int64_t deadline = kernel::monotonicNanoseconds() + 1'000'000'000;
//   const int error = kernel::writeGathered(STDERR_FILENO, line, deadline, written);
//
// For a descriptor to which other threads or processes write too: one system call keeps the pieces of a line together.
//
// Any thread, also in a forked child; allocates nothing and takes no lock.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace norvik::kernel {

/// More pieces are an error (EINVAL).
inline constexpr std::size_t mostGatheredPieces = 16;

/// Writes the pieces in order by one writev(). If a signal or a lack of room leaves a rest, further calls write it. 0,
/// or an error number; `written` is the number of bytes written. For a non-blocking descriptor the call waits until
/// `deadline` (monotonicNanoseconds()) and then returns ETIMEDOUT; for a blocking one it waits without limit: see
/// mayBlock(). SIGPIPE and SIGXFSZ do no harm, as with writeAll().
NK_EXPORT int writeGathered(int descriptor, std::span<const std::string_view> pieces, std::int64_t deadline,
                            std::size_t& written) noexcept;

/// Waits until the descriptor accepts or rejects data; false if the deadline (monotonicNanoseconds()) passes first. A
/// pipe that accepts data accepts 4096 bytes.
[[nodiscard]] NK_EXPORT bool awaitRoom(int descriptor, std::int64_t deadline) noexcept;

/// False if a write of that many bytes is accepted or rejected at once, whatever the readers do: to a regular file, to
/// an empty pipe with enough room, to a non-blocking descriptor, and to one that is not open. True for terminals.
[[nodiscard]] NK_EXPORT bool mayBlock(int descriptor, std::size_t size) noexcept;

}  // namespace norvik::kernel

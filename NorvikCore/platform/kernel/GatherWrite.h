// NorvikCore/platform/kernel/GatherWrite.h - several pieces of bytes, written by one system call.
//
//   const std::string_view line[] = {time, " ", text, "\n"};
//   std::size_t written = 0;
//   const int error = kernel::writeGathered(STDERR_FILENO, line, kernel::monotonicNanoseconds() + 1'000'000'000,
//   written);
//
// For lines on a descriptor that others write to as well: one call keeps a line together.
//
// Any thread, a forked child too; nothing is allocated and no lock is taken.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace norvik::kernel {

/// More pieces than this are an error (EINVAL).
inline constexpr std::size_t mostGatheredPieces = 16;

/// Writes the pieces in order by one writev(). What that leaves, because a signal came or there was no room for more,
/// is written by further ones. 0, or an error number; `written` tells how many bytes came through. A descriptor that
/// does not block is waited for until `deadline` (monotonicNanoseconds()), then the answer is ETIMEDOUT; one that
/// blocks is waited for without limit: see mayBlock(). SIGPIPE and SIGXFSZ do no harm, as with writeAll().
NK_EXPORT int writeGathered(int descriptor, std::span<const std::string_view> pieces, std::int64_t deadline,
                            std::size_t& written) noexcept;

/// Waits until the descriptor takes something, or refuses it; false when the deadline (monotonicNanoseconds()) passes
/// first. A pipe that takes something takes 4096 bytes.
[[nodiscard]] NK_EXPORT bool awaitRoom(int descriptor, std::int64_t deadline) noexcept;

/// False where a write of so many bytes is taken or refused at once, whatever the readers do: to a regular file, to an
/// empty pipe with room for it, to a descriptor that does not block, and to one that is not open. True for terminals.
[[nodiscard]] NK_EXPORT bool mayBlock(int descriptor, std::size_t size) noexcept;

}  // namespace norvik::kernel

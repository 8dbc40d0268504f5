// NorvikCore/platform/kernel/internal/DescriptorWait.h - waits for a connection that another library has opened.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik::kernel {

enum class Readiness : std::uint8_t { read, write, readOrWrite };

/// Waits until the descriptor can be read or written, or was closed by the other side. 0; ETIMEDOUT if `deadline`
/// (monotonicNanoseconds()) passed first; or an error number. Continues if a signal interrupts it. Any thread.
[[nodiscard]] NK_EXPORT int waitUntilReady(int descriptor, Readiness wanted, std::int64_t deadline) noexcept;

}  // namespace norvik::kernel

// NorvikCore/platform/kernel/internal/ThreadRevision.h - for code that caches the results of Thread.h for a thread.
#pragma once

#include <cstdint>

namespace norvik::kernel {

/// Changes when setCurrentThreadName() is called on the thread and, in a child made by fork(), when the thread gets its
/// new id. It does not change if the name is set by other means.
extern constinit thread_local std::uint32_t threadRevision __attribute__((tls_model("initial-exec")));

}  // namespace norvik::kernel

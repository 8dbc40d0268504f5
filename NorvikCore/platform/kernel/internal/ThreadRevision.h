// NorvikCore/platform/kernel/internal/ThreadRevision.h - for code that keeps what Thread.h says of the calling thread.
#pragma once

#include <cstdint>

namespace norvik::kernel {

/// Changes when the calling thread is named or, in a child made by fork(), when it gets its new id. A name that others
/// give shows only to who asks again.
extern constinit thread_local std::uint32_t threadRevision __attribute__((tls_model("initial-exec")));

}  // namespace norvik::kernel

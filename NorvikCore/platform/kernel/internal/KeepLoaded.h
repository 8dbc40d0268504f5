// NorvikCore/platform/kernel/internal/KeepLoaded.h - keeps a shared object in memory whose code and constants are kept.
#pragma once

namespace norvik::kernel {

/// The shared object in which the address lies is not unloaded any more, whatever dlclose is called with. Must not be
/// called under a lock that code run by dlopen takes.
void keepLoaded(const void* address) noexcept;

}  // namespace norvik::kernel

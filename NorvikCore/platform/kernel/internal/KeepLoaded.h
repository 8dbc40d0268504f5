// NorvikCore/platform/kernel/internal/KeepLoaded.h - prevents the unloading of a shared object whose code or constants
// are still in use.
#pragma once

namespace norvik::kernel {

/// From now on dlclose does not unload the shared object that contains the address. Do not call it under a lock that
/// code run by dlopen takes.
void keepLoaded(const void* address) noexcept;

}  // namespace norvik::kernel

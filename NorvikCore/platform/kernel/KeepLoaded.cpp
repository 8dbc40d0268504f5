#include "NorvikCore/platform/kernel/internal/KeepLoaded.h"

#include <dlfcn.h>
#include <link.h>

#include <atomic>

namespace norvik::kernel {
namespace {

const link_map* sharedObjectOf(const void* address) noexcept {
  dl_find_object found{};
  return _dl_find_object(const_cast<void*>(address), &found) == 0 ? found.dlfo_link_map : nullptr;
}

/// The shared object that was kept last. A shared object announces all its classes in a row.
constinit std::atomic<const link_map*> lastKept{nullptr};

}  // namespace

void keepLoaded(const void* address) noexcept {
  const link_map* object = sharedObjectOf(address);
  if (!object || object == lastKept.load(std::memory_order_relaxed)) return;
  // The linker keeps the library itself. The program has no name here, and is never unloaded.
  const bool isKept = object == sharedObjectOf(&lastKept) || !object->l_name || !*object->l_name ||
                      dlopen(object->l_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE) != nullptr;
  if (isKept) lastKept.store(object, std::memory_order_relaxed);
}

}  // namespace norvik::kernel

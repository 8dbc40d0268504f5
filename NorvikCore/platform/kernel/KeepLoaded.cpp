#include "NorvikCore/platform/kernel/internal/KeepLoaded.h"

#include <dlfcn.h>
#include <link.h>

namespace norvik::kernel {

void keepLoaded(const void* address) noexcept {
  dl_find_object found{};
  if (_dl_find_object(const_cast<void*>(address), &found) != 0) return;
  // The program itself has no name here, and is never unloaded.
  const char* name = found.dlfo_link_map->l_name;
  if (name && *name) dlopen(name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

}  // namespace norvik::kernel

#include "NorvikCore/platform/appkit/internal/PangoLibrary.h"

#include "NorvikCore/platform/foundation/internal/SharedLibrary.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <memory>

namespace norvik::detail {

const PangoLibrary& pangoLibrary() {
  return kernel::madeOnce([] {
    // This also searches the libraries that libpangocairo depends on.
    const SharedLibrary library("libpangocairo-1.0.so.0", "text cannot be measured or drawn without Pango");
    auto functions = std::make_unique<PangoLibrary>();
#define NK_PANGO_LOAD(name) library.find(#name, functions->name);
    NK_PANGO_FUNCTIONS(NK_PANGO_LOAD)
#undef NK_PANGO_LOAD
    return functions.release();
  });
}

}  // namespace norvik::detail

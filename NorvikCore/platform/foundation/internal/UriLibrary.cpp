#include "NorvikCore/platform/foundation/internal/UriLibrary.h"

#include "NorvikCore/platform/foundation/internal/SharedLibrary.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <memory>

namespace norvik::detail {

const UriLibrary& uriLibrary() {
  return kernel::madeOnce([] {
    const SharedLibrary library("liburiparser.so.1", "URLs cannot be read without uriparser");
    auto functions = std::make_unique<UriLibrary>();
#define NK_URI_LOAD(name) library.find(#name, functions->name);
    NK_URI_FUNCTIONS(NK_URI_LOAD)
#undef NK_URI_LOAD
    return functions.release();
  });
}

}  // namespace norvik::detail

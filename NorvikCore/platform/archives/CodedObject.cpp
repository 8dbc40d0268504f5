#include "NorvikCore/platform/archives/internal/CodedObject.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <array>

namespace norvik::detail {

const Method* decodingOperation(const Class& theClass) {
  const auto& selectors = kernel::madeOnce([] {
    return new std::array<SEL, 2>{makeForDecodingSelector, decodeSelector};
  });
  for (const SEL selector : selectors) {
    const Method* method = theClass.classMethod(selector);
    if (method && method->owner == &theClass) return method;
  }
  return nullptr;
}

NSString keyOfUnnamedValue(std::size_t n) { return NSString("$" + std::to_string(n)); }

}  // namespace norvik::detail

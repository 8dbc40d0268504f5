#include "NorvikCore/platform/object/Block.h"

#include "NorvikCore/platform/values/internal/raise.h"

namespace norvik {

NSBlock::~NSBlock() = default;

void detail::raiseAbsentClosure() { raise("NSInvalidArgumentException", "an absent closure was called"); }

}  // namespace norvik

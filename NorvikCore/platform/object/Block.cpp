#include "NorvikCore/platform/object/Block.h"

#include "NorvikCore/platform/values/NSException.h"

namespace norvik {

NSBlock::~NSBlock() = default;

void detail::raiseAbsentClosure() { NSException::raise(NSInvalidArgumentException, "an absent closure was called"); }

}  // namespace norvik

#include "NorvikCore/platform/runtime/Block.h"

namespace norvik {

NSBlock::~NSBlock() = default;

}  // namespace norvik

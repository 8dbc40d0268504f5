#include "NorvikCore/version.h"

namespace norvik {

const char* libraryVersion() noexcept { return NORVIKCORE_VERSION_STRING; }

}  // namespace norvik

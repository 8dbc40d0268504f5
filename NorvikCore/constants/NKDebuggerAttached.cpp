#include "NorvikCore/constants/NKDebuggerAttached.h"

namespace norvik {

constinit AtomicSwitch NKDebuggerAttached{false};

}  // namespace norvik

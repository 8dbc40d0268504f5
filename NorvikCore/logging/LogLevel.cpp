#include "NorvikCore/logging/LogLevel.h"

namespace norvik {

constinit AtomicLogLevel ddLogLevel{LOG_LEVEL_WARN};

}  // namespace norvik

#include "NorvikCore/logging/DDCrashHandler.h"

#include "NorvikCore/logging/internal/LogCrash.h"

namespace norvik {

void DDCrashHandler::install() { detail::LogCrash::install(); }
bool DDCrashHandler::isInstalled() noexcept { return detail::LogCrash::isInstalled(); }
void DDCrashHandler::coverThread() { detail::LogCrash::cover(); }

}  // namespace norvik

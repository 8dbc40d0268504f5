#include "NorvikCore/logging/DDLogger.h"

namespace norvik {

DDLogFormatter::~DDLogFormatter() = default;
void DDLogFormatter::didAddToLogger(DDLogger&) {}
void DDLogFormatter::willRemoveFromLogger(DDLogger&) {}

DDLogger::~DDLogger() = default;
dispatch_queue_t DDLogger::loggerQueue() { return nullptr; }
std::optional<NSString> DDLogger::loggerName() { return std::nullopt; }
void DDLogger::didAddLogger() {}
void DDLogger::willRemoveLogger() {}
void DDLogger::flush() {}
Ref<DDLogFormatter> DDLogger::logFormatter() { return nullptr; }
void DDLogger::setLogFormatter(const Ref<DDLogFormatter>&) {}

}  // namespace norvik

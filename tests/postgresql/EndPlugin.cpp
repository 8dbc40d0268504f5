// The plug-in that EndHost.cpp loads. It logs to the PostgreSQL server of the connection string.
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/postgresql/DDPostgreSQLLogger.h"

using namespace norvik;

extern "C" [[gnu::visibility("default")]] void logTo(const char* connection);

void logTo(const char* connection) {
  ddLogLevel = LOG_LEVEL_VERBOSE;
  DDLog::addLogger(DDPostgreSQLLogger::initWithConnectionString(NSString(connection)));
  DDLogInfo("last");
}

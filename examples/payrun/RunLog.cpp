#include "RunLog.h"

#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"

namespace payrun {

using namespace norvik;

RunLog::RunLog(const std::optional<std::filesystem::path>& folder) {
  ddLogLevel = LOG_LEVEL_INFO;
  if (folder) {
    DDLog::addLogger(DDFileLogger::initWithLogFileManager(
        DDLogFileManagerDefault::initWithLogsDirectory(NSString(folder->string()))));
  } else {
    DDLog::addLogger(make<DDFileLogger>());
  }
}

RunLog::~RunLog() { DDLog::flushLog(); }

}  // namespace payrun

#include "RunLog.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/platform/foundation/NSUUID.h"

namespace payrun {

using namespace norvik;

namespace {

/// The last mebibyte of a file, for another process may write to it at the same time; empty where it cannot be read. A
/// pipe of that name, which others may have put there, is not waited for.
std::string endOf(const std::string& path) {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path, unknown)) return "";
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff size = file ? static_cast<std::streamoff>(file.tellg()) : 0;
  const std::streamoff wanted = std::min<std::streamoff>(size, 1 << 20);
  std::string text(static_cast<std::size_t>(wanted), '\0');
  file.seekg(size - wanted);
  file.read(text.data(), wanted);
  return text;
}

}  // namespace

RunLog::RunLog(const std::optional<std::filesystem::path>& folder) {
  ddLogLevel = LOG_LEVEL_INFO;
  const auto manager = folder ? DDLogFileManagerDefault::initWithLogsDirectory(NSString(folder->string()))
                              : make<DDLogFileManagerDefault>();
  if (!manager) throw std::runtime_error("a log needs the name of its folder");
  const auto logger = DDFileLogger::initWithLogFileManager(manager);
  logger->setLogFormatter(make<DDLogLineFormatter>());  // names and amounts come from files of others
  logger->setMaximumFileSize(0);  // where files are as small as may be, the first warnings of a large run would go
  DDLog::addLogger(logger);
  // A logger whose file cannot be opened drops its lines, so that logging never stops its caller.
  // The identifier makes the line this run's: in a container every run may be process 1.
  const std::string first =
      "begun by process " + std::to_string(::getpid()) + ", run " + std::string(NSUUID::UUID()->UUIDString().view());
  DDLogInfo("%s", first.c_str());
  DDLog::flushLog();
  for (const NSString& path : manager->sortedLogFilePaths()) {
    if (endOf(path.fileSystemRepresentation()).find(first) != std::string::npos) return;
  }
  throw std::runtime_error("no log can be written in " + std::string(manager->logsDirectory().view()));
}

RunLog::~RunLog() { DDLog::flushLog(); }

}  // namespace payrun

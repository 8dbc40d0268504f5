#include "RunLog.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "NorvikCore/logging/DDASLLogger.h"
#include "NorvikCore/logging/DDCrashHandler.h"
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/logging/DDTTYLogger.h"
#include "NorvikCore/logging/database/DDSQLiteLogger.h"
#include "NorvikCore/platform/foundation/NSUUID.h"
#ifdef PAYRUN_POSTGRESQL
#include "NorvikCore/postgresql/DDPostgreSQLLogger.h"
#endif

namespace payrun {

using namespace norvik;

namespace {

/// The last mebibyte of a file. The whole file is not needed, but another process may append to it at the same time.
/// Empty if the file cannot be read. A pipe of that name, which others may have created, is not opened.
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

void addConsole() {
  const Ref<DDTTYLogger>& console = DDTTYLogger::sharedInstance();
  const char* const noColor = std::getenv("NO_COLOR");
  console->setColorsEnabled(::isatty(STDERR_FILENO) == 1 && !(noColor && *noColor));
  console->setLogFormatter(make<DDLogLineFormatter>());  // escapes control characters in foreign texts
  DDLog::addLogger(console);
}

void addServer([[maybe_unused]] const std::string& connection) {
#ifdef PAYRUN_POSTGRESQL
  DDLog::addLogger(DDPostgreSQLLogger::initWithConnectionString(NSString(connection)));
#else
  throw std::runtime_error("this payrun was built without PostgreSQL");
#endif
}

/// Adds the logger, logs the first line, and verifies that it is in a file.
void addFiles(const std::optional<std::filesystem::path>& folder, const std::string& first) {
  const auto manager = folder ? DDLogFileManagerDefault::initWithLogsDirectory(NSString(folder->string()))
                              : make<DDLogFileManagerDefault>();
  if (!manager) throw std::runtime_error("a log needs the name of its folder");
  const auto logger = DDFileLogger::initWithLogFileManager(manager);
  logger->setLogFormatter(make<DDLogLineFormatter>());
  logger->setMaximumFileSize(0);  // no limit: with small files, the first warnings of a large run would be deleted
  DDLog::addLogger(logger);
  // The line must be verified, because a logger that cannot open its file drops its lines without an error.
  DDLogInfo("%s", first.c_str());
  DDLog::flushLog();
  for (const NSString& path : manager->sortedLogFilePaths()) {
    if (endOf(path.fileSystemRepresentation()).find(first) != std::string::npos) return;
  }
  throw std::runtime_error("no log can be written in " + std::string(manager->logsDirectory().view()));
}

}  // namespace

RunLog::RunLog(const LogChoice& choice) {
  ddLogLevel = LOG_LEVEL_INFO;
  if (choice.console) addConsole();
  if (choice.syslog) DDLog::addLogger(DDASLLogger::sharedInstance());
  if (choice.sqlite) DDLog::addLogger(DDSQLiteLogger::initWithPath(NSString(choice.sqlite->string())));
  if (choice.postgres) addServer(*choice.postgres);
  // The identifier makes the line unique, because in a container every run may be process 1.
  const std::string first =
      "begun by process " + std::to_string(::getpid()) + ", run " + std::string(NSUUID::UUID()->UUIDString().view());
  if (choice.file) {
    addFiles(choice.folder, first);
  } else {
    DDLogInfo("%s", first.c_str());
  }
  DDCrashHandler::install();
}

RunLog::~RunLog() { DDLog::flushLog(); }

}  // namespace payrun

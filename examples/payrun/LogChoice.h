// examples/payrun/LogChoice.h - the choice of loggers for a run.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace payrun {

struct LogChoice {
  bool console = false;
  bool file = false;
  std::optional<std::filesystem::path> folder =
      std::nullopt;  // of the log files; absent: the library's folder for this program's logs
  std::optional<std::filesystem::path> sqlite = std::nullopt;
  std::optional<std::string> postgres = std::nullopt;  // a connection string
  bool syslog = false;
};

/// Parses "console", "file", "sqlite=PATH", "postgres=URL" and "syslog", separated by commas. A comma that none of
/// these follows is a part of the path or address. Throws UsageError.
LogChoice parseLogChoice(std::string_view list);

}  // namespace payrun

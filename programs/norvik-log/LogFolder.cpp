#include "LogFolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>
#include <system_error>
#include <tuple>
#include <utility>

#include "LogLine.h"
#include "NorvikCore/logging/DDLogFileInfo.h"

namespace norvik_log {
namespace {

double millisecondsOf(const std::optional<norvik::Date>& date) {
  return date ? date->timeIntervalSince1970() * 1000 : 0;
}

/// The time of the first line, if that line begins with one.
std::optional<double> firstTime(const std::string& path, WallClock clock) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return std::nullopt;
  char bytes[longestHeadTime + 1];
  const ssize_t count = ::pread(descriptor, bytes, sizeof bytes, 0);
  ::close(descriptor);
  if (count <= 0) return std::nullopt;
  const auto time = headTime(bytes, bytes + count);
  if (!time) return std::nullopt;
  if (time->offsetSeconds) return static_cast<double>(time->milliseconds - *time->offsetSeconds * std::int64_t{1000});
  return static_cast<double>(clock.instants(time->milliseconds).first);
}

}  // namespace

bool isLogFileName(const std::string& name) noexcept {
  constexpr std::size_t prefix = 4, digits = 6;
  return name.size() >= prefix + digits && name.starts_with("log-") &&
         name.find_first_not_of("0123456789ABCDEF", prefix) >= prefix + digits;
}

std::vector<std::string> logFilesIn(const std::string& folder, const WallClock& logClock, Troubles& troubles) {
  using Key = std::tuple<double, double, double, std::string>;
  std::vector<Key> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (!isLogFileName(entry.path().filename().string())) continue;
    const std::string path = entry.path().string();
    std::error_code unknown;
    const std::filesystem::file_type type = entry.status(unknown).type();
    if (type == std::filesystem::file_type::not_found) continue;  // removed since it was listed
    if (type != std::filesystem::file_type::regular) {
      troubles.report(path, "is not a regular file, and is left out");
      continue;
    }
    const auto info = norvik::DDLogFileInfo::logFileWithPath(norvik::NSString(path));
    const double created = millisecondsOf(info->creationDate());
    files.emplace_back(firstTime(path, logClock).value_or(created), created, millisecondsOf(info->modificationDate()),
                       path);
  }
  std::sort(files.begin(), files.end());
  std::vector<std::string> paths;
  for (const Key& file : files) paths.push_back(std::get<std::string>(file));
  return paths;
}

FolderSource::FolderSource(const std::string& folder, const Reading& reading) : reading_(reading) {
  try {
    paths_ = logFilesIn(folder, reading.logClock, reading.troubles);
    if (paths_.empty())
      reading.troubles.report(folder,
                              "has no log files; their names begin with \"log-\" and six characters of 0-9 and A-F");
  } catch (const std::system_error& error) {
    reading.troubles.report(folder, "cannot be listed", error.code().value());
  }
}

bool FolderSource::next(Batch& batch) {
  for (;;) {
    if (file_ && file_->next(batch)) return true;
    if (nextPath_ == paths_.size()) return false;
    file_ = std::make_unique<FileSource>(paths_[nextPath_], reading_);
    ++nextPath_;
  }
}

}  // namespace norvik_log

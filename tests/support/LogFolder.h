// tests/support/LogFolder.h - a folder of log files for a test: a manager for it, and the content of its files.
#pragma once

#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

namespace norvik::test {

/// A manager that records the paths of archived and rolled files.
class RecordingManager : public DDLogFileManagerDefault {
  NK_OBJECT(RecordingManager, DDLogFileManagerDefault)
  explicit RecordingManager(const std::string& folder) : DDLogFileManagerDefault(NSString(folder)) {}

  void didArchiveLogFile(const NSString& path) override { note(archived_, path); }
  void didRollAndArchiveLogFile(const NSString& path) override { note(rolled_, path); }

  [[nodiscard]] std::vector<std::string> archived() const { return read(archived_); }
  [[nodiscard]] std::vector<std::string> rolled() const { return read(rolled_); }

 private:
  void note(std::vector<std::string>& paths, const NSString& path) {
    const std::lock_guard lock(mutex_);
    paths.push_back(path.str());
  }
  [[nodiscard]] std::vector<std::string> read(const std::vector<std::string>& paths) const {
    const std::lock_guard lock(mutex_);
    return paths;
  }
  mutable std::mutex mutex_;
  std::vector<std::string> archived_, rolled_;
};

inline std::vector<std::string> linesOf(const std::string& path) {
  std::vector<std::string> lines;
  std::istringstream text(TemporaryFolder::read(path));
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

/// The paths of the visible files of a folder, in any order.
inline std::vector<std::string> filesIn(const std::string& folder) {
  std::vector<std::string> paths;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
    if (entry.path().filename().string()[0] != '.') paths.push_back(entry.path().string());
  }
  return paths;
}

/// The lines of all files of a folder.
inline std::vector<std::string> allLinesIn(const std::string& folder) {
  std::vector<std::string> lines;
  for (const std::string& path : filesIn(folder)) {
    for (std::string& line : linesOf(path)) lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace norvik::test

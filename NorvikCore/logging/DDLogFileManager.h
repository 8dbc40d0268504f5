// NorvikCore/logging/DDLogFileManager.h - where log files are, how they are named, and which old ones go: what a file
// logger asks of its manager.
//
// DDLogFileManagerDefault is one; an application with other wishes derives its own.
//
// Threads: called on the file logger's queue, and by whoever else calls it.
#pragma once

#include "NorvikCore/logging/DDLogFileInfo.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <vector>

namespace norvik {

class NK_EXPORT DDLogFileManager : public NSObject {
  NK_OBJECT(DDLogFileManager, NSObject)

  /// How many archived files are kept; 0: all.
  [[nodiscard]] virtual std::uint64_t maximumNumberOfLogFiles() const = 0;
  virtual void setMaximumNumberOfLogFiles(std::uint64_t number) = 0;

  [[nodiscard]] virtual NSString logsDirectory() = 0;

  /// The log files in the folder, in the folder's order.
  [[nodiscard]] virtual std::vector<NSString> unsortedLogFilePaths() = 0;
  [[nodiscard]] virtual std::vector<NSString> unsortedLogFileNames() = 0;
  [[nodiscard]] virtual std::vector<Ref<DDLogFileInfo>> unsortedLogFileInfos() = 0;
  /// The same, newest first.
  [[nodiscard]] virtual std::vector<NSString> sortedLogFilePaths() = 0;
  [[nodiscard]] virtual std::vector<NSString> sortedLogFileNames() = 0;
  [[nodiscard]] virtual std::vector<Ref<DDLogFileInfo>> sortedLogFileInfos() = 0;

  /// Makes an empty log file and gives its path, also where that failed.
  [[nodiscard]] virtual NSString createNewLogFile() = 0;

  // Optional: what is not overridden does nothing, or answers the usual.

  /// The permissions of new log files, 0600 unless overridden. Where others than the owner may write (0020, 0002), a
  /// file logger writes to files of other users too.
  [[nodiscard]] virtual std::uint32_t logFilePermissions() const;
  /// A file of an earlier run was found too large or too old, and archived.
  virtual void didArchiveLogFile(const NSString& logFilePath);
  /// The current file was closed and archived.
  virtual void didRollAndArchiveLogFile(const NSString& logFilePath);

 protected:
  ~DDLogFileManager() override;
};

}  // namespace norvik

// NorvikCore/logging/DDLogFileManager.h - the interface of a file logger to its manager, which decides where log files
// are, how they are named, and which old ones are removed.
//
// DDLogFileManagerDefault implements the interface. An application that only changes some rules derives from that class
// and overrides single operations; an application with its own storage derives from this one.
//
// Threads: called on the file logger's queue, and on the threads of other callers.
#pragma once

#include "NorvikCore/logging/DDLogFileInfo.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <vector>

namespace norvik {

class NK_EXPORT DDLogFileManager : public NSObject {
  NK_OBJECT(DDLogFileManager, NSObject)

  /// How many archived files are kept; 0 keeps all.
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

  /// Creates an empty log file and returns its path, also if that failed.
  [[nodiscard]] virtual NSString createNewLogFile() = 0;

  // Optional. The default does nothing, or returns the value stated.

  /// The permissions of new log files; 0600 by default. If they let others than the owner write (0020, 0002), a file
  /// logger also writes to files of other users.
  [[nodiscard]] virtual std::uint32_t logFilePermissions() const;
  /// Called when a file of an earlier run was too large or too old, and was archived.
  virtual void didArchiveLogFile(const NSString& logFilePath);
  /// Called when the current file was closed and archived. Not called if that file was deleted, moved or replaced
  /// before: the path then names no file, or a file of another program.
  virtual void didRollAndArchiveLogFile(const NSString& logFilePath);

 protected:
  ~DDLogFileManager() override;
};

}  // namespace norvik

// NorvikCore/logging/DDLogFileManagerDefault.h - manages log files named "log-3F2504.txt" in one folder, and keeps the
// newest of them.
//
//   auto manager = DDLogFileManagerDefault::initWithLogsDirectory("/var/log/pay");
//   manager->setMaximumNumberOfLogFiles(7);
//   manager->sortedLogFilePaths();       // newest first
//
// A file is a log file if its name begins with "log-" and six characters of 0-9 and A-F. The rest of the name does not
// matter, nor does the program that made the file. Surplus files are removed by their names alone, so do not keep other
// files with such names in a folder of logs. Folders with such names are listed and counted, but not removed. Of a
// symbolic link the link is removed, not its target.
//
// If files have the same creation date, a file that is not archived sorts before an archived one, and then the file
// that was changed last comes first. So the file in use is never taken for an old one.
//
// Only this user may read and write new files and folders. For a log that a group may read, set 0640 and 0750 before
// the first message.
//
// If neither the environment nor an account gives the user a home, the log folder is "Logs/<process>" in the temporary
// folder, which users share. "Logs" is used only if it belongs to this user, is not a link, and no other user may write
// to it. If a folder or file of that name is unusable, the folder is "Logs-<user number>", or "Logs-<user number>-2" to
// "-9". If all of these are unusable, this is reported and lines are lost. The check is made before each use, so log
// files may move to the next name if another user creates "Logs" after the user's own was cleaned up. To keep other
// users from renaming the folder, the temporary folder must have the sticky bit, as /tmp has.
//
// Threads: synchronised.
// Errors:  a folder that cannot be created or listed, and a file that cannot be created, are reported on the system
//          console. The report is repeated only after a success or for another cause. Files that cannot be removed are
//          left, without a report. In a folder that may not be listed (0300) each run begins a file, and no file is
//          removed.
#pragma once

#include "NorvikCore/logging/DDLogFileManager.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

namespace norvik {

namespace kernel {
struct FileStatus;
}

class NK_EXPORT DDLogFileManagerDefault : public DDLogFileManager {
  NK_OBJECT(DDLogFileManagerDefault, DDLogFileManager)

  /// If `logsDirectory` is absent, the folder is "Logs/<process>" in the user's library folder, or in the temporary
  /// folder (see above) if no home is known. An empty name is refused: that is reported on the system console, and
  /// make() and initWithLogsDirectory() return an empty Ref.
  explicit DDLogFileManagerDefault(std::optional<NSString> logsDirectory = std::nullopt);

  [[nodiscard]] static Ref<DDLogFileManagerDefault> initWithLogsDirectory(std::optional<NSString> logsDirectory);

  /// Initially 5. A change removes surplus files later, on the logging queue. Observable.
  [[nodiscard]] std::uint64_t maximumNumberOfLogFiles() const override;
  void setMaximumNumberOfLogFiles(std::uint64_t number) override;
  NK_COMPUTED_PROPERTY_WITH_SETTER(std::uint64_t, maximumNumberOfLogFiles, setMaximumNumberOfLogFiles)

  /// The permissions of files created from then on, independent of the process's umask; initially 0600. More than nine
  /// bits, or less than 0600, raises NSInvalidArgumentException: write the number in octal.
  [[nodiscard]] std::uint32_t logFilePermissions() const override;
  void setLogFilePermissions(std::uint32_t permissions);
  /// The permissions of the folder if the manager creates it, independent of the process's umask. Missing folders above
  /// it get the same permissions less the umask. Initially 0700; more than nine bits, or less than 0700, raises
  /// NSInvalidArgumentException.
  [[nodiscard]] std::uint32_t logsDirectoryPermissions() const;
  void setLogsDirectoryPermissions(std::uint32_t permissions);

  [[nodiscard]] virtual NSString defaultLogsDirectory() const;
  /// Creates the folder, and the folders above it, if it does not exist. The default folder in the temporary folder may
  /// change from call to call.
  [[nodiscard]] NSString logsDirectory() override;

  [[nodiscard]] virtual bool isLogFile(const NSString& fileName) const;
  [[nodiscard]] std::vector<NSString> unsortedLogFilePaths() override;
  [[nodiscard]] std::vector<NSString> unsortedLogFileNames() override;
  [[nodiscard]] std::vector<Ref<DDLogFileInfo>> unsortedLogFileInfos() override;
  [[nodiscard]] std::vector<NSString> sortedLogFilePaths() override;
  [[nodiscard]] std::vector<NSString> sortedLogFileNames() override;
  [[nodiscard]] std::vector<Ref<DDLogFileInfo>> sortedLogFileInfos() override;

  /// The first six characters of a new UUID. A subclass returns a different text each time: if files exist for a
  /// thousand in a row, createNewLogFile() reports that and returns the path of the last, whose file stays unchanged.
  [[nodiscard]] virtual NSString generateShortUUID() const;
  [[nodiscard]] NSString createNewLogFile() override;
  /// Keeps the newest archived files, as many as maximumNumberOfLogFiles() returns, and the file in use.
  virtual void deleteOldLogFiles();

  void observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange& change,
                              void* context) override;

 protected:
  ~DDLogFileManagerDefault() override;
  bool init() override;

 private:
  friend class DDFileLogger;

  /// True if `status` is that of the last file created by this object.
  [[nodiscard]] bool didMake(const kernel::FileStatus& status) const;
  /// True unless the log folder could not be created or used at the last attempt.
  [[nodiscard]] bool hasFolder() const;
  void reportFolder(const Ref<NSError>& error);
  void reportListing(const Ref<NSError>& error);
  void reportFile(const NSString& path, int error);

  std::optional<NSString> _logsDirectory;  // absent until init() if the default folder is used
  bool isInTemporaryFolder_ = false;       // the folder is then chosen at each use
  std::atomic<std::uint64_t> maximumNumberOfLogFiles_{5};
  std::atomic<std::uint32_t> logFilePermissions_{0600}, logsDirectoryPermissions_{0700};
  mutable Mutex mutex_;
  NSString newestPath_ NK_GUARDED_BY(mutex_);  // of the last file created by this object
  // The identity of that file. It includes the creation time, because the inode number of a removed file is reused.
  std::uint64_t newestDevice_ NK_GUARDED_BY(mutex_) = 0, newestInode_ NK_GUARDED_BY(mutex_) = 0;
  std::int64_t newestCreation_ NK_GUARDED_BY(mutex_) = 0;
  NSString folderFailure_ NK_GUARDED_BY(mutex_);           // the last report; empty while there is a usable folder
  int fileFailure_ NK_GUARDED_BY(mutex_) = 0;              // the last error reported; 0 while files can be created
  std::int64_t listingFailure_ NK_GUARDED_BY(mutex_) = 0;  // the last error reported; 0 while the folder can be listed
};

}  // namespace norvik

// NorvikCore/logging/DDLogFileManagerDefault.h - log files named "log-3F2504.txt" in one folder, of which the newest
// are kept.
//
//   auto manager = DDLogFileManagerDefault::initWithLogsDirectory("/var/log/pay");
//   manager->setMaximumNumberOfLogFiles(7);
//   manager->sortedLogFilePaths();       // newest first
//
// A name counts as a log file's when it begins with "log-" and six characters of 0-9 and A-F follow; what comes after
// them does not matter, nor does it matter who made it: surplus files go by their names alone, so a folder of logs is
// no place for other things called so. Folders stay, though they are listed and counted if they have such a name; of a
// link the link is removed, not what it leads to.
//
// Files that share one creation date are ordered so that a file which is not archived comes first, then by their last
// change: so the file in use is never taken for an old one.
//
// Files are made readable and writable by this user alone, and so are the folders. For a log that a group may read, set
// 0640 and 0750 before the first message.
//
// A user whom neither the environment nor an account gives a home has the log folder in the temporary folder, which
// users share: "Logs/<process>". Only a "Logs" there counts that belongs to this user, is no link, and that no other
// user may write to. Where another is in the way the folder is "Logs-<user number>", or "Logs-<user number>-2" to "-9";
// where all are taken, that is reported and lines are lost. It is looked at before each use, so log files may move to
// the next name when another user takes the place of one that was cleaned up. That others cannot rename the folder is
// the temporary folder's business: it must have the sticky bit, as /tmp has.
//
// Threads: synchronised.
// Errors:  a folder that cannot be made or listed and a file that cannot be made are reported on the system console,
//          once until it worked or the cause is another; files that cannot be removed are left as they are, silently.
//          In a folder that may not be listed (0300) each run begins a file, and none is removed.
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

  /// Absent: the folder "Logs", and in it the one named after the process, in the user's library folder, or in the
  /// temporary folder (see above) where no home is known. An empty name is refused: the console says so, and make() and
  /// initWithLogsDirectory() give an empty Ref.
  explicit DDLogFileManagerDefault(std::optional<NSString> logsDirectory = std::nullopt);

  [[nodiscard]] static Ref<DDLogFileManagerDefault> initWithLogsDirectory(std::optional<NSString> logsDirectory);

  /// 5 unless set. A change removes surplus files soon, on the logging queue; observable.
  [[nodiscard]] std::uint64_t maximumNumberOfLogFiles() const override;
  void setMaximumNumberOfLogFiles(std::uint64_t number) override;
  NK_COMPUTED_PROPERTY_WITH_SETTER(std::uint64_t, maximumNumberOfLogFiles, setMaximumNumberOfLogFiles)

  /// Of files made from then on, whatever the process's umask; 0600 unless set. More than nine bits, or less than 0600,
  /// raises NSInvalidArgumentException: write the number in octal.
  [[nodiscard]] std::uint32_t logFilePermissions() const override;
  void setLogFilePermissions(std::uint32_t permissions);
  /// Of the folder where it is made here, whatever the process's umask; those above it that are missing get the same
  /// less the umask. 0700 unless set; more than nine bits, or less than 0700, raises NSInvalidArgumentException.
  [[nodiscard]] std::uint32_t logsDirectoryPermissions() const;
  void setLogsDirectoryPermissions(std::uint32_t permissions);

  [[nodiscard]] virtual NSString defaultLogsDirectory() const;
  /// Made, with the folders above it, where it does not exist. The default folder in the temporary one may change.
  [[nodiscard]] NSString logsDirectory() override;

  [[nodiscard]] virtual bool isLogFile(const NSString& fileName) const;
  [[nodiscard]] std::vector<NSString> unsortedLogFilePaths() override;
  [[nodiscard]] std::vector<NSString> unsortedLogFileNames() override;
  [[nodiscard]] std::vector<Ref<DDLogFileInfo>> unsortedLogFileInfos() override;
  [[nodiscard]] std::vector<NSString> sortedLogFilePaths() override;
  [[nodiscard]] std::vector<NSString> sortedLogFileNames() override;
  [[nodiscard]] std::vector<Ref<DDLogFileInfo>> sortedLogFileInfos() override;

  /// The first six characters of a new UUID. A subclass gives another each time: where a thousand in a row are taken,
  /// createNewLogFile() reports that and gives the path of the last, whose file stays as it is.
  [[nodiscard]] virtual NSString generateShortUUID() const;
  [[nodiscard]] NSString createNewLogFile() override;
  /// Keeps the newest archived files, as many as maximumNumberOfLogFiles() says, and the file in use.
  virtual void deleteOldLogFiles();

  void observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange& change,
                              void* context) override;

 protected:
  ~DDLogFileManagerDefault() override;
  bool init() override;

 private:
  friend class DDFileLogger;

  /// The last file made here.
  [[nodiscard]] bool didMake(const kernel::FileStatus& status) const;
  /// Of a folder that is made here or was found: is it one to put files into?
  [[nodiscard]] bool hasFolder() const;
  void reportFolder(const Ref<NSError>& error);
  void reportListing(const Ref<NSError>& error);
  void reportFile(const NSString& path, int error);

  std::optional<NSString> _logsDirectory;  // the default one until init()
  bool isInTemporaryFolder_ = false;       // it is chosen anew each time
  std::atomic<std::uint64_t> maximumNumberOfLogFiles_{5};
  std::atomic<std::uint32_t> logFilePermissions_{0600}, logsDirectoryPermissions_{0700};
  mutable Mutex mutex_;
  NSString newestPath_ NK_GUARDED_BY(mutex_);  // the last file made here
  // Its identity, with the time because the number of a removed file is used again.
  std::uint64_t newestDevice_ NK_GUARDED_BY(mutex_) = 0, newestInode_ NK_GUARDED_BY(mutex_) = 0;
  std::int64_t newestCreation_ NK_GUARDED_BY(mutex_) = 0;
  NSString folderFailure_ NK_GUARDED_BY(mutex_);           // the last report; empty while there is a folder
  int fileFailure_ NK_GUARDED_BY(mutex_) = 0;              // the last error reported; 0 while files can be made
  std::int64_t listingFailure_ NK_GUARDED_BY(mutex_) = 0;  // the same while the folder can be listed
};

}  // namespace norvik

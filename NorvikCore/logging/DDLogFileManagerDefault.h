// NorvikCore/logging/DDLogFileManagerDefault.h - log files named "log-3F2504.txt" in one folder, of which the newest
// are kept.
//
//   auto manager = DDLogFileManagerDefault::initWithLogsDirectory("/var/log/pay");
//   manager->setMaximumNumberOfLogFiles(7);
//   manager->sortedLogFilePaths();       // newest first
//
// A name counts as a log file's when it begins with "log-" and six characters of 0-9 and A-F follow; what comes after
// them does not matter, nor does it matter who made it: surplus files go by their names alone, so a folder of logs is
// no place for other things called so. Folders stay, though they are listed and counted if they have such a name.
//
// Files that share one creation date are ordered so that a file which is not archived comes first, then by their last
// change: so the file in use is never taken for an old one.
//
// Threads: synchronised.
// Errors:  a folder that cannot be made is reported on the system console; files that cannot be listed, made or removed
//          are left as they are, silently.
#pragma once

#include "NorvikCore/logging/DDLogFileManager.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

namespace norvik {

class NK_EXPORT DDLogFileManagerDefault : public DDLogFileManager {
  NK_OBJECT(DDLogFileManagerDefault, DDLogFileManager)

  /// Absent: the folder "Logs", and in it the one named after the process, in the user's library folder.
  explicit DDLogFileManagerDefault(std::optional<NSString> logsDirectory = std::nullopt);

  [[nodiscard]] static Ref<DDLogFileManagerDefault> initWithLogsDirectory(std::optional<NSString> logsDirectory);

  /// 5 unless set. A change removes surplus files soon, on the logging queue; observable.
  [[nodiscard]] std::uint64_t maximumNumberOfLogFiles() const override;
  void setMaximumNumberOfLogFiles(std::uint64_t number) override;
  NK_COMPUTED_PROPERTY_WITH_SETTER(std::uint64_t, maximumNumberOfLogFiles, setMaximumNumberOfLogFiles)

  [[nodiscard]] virtual NSString defaultLogsDirectory() const;
  /// Made, with the folders above it, where it does not exist.
  [[nodiscard]] NSString logsDirectory() override;

  [[nodiscard]] virtual bool isLogFile(const NSString& fileName) const;
  [[nodiscard]] std::vector<NSString> unsortedLogFilePaths() override;
  [[nodiscard]] std::vector<NSString> unsortedLogFileNames() override;
  [[nodiscard]] std::vector<Ref<DDLogFileInfo>> unsortedLogFileInfos() override;
  [[nodiscard]] std::vector<NSString> sortedLogFilePaths() override;
  [[nodiscard]] std::vector<NSString> sortedLogFileNames() override;
  [[nodiscard]] std::vector<Ref<DDLogFileInfo>> sortedLogFileInfos() override;

  /// The first six characters of a new UUID.
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
  std::optional<NSString> _logsDirectory;  // the default one until init()
  std::atomic<std::uint64_t> maximumNumberOfLogFiles_{5};
  static Mutex mutex_;  // of all managers, since no fork may find it taken
  static const bool takenAtForks_;
  NSString newestPath_ NK_GUARDED_BY(mutex_);  // the last file made here
};

}  // namespace norvik

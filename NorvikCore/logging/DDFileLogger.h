// NorvikCore/logging/DDFileLogger.h - writes each message as one UTF-8 line to a file in its manager's folder, and
// starts a new file when the current one is too large or too old.
//
//   auto logger = make<DDFileLogger>();
//   logger->setMaximumFileSize(4 << 20);
//   logger->logFileManager()->setMaximumNumberOfLogFiles(7);
//   DDLog::addLogger(logger);
//
// The first message opens the newest file of the folder, unless that file is archived, too large or too old. Every line
// is appended to the end of the file, so that processes may share a file. If the file is deleted or moved, the logger
// detects this within half a second or 500 lines, and continues in another file. A file ends with a whole line and is
// slightly larger than the limit. If a killed process left part of a line, the logger first ends that line with a line
// feed. To a file that it may not read (0200) and that is not empty, it always appends that line feed, because it
// cannot see how the file ends.
//
// The logger, also as root, writes only to a regular file that belongs to this user and has one name (hard link). If
// the newest file is anything else (a symbolic link, a folder, a named pipe, a second name of another file, a file of
// another user, a file without permission), the reason is reported once on the console, and another file is begun.
// Files of other users are written to if the manager's logFilePermissions() let others than the owner write. The folder
// itself may be a link.
//
// Once a synchronous log call has returned, its line is in the file, even if the process then crashes.
//
// Ownership: retains its manager. Owns the open file, and closes it without archiving it when the logger is destroyed.
// Threads:   settings and rollLogFile() may be called on any thread. Reading a setting waits for the logging queue and
//            then for the logger's queue, and must not be done on either. Call currentLogFileInfo(),
//            currentLogFileHandle() and the operations named maybe..., ...Now and schedule... on the logger's queue
//            only.
// Errors:    an NSException while a line is written is caught. The line is lost, and the exception is reported on the
//            system console, at most ten times per process. Other exceptions pass, and end the process. While no file
//            can be opened, lines are lost, the reason is reported once on the console, and the logger keeps trying to
//            open a file.
#pragma once

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/logging/DDLogFileInfo.h"
#include "NorvikCore/logging/DDLogFileManager.h"
#include "NorvikCore/platform/dispatch/Source.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace norvik {

class NSFileHandle;

namespace detail {
struct LogFileRefusal;
struct OpenLogFile;
}  // namespace detail

class NK_EXPORT DDFileLogger : public DDAbstractLogger {
  NK_OBJECT(DDFileLogger, DDAbstractLogger)

  /// Creates a DDLogFileManagerDefault if no manager is given.
  DDFileLogger();
  explicit DDFileLogger(Ref<DDLogFileManager> logFileManager);

  [[nodiscard]] static Ref<DDFileLogger> initWithLogFileManager(const Ref<DDLogFileManager>& logFileManager);

  /// A file is closed when it has this many bytes; initially 1 MiB, 0 for no limit. A change applies to the current
  /// file at once.
  [[nodiscard]] std::uint64_t maximumFileSize() const;
  void setMaximumFileSize(std::uint64_t bytes);
  /// A file is closed when it is this many seconds old; initially 24 hours, 0 or less for no limit.
  [[nodiscard]] double rollingFrequency() const;
  void setRollingFrequency(double seconds);
  template <detail::ChronoDuration Duration>
  void setRollingFrequency(const Duration& duration) {
    setRollingFrequency(detail::inSeconds(duration));
  }

  /// Archives the current file, if there is one; the next message begins another. A file that was deleted, moved or
  /// replaced by another is only closed. On the logger's queue this happens at once; elsewhere it is enqueued behind
  /// earlier messages.
  void rollLogFile();
  void rollLogFileNow();
  void maybeRollLogFileDueToAge();
  void maybeRollLogFileDueToSize();
  void scheduleTimerToRollLogFileDueToAge();

  /// The current file. If there is none, it is chosen or created.
  [[nodiscard]] Ref<DDLogFileInfo> currentLogFileInfo();
  /// The open handle of the current file, which appends; empty if the file cannot be opened.
  [[nodiscard]] Ref<NSFileHandle> currentLogFileHandle();

  void logMessage(const DDLogMessage& message) override;
  /// True, except for a derived class.
  [[nodiscard]] bool takesRuns() const noexcept override;
  /// Writes with one call as many lines as fit into one file. Writes one line at a time if the formatter takes no runs.
  [[nodiscard]] std::size_t logMessages(const DDLogRun& run) override;
  /// Archives the current file.
  void willRemoveLogger() override;
  /// "cocoa.quillmarch.fileLogger".
  [[nodiscard]] std::optional<NSString> loggerName() override;

  [[nodiscard]] const Ref<DDLogFileManager>& logFileManager() const noexcept { return logFileManager_; }

 protected:
  ~DDFileLogger() override;
  bool init() override;

 private:
  struct Lines {
    std::string text;
    std::vector<std::size_t> ends;  // the end of each line in `text`
  };

  template <class Setting>
  [[nodiscard]] Setting read(const Setting& setting) const;
  template <class Change>
  void change(Change change);

  void appendLine(const DDLogMessage& message);
  void appendLine(const DDLogEntry& entry);
  void endLine(std::size_t begin);
  [[nodiscard]] bool mustWrite() const noexcept;
  void writePending();
  void write(const Lines& lines);
  void writeRest(const Lines& lines, std::size_t written);
  [[nodiscard]] bool endBrokenLine(int descriptor);
  /// True if the path of the current file names no file, or another than the open one; if none is open, also if it
  /// names a file that is refused.
  [[nodiscard]] bool isCurrentFileGone() const;
  void lookAfterFile();
  void beginFile();
  void passOver(const NSString& path, const std::string& reason);
  [[nodiscard]] detail::LogFileRefusal openCurrentFile(detail::OpenLogFile& file) const;
  void reportUnopened(const detail::LogFileRefusal& refusal);
  void closeFile();
  void cancelTimer() noexcept;

  Ref<DDLogFileManager> logFileManager_;
  Ref<DDLogFileInfo> currentLogFileInfo_;
  Ref<NSFileHandle> currentLogFileHandle_;
  dispatch_source_t rollingTimer;
  std::uint64_t maximumFileSize_ = 1024 * 1024;
  double rollingFrequency_ = 24 * 60 * 60;

  Lines pending_;                         // not yet written
  std::uint64_t offset_ = 0;              // in the open file, after the last write
  std::uint64_t device_ = 0, inode_ = 0;  // of the open file, to detect that its path names another file
  bool endsInsideLine_ = false;           // the open file ends with part of a line, of a write or of a killed process
  bool isBegun_ = false;                  // the current file was created for this logger, not found
  std::string passedOver_, unopened_;     // last reports of an unused file, and of no open file; empty: none
  std::int64_t lastLook_ = 0;             // when the file's path was last checked; monotonic nanoseconds
  std::uint64_t linesSinceLook_ = 0;
  std::uint32_t timerGeneration_ = 0;  // the process in which rollingTimer was set (kernel::forkGeneration)
};

}  // namespace norvik

// NorvikCore/logging/DDFileLogger.h - writes each message as one UTF-8 line to a file in its manager's folder, and
// starts a new file when the current one is too large or too old.
//
//   auto logger = make<DDFileLogger>();
//   logger->setMaximumFileSize(4 << 20);
//   logger->logFileManager()->setMaximumNumberOfLogFiles(7);
//   DDLog::addLogger(logger);
//
// The file is opened with the first message: the newest of the folder, unless it is archived, too large or too old.
// Every line goes to the end of the file, so that processes may share one. A file that was deleted or moved is noticed
// within half a second or 500 lines, and writing goes on in another. A file ends slightly larger than the limit, with a
// whole line. Where a killed process left a part of a line, a line feed ends it first. A file that may not be read
// (0200) is given that line feed unless it is empty, because what it ends with is not known.
//
// Only a regular file of this user with one name is written to, by root too. Where the newest is anything else (a link,
// a folder, a named pipe, a second name of another file, a file of another user, one without permission), the console
// says why, once, and another file is begun. Files of other users are written to where the manager's
// logFilePermissions() let others than the owner write. The folder itself may be a link.
//
// Once a call that logs synchronously has returned, its line is in the file, whatever becomes of the process.
//
// Ownership: keeps its manager; owns the open file, and closes it at its end without archiving it.
// Threads:   settings and rollLogFile() from any thread; reading a setting waits for the logging queue and then for the
//            logger's queue, and must not be done on either. currentLogFileInfo(), currentLogFileHandle() and the
//            operations named maybe..., ...Now and schedule... on the logger's queue only.
// Errors:    an NSException while a line is written is caught: the line is lost, and the exception reported on the
//            system console, ten times at most per process. Other exceptions pass, and end the process. Where no file
//            can be opened, lines are lost, the console says why, once, and opening is tried again.
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

  /// With a DDLogFileManagerDefault of its own, where no manager is given.
  DDFileLogger();
  explicit DDFileLogger(Ref<DDLogFileManager> logFileManager);

  [[nodiscard]] static Ref<DDFileLogger> initWithLogFileManager(const Ref<DDLogFileManager>& logFileManager);

  /// Bytes after which a file is closed; 1 MiB unless set, 0 for no limit. Set, it applies to the current file at once.
  [[nodiscard]] std::uint64_t maximumFileSize() const;
  void setMaximumFileSize(std::uint64_t bytes);
  /// Seconds after which a file is closed; 24 hours unless set, 0 or less for no limit.
  [[nodiscard]] double rollingFrequency() const;
  void setRollingFrequency(double seconds);
  template <detail::ChronoDuration Duration>
  void setRollingFrequency(const Duration& duration) {
    setRollingFrequency(detail::inSeconds(duration));
  }

  /// Archives the current file, if there is one; the next message begins another. At once on the logger's queue,
  /// elsewhere in its turn.
  void rollLogFile();
  void rollLogFileNow();
  void maybeRollLogFileDueToAge();
  void maybeRollLogFileDueToSize();
  void scheduleTimerToRollLogFileDueToAge();

  /// The file being written. Where there is none it is chosen, or made.
  [[nodiscard]] Ref<DDLogFileInfo> currentLogFileInfo();
  /// Its open handle, which appends; empty where it cannot be opened.
  [[nodiscard]] Ref<NSFileHandle> currentLogFileHandle();

  void logMessage(const DDLogMessage& message) override;
  /// Unless it is of a class derived from this one.
  [[nodiscard]] bool takesRuns() const noexcept override;
  /// Writes as many lines at once as end up in one file; one at a time where the formatter takes no runs.
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
    std::vector<std::size_t> ends;  // where each line ends in it
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
  [[nodiscard]] bool isCurrentFileGone() const;
  /// A file of the same path is another one.
  [[nodiscard]] bool isCurrentFileReplaced() const;
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

  Lines pending_;                         // still to be written
  std::uint64_t offset_ = 0;              // in the open file, after the last write
  std::uint64_t device_ = 0, inode_ = 0;  // the open file: is it still the one of that path?
  bool endsInsideLine_ = false;           // the open file: a write, or a killed process, left a line half done
  bool isBegun_ = false;                  // the current file was made for this logger, not found
  std::string passedOver_, unopened_;     // the last reports of a file not used and of no file; empty: neither applies
  std::int64_t lastLook_ = 0;             // monotonic nanoseconds
  std::uint64_t linesSinceLook_ = 0;
  std::uint32_t timerGeneration_ = 0;  // the process that rollingTimer was set in (kernel::forkGeneration)
};

}  // namespace norvik

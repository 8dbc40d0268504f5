#include "NorvikCore/logging/DDFileLogger.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileFormatterDefault.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/internal/CrashFiles.h"
#include "NorvikCore/logging/internal/ExceptionReports.h"
#include "NorvikCore/logging/internal/LogFile.h"
#include "NorvikCore/platform/foundation/NSFileHandle.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <ctime>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace norvik {
namespace {

constexpr std::size_t largestWrite = 64 * 1024;

// A deleted or moved file is noticed after this time, or after this many lines and one further run of messages.
constexpr std::int64_t lookInterval = 500 * NSEC_PER_MSEC;
constexpr std::uint64_t lookLines = 500;

constinit detail::ExceptionReports exceptionReports{"DDFileLogger.logMessage"};

/// Returns `anybody` if others than the owner may write to the manager's files.
detail::LogFileOwner ownerFor(const DDLogFileManager& manager) {
  constexpr std::uint32_t writableByOthers = 0022;
  return (manager.logFilePermissions() & writableByOthers) != 0 ? detail::LogFileOwner::anybody
                                                                : detail::LogFileOwner::user;
}

/// The time at which the file reaches that age, on the wall clock.
dispatch_time_t rollingTime(Date creation, double frequency) {
  const double latest = 9e9;  // seconds since 1970, in the year 2255: as far as nanoseconds in 63 bits reach
  const double seconds = std::min(creation.timeIntervalSince1970() + frequency, latest);
  std::timespec when{};
  when.tv_sec = static_cast<std::time_t>(std::floor(seconds));
  when.tv_nsec = static_cast<long>((seconds - std::floor(seconds)) * 1e9);
  return dispatch_walltime(&when, 0);
}

}  // namespace

DDFileLogger::DDFileLogger() : DDFileLogger(nullptr) {}

DDFileLogger::DDFileLogger(Ref<DDLogFileManager> logFileManager) : logFileManager_(std::move(logFileManager)) {
  if (!logFileManager_) logFileManager_ = make<DDLogFileManagerDefault>();
}

DDFileLogger::~DDFileLogger() {
  cancelTimer();
  closeFile();
}

Ref<DDFileLogger> DDFileLogger::initWithLogFileManager(const Ref<DDLogFileManager>& logFileManager) {
  return make<DDFileLogger>(logFileManager);
}

bool DDFileLogger::init() {
  if (!DDAbstractLogger::init()) return false;
  initFormatter(make<DDLogFileFormatterDefault>());
  return true;
}

std::optional<NSString> DDFileLogger::loggerName() { return "cocoa.quillmarch.fileLogger"; }

// Settings

template <class Setting>
Setting DDFileLogger::read(const Setting& setting) const {
  const dispatch_queue_t queue = const_cast<DDFileLogger*>(this)->loggerQueue();
  return dispatch_sync(DDLog::loggingQueue(), [&] { return dispatch_sync(queue, [&] { return setting; }); });
}

template <class Change>
void DDFileLogger::change(Change change) {
  dispatch_async(DDLog::loggingQueue(), [self = ref(*this), change] {
    dispatch_async(self->loggerQueue(), [self, change] { change(*self); });
  });
}

std::uint64_t DDFileLogger::maximumFileSize() const { return read(maximumFileSize_); }

void DDFileLogger::setMaximumFileSize(std::uint64_t bytes) {
  change([bytes](DDFileLogger& logger) {
    logger.maximumFileSize_ = bytes;
    logger.maybeRollLogFileDueToSize();
  });
}

double DDFileLogger::rollingFrequency() const { return read(rollingFrequency_); }

void DDFileLogger::setRollingFrequency(double seconds) {
  change([seconds](DDFileLogger& logger) {
    logger.rollingFrequency_ = seconds;
    logger.maybeRollLogFileDueToAge();
  });
}

// Rolling

void DDFileLogger::scheduleTimerToRollLogFileDueToAge() {
  cancelTimer();
  timerGeneration_ = kernel::forkGeneration();
  if (!currentLogFileInfo_ || !(rollingFrequency_ > 0)) return;
  const Date creation = currentLogFileInfo_->creationDate().value_or(Date::systemDate());
  rollingTimer = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, loggerQueue());
  dispatch_source_set_event_handler(rollingTimer, [logger = Weak<DDFileLogger>(this)] {
    if (const Ref<DDFileLogger> alive = logger.lock()) alive->maybeRollLogFileDueToAge();
  });
  dispatch_source_set_timer(rollingTimer, rollingTime(creation, rollingFrequency_), 0, 1);
  dispatch_resume(rollingTimer);
}

void DDFileLogger::cancelTimer() noexcept {
  if (!rollingTimer) return;
  dispatch_source_cancel(rollingTimer);
  rollingTimer = nullptr;
}

void DDFileLogger::rollLogFile() {
  if (isOnInternalLoggerQueue()) return rollLogFileNow();
  change([](DDFileLogger& logger) { logger.rollLogFileNow(); });
}

void DDFileLogger::rollLogFileNow() {
  if (!currentLogFileHandle_) return;
  const bool isGone = isCurrentFileGone();
  closeFile();
  const Ref<DDLogFileInfo> rolled = currentLogFileInfo_;
  if (!isGone) {
    rolled->setIsArchived(true);
    logFileManager_->didRollAndArchiveLogFile(rolled->filePath());
  }
  if (currentLogFileInfo_ != rolled) return;  // the manager called this logger, which chose another file
  closeFile();                                // in case the manager called this logger, which opened the file again
  currentLogFileInfo_ = nullptr;
  cancelTimer();
}

void DDFileLogger::maybeRollLogFileDueToAge() {
  if (rollingFrequency_ > 0 && currentLogFileInfo_ && currentLogFileInfo_->age() >= rollingFrequency_) {
    rollLogFileNow();
  } else {
    scheduleTimerToRollLogFileDueToAge();
  }
}

void DDFileLogger::maybeRollLogFileDueToSize() {
  if (maximumFileSize_ == 0 || !currentLogFileHandle_) return;
  if (currentLogFileHandle_->offsetInFile() >= maximumFileSize_) rollLogFileNow();
}

// The current file

Ref<DDLogFileInfo> DDFileLogger::currentLogFileInfo() {
  if (currentLogFileInfo_) return currentLogFileInfo_;
  lastLook_ = kernel::monotonicNanoseconds();
  linesSinceLook_ = 0;
  const std::vector<Ref<DDLogFileInfo>> infos = logFileManager_->sortedLogFileInfos();
  if (infos.empty() || infos.front()->isArchived()) {
    passedOver_.clear();
    beginFile();
    return currentLogFileInfo_;
  }
  const Ref<DDLogFileInfo>& newest = infos.front();
  kernel::FileStatus status;
  const bool isThere =
      kernel::readFileStatus(newest->filePath().fileSystemRepresentation(), status, kernel::Links::stay) == 0;
  const std::string reason = isThere ? detail::reasonAgainst(status, ownerFor(*logFileManager_)) : "";
  const bool isTooLarge = maximumFileSize_ != 0 && newest->fileSize() >= maximumFileSize_;
  const bool isTooOld = rollingFrequency_ > 0 && newest->age() >= rollingFrequency_;
  if (!reason.empty()) {
    passOver(newest->filePath(), reason);
  } else if (isTooLarge || isTooOld) {
    passedOver_.clear();
    newest->setIsArchived(true);
    logFileManager_->didArchiveLogFile(newest->filePath());
    if (!currentLogFileInfo_) beginFile();  // the manager may have called this logger, which chose a file
  } else {
    currentLogFileInfo_ = newest;
    isBegun_ = false;
  }
  return currentLogFileInfo_;
}

void DDFileLogger::beginFile() {
  currentLogFileInfo_ = DDLogFileInfo::logFileWithPath(logFileManager_->createNewLogFile());
  isBegun_ = true;
}

/// Begins another file instead of the one that was found.
void DDFileLogger::passOver(const NSString& path, const std::string& reason) {
  std::string told = detail::printable(path) + " " + reason;
  if (told != passedOver_) NSLog("DDFileLogger: %@; a new log file is begun", told);
  passedOver_ = std::move(told);
  beginFile();
}

void DDFileLogger::reportUnopened(const detail::LogFileRefusal& refusal) {
  // The manager has reported itself why a file could not be made.
  const bool isMissing = isBegun_ && (refusal.error == ENOENT || refusal.error == ENOTDIR);
  if (isMissing && dynamic_cast<const DDLogFileManagerDefault*>(logFileManager_.get())) return;
  if (unopened_ != refusal.reason) {
    NSLog("DDFileLogger: %@ %@; lines are lost until a log file can be opened",
          detail::printable(currentLogFileInfo_->filePath()), refusal.reason);
  }
  unopened_ = refusal.reason;
}

/// A file that the manager has just made is also accepted if the file system reports another owner for every file.
detail::LogFileRefusal DDFileLogger::openCurrentFile(detail::OpenLogFile& file) const {
  const detail::LogFileOwner owner = ownerFor(*logFileManager_);
  const auto* const maker = isBegun_ ? dynamic_cast<const DDLogFileManagerDefault*>(logFileManager_.get()) : nullptr;
  detail::LogFileRefusal refusal = detail::openLogFile(currentLogFileInfo_->filePath().fileSystemRepresentation(),
                                                       maker ? detail::LogFileOwner::anybody : owner, file);
  if (maker && !refusal && !maker->didMake(file.status)) {
    refusal.reason = detail::reasonAgainst(file.status, owner);
  }
  return refusal;
}

Ref<NSFileHandle> DDFileLogger::currentLogFileHandle() {
  if (currentLogFileHandle_) return currentLogFileHandle_;
  (void)currentLogFileInfo();
  detail::OpenLogFile file;
  detail::LogFileRefusal refusal = openCurrentFile(file);
  if (refusal && refusal.isOfFile && !isBegun_) {
    if (refusal.error == ENOENT) {
      beginFile();
    } else {
      passOver(currentLogFileInfo_->filePath(), refusal.reason);
    }
    refusal = openCurrentFile(file);
  }
  if (refusal) {
    reportUnopened(refusal);
    return nullptr;
  }
  unopened_.clear();
  if (!isBegun_) passedOver_.clear();
  const NSString path = currentLogFileInfo_->filePath();
  auto handle = make<NSFileHandle>(std::move(file.descriptor), path);
  offset_ = handle->seekToEndOfFile();
  device_ = file.status.device;
  inode_ = file.status.inode;
  endsInsideLine_ = file.endsInsideLine;
  currentLogFileHandle_ = std::move(handle);
  detail::CrashFiles::note(this, currentLogFileHandle_->fileDescriptor(), device_, inode_);
  // Scheduled after the line for which the file was opened, because the first timer of a process starts a thread.
  dispatch_async_relaxed(loggerQueue(), [logger = Weak<DDFileLogger>(this)] {
    if (const Ref<DDFileLogger> alive = logger.lock()) alive->scheduleTimerToRollLogFileDueToAge();
  });
  return currentLogFileHandle_;
}

/// Closes the file without archiving it. Failures are reported, because lines may not have reached the disk.
void DDFileLogger::closeFile() {
  const Ref<NSFileHandle> handle = std::exchange(currentLogFileHandle_, nullptr);
  if (!handle) return;
  detail::CrashFiles::forget(this);
  try {
    handle->synchronizeFile();
    handle->closeFile();
  } catch (const NSException& exception) {
    exceptionReports.add(exception);
  }
}

bool DDFileLogger::isCurrentFileGone() const {
  kernel::FileStatus status;
  const std::string path = currentLogFileInfo_->filePath().fileSystemRepresentation();
  const int error = kernel::readFileStatus(path, status, kernel::Links::stay);
  if (error != 0) return error == ENOENT || error == ENOTDIR;
  if (!currentLogFileHandle_) return !detail::reasonAgainst(status, ownerFor(*logFileManager_)).empty();
  return status.device != device_ || status.inode != inode_;
}

/// If the file was deleted or moved, or could not be made before, another file is chosen.
void DDFileLogger::lookAfterFile() {
  if (!currentLogFileInfo_) return;
  if (currentLogFileHandle_ && timerGeneration_ != kernel::forkGeneration()) {
    scheduleTimerToRollLogFileDueToAge();  // the parent's timer does not fire in this child
  }
  const std::int64_t now = kernel::monotonicNanoseconds();
  if (linesSinceLook_ < lookLines && now - lastLook_ < lookInterval) return;
  linesSinceLook_ = 0;
  lastLook_ = now;
  if (!isCurrentFileGone()) return;
  closeFile();
  cancelTimer();
  currentLogFileInfo_ = nullptr;
}

// Writing

void DDFileLogger::willRemoveLogger() { rollLogFileNow(); }

void DDFileLogger::logMessage(const DDLogMessage& message) {
  appendLine(message);
  writePending();
}

/// A derived class may override logMessage().
bool DDFileLogger::takesRuns() const noexcept { return typeid(*this) == typeid(DDFileLogger); }

std::size_t DDFileLogger::logMessages(const DDLogRun& run) {
  const std::size_t most = !formatter() || formatter()->takesRuns() ? run.count() : 1;
  std::size_t taken = 0;
  do {
    appendLine(run[taken++]);
  } while (taken < most && !mustWrite());
  writePending();
  return taken;
}

void DDFileLogger::appendLine(const DDLogMessage& message) {
  const std::size_t begin = pending_.text.size();
  if (DDLogFormatter* own = formatter().get()) {
    if (!own->appendLogMessage(pending_.text, message)) return pending_.text.resize(begin);
  } else {
    pending_.text += message.logMsg().utf8();
  }
  endLine(begin);
}

void DDFileLogger::appendLine(const DDLogEntry& entry) {
  const std::size_t begin = pending_.text.size();
  if (DDLogFormatter* own = formatter().get()) {
    if (!own->appendLogEntry(pending_.text, entry)) return pending_.text.resize(begin);
  } else {
    entry.appendText(pending_.text);
  }
  endLine(begin);
}

void DDFileLogger::endLine(std::size_t begin) {
  if (pending_.text.size() == begin || pending_.text.back() != '\n') pending_.text += '\n';
  pending_.ends.push_back(pending_.text.size());
}

/// Lines may wait for the rest of their run, unless they reach the size limit: the line that reaches it is the file's
/// last.
bool DDFileLogger::mustWrite() const noexcept {
  if (!currentLogFileHandle_ || pending_.text.size() >= largestWrite) return true;
  return maximumFileSize_ != 0 && offset_ + pending_.text.size() >= maximumFileSize_;
}

void DDFileLogger::writePending() {
  if (pending_.ends.empty()) return;
  linesSinceLook_ += pending_.ends.size();
  // Taken first, because a roll notifies the manager, which may call this logger again.
  Lines lines = std::exchange(pending_, {});
  try {
    lookAfterFile();
    write(lines);
  } catch (const NSException& exception) {
    exceptionReports.add(exception);
  }
  if (pending_.ends.empty() && lines.text.capacity() <= 2 * largestWrite) {  // reuses the memory for the next lines
    lines.text.clear();
    lines.ends.clear();
    pending_ = std::move(lines);
  }
}

void DDFileLogger::write(const Lines& lines) {
  const Ref<NSFileHandle> handle = currentLogFileHandle();
  if (!handle) return;
  std::size_t written = 0;
  if (!endBrokenLine(handle->fileDescriptor()) ||
      kernel::writeAll(handle->fileDescriptor(), lines.text, &written) != 0) {
    return writeRest(lines, written);
  }
  offset_ = handle->offsetInFile();
  maybeRollLogFileDueToSize();
}

/// Ends a line that a full disk took only in part, so that the next line starts on its own. Returns false if that fails
/// too.
bool DDFileLogger::endBrokenLine(int descriptor) {
  if (endsInsideLine_ && kernel::writeAll(descriptor, "\n") == 0) endsInsideLine_ = false;
  return !endsInsideLine_;
}

/// After a failure the remaining lines are written one by one, so that each may succeed or be reported by itself.
void DDFileLogger::writeRest(const Lines& lines, std::size_t written) {
  std::size_t begin = 0;
  for (const std::size_t end : lines.ends) {
    std::size_t from = std::max(begin, written);  // of a line that was written in part only the rest remains
    begin = end;
    if (end <= written) continue;
    endsInsideLine_ = endsInsideLine_ || (from > 0 && lines.text[from - 1] != '\n');
    try {
      const Ref<NSFileHandle> handle = currentLogFileHandle();
      if (!handle) return;
      const bool isRest = from > 0 && lines.text[from - 1] != '\n';
      if (!isRest) (void)endBrokenLine(handle->fileDescriptor());
      std::size_t taken = 0;
      const std::string_view rest = std::string_view(lines.text).substr(from, end - from);
      const int error = kernel::writeAll(handle->fileDescriptor(), rest, &taken);
      if (error != 0) {
        endsInsideLine_ = endsInsideLine_ || taken > 0;
        handle->writeData(rest.substr(taken));  // raises the error
      }
      endsInsideLine_ = false;
      offset_ = handle->offsetInFile();
      maybeRollLogFileDueToSize();
    } catch (const NSException& exception) {
      exceptionReports.add(exception);
    }
  }
}

}  // namespace norvik

#include "Follow.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "LateSource.h"
#include "LogFolder.h"
#include "Merge.h"
#include "PostgresSource.h"
#include "RangeReader.h"
#include "Sources.h"
#include "SqliteSource.h"
#include "Terminal.h"

namespace norvik_log {
namespace {

using namespace std::chrono_literals;

constexpr auto holdingTime = 200ms;  // for a message that may get more lines
constexpr auto graceTime = 2s;       // for a removed file that may still be written to
constexpr std::chrono::milliseconds usualRound = 1s, blindRound = 250ms;
constexpr std::size_t blockSize = 512 << 10;
constexpr std::size_t mostSpare = 4 << 10;  // bytes of unused capacity, for a file without new content
constexpr std::size_t mostOpen = 8;         // newest files of a folder: a file may be removed while it is written to

std::string folderOf(const std::string& path) {
  const std::string parent = std::filesystem::path(path).parent_path().string();
  return parent.empty() ? "." : parent;
}

}  // namespace

GrowingFile::GrowingFile(int descriptor, const std::string& path, const Reading& reading)
    : descriptor_(descriptor),
      path_(path),
      reading_(reading),
      clock_(reading.logClock),
      folds_(reading.logClock),
      scan_(reading.filter, reading.logClock),
      lastGrowth_(std::chrono::steady_clock::now()),
      pathNow_(path) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) return;
  device_ = status.st_dev;
  inode_ = status.st_ino;
}

GrowingFile::~GrowingFile() { close(); }

void GrowingFile::close() noexcept {
  if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

void GrowingFile::rest() noexcept {
  isResting_ = true;
  // A file that was read to its end stays open until it is read once more, because it may have grown since, and may be
  // removed before it could be opened again.
  if (std::exchange(mayHaveMore_, true)) close();
}

void GrowingFile::noteState(const std::string& path, std::int64_t size) {
  pathNow_ = path;
  mayHaveMore_ |= size != offset_;
}

bool GrowingFile::openAgain() {
  if (!mayHaveMore_) return false;
  descriptor_ = ::open(pathNow_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat status {};
  if (descriptor_ < 0) {
    // If it has been renamed since, the next look finds its new name.
    if (errno != ENOENT) reading_.troubles.report(pathNow_, "cannot be opened", errno);
  } else if (::fstat(descriptor_, &status) == 0 && isSameFile(status.st_dev, status.st_ino)) {
    return true;
  }
  close();
  mayHaveMore_ = false;
  return false;
}

bool GrowingFile::read(Moment now) {
  if (descriptor_ < 0 && !openAgain()) return false;
  struct stat status {};
  if (::fstat(descriptor_, &status) == 0 && status.st_size < offset_) {
    reading_.troubles.report(path_, "became shorter, and is read from its start again");
    offset_ = 0;
    pending_.clear();
    last_.reset();
    isFlushed_ = false;
    folds_ = Folds(reading_.logClock);
  }
  // All files share one block, because most of them have no new content.
  static thread_local const auto block = std::make_unique_for_overwrite<char[]>(blockSize);
  ssize_t count = 0;
  do count = ::pread(descriptor_, block.get(), blockSize, offset_);
  while (count < 0 && errno == EINTR);
  if (count <= 0) {
    if (count < 0) reading_.troubles.report(path_, "cannot be read further", errno);
    mayHaveMore_ = false;
    if (isResting_) close();
    if (pending_.capacity() > 2 * pending_.size() + mostSpare) pending_.shrink_to_fit();
    return false;
  }
  pending_.append(block.get(), static_cast<std::size_t>(count));
  offset_ += count;
  lastGrowth_ = now;
  return true;
}

void GrowingFile::scan(std::size_t size, Batch& batch) {
  const std::string_view block(pending_.data(), size);
  const std::int64_t offset = offset_ - static_cast<std::int64_t>(pending_.size());
  const IsSecondPass isSecondPass = [this](std::int64_t place, std::int64_t wall) {
    return folds_.isSecondPass(place, wall);
  };
  folds_.pass(block, offset);
  scan_.scan(block, offset, last_ ? &*last_ : nullptr, isSecondPass, path_, batch);
  const char *const begin = block.data(), *const end = begin + block.size();
  const char* const head = lastHead(begin, end);
  if (const auto time = headTime(head, end)) {
    const std::string_view bytes(head, static_cast<std::size_t>(end - head));
    last_ = continuationOf(timedRecord(bytes, *time, clock_, isSecondPass, offset + (head - begin)));
  }
  pending_.erase(0, size);
  reportGivenUp(scan_.takeGivenUp(), path_, reading_.troubles);
}

bool GrowingFile::next(Batch& batch, Moment now, bool isLastFile) {
  if (read(now)) {
    const char *const begin = pending_.data(), *const end = begin + pending_.size();
    const std::size_t lines = pending_.rfind('\n') + 1;  // npos + 1 is 0
    // If the shown record continues, its further lines are shown at once.
    const bool isContinued = isFlushed_ && lines > 0 && !headTime(begin, end);
    std::size_t size = static_cast<std::size_t>(lastHead(begin, begin + lines) - begin);
    if (size == 0 && isContinued) size = lines;
    if (size == 0 && pending_.size() >= RangeReader::longestRecord) size = lines > 0 ? lines : endOfPiece(pending_);
    isFlushed_ = isContinued && size == lines;
    if (size > 0) scan(size, batch);
    return true;
  }
  if (pending_.empty() || (isLastFile && now - lastGrowth_ < holdingTime)) return false;
  std::size_t lines = pending_.rfind('\n') + 1;
  // After a newer file was created, an incomplete line of a killed process never becomes complete.
  const bool isLeft = !isLastFile && now - lastGrowth_ > graceTime;
  if (lines == 0 && isLeft) lines = pending_.size();
  if (lines == 0) return false;
  scan(lines, batch);
  isFlushed_ = true;
  return true;
}

void GrowingFile::finish(Batch& batch) {
  if (!pending_.empty()) scan(pending_.size(), batch);
}

FollowedPath::FollowedPath(std::string path, const Reading& reading) : path_(std::move(path)), reading_(reading) {}

FollowedPath::~FollowedPath() = default;

std::string FollowedPath::folder() const {
  std::error_code unknown;
  return std::filesystem::is_directory(path_, unknown) ? path_ : folderOf(path_);
}

std::vector<std::string> FollowedPath::pathsNow() {
  std::error_code unknown;
  if (!std::filesystem::is_directory(path_, unknown)) return {path_};
  try {
    return logFilesIn(path_, reading_.logClock, reading_.troubles);
  } catch (const std::system_error& error) {
    reading_.troubles.report(path_, "cannot be listed", error.code().value());
    return {};
  }
}

void FollowedPath::open(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat status {};
  if (descriptor < 0 || ::fstat(descriptor, &status) != 0) {
    const int error = errno;
    if (descriptor >= 0) ::close(descriptor);
    // A file of a folder may have been removed since the folder was listed.
    if (error != ENOENT || path == path_) reading_.troubles.report(path, "cannot be opened", error);
    return;
  }
  if (!S_ISREG(status.st_mode)) {
    ::close(descriptor);
    reading_.troubles.report(path, "is not a regular file, and cannot be followed");
    return;
  }
  if (isStandardOutput(status)) {
    ::close(descriptor);
    reading_.troubles.report(path, "is also the output, and is left out");
    return;
  }
  const auto known = std::find_if(files_.begin(), files_.end(), [&](const File& file) {
    return file.file->isSameFile(status.st_dev, status.st_ino);
  });
  if (known != files_.end()) {
    ::close(descriptor);
    known->goneSince.reset();
    if (known->file->isResting()) known->file->noteState(path, status.st_size);
    return;
  }
  names_.push_back(path);
  files_.push_back({std::make_unique<GrowingFile>(descriptor, names_.back(), reading_), std::nullopt});
  if (files_.size() > mostOpen) files_[files_.size() - mostOpen - 1].file->rest();
}

void FollowedPath::look(Moment now, bool mayNamesHaveChanged) {
  now_ = now;
  if (!mayNamesHaveChanged) return;
  std::vector<std::optional<Moment>> goneBefore;
  for (File& file : files_) goneBefore.push_back(std::exchange(file.goneSince, now));
  for (const std::string& path : pathsNow()) open(path);
  for (std::size_t i = 0; i < goneBefore.size(); ++i) {
    if (files_[i].goneSince && goneBefore[i]) files_[i].goneSince = goneBefore[i];
  }
}

bool FollowedPath::next(Batch& batch) {
  for (const File& file : files_) {
    if (file.file->next(batch, now_, &file == &files_.back())) return true;
  }
  dropFinished(batch);
  return !batch.isEmpty();
}

void FollowedPath::dropFinished(Batch& batch) {
  const auto isOver = [this](const File& file) {
    return file.goneSince && now_ - std::max(*file.goneSince, file.file->lastGrowth()) > graceTime;
  };
  for (std::size_t i = 0; i + 1 < files_.size();) {
    if (isOver(files_[i])) {
      files_[i].file->finish(batch);
      files_.erase(files_.begin() + static_cast<std::ptrdiff_t>(i));
    } else {
      ++i;
    }
  }
}

bool FollowedPath::holdsLines() const noexcept {
  return std::any_of(files_.begin(), files_.end(), [](const File& file) { return file.file->holdsLines(); });
}

ChangeWatch::ChangeWatch() : descriptor_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

ChangeWatch::~ChangeWatch() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void ChangeWatch::add(const std::string& folder) {
  if (folder.empty()) return;
  constexpr std::uint32_t events = IN_MODIFY | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR;
  isBlind_ |= descriptor_ < 0 || ::inotify_add_watch(descriptor_, folder.c_str(), events) < 0;
}

bool ChangeWatch::wait(std::chrono::milliseconds longest) {
  if (isBlind_) longest = std::min(longest, blindRound);
  haveNamesChanged_ |= std::exchange(isBlind_, false);
  pollfd wanted[] = {{STDOUT_FILENO, 0, 0}, {descriptor_, POLLIN, 0}};
  ::poll(wanted, 2, static_cast<int>(longest.count()));
  alignas(inotify_event) char events[4096];
  for (ssize_t count; descriptor_ >= 0 && (count = ::read(descriptor_, events, sizeof events)) > 0;) {
    for (const char *at = events, *const end = events + count; at < end;) {
      inotify_event event;
      std::memcpy(&event, at, sizeof event);
      haveNamesChanged_ |= (event.mask & ~static_cast<std::uint32_t>(IN_MODIFY)) != 0;
      at += sizeof event + event.len;
    }
  }
  return (wanted[0].revents & (POLLERR | POLLHUP | POLLNVAL)) == 0;
}

bool ChangeWatch::takeNamesChanged() noexcept {
  const Moment now = std::chrono::steady_clock::now();
  if (!haveNamesChanged_ && now - lastLook_ < usualRound) return false;
  haveNamesChanged_ = false;
  lastLook_ = now;
  return true;
}

namespace {

/// A source in the merge of one round.
class Round : public LogSource {
 public:
  explicit Round(FollowedSource& source) : source_(source) {}
  bool next(Batch& batch) override { return source_.next(batch); }

 private:
  FollowedSource& source_;
};

class FollowedDatabase : public FollowedSource {
 public:
  FollowedDatabase(std::unique_ptr<DatabaseSource> database, std::string folder)
      : database_(std::move(database)), folder_(std::move(folder)) {}

  void look(Moment, bool) override { database_->lookAgain(); }
  bool next(Batch& batch) override { return database_->next(batch); }
  [[nodiscard]] std::string folder() const override { return folder_; }

 private:
  const std::unique_ptr<DatabaseSource> database_;
  const std::string folder_;  // the folder of the database's write-ahead log; empty for a server
};

/// True for a folder, a regular file, and a path that does not exist yet.
bool canBeFollowed(const std::string& name) {
  struct stat status {};
  return ::stat(name.c_str(), &status) != 0 || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode);
}

std::unique_ptr<FollowedSource> followedSource(const std::string& name, const Reading& reading) {
  switch (kindOfSource(name)) {
    case SourceKind::Sqlite:
      return std::make_unique<FollowedDatabase>(std::make_unique<SqliteSource>(name, reading), folderOf(name));
    case SourceKind::Postgres:
      return std::make_unique<FollowedDatabase>(
          std::make_unique<LateSource>(std::make_unique<PostgresSource>(name, reading)), "");
    case SourceKind::File:
    case SourceKind::Folder:
      break;
  }
  return std::make_unique<FollowedPath>(name, reading);
}

/// A path that does not exist yet, or an empty file. Its kind is decided when it has content.
class LaterSource : public FollowedSource {
 public:
  LaterSource(const std::string& name, const Reading& reading) : name_(name), reading_(reading) {}

  void look(Moment now, bool mayNamesHaveChanged) override {
    const bool isChosen = source_ == nullptr && isThere();
    if (isChosen) source_ = followedSource(name_, reading_);
    if (source_) source_->look(now, mayNamesHaveChanged || isChosen);
  }
  bool next(Batch& batch) override { return source_ && source_->next(batch); }
  [[nodiscard]] bool holdsLines() const noexcept override { return source_ && source_->holdsLines(); }
  [[nodiscard]] std::string folder() const override { return source_ ? source_->folder() : folderOf(name_); }

 private:
  [[nodiscard]] bool isThere() const {
    struct stat status {};
    if (::stat(name_.c_str(), &status) == 0) return !S_ISREG(status.st_mode) || status.st_size > 0;
    const int error = errno;
    reading_.troubles.report(shownName(name_), "cannot be opened", error);
    return false;
  }

  const std::string& name_;
  const Reading& reading_;
  std::unique_ptr<FollowedSource> source_;
};

}  // namespace

void follow(const std::vector<std::string>& names, const Reading& reading,
            const std::function<void(const Batch&)>& show, const std::function<void()>& flush) {
  std::vector<std::unique_ptr<FollowedSource>> followed;
  for (const std::string& name : names) {
    if (kindOfSource(name) == SourceKind::Postgres) {
      followed.push_back(followedSource(name, reading));
    } else if (canBeFollowed(name)) {
      followed.push_back(std::make_unique<LaterSource>(name, reading));
    } else {
      reading.troubles.report(name, "is not a regular file, and cannot be followed");
    }
  }
  ChangeWatch watch;
  bool isRead = !followed.empty();
  while (isRead) {
    // The watches are added before the look, so that a change during the look wakes the next round.
    for (const auto& source : followed) watch.add(source->folder());
    const Moment now = std::chrono::steady_clock::now();
    const bool mayNamesHaveChanged = watch.takeNamesChanged();
    std::vector<std::unique_ptr<LogSource>> rounds;
    bool holdsLines = false;
    for (const auto& source : followed) {
      source->look(now, mayNamesHaveChanged);
      rounds.push_back(std::make_unique<Round>(*source));
    }
    Merge merged(std::move(rounds));
    for (Batch batch; merged.next(batch); batch = Batch()) show(batch);
    flush();
    for (const auto& source : followed) holdsLines |= source->holdsLines();
    isRead = watch.wait(holdsLines ? holdingTime : usualRound);
  }
}

}  // namespace norvik_log

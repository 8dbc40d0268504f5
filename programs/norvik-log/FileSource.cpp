#include "FileSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "Folds.h"
#include "RangeReader.h"
#include "Terminal.h"
#include "programs/common/CommandLine.h"

namespace norvik_log {

LogSource::~LogSource() = default;

namespace {

constexpr std::int64_t chunkSize = 1 << 20;
constexpr std::size_t heldWeight = 4 << 20;  // of records of one chunk that wait for earlier chunks

/// A regular file that can be read at any position. Synchronised.
class OpenFile {
 public:
  OpenFile(int descriptor, std::int64_t size, const std::string& path, Troubles& troubles)
      : descriptor_(descriptor), size_(size), path_(path), troubles_(troubles) {}

  std::size_t read(char* into, std::size_t size, std::int64_t offset) {
    for (;;) {
      const ssize_t count = ::pread(descriptor_, into, size, offset);
      if (count > 0) return static_cast<std::size_t>(count);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) {
        const int error = errno;
        if (!isReported_.exchange(true)) troubles_.report(path_, "cannot be read further", error);
      } else if (offset < size_ && !isReported_.exchange(true)) {
        troubles_.report(path_, "became shorter while it was read");
      }
      return 0;
    }
  }

 private:
  const int descriptor_;
  const std::int64_t size_;
  const std::string& path_;
  Troubles& troubles_;
  std::atomic<bool> isReported_ = false;
};

/// The places in a file where the clocks were set back. The file is searched at the first request. Synchronised.
class FoldsOfFile {
 public:
  FoldsOfFile(OpenFile& file, const WallClock& clock) : file_(file), folds_(clock) {}

  bool isSecondPass(std::int64_t offset, std::int64_t wallTime) {
    const std::lock_guard lock(mutex_);
    if (!std::exchange(isRead_, true)) readAll();
    return folds_.isSecondPass(offset, wallTime);
  }

 private:
  void readAll() {
    constexpr std::size_t size = 1 << 20;
    const auto buffer = std::make_unique_for_overwrite<char[]>(size);
    std::int64_t offset = 0;
    std::size_t held = 0;
    for (;;) {
      const std::size_t count = file_.read(buffer.get() + held, size - held, offset + static_cast<std::int64_t>(held));
      held += count;
      const std::string_view bytes(buffer.get(), held);
      std::size_t lines = count == 0 ? held : bytes.rfind('\n') + 1;  // npos + 1 is 0
      if (lines == 0 && held == size) lines = held;  // a line of a mebibyte or more has its time at the front
      folds_.pass(bytes.substr(0, lines), offset);
      std::copy(buffer.get() + lines, buffer.get() + held, buffer.get());
      held -= lines;
      offset += static_cast<std::int64_t>(lines);
      if (count == 0) return;
    }
  }

  std::mutex mutex_;
  OpenFile& file_;
  bool isRead_ = false;
  Folds folds_;
};

}  // namespace

std::string shownName(const std::string& name) {
  std::string lower = name;
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  const bool mayBeAddress =
      lower.find("://") != lower.npos || lower.find('@') != lower.npos || lower.find("password") != lower.npos;
  return mayBeAddress ? programs::withoutValue(name) : name;
}

void reportGivenUp(std::size_t count, const std::string& source, Troubles& troubles) {
  if (count > 0) troubles.report(source, "the pattern takes too long on at least one message, which is left out");
}

/// Reads from start to end, as pipes require.
class FileSource::Sequential {
 public:
  Sequential(int descriptor, const std::string& path, const Reading& reading)
      : path_(path),
        reading_(reading),
        folds_(reading.logClock),
        scan_(reading.filter, reading.logClock),
        reader_([this, descriptor](char* into, std::size_t size,
                                   std::int64_t) { return readStream(descriptor, into, size); },
                scan_, [this](std::int64_t offset, std::int64_t wall) { return folds_.isSecondPass(offset, wall); },
                path_, reading.logClock,
                [this](std::string_view lines, std::int64_t offset) { folds_.pass(lines, offset); }) {
    reader_.begin(0, RangeReader::toTheEnd);
  }

  bool next(Batch& batch) {
    const bool isMore = reader_.step(batch);
    reportGivenUp(scan_.takeGivenUp(), path_, reading_.troubles);
    return isMore;
  }

 private:
  std::size_t readStream(int descriptor, char* into, std::size_t size) {
    for (;;) {
      const ssize_t count = ::read(descriptor, into, size);
      if (count >= 0) return static_cast<std::size_t>(count);
      if (errno == EINTR) continue;
      reading_.troubles.report(path_, "cannot be read further", errno);
      return 0;
    }
  }

  const std::string& path_;
  const Reading& reading_;
  Folds folds_;
  BlockScan scan_;
  RangeReader reader_;
};

/// Threads take chunks of the file in order. Their records are handed out in the same order. A thread that is ahead
/// waits when its chunk holds many records, so that the use of memory is bounded.
class FileSource::Parallel {
 public:
  Parallel(int descriptor, std::int64_t size, const std::string& path, const Reading& reading)
      : path_(path),
        reading_(reading),
        file_(descriptor, size, path, reading.troubles),
        folds_(file_, reading.logClock) {
    const unsigned processors = std::clamp(std::thread::hardware_concurrency(), 1u, 8u);
    const auto chunks = static_cast<unsigned>(std::min<std::int64_t>((size + chunkSize - 1) / chunkSize, 8));
    const unsigned count = reading.hasManySources ? 1 : std::min(processors, chunks);
    ahead_ = reading.hasManySources ? 1 : 2 * std::size_t{count};
    if (count > 1) {
      for (unsigned i = 0; i < count; ++i) {
        try {
          threads_.emplace_back([this] { work(); });
        } catch (const std::system_error&) {
          break;  // the system allows no more threads; without any, the calling thread reads
        }
      }
    }
    if (threads_.empty()) alone_ = std::make_unique<Worker>(*this);
  }

  ~Parallel() {
    {
      const std::lock_guard lock(mutex_);
      isStopped_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }
  Parallel(const Parallel&) = delete;
  Parallel& operator=(const Parallel&) = delete;

  bool next(Batch& batch) {
    if (alone_) return alone_->readAlone(batch);
    std::unique_lock lock(mutex_);
    for (;;) {
      changed_.wait(lock, [this] {
        return (!chunks_.empty() && (!chunks_.front().found.empty() || chunks_.front().isDone)) ||
               (chunks_.empty() && (isEndFound_ || failure_)) || failure_;
      });
      if (failure_) std::rethrow_exception(failure_);
      if (chunks_.empty()) return false;
      Chunk& first = chunks_.front();
      if (!first.found.empty()) {
        batch = std::move(first.found.front());
        first.found.pop_front();
        first.weight -= batch.weight();
        changed_.notify_all();
        return true;
      }
      chunks_.pop_front();
      ++firstChunk_;
      changed_.notify_all();
    }
  }

 private:
  struct Chunk {
    std::deque<Batch> found;
    std::size_t weight = 0;
    bool isDone = false;
  };

  struct Worker {
    explicit Worker(Parallel& all)
        : scan(all.reading_.filter, all.reading_.logClock),
          reader(
              [&all](char* into, std::size_t size, std::int64_t offset) { return all.file_.read(into, size, offset); },
              scan, [&all](std::int64_t offset, std::int64_t wall) { return all.folds_.isSecondPass(offset, wall); },
              all.path_, all.reading_.logClock),
          all_(all) {
      reader.begin(0, RangeReader::toTheEnd);
    }
    bool readAlone(Batch& batch) {
      const bool isMore = reader.step(batch);
      reportGivenUp(scan.takeGivenUp(), all_.path_, all_.reading_.troubles);
      return isMore;
    }
    BlockScan scan;
    RangeReader reader;
    Parallel& all_;
  };

  void work() {
    try {
      Worker worker(*this);
      for (;;) {
        const std::optional<std::size_t> index = takeChunk();
        if (!index) return;
        const std::int64_t from = static_cast<std::int64_t>(*index) * chunkSize;
        char byte = 0;
        const bool isBehindEnd = file_.read(&byte, 1, from) == 0;
        worker.reader.begin(from, from + chunkSize);
        for (bool isMore = !isBehindEnd; isMore;) {
          Batch batch;
          isMore = worker.reader.step(batch);
          if (!batch.isEmpty() && !deliver(*index, std::move(batch))) return;
        }
        reportGivenUp(worker.scan.takeGivenUp(), path_, reading_.troubles);
        finish(*index, isBehindEnd);
      }
    } catch (...) {
      const std::lock_guard lock(mutex_);
      failure_ = std::current_exception();
      changed_.notify_all();
    }
  }

  std::optional<std::size_t> takeChunk() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isStopped_ || isEndFound_ || chunks_.size() < ahead_; });
    if (isStopped_ || isEndFound_) return std::nullopt;
    chunks_.emplace_back();
    return firstChunk_ + chunks_.size() - 1;
  }

  bool deliver(std::size_t index, Batch batch) {
    std::unique_lock lock(mutex_);
    Chunk& chunk = chunks_[index - firstChunk_];  // keeps its address while chunks are added and removed at the ends
    changed_.wait(lock, [&] { return isStopped_ || chunk.weight < heldWeight; });
    if (isStopped_) return false;
    chunk.weight += batch.weight();
    chunk.found.push_back(std::move(batch));
    changed_.notify_all();
    return true;
  }

  void finish(std::size_t index, bool isBehindEnd) {
    const std::lock_guard lock(mutex_);
    chunks_[index - firstChunk_].isDone = true;
    isEndFound_ |= isBehindEnd;
    changed_.notify_all();
  }

  const std::string& path_;
  const Reading& reading_;
  OpenFile file_;
  FoldsOfFile folds_;
  std::size_t ahead_ = 1;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Chunk> chunks_;  // taken by a thread and not yet handed out
  std::size_t firstChunk_ = 0;
  bool isEndFound_ = false, isStopped_ = false;
  std::exception_ptr failure_;
  std::unique_ptr<Worker> alone_;
  std::vector<std::thread> threads_;
};

FileSource::FileSource(const std::string& path, const Reading& reading) : path_(path), reading_(reading) { open(); }

FileSource::~FileSource() {
  parallel_.reset();
  close();
}

void FileSource::open() {
  struct stat status {};
  if (path_ == "-") {
    if (::fstat(STDIN_FILENO, &status) == 0 && isStandardOutput(status)) return reportOutput();
    sequential_ = std::make_unique<Sequential>(STDIN_FILENO, path_, reading_);
    return;
  }
  descriptor_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor_ < 0) {
    const int error = errno;
    return reading_.troubles.report(shownName(path_), "cannot be opened", error);
  }
  if (::fstat(descriptor_, &status) != 0) return reading_.troubles.report(path_, "cannot be read", errno);
  if (isStandardOutput(status)) return reportOutput();
  // Files such as those in /proc have a size of 0 although they have content.
  if (S_ISREG(status.st_mode) && status.st_size > 0) {
    ::posix_fadvise(descriptor_, 0, 0, POSIX_FADV_SEQUENTIAL);
    if (reading_.filter.level) noteMissingLevel();
    parallel_ = std::make_unique<Parallel>(descriptor_, status.st_size, path_, reading_);
  } else {
    sequential_ = std::make_unique<Sequential>(descriptor_, path_, reading_);
  }
}

void FileSource::reportOutput() { reading_.troubles.report(path_, "is also the output, and is left out"); }

void FileSource::noteMissingLevel() const {
  char head[1024];
  const ssize_t size = ::pread(descriptor_, head, sizeof head, 0);
  if (size <= 0) return;
  const std::string_view bytes(head, static_cast<std::size_t>(size));
  const std::string_view line = bytes.substr(0, bytes.find('\n'));
  const std::optional<HeadTime> time = headTime(line.data(), line.data() + line.size());
  if (time && recordOf(line, *time).flag == 0) {
    reading_.troubles.note(path_, "the first message has no level; --level shows only messages that have one");
  }
}

void FileSource::close() noexcept {
  if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

bool FileSource::next(Batch& batch) {
  const bool isMore = parallel_ ? parallel_->next(batch) : sequential_ && sequential_->next(batch);
  if (isMore) return true;
  parallel_.reset();
  sequential_.reset();
  close();
  return false;
}

}  // namespace norvik_log

// programs/norvik-log/Follow.h - reads what is there, and then what is added, without an end.
//
// A folder is followed across rolls: new files are read as they come, files that were renamed go on where they were,
// and one that was removed or moved away is read until another one was begun and nothing more comes. A file that is
// replaced by another of its name is followed likewise. A file that became shorter is read from its start again.
//
// A line without a line feed is held until that comes, or the next file was begun and nothing more comes. The last
// message is held for a moment, because more lines of it may come; lines that come later count as a message that
// continues it.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BlockScan.h"
#include "FileSource.h"
#include "Folds.h"
#include "LogSource.h"

namespace norvik_log {

using Moment = std::chrono::steady_clock::time_point;

/// One open file that grows.
class GrowingFile {
 public:
  /// Owns the descriptor. `path` outlives the records.
  GrowingFile(int descriptor, const std::string& path, const Reading& reading);
  ~GrowingFile();
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;

  /// Adds what whole messages were written since; false where nothing was, or nothing that is whole. The last message
  /// is held for a moment, unless the next file was begun.
  bool next(Batch& batch, Moment now, bool isLastFile);
  /// Adds what is left, whole or not.
  void finish(Batch& batch);
  /// From now on it is open only while it has, or may have, something to be read.
  void rest() noexcept;
  /// Of a file that rests: what its path and its size are now.
  void noteState(const std::string& path, std::int64_t size);
  [[nodiscard]] bool isResting() const noexcept { return isResting_; }

  [[nodiscard]] bool isSameFile(std::uint64_t device, std::uint64_t inode) const noexcept {
    return device == device_ && inode == inode_;
  }
  /// Whether a message waits for its next lines.
  [[nodiscard]] bool holdsLines() const noexcept { return !pending_.empty(); }
  /// When something was last read from it.
  [[nodiscard]] Moment lastGrowth() const noexcept { return lastGrowth_; }

 private:
  bool read(Moment now);
  void scan(std::size_t size, Batch& batch);
  bool openAgain();
  void close() noexcept;

  int descriptor_;
  const std::string& path_;
  const Reading& reading_;
  WallClock clock_;
  Folds folds_;
  BlockScan scan_;
  std::uint64_t device_ = 0, inode_ = 0;
  std::int64_t offset_ = 0;  // of the first byte that is not read
  std::string pending_;      // read, not yet scanned
  std::optional<Record> last_;
  bool isFlushed_ = false;  // the last record was shown, and may be continued
  Moment lastGrowth_;
  bool isResting_ = false, mayHaveMore_ = true;
  std::string pathNow_;
};

/// A source whose next() adds what was logged until now.
class FollowedSource : public LogSource {
 public:
  /// Looks what there is; next() then adds it.
  virtual void look(Moment now, bool mayNamesHaveChanged) = 0;
  /// Whether a message waits for its next lines.
  [[nodiscard]] virtual bool holdsLines() const noexcept { return false; }
  /// The folder whose changes matter; empty where none does.
  [[nodiscard]] virtual std::string folder() const = 0;
};

/// A file or a folder of log files.
class FollowedPath : public FollowedSource {
 public:
  FollowedPath(std::string path, const Reading& reading);
  ~FollowedPath() override;

  void look(Moment now, bool mayNamesHaveChanged) override;
  bool next(Batch& batch) override;
  [[nodiscard]] bool holdsLines() const noexcept override;
  [[nodiscard]] std::string folder() const override;

 private:
  struct File {
    std::unique_ptr<GrowingFile> file;
    std::optional<Moment> goneSince;  // its name leads elsewhere, or nowhere
  };

  [[nodiscard]] std::vector<std::string> pathsNow();
  void open(const std::string& path);
  void dropFinished(Batch& batch);

  const std::string path_;
  const Reading& reading_;
  std::deque<std::string> names_;  // of files, for the records
  std::deque<File> files_;         // in the order in which they were begun
  Moment now_;
};

/// Wakes up when folders change; where the system cannot tell, every so often.
class ChangeWatch {
 public:
  ChangeWatch();
  ~ChangeWatch();
  ChangeWatch(const ChangeWatch&) = delete;
  ChangeWatch& operator=(const ChangeWatch&) = delete;

  /// Again for one that was removed and made anew. Of "" no change is reported.
  void add(const std::string& folder);
  /// Returns after a change or the time given; false when the reader of standard output has closed it.
  bool wait(std::chrono::milliseconds longest);
  /// Whether a file was made, removed or renamed since the last call, or may have been.
  [[nodiscard]] bool takeNamesChanged() noexcept;

 private:
  const int descriptor_;
  bool isBlind_ = false;  // something is not watched
  bool haveNamesChanged_ = true;
  Moment lastLook_;
};

/// Adds what a round found to the output. Returns when the reader of standard output has closed it, or when none of the
/// sources can be followed.
void follow(const std::vector<std::string>& names, const Reading& reading,
            const std::function<void(const Batch&)>& show, const std::function<void()>& flush);

}  // namespace norvik_log

// programs/norvik-log/Follow.h - reads the existing messages and then the ones that are added, without an end.
//
// A folder is followed across rolls. New files are read when they appear. A renamed file is read on from the same
// position. A removed or moved file is read until a newer file exists and nothing more is written to the old one. A
// file that is replaced by another of the same name is followed in the same way. A file that becomes shorter is read
// from its start again.
//
// A line without a line feed is held until the line feed is written, or until a newer file exists and nothing more is
// written to the old one. The last message is held for 200 ms, because more lines of it may follow. Lines that follow
// later are shown as a message that continues it.
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

/// An open file that grows.
class GrowingFile {
 public:
  /// Owns the descriptor. `path` must outlive the records.
  GrowingFile(int descriptor, const std::string& path, const Reading& reading);
  ~GrowingFile();
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;

  /// Adds the complete messages that were written since the last call. Returns false if there are none. The last
  /// message is held for a moment, unless a newer file exists.
  bool next(Batch& batch, Moment now, bool isLastFile);
  /// Adds the rest of the file, even if its last line is incomplete.
  void finish(Batch& batch);
  /// From now on, the file is open only while it has, or may have, unread bytes.
  void rest() noexcept;
  /// Tells a resting file its current path and size.
  void noteState(const std::string& path, std::int64_t size);
  [[nodiscard]] bool isResting() const noexcept { return isResting_; }

  [[nodiscard]] bool isSameFile(std::uint64_t device, std::uint64_t inode) const noexcept {
    return device == device_ && inode == inode_;
  }
  /// True if a message waits for more lines.
  [[nodiscard]] bool holdsLines() const noexcept { return !pending_.empty(); }
  /// The time at which bytes were last read from it.
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
  std::int64_t offset_ = 0;  // of the first unread byte
  std::string pending_;      // bytes that were read but not scanned yet
  std::optional<Record> last_;
  bool isFlushed_ = false;  // the last record was shown, and may be continued
  Moment lastGrowth_;
  bool isResting_ = false, mayHaveMore_ = true;
  std::string pathNow_;
};

/// A source whose next() adds the messages that were logged until now.
class FollowedSource : public LogSource {
 public:
  /// Looks for new files and messages, which next() then adds.
  virtual void look(Moment now, bool mayNamesHaveChanged) = 0;
  /// True if a message waits for more lines.
  [[nodiscard]] virtual bool holdsLines() const noexcept { return false; }
  /// The folder to watch for changes; empty if there is none.
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
    std::optional<Moment> goneSince;  // since then, its name leads to another file or to none
  };

  [[nodiscard]] std::vector<std::string> pathsNow();
  void open(const std::string& path);
  void dropFinished(Batch& batch);

  const std::string path_;
  const Reading& reading_;
  std::deque<std::string> names_;  // the paths of the files, to which the records refer
  std::deque<File> files_;         // in the order of their creation
  Moment now_;
};

/// Waits for changes of folders. If the system cannot watch a folder, it returns after a short interval.
class ChangeWatch {
 public:
  ChangeWatch();
  ~ChangeWatch();
  ChangeWatch(const ChangeWatch&) = delete;
  ChangeWatch& operator=(const ChangeWatch&) = delete;

  /// Call it again for a folder that was removed and created anew. An empty path is ignored.
  void add(const std::string& folder);
  /// Returns after a change or after `longest`. False if the reader of standard output has closed it.
  bool wait(std::chrono::milliseconds longest);
  /// True if a file was created, removed or renamed since the last call, or if that is possible.
  [[nodiscard]] bool takeNamesChanged() noexcept;

 private:
  const int descriptor_;
  bool isBlind_ = false;  // a folder is not watched
  bool haveNamesChanged_ = true;
  Moment lastLook_;
};

/// Calls `show` with the messages of each round. Returns when the reader of standard output has closed it, or if no
/// source can be followed.
void follow(const std::vector<std::string>& names, const Reading& reading,
            const std::function<void(const Batch&)>& show, const std::function<void()>& flush);

}  // namespace norvik_log

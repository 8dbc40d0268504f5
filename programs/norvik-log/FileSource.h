// programs/norvik-log/FileSource.h - a log file, a named pipe or standard input. A large file is searched by one thread
// for each processor.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "Filter.h"
#include "LogSource.h"
#include "Troubles.h"
#include "WallClock.h"

namespace norvik_log {

/// The settings that all sources of a run share. Must outlive the sources.
struct Reading {
  const Filter& filter;
  const WallClock& logClock;  // the zone of times without an offset
  Troubles& troubles;
  bool hasManySources = false;        // several sources are read alternately, so each is read without threads
  std::chrono::seconds patience{60};  // the longest wait for an answer of a server
};

/// The name of a source in a message that it does not exist. A part that may be a password is left out, because the
/// name may be a mistyped URL.
[[nodiscard]] std::string shownName(const std::string& name);

/// Reports messages for which the search for the pattern was given up. The report has no number, because the total is
/// not known yet.
void reportGivenUp(std::size_t count, const std::string& source, Troubles& troubles);

class FileSource : public LogSource {
 public:
  /// "-" is standard input. A file that cannot be opened is reported and has no messages. Opening a pipe waits for its
  /// writer. The path must outlive the source and its records, which refer to it.
  FileSource(const std::string& path, const Reading& reading);
  ~FileSource() override;

  bool next(Batch& batch) override;

 private:
  class Sequential;
  class Parallel;

  void open();
  void reportOutput();
  /// Tells a user who filters by level that the file is of a form without levels.
  void noteMissingLevel() const;
  void close() noexcept;

  const std::string& path_;
  const Reading& reading_;
  int descriptor_ = -1;
  std::unique_ptr<Sequential> sequential_;
  std::unique_ptr<Parallel> parallel_;
};

}  // namespace norvik_log

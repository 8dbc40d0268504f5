// programs/norvik-log/FileSource.h - a log file, a named pipe or standard input. Large files are searched by as many
// threads as there are processors.
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

/// What all sources of a run share; outlives them.
struct Reading {
  const Filter& filter;
  const WallClock& logClock;  // of times without an offset
  Troubles& troubles;
  bool hasManySources = false;        // read side by side: no threads for each
  std::chrono::seconds patience{60};  // with a server that does not answer
};

/// How a source that is not there is shown: without what may be a password, where it may be a mistyped address.
[[nodiscard]] std::string shownName(const std::string& name);

/// Of messages on which the pattern took too long. How many there are in all is not known yet.
void reportGivenUp(std::size_t count, const std::string& source, Troubles& troubles);

class FileSource : public LogSource {
 public:
  /// "-" is standard input. What cannot be opened is reported, and has no messages. A pipe is waited for. The path
  /// outlives the records, which refer to it.
  FileSource(const std::string& path, const Reading& reading);
  ~FileSource() override;

  bool next(Batch& batch) override;

 private:
  class Sequential;
  class Parallel;

  void open();
  void reportOutput();
  void close() noexcept;

  const std::string& path_;
  const Reading& reading_;
  int descriptor_ = -1;
  std::unique_ptr<Sequential> sequential_;
  std::unique_ptr<Parallel> parallel_;
};

}  // namespace norvik_log

// programs/norvik-log/Output.h - the forms in which the found messages are written.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "LogLine.h"
#include "WallClock.h"

namespace norvik_log {

class Output {
 public:
  virtual ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Throws std::system_error.
  virtual void add(const Record& record) = 0;
  /// Writes the messages that were added so far, if their output is already known.
  virtual void flush() {}
  virtual void finish() { flush(); }

 protected:
  Output() = default;
};

/// Buffers bytes for standard output.
class StandardOutput {
 public:
  std::string text;

  /// Writes `text` if it is large enough. Throws std::system_error.
  void writeIfLarge() {
    constexpr std::size_t large = 64 << 10;
    if (text.size() >= large) write();
  }
  void write();
};

/// The lines as in the log.
class LineOutput : public Output {
 public:
  struct Style {
    bool hasColours = false;
    bool isTerminal = false;  // control characters are shown as escapes
    bool hasSources = false;  // each line begins with its source
  };
  explicit LineOutput(Style style) : style_(style) {}

  void add(const Record& record) override;
  void flush() override { out_.write(); }

 private:
  void addLine(std::string_view line);
  void addColouredHead(const Record& record, std::string_view line);

  const Style style_;
  StandardOutput out_;
};

/// One JSON object for each message, one in a line. Always valid UTF-8, whatever bytes the log has.
class JsonOutput : public Output {
 public:
  void add(const Record& record) override;
  void flush() override { out_.write(); }

 private:
  StandardOutput out_;
  std::string held_;
};

/// {"time":"2021-05-10T13:30:12.045Z","level":"WARN",...} and a line feed.
void appendJson(std::string& result, const Record& record);

/// "2021-05-10T13:30:12.045Z".
[[nodiscard]] std::string utcTime(std::int64_t instant);
/// "2021-05-10 14:30:12.045", for a wall time.
[[nodiscard]] std::string wallTimeText(std::int64_t wallTime);

/// The number of messages of each level in each hour, as bars.
class CountOutput : public Output {
 public:
  CountOutput(const WallClock& clock, std::size_t width, bool hasColours);

  void add(const Record& record) override;
  void finish() override;
  /// The chart. If the width is 30 or more, no line is wider than it.
  [[nodiscard]] std::string chart() const;

 private:
  /// Levels from ERROR to VERBOSE, then other flags, then messages without a level.
  static constexpr std::size_t kinds = 7;
  struct Hour {
    std::int64_t start;  // an instant; the largest value for messages without a time
    int offset;
    auto operator<=>(const Hour&) const = default;
  };
  using Counts = std::array<std::uint64_t, kinds>;

  const WallClock clock_;
  const std::size_t width_;
  const bool hasColours_;
  std::map<Hour, Counts> hours_;
};

}  // namespace norvik_log

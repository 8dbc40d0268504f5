// programs/norvik-log/LogLine.h - parses the lines of log files: which lines begin a message, and the parts of a
// message.
//
//   2021/05/10 14:30:12:045  40 payslips written
//   2021-05-10T13:30:12.045Z WARN    [com.norvik.main-thread:4711] PayRun.cpp:42  "Zoë\nSmith" has no bank account
//
// A message begins with a line that begins with a time: YYYY-MM-DD or YYYY/MM/DD, a space or T, HH:MM:SS, optionally
// one of . , : and up to nine digits of a second, and optionally an offset: Z, +01:00 or +0100. A space, a tab or the
// end of the line follows. Times without an offset are wall times of the log's zone. A line that begins otherwise
// belongs to the message before it.
//
// All functions here are pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace norvik_log {

struct HeadTime {
  std::int64_t milliseconds = 0;     // since 1970, of the time as written
  std::optional<int> offsetSeconds;  // east of UTC; absent: the offset of the log's zone
  std::size_t size = 0;              // bytes
};

/// The time at the beginning of a line. `begin` is the line's first byte; the line may end before `end`.
[[nodiscard]] std::optional<HeadTime> headTime(const char* begin, const char* end) noexcept;
/// The size in bytes of the longest time and the byte after it. That many bytes decide whether a line begins with a
/// time.
inline constexpr std::size_t longestHeadTime = 36;

/// The number of days from 1970-01-01 to a day of the Gregorian calendar.
[[nodiscard]] std::int64_t daysSince1970(std::int64_t year, int month, int day) noexcept;
[[nodiscard]] int daysInMonth(std::int64_t year, int month) noexcept;

/// A part of a record's bytes.
struct Part {
  std::uint32_t begin = 0, size = 0;
};

/// A record's names, unescaped.
struct Names {
  std::string label, thread, file;
};

/// A message of a log. A part that the line does not have is empty or absent.
struct Record {
  std::string_view bytes;            // all its lines, without the last line feed
  std::optional<std::int64_t> time;  // milliseconds since 1970, UTC
  int flag = 0;                      // of LogLevel.h, or another number; 0: the line has no level
  Part label, thread, file;          // as written in the line, escaped
  std::optional<int> line;
  std::uint32_t textBegin = 0;  // in `bytes`
  bool isEscaped = false;       // the text's first line has escapes
  std::string_view source;      // the file's path
  /// Set if this record is a piece that continues the previous record: the names of that record. Time, level and line
  /// are copied from it.
  std::shared_ptr<const Names> continued;

  [[nodiscard]] std::string_view part(Part wanted) const noexcept { return bytes.substr(wanted.begin, wanted.size); }
};

/// All parts of a record except its time, which may depend on a zone. `bytes` begin with the given time.
[[nodiscard]] Record recordOf(std::string_view bytes, const HeadTime& time) noexcept;

/// The text of a record without its escapes. The result is a view of the record if it has no escapes, and of `held`
/// otherwise. A text that the formatter would have written differently is returned unchanged.
[[nodiscard]] std::string_view textOf(const Record& record, std::string& held);
[[nodiscard]] Names namesOf(const Record& record);

/// Reverses the escapes of DDLogLineFormatter. Escapes of bytes that were not UTF-8 become these bytes. Returns false,
/// and leaves `result` unchanged, if a backslash begins no escape.
bool appendUnescaped(std::string& result, std::string_view escaped);

/// "ERROR" to "VERBOSE"; the number of any other flag; empty for 0.
[[nodiscard]] std::string levelName(int flag);
/// The flag of a level's name, in any case, also "warning"; or a number from 1. Absent otherwise.
[[nodiscard]] std::optional<int> levelNamed(std::string_view name);

}  // namespace norvik_log

// programs/norvik-log/LogLine.h - the lines of log files: which begin a message, and what stands in one.
//
//   2021/05/10 14:30:12:045  40 payslips written
//   2021-05-10T13:30:12.045Z WARN    [com.norvik.main-thread:4711] PayRun.cpp:42  "Zoë\nSmith" has no bank account
//
// A message begins with a line that begins with a time: YYYY-MM-DD or YYYY/MM/DD, a blank or T, HH:MM:SS, up to nine
// digits of a second after one of . , : and an offset, Z, +01:00 or +0100, where there is one. A blank, a tab or the
// line's end follows. Times without an offset are what the clocks of the log's zone showed. Lines that begin otherwise
// belong to the message before.
//
// Everything here is pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace norvik_log {

struct HeadTime {
  std::int64_t milliseconds = 0;     // since 1970, of what is written
  std::optional<int> offsetSeconds;  // east of UTC; absent: as the log's zone has it
  std::size_t size = 0;              // bytes
};

/// The time that a line begins with. `begin` is the line's first byte; the line may end before `end`.
[[nodiscard]] std::optional<HeadTime> headTime(const char* begin, const char* end) noexcept;
/// Bytes of the longest time and the one behind it: with as many it is decided whether a line begins with one.
inline constexpr std::size_t longestHeadTime = 36;

/// Days since 1970-01-01 of a day in the Gregorian calendar.
[[nodiscard]] std::int64_t daysSince1970(std::int64_t year, int month, int day) noexcept;
[[nodiscard]] int daysInMonth(std::int64_t year, int month) noexcept;

/// Part of a record's bytes.
struct Part {
  std::uint32_t begin = 0, size = 0;
};

/// A record's names, unescaped.
struct Names {
  std::string label, thread, file;
};

/// A message as it stands in a log. What a line does not say is empty or absent.
struct Record {
  std::string_view bytes;            // all its lines, without the last line feed
  std::optional<std::int64_t> time;  // milliseconds since 1970, UTC
  int flag = 0;                      // of LogLevel.h, or another number; 0: the line has no level
  Part label, thread, file;          // as they stand there, escaped
  std::optional<int> line;
  std::uint32_t textBegin = 0;  // in `bytes`
  bool isEscaped = false;       // the text's first line has escapes
  std::string_view source;      // the file's path
  /// Of a piece that continues the record before, whose names these are; time, level and line are copied.
  std::shared_ptr<const Names> continued;

  [[nodiscard]] std::string_view part(Part wanted) const noexcept { return bytes.substr(wanted.begin, wanted.size); }
};

/// Everything of a record but its time, which a zone may be needed for. `bytes` begin with the time given.
[[nodiscard]] Record recordOf(std::string_view bytes, const HeadTime& time) noexcept;

/// A record's text without its escapes; a view of the record where it has none, else of `held`. A text that the
/// formatter would have written otherwise stands as it is.
[[nodiscard]] std::string_view textOf(const Record& record, std::string& held);
[[nodiscard]] Names namesOf(const Record& record);

/// Takes the escapes of DDLogLineFormatter back, for bytes that were not UTF-8 to those bytes. False, with `result` as
/// it was, where a backslash begins none.
bool appendUnescaped(std::string& result, std::string_view escaped);

/// "ERROR" to "VERBOSE", the number of any other flag, or nothing for 0.
[[nodiscard]] std::string levelName(int flag);
/// Of a name in any case, "warning" among them, or a number from 1; absent otherwise.
[[nodiscard]] std::optional<int> levelNamed(std::string_view name);

}  // namespace norvik_log

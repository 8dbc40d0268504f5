#include "Output.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <vector>

#include "NorvikCore/logging/LogLevel.h"
#include "VisibleText.h"
#include "programs/common/OutputFile.h"

namespace norvik_log {
namespace {

constexpr std::int64_t hourMilliseconds = 3'600'000;

std::string_view colourOf(int flag) noexcept {
  switch (flag) {
    case norvik::LOG_FLAG_ERROR:
      return "\x1b[1;31m";
    case norvik::LOG_FLAG_WARN:
      return "\x1b[33m";
    case norvik::LOG_FLAG_INFO:
      return "\x1b[32m";
    case norvik::LOG_FLAG_DEBUG:
    case norvik::LOG_FLAG_VERBOSE:
      return "\x1b[36m";
    default:
      return "\x1b[35m";
  }
}
constexpr std::string_view dim = "\x1b[2m", plain = "\x1b[0m";

void appendNumber(std::string& result, std::int64_t number, int width) {
  const std::string digits = std::to_string(number);
  for (auto size = static_cast<int>(digits.size()); size < width; ++size) result += '0';
  result += digits;
}

/// YYYY-MM-DD, the separator, HH:MM:SS.mmm.
void appendTime(std::string& result, std::int64_t milliseconds, char separator) {
  constexpr std::int64_t day = 24 * hourMilliseconds;
  const std::int64_t rest = (milliseconds % day + day) % day;
  std::int64_t days = (milliseconds - rest) / day + 719468;  // since 0000-03-01, so that a leap day ends its year
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const std::int64_t dayOfEra = days - era * 146097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  const std::int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
  appendNumber(result, yearOfEra + era * 400 + (month <= 2 ? 1 : 0), 4);
  result += '-';
  appendNumber(result, month, 2);
  result += '-';
  appendNumber(result, dayOfYear - (153 * monthFromMarch + 2) / 5 + 1, 2);
  result += separator;
  appendNumber(result, rest / hourMilliseconds, 2);
  result += ':';
  appendNumber(result, rest / 60'000 % 60, 2);
  result += ':';
  appendNumber(result, rest / 1000 % 60, 2);
  result += '.';
  appendNumber(result, rest % 1000, 3);
}

/// Returns the first character of a valid UTF-8 text if it is U+0080 to U+009F (which can send commands to a terminal),
/// a line separator or a mark that changes the direction of text. Empty for other characters.
std::string_view commandingCharacter(std::string_view text) noexcept {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) == 0xc2) return byte(1) <= 0x9f ? text.substr(0, 2) : std::string_view();
  if (byte(0) != 0xe2) return {};
  const bool isSeparator = byte(1) == 0x80 && byte(2) >= 0xa8 && byte(2) <= 0xae;
  const bool isIsolate = byte(1) == 0x81 && byte(2) >= 0xa6 && byte(2) <= 0xa9;
  return isSeparator || isIsolate ? text.substr(0, 3) : std::string_view();
}

void appendJsonString(std::string& result, std::string_view text) {
  std::string valid;
  appendValidUtf8(valid, text);
  result += '"';
  for (std::size_t at = 0; at < valid.size(); ++at) {
    const char c = valid[at];
    switch (c) {
      case '\xc2':
      case '\xe2':
        if (const std::string_view command = commandingCharacter(std::string_view(valid).substr(at));
            !command.empty()) {
          std::string visible;
          appendVisible(visible, command, LineFeeds::Escaped);
          // appendVisible() writes a character of two bytes as \x and two digits, which JSON does not allow.
          result += command.size() == 2 ? "\\u00" + visible.substr(2) : visible;
          at += command.size() - 1;
        } else {
          result += c;
        }
        break;
      case '"':
      case '\\':
        result += '\\';
        result += c;
        break;
      case '\n':
        result += "\\n";
        break;
      case '\r':
        result += "\\r";
        break;
      case '\t':
        result += "\\t";
        break;
      default:
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') {
          constexpr char digits[] = "0123456789abcdef";
          result += "\\u00";
          result += {digits[static_cast<unsigned char>(c) >> 4], digits[c & 15]};
        } else {
          result += c;
        }
    }
  }
  result += '"';
}

}  // namespace

Output::~Output() = default;

void StandardOutput::write() {
  if (text.empty()) return;
  programs::printWhole(text);
  text.clear();
}

std::string utcTime(std::int64_t instant) {
  std::string result;
  appendTime(result, instant, 'T');
  return result + 'Z';
}

std::string wallTimeText(std::int64_t wallTime) {
  std::string result;
  appendTime(result, wallTime, ' ');
  return result;
}

void LineOutput::add(const Record& record) {
  if (!style_.hasColours && !style_.isTerminal && !style_.hasSources) {
    out_.text += record.bytes;
    out_.text += '\n';
    return out_.writeIfLarge();
  }
  std::string_view rest = record.bytes;
  for (bool isFirst = true;; isFirst = false) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    if (style_.hasSources) {
      if (style_.hasColours) out_.text += dim;
      appendVisible(out_.text, record.source, LineFeeds::Escaped);
      if (style_.hasColours) out_.text += plain;
      out_.text += ": ";
    }
    if (isFirst && style_.hasColours && record.textBegin > 0) {
      addColouredHead(record, line);
    } else {
      addLine(line);
    }
    out_.text += '\n';
    if (line.size() == rest.size()) break;
    rest.remove_prefix(line.size() + 1);
  }
  out_.writeIfLarge();
}

void LineOutput::addLine(std::string_view line) {
  if (style_.isTerminal) {
    appendVisible(out_.text, line, LineFeeds::Escaped);
  } else {
    out_.text += line;
  }
}

void LineOutput::addColouredHead(const Record& record, std::string_view line) {
  const std::string_view head = line.substr(0, record.textBegin);
  const std::size_t level = record.flag == 0 ? head.size() : head.find(' ') + 1;
  const std::size_t levelEnd = std::min(head.find(' ', level), head.size());
  out_.text += dim;
  addLine(head.substr(0, level));
  out_.text += plain;
  if (record.flag != 0) {
    out_.text += colourOf(record.flag);
    addLine(head.substr(level, levelEnd - level));
    out_.text += plain;
    out_.text += dim;
    addLine(head.substr(levelEnd));
    out_.text += plain;
  }
  addLine(line.substr(head.size()));
}

void appendJson(std::string& result, const Record& record) {
  result += '{';
  const auto begin = [&](std::string_view name) {
    if (result.back() != '{') result += ',';
    result += '"';
    result += name;
    result += "\":";
  };
  const auto addText = [&](std::string_view name, std::string_view text) {
    if (text.empty()) return;
    begin(name);
    appendJsonString(result, text);
  };
  const std::size_t start = result.size();
  if (record.time) addText("time", utcTime(*record.time));
  addText("level", levelName(record.flag));
  const Names names = namesOf(record);
  addText("queue", names.label);
  if (!names.thread.empty()) {
    // The digits without leading zeros, which JSON does not allow.
    begin("thread");
    const std::size_t zeros = std::min(names.thread.find_first_not_of('0'), names.thread.size() - 1);
    result += std::string_view(names.thread).substr(zeros);
  }
  addText("file", names.file);
  if (record.line) {
    begin("line");
    result += std::to_string(*record.line);
  }
  std::string held;
  if (result.size() != start) result += ',';
  result += "\"text\":";
  appendJsonString(result, textOf(record, held));
  addText("source", record.source);
  if (record.continued) result += ",\"continues\":true";
  result += "}\n";
}

void JsonOutput::add(const Record& record) {
  appendJson(out_.text, record);
  out_.writeIfLarge();
}

CountOutput::CountOutput(const WallClock& clock, std::size_t width, bool hasColours)
    : clock_(clock), width_(width), hasColours_(hasColours) {}

void CountOutput::add(const Record& record) {
  if (record.continued) return;
  const auto kind = [&]() -> std::size_t {
    switch (record.flag) {
      case norvik::LOG_FLAG_ERROR:
        return 0;
      case norvik::LOG_FLAG_WARN:
        return 1;
      case norvik::LOG_FLAG_INFO:
        return 2;
      case norvik::LOG_FLAG_DEBUG:
        return 3;
      case norvik::LOG_FLAG_VERBOSE:
        return 4;
      default:
        return record.flag != 0 ? 5 : 6;
    }
  };
  Hour hour{std::numeric_limits<std::int64_t>::max(), 0};
  if (record.time) {
    hour.offset = clock_.offsetSeconds(*record.time);
    const std::int64_t wall = *record.time + hour.offset * std::int64_t{1000};
    hour.start = *record.time - ((wall % hourMilliseconds) + hourMilliseconds) % hourMilliseconds;
  }
  ++hours_[hour][kind()];
}

void CountOutput::finish() { programs::printWhole(chart()); }

namespace {

constexpr std::array<std::string_view, 7> kindNames = {"error",   "warn",  "info",    "debug",
                                                       "verbose", "other", "no level"};
constexpr std::string_view kindMarks = "EWIDVo.";
constexpr std::array<int, 7> kindFlags = {1, 2, 4, 8, 16, 32, 0};

/// The number of cells of each kind in a bar. Together they are as many as the total requires, and each kind with
/// messages has at least one cell if there is room.
std::array<std::size_t, 7> cellsOf(const std::array<std::uint64_t, 7>& counts, std::uint64_t largest,
                                   std::size_t room) {
  std::array<std::size_t, 7> cells{};
  std::uint64_t total = 0;
  std::size_t kindsThere = 0;
  for (const std::uint64_t count : counts) {
    total += count;
    kindsThere += count > 0;
  }
  if (total == 0 || room == 0) return cells;
  const double scale = static_cast<double>(room) / static_cast<double>(largest);
  const auto rounded = static_cast<std::size_t>(static_cast<double>(total) * scale + 0.5);
  std::size_t left = std::min(room, std::max(rounded, std::min(kindsThere, room)));
  for (std::size_t i = 0; i < cells.size(); ++i) {  // one cell each first, beginning with the most severe
    if (counts[i] > 0 && left > 0) {
      cells[i] = 1;
      --left;
    }
  }
  while (left > 0) {
    std::size_t most = cells.size();
    double mostMissing = 0;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const double missing = static_cast<double>(counts[i]) * scale - static_cast<double>(cells[i]);
      if (cells[i] > 0 && (most == cells.size() || missing > mostMissing)) {
        most = i;
        mostMissing = missing;
      }
    }
    ++cells[most];
    --left;
  }
  return cells;
}

std::string paddedLeft(const std::string& text, std::size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

}  // namespace

std::string CountOutput::chart() const {
  if (hours_.empty()) return "";
  Counts sums{};
  std::uint64_t largest = 0;
  bool hasOffsets = false;
  const int firstOffset = hours_.begin()->first.offset;
  for (const auto& [hour, counts] : hours_) {
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < kinds; ++i) {
      sums[i] += counts[i];
      total += counts[i];
    }
    largest = std::max(largest, total);
    if (hour.start != std::numeric_limits<std::int64_t>::max()) hasOffsets |= hour.offset != firstOffset;
  }
  const auto hourText = [&](const Hour& hour) {
    if (hour.start == std::numeric_limits<std::int64_t>::max()) return std::string("no time");
    std::string text = wallTimeText(hour.start + hour.offset * std::int64_t{1000}).substr(0, 16);
    if (hasOffsets) {
      const int minutes = hour.offset / 60;
      text += minutes < 0 ? " -" : " +";
      appendNumber(text, std::abs(minutes) / 60, 2);
      text += ':';
      appendNumber(text, std::abs(minutes) % 60, 2);
    }
    return text;
  };

  struct Column {
    std::string heading;
    std::vector<std::size_t> kinds;
    std::size_t width;
  };
  std::vector<Column> columns;
  const auto addColumn = [&](std::string heading, std::vector<std::size_t> of) {
    std::uint64_t sum = 0;
    for (const std::size_t kind : of) sum += sums[kind];
    const std::size_t width = std::max(heading.size(), std::to_string(sum).size());
    columns.push_back({std::move(heading), std::move(of), width});
  };
  for (std::size_t i = 0; i < kinds; ++i) {
    if (sums[i] > 0) addColumn(std::string(kindNames[i]), {i});
  }
  constexpr std::size_t gap = 2, narrowestBar = 8;
  const std::size_t hourWidth = hasOffsets ? 23 : 16;
  const auto textWidth = [&] {
    std::size_t width = hourWidth;
    for (const Column& column : columns) width += gap + column.width;
    return width;
  };
  if (textWidth() + gap + narrowestBar > width_) {
    std::vector<std::size_t> all;
    for (std::size_t i = 0; i < kinds; ++i) all.push_back(i);
    columns.clear();
    addColumn("all", all);
  }
  const std::size_t barRoom = textWidth() + gap < width_ ? width_ - textWidth() - gap : 0;

  std::string result = "hour" + std::string(hourWidth - 4, ' ');
  for (const Column& column : columns) result += std::string(gap, ' ') + paddedLeft(column.heading, column.width);
  result += '\n';
  const auto addRow = [&](const std::string& name, const Counts& counts, bool hasBar) {
    result += name + std::string(hourWidth - name.size(), ' ');
    for (const Column& column : columns) {
      std::uint64_t sum = 0;
      for (const std::size_t kind : column.kinds) sum += counts[kind];
      result += std::string(gap, ' ') + paddedLeft(std::to_string(sum), column.width);
    }
    if (hasBar && barRoom > 0) {
      result += std::string(gap, ' ');
      const auto cells = cellsOf(counts, largest, barRoom);
      for (std::size_t i = 0; i < kinds; ++i) {
        if (cells[i] == 0) continue;
        if (hasColours_) result += colourOf(kindFlags[i]);
        result += std::string(cells[i], kindMarks[i]);
        if (hasColours_) result += plain;
      }
    }
    result += '\n';
  };
  for (const auto& [hour, counts] : hours_) addRow(hourText(hour), counts, true);
  if (hours_.size() > 1) addRow("all", sums, false);
  return result;
}

}  // namespace norvik_log

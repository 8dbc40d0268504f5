#include "DatabaseEntry.h"

#include <algorithm>

#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "Output.h"

namespace norvik_log {
namespace {

std::string escaped(std::string_view text) { return norvik::DDLogLineFormatter::escaped(norvik::NSString(text)).str(); }

/// Escapes the text, and also the character `also`, which becomes `replacement`.
std::string escapedName(std::string_view text, char also, std::string_view replacement) {
  std::string result;
  for (const char c : escaped(text)) {
    if (c == also) {
      result += replacement;
    } else {
      result += c;
    }
  }
  return result;
}

}  // namespace

std::string lineOf(const DatabaseEntry& entry) {
  constexpr std::size_t levelWidth = 7;
  std::string line = utcTime(entry.time) + ' ';
  std::string level = entry.flag == 0 ? "0" : levelName(entry.flag);
  level.resize(std::max(level.size(), levelWidth), ' ');
  line += level + " [" + escapedName(entry.queue.empty() ? "-" : entry.queue, ']', "\\x5d") + ':';
  const bool isNumber = !entry.thread.empty() && entry.thread.find_first_not_of("0123456789") == entry.thread.npos;
  line += isNumber ? entry.thread : std::string_view("0");
  const std::string_view file = entry.file.substr(entry.file.rfind('/') + 1);  // npos + 1 is 0
  line += "] " + escapedName(file.empty() ? "-" : file, ' ', "\\x20") + ':' + std::to_string(entry.line) + "  ";
  return line + escaped(entry.text);
}

void addEntry(const DatabaseEntry& entry, FilterCheck& check, std::string_view source, Batch& batch) {
  if (!check.filter().admitsTime(entry.time) || !check.filter().admitsLevel(entry.flag)) return;
  const std::string line = lineOf(entry);
  const auto time = headTime(line.data(), line.data() + line.size());
  if (!time) return;
  Record record = recordOf(line, *time);
  record.time = entry.time;
  record.source = source;
  if (check.admits(record)) batch.add(record);
}

}  // namespace norvik_log

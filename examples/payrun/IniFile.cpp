#include "IniFile.h"

#include <algorithm>

namespace payrun {

namespace {

constexpr std::string_view whiteSpace = " \t\r";

std::string_view withoutWhiteSpace(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(whiteSpace);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(whiteSpace) + 1 - begin);
}

}  // namespace

std::vector<IniEntry> readIni(const TextFile& file) {
  std::vector<IniEntry> entries;
  const std::string_view text = file.text();
  const auto offsetOf = [&](std::string_view part) { return static_cast<std::size_t>(part.data() - text.data()); };
  std::string_view section;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view whole = text.substr(begin, end - begin);
    const std::string_view line = withoutWhiteSpace(whole);
    begin = end + 1;
    if (line.empty() || line.front() == ';' || line.front() == '#') continue;
    if (line.front() == '[' && line.back() == ']') {
      section = withoutWhiteSpace(line.substr(1, line.size() - 2));
      continue;
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || withoutWhiteSpace(line.substr(0, equals)).empty()) {
      file.refuse(offsetOf(line), quoted(line) + " is neither [section] nor key = value");
    }
    const std::string_view key = withoutWhiteSpace(line.substr(0, equals));
    const std::string_view value = withoutWhiteSpace(line.substr(equals + 1));
    const auto same = [&](const IniEntry& entry) { return entry.section == section && entry.key == key; };
    if (std::any_of(entries.begin(), entries.end(), same)) {
      file.refuse(offsetOf(key), quoted(key) + " is given twice");
    }
    entries.push_back(
        {section, key, value, offsetOf(key), value.empty() ? offsetOf(line) + line.size() : offsetOf(value)});
  }
  return entries;
}

}  // namespace payrun

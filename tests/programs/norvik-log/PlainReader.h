// tests/programs/norvik-log/PlainReader.h - a slow and simple reader of logs, for comparison.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "NorvikCore/logging/DDLogLineFormatter.h"

namespace norvik_log_test {

struct PlainMessage {
  std::string bytes;  // all lines, joined by line feeds
  std::string text;   // without escapes
  int flag = 0;
};

/// True if a line begins with a time, by a regular expression.
inline bool beginsWithTime(const std::string& line) {
  static const std::regex form("^([0-9]{4})([-/])([0-9]{2})\\2([0-9]{2})[ T]([0-9]{2}):([0-9]{2}):([0-9]{2})"
                               "([.,:][0-9]{1,9})?(Z|[+-]([0-9]{2}):?([0-9]{2}))?(?=[ \\t\\r]|$)",
                               std::regex::ECMAScript);
  std::smatch found;
  // The test of a short start avoids the expression's own rules for line ends and zero bytes.
  const std::string start = line.substr(0, 40);
  if (!std::regex_search(start, found, form, std::regex_constants::match_continuous)) return false;
  const auto number = [&](std::size_t i) { return found[i].matched ? std::stoi(found[i].str()) : 0; };
  const int year = number(1), month = number(3), day = number(4);
  if (year < 1 || month < 1 || month > 12 || day < 1) return false;
  const bool isLeap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  const int days[] = {31, isLeap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (day > days[month - 1]) return false;
  return number(5) <= 23 && number(6) <= 59 && number(7) <= 59 && number(10) <= 23 && number(11) <= 59;
}

/// The text with its escapes reversed; absent if a backslash begins no escape.
inline std::optional<std::string> plainlyUnescaped(const std::string& text) {
  std::string result;
  const auto digitsAt = [&](std::size_t at, std::size_t count) {
    return at + count <= text.size() &&
           text.substr(at, count).find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      result += text[i];
      continue;
    }
    const char kind = i + 1 < text.size() ? text[i + 1] : '\0';
    if (kind == '\\' || kind == 'n' || kind == 'r' || kind == 't') {
      result += kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind == 't' ? '\t' : '\\';
      i += 1;
    } else if (kind == 'x' && digitsAt(i + 2, 2)) {
      result += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
      i += 3;
    } else if (kind == 'u' && digitsAt(i + 2, 4)) {
      const unsigned point = static_cast<unsigned>(std::stoi(text.substr(i + 2, 4), nullptr, 16));
      if (point < 0x80) {
        result += static_cast<char>(point);
      } else if (point < 0x800) {
        result += static_cast<char>(0xc0 + point / 64);
        result += static_cast<char>(0x80 + point % 64);
      } else {
        result += static_cast<char>(0xe0 + point / 4096);
        result += static_cast<char>(0x80 + point / 64 % 64);
        result += static_cast<char>(0x80 + point % 64);
      }
      i += 5;
    } else {
      return std::nullopt;
    }
  }
  return result;
}

/// The parts of a line of DDLogLineFormatter.
inline bool readLineForm(const std::string& line, int& flag, std::string& text) {
  static const std::regex form(
      "^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z "
      "((?:ERROR  |WARN   |INFO   |DEBUG  |VERBOSE|-?[0-9]+ *)) \\[[^\\]]*:[0-9]+\\] [^ ]*:-?[0-9]+  ",
      std::regex::ECMAScript);
  // The match needs stack space in proportion to the text's length.
  const std::string start = line.substr(0, 2000);
  std::smatch found;
  if (!std::regex_search(start, found, form, std::regex_constants::match_continuous)) return false;
  std::string level = found[1].str();
  const std::size_t width = level.size();
  level.erase(level.find_last_not_of(' ') + 1);
  if (width != std::max<std::size_t>(7, level.size())) return false;
  const char* const names[] = {"ERROR", "WARN", "INFO", "DEBUG", "VERBOSE"};
  flag = 0;
  for (int i = 0; i < 5; ++i) {
    if (level == names[i]) flag = 1 << i;
  }
  if (flag == 0) {
    try {
      flag = std::stoi(level);
    } catch (const std::out_of_range&) {
      return false;
    }
  }
  const std::string head = found[0].str();
  const std::string place = head.substr(head.rfind("] ") + 2);
  try {
    (void)std::stoi(place.substr(place.rfind(':') + 1));
  } catch (const std::out_of_range&) {
    flag = 0;
    return false;
  }
  const std::string rest = line.substr(head.size());
  text = plainlyUnescaped(rest).value_or(rest);
  if (norvik::DDLogLineFormatter::escaped(norvik::NSString(text)).str() != rest) text = rest;
  return true;
}

inline std::vector<PlainMessage> readPlainly(const std::string& log) {
  std::vector<std::vector<std::string>> groups;
  std::size_t at = 0;
  while (at < log.size()) {
    const std::size_t feed = log.find('\n', at);
    const std::string line = log.substr(at, feed == std::string::npos ? feed : feed - at);
    at = feed == std::string::npos ? log.size() : feed + 1;
    if (groups.empty() || beginsWithTime(line)) groups.emplace_back();
    groups.back().push_back(line);
  }
  std::vector<PlainMessage> messages;
  for (const auto& lines : groups) {
    PlainMessage message;
    for (const std::string& line : lines)
      message.bytes += (message.bytes.empty() && &line == &lines[0] ? "" : "\n") + line;
    std::string rest;
    for (std::size_t i = 1; i < lines.size(); ++i) rest += "\n" + lines[i];
    if (!beginsWithTime(lines[0])) {
      message.text = message.bytes;
    } else if (readLineForm(lines[0], message.flag, message.text)) {
      message.text += rest;
    } else {
      std::size_t begin = 19;
      while (begin < lines[0].size() && std::string_view(" \t\r").find(lines[0][begin]) == std::string_view::npos)
        ++begin;
      for (int spaces = 0; spaces < 2 && begin < lines[0].size() && lines[0][begin] == ' '; ++spaces) ++begin;
      message.text = lines[0].substr(begin) + rest;
    }
    messages.push_back(std::move(message));
  }
  return messages;
}

}  // namespace norvik_log_test

// tests/soak/SoakLines.h - the lines that the soak logs, and checks of the lines that arrive.
//
//   const std::string text = soakText(3, 17);       // "soak 3 17 qrstu Zoë;"
//   parseSoakLine("2021/05/10 14:30:12:045  " + text);    // {3, 17}: complete, with nothing after it
//
// A source is a thread of the process or a child; each numbers its lines from 0. The text after the number is computed
// from both numbers, so that a line that was cut or mixed with another is detected.
#pragma once

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::test {

struct SoakLine {
  int source = 0, number = 0;
};

inline std::string soakText(int source, int number) {
  std::string text = "soak " + std::to_string(source) + " " + std::to_string(number) + " ";
  const int letters = 5 + (source * 31 + number * 7) % 60;
  for (int i = 0; i < letters; ++i) text += static_cast<char>('a' + (source + number + i) % 26);
  return text + " Zoë;";
}

/// Returns nothing if the line does not end with such a text.
inline std::optional<SoakLine> parseSoakLine(std::string_view line) {
  const std::size_t begin = line.find("soak ");
  if (begin == line.npos) return std::nullopt;
  const std::string_view text = line.substr(begin);
  SoakLine parsed;
  const auto [blank, error] = std::from_chars(text.data() + 5, text.data() + text.size(), parsed.source);
  if (error != std::errc() || blank == text.data() + text.size()) return std::nullopt;
  std::from_chars(blank + 1, text.data() + text.size(), parsed.number);
  constexpr int mostSources = 1'000'000, mostNumbers = 100'000'000;
  if (parsed.source < 0 || parsed.source > mostSources || parsed.number < 0 || parsed.number > mostNumbers) {
    return std::nullopt;
  }
  if (text != soakText(parsed.source, parsed.number)) return std::nullopt;
  return parsed;
}

/// Checks lines as they arrive. The lines of one source arrive in order, and may have gaps; there was no gap if the
/// count is that of all lines. Stores a number for each source. One thread calls take(), others may read the count.
class ArrivingLines {
 public:
  /// Returns what is wrong with the line, or an empty text.
  std::string take(std::string_view line) {
    const std::optional<SoakLine> parsed = parseSoakLine(line);
    if (!parsed) return "not a line of the soak: " + std::string(line);
    int& next = next_[parsed->source];
    if (parsed->number < next) return "twice or out of order: " + std::string(line);
    next = parsed->number + 1;
    ++count_;
    last_ = *parsed;
    return {};
  }
  [[nodiscard]] std::uint64_t count() const { return count_; }
  /// The last correct line. For the thread that calls take().
  [[nodiscard]] SoakLine last() const { return last_; }

 private:
  std::map<int, int> next_;
  std::atomic<std::uint64_t> count_ = 0;
  SoakLine last_;
};

/// Checks all lines of a complete log, in any order.
class CompleteLines {
 public:
  std::string take(std::string_view line) {
    const std::optional<SoakLine> parsed = parseSoakLine(line);
    if (!parsed) return "not a line of the soak: " + std::string(line);
    std::vector<bool>& seen = seen_[parsed->source];
    const auto number = static_cast<std::size_t>(parsed->number);
    if (number >= seen.size()) seen.resize(number + 1);
    if (seen[number]) return "twice: " + std::string(line);
    seen[number] = true;
    return {};
  }
  /// The number of the source's lines from 0 to `sent` that did not arrive.
  [[nodiscard]] std::uint64_t missing(int source, int sent) const {
    const auto found = seen_.find(source);
    const auto all = static_cast<std::uint64_t>(sent);
    if (found == seen_.end()) return all;
    return all - static_cast<std::uint64_t>(std::count(found->second.begin(), found->second.end(), true));
  }

 private:
  std::map<int, std::vector<bool>> seen_;
};

}  // namespace norvik::test

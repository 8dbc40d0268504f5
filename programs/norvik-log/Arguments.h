// programs/norvik-log/Arguments.h - the parsed command line.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace norvik_log {

struct Arguments {
  enum class Task { Read, Help, Version };
  enum class Form { Lines, Json, Html, Count };
  enum class Colour { Auto, Always, Never };

  Task task = Task::Read;
  std::vector<std::string> sources;
  std::optional<int> level;
  std::optional<std::string> since, until, thread, text, pattern;
  bool ignoresCase = false;
  bool isUtc = false;                  // typed times, counted times and times on the page are UTC
  std::optional<std::string> logZone;  // the zone of times in logs without an offset; absent: the machine's zone
  Form form = Form::Lines;
  std::filesystem::path html;
  Colour colour = Colour::Auto;
  bool hasSources = false;
  bool follows = false;
  std::chrono::seconds patience{60};
};

/// An invalid command line; what() gives the reason.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Options and sources may be in any order. Every word after "--" is a source. Throws UsageError.
[[nodiscard]] Arguments parseArguments(const std::vector<std::string>& words);

/// The text of --help.
extern const char* const helpText;

}  // namespace norvik_log

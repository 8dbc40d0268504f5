// programs/norvik-log/Arguments.h - what the command line asks for.
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
  bool isUtc = false;                  // times typed, counted and shown on the page
  std::optional<std::string> logZone;  // of times in logs without an offset; absent: the machine's
  Form form = Form::Lines;
  std::filesystem::path html;
  Colour colour = Colour::Auto;
  bool hasSources = false;
  bool follows = false;
  std::chrono::seconds patience{60};
};

/// A command line that cannot be followed; what() says why.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Options and sources in any order; behind "--" everything is a source. Throws UsageError.
[[nodiscard]] Arguments parseArguments(const std::vector<std::string>& words);

/// The text of --help.
extern const char* const helpText;

}  // namespace norvik_log

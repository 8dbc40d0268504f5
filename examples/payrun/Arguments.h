// examples/payrun/Arguments.h - what the command line asks for.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace payrun {

struct Arguments {
  enum class Task { PayRun, Watch, Generate, Help, Version };

  Task task = Task::PayRun;
  std::filesystem::path input;                  // the employer's folder
  int month = 0;                                // tax month, 1 (from 6 April) to 12 (to 5 April)
  std::optional<std::filesystem::path> output;  // absent: standard output
  std::optional<std::filesystem::path> logs;    // absent: the library's folder for this program's logs
  std::size_t people = 0;                       // to generate
};

/// A command line that cannot be followed; what() says why.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Takes `--name value` and `--name=value`, each once, in any order. Throws UsageError.
Arguments parseArguments(const std::vector<std::string>& words);

/// The text of --help.
extern const char* const helpText;

}  // namespace payrun

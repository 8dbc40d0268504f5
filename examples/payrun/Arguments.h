// examples/payrun/Arguments.h - the parsed command line.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "LogChoice.h"
#include "programs/common/CommandLine.h"

namespace payrun {

struct Arguments {
  enum class Task { PayRun, Watch, Generate, Diagnose, Help, Version };

  Task task = Task::PayRun;
  std::filesystem::path input;                  // the employer's folder
  int month = 0;                                // tax month, 1 (from 6 April) to 12 (to 5 April)
  std::optional<std::filesystem::path> output;  // absent: standard output
  LogChoice log{.file = true};
  std::size_t people = 0;                     // number of people to generate
  bool payslips = false;                      // payslips on standard output
  std::optional<std::filesystem::path> html;  // the folder for payslips as web pages
  std::optional<std::filesystem::path> pdf;   // the folder for payslips as PDF files
  std::optional<std::filesystem::path> form;  // the payslips' template; absent: the installed one

  [[nodiscard]] bool wantsPayslips() const { return payslips || html || pdf; }
};

/// An invalid command line; what() gives the reason.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using programs::withoutValue;
/// Refuses a path that still begins with "~", because the shell has not replaced it. Throws UsageError.
void refuseTilde(std::string_view option, std::string_view path);

/// Accepts `--name value` and `--name=value`, each option once, in any order. Throws UsageError.
Arguments parseArguments(const std::vector<std::string>& words);

/// The text of --help.
extern const char* const helpText;

}  // namespace payrun

#include "Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace payrun {

using norvik::TerminalColors;

namespace {

std::string_view variable(const char* name) {
  const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing sets variables here
  return value == nullptr ? std::string_view() : value;
}

}  // namespace

TerminalColors outputColors() {
  const std::string_view terminal = variable("TERM"), colors = variable("COLORTERM");
  if (isatty(STDOUT_FILENO) == 0 || !variable("NO_COLOR").empty() || terminal.empty() || terminal == "dumb") {
    return TerminalColors::Plain;
  }
  if (colors == "truecolor" || colors == "24bit") return TerminalColors::Direct;
  return terminal.find("256color") == std::string_view::npos ? TerminalColors::Ansi16 : TerminalColors::Ansi256;
}

std::size_t outputWidth() {
  constexpr std::size_t usual = 80, longest = 100;
  winsize size{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return usual;
  return std::min<std::size_t>(size.ws_col, longest);
}

}  // namespace payrun

#include "Terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace norvik_log {
namespace {

std::string_view variable(const char* name) {
  const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing sets variables here
  return value == nullptr ? std::string_view() : value;
}

}  // namespace

bool isTerminal() { return ::isatty(STDOUT_FILENO) == 1; }

std::size_t outputWidth() {
  constexpr std::size_t usual = 80;
  winsize size{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  const std::string_view columns = variable("COLUMNS");
  std::size_t width = 0;
  const auto [stop, error] = std::from_chars(columns.data(), columns.data() + columns.size(), width);
  return error == std::errc() && width > 0 && width <= 10'000 ? width : usual;
}

bool hasColours(Arguments::Colour wanted) {
  if (wanted != Arguments::Colour::Auto) return wanted == Arguments::Colour::Always;
  const std::string_view terminal = variable("TERM");
  return isTerminal() && variable("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
}

bool isStandardOutput(const struct stat& file) {
  struct stat output {};
  return S_ISREG(file.st_mode) && ::fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == file.st_dev &&
         output.st_ino == file.st_ino;
}

void holdStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // open() returns the lowest free number, which is this stream's.
    if (::fcntl(stream, F_GETFD) < 0) ::open("/", O_PATH | O_CLOEXEC);
  }
}

}  // namespace norvik_log

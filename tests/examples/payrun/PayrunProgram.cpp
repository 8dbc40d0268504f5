#include "tests/examples/payrun/PayrunProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace payrun_test {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void becomePayrun(const TemporaryFolder& home, const std::vector<std::string>& arguments, int out, int err,
                               const std::string& locale = "en_GB.UTF-8") {
  ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
  ::dup2(out, STDOUT_FILENO);
  ::dup2(err, STDERR_FILENO);
  ::setenv("HOME", home.path().c_str(), 1);
  ::setenv("LC_ALL", locale.c_str(), 1);
  ::setenv("TZ", "UTC", 1);
  for (const char* name : {"XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) ::unsetenv(name);
  std::vector<char*> words = {const_cast<char*>(PAYRUN_PROGRAM)};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  ::execv(PAYRUN_PROGRAM, words.data());
  ::_exit(127);
}

int openForWriting(const fs::path& path) {
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (descriptor < 0) throw std::runtime_error("cannot write " + path.string());
  return descriptor;
}

void waitFor(pid_t child, Result& result) {
  int status = 0;
  struct rusage usage {};
  if (::wait4(child, &status, 0, &usage) != child) throw std::runtime_error("no child to wait for");
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  result.cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
  result.peakMebibytes = static_cast<double>(usage.ru_maxrss) / 1024;
}

std::string readToEnd(int descriptor) {
  std::string text;
  char buffer[4096];
  ssize_t count = 0;
  while ((count = ::read(descriptor, buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<std::size_t>(count));
  return text;  // reading a terminal fails when no process has it open any more
}

}  // namespace

Result runPayrun(const TemporaryFolder& home, const std::vector<std::string>& arguments, const std::string& locale) {
  const TemporaryFolder outputs;
  const int out = openForWriting(outputs.path("out")), err = openForWriting(outputs.path("err"));
  const pid_t child = ::fork();
  if (child == 0) becomePayrun(home, arguments, out, err, locale);
  ::close(out);
  ::close(err);
  Result result;
  waitFor(child, result);
  result.out = readFile(outputs.path("out"));
  result.err = readFile(outputs.path("err"));
  return result;
}

Result runPayrunOnTerminal(const TemporaryFolder& home, const std::vector<std::string>& arguments) {
  const TemporaryFolder outputs;
  const int out = openForWriting(outputs.path("out"));
  int terminal = -1, end = -1;
  if (::openpty(&terminal, &end, nullptr, nullptr, nullptr) != 0) throw std::runtime_error("no terminal");
  const pid_t child = ::fork();
  if (child == 0) becomePayrun(home, arguments, out, end);
  ::close(out);
  ::close(end);
  Result result;
  result.err = readToEnd(terminal);
  ::close(terminal);
  waitFor(child, result);
  result.out = readFile(outputs.path("out"));
  return result;
}

Result runPayrunPrintingOnTerminal(const TemporaryFolder& home, const std::vector<std::string>& arguments,
                                   unsigned short columns,
                                   const std::vector<std::pair<std::string, std::string>>& variables) {
  const TemporaryFolder outputs;
  const int err = openForWriting(outputs.path("err"));
  int terminal = -1, end = -1;
  const winsize size{24, columns, 0, 0};
  if (::openpty(&terminal, &end, nullptr, nullptr, &size) != 0) throw std::runtime_error("no terminal");
  const pid_t child = ::fork();
  if (child == 0) {
    for (const auto& [name, value] : variables) {
      if (value.empty()) {
        ::unsetenv(name.c_str());
      } else {
        ::setenv(name.c_str(), value.c_str(), 1);
      }
    }
    becomePayrun(home, arguments, end, err);
  }
  ::close(end);
  ::close(err);
  Result result;
  for (const char c : readToEnd(terminal)) {
    if (c != '\r') result.out += c;
  }
  ::close(terminal);
  waitFor(child, result);
  result.err = readFile(outputs.path("err"));
  return result;
}

namespace {

std::string takeThrough(std::string& pending, int descriptor, const std::string& text) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  for (;;) {
    if (const std::size_t found = pending.find(text); found != std::string::npos) {
      if (const std::size_t end = pending.find('\n', found); end != std::string::npos) {
        const std::string taken = pending.substr(0, end + 1);
        pending.erase(0, end + 1);
        return taken;
      }
    }
    pollfd wanted = {descriptor, POLLIN, 0};
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0 || ::poll(&wanted, 1, static_cast<int>(left.count())) == 0)
      throw std::runtime_error("no \"" + text + "\" in 30 s, but \"" + pending + "\"");
    char buffer[4096];
    const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
    if (count <= 0) throw std::runtime_error("the program ended without \"" + text + "\": \"" + pending + "\"");
    pending.append(buffer, static_cast<std::size_t>(count));
  }
}

}  // namespace

WatchingPayrun::WatchingPayrun(const TemporaryFolder& home, const std::vector<std::string>& arguments) {
  int out[2], err[2];
  if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  child_ = ::fork();
  if (child_ == 0) becomePayrun(home, arguments, out[1], err[1]);
  ::close(out[1]);
  ::close(err[1]);
  out_ = out[0];
  err_ = err[0];
}

WatchingPayrun::~WatchingPayrun() {
  if (child_ > 0) stop(SIGKILL);
}

std::string WatchingPayrun::readUntil(const std::string& text) { return takeThrough(pendingOut_, out_, text); }
std::string WatchingPayrun::readErrorUntil(const std::string& text) { return takeThrough(pendingErr_, err_, text); }

void WatchingPayrun::closeOut() {
  ::close(out_);
  out_ = -1;
}

double WatchingPayrun::cpuSeconds() const {
  const std::string stat = readFile("/proc/" + std::to_string(child_) + "/stat");
  std::istringstream fields(stat.substr(stat.rfind(')') + 1));
  std::string skipped;
  for (int i = 0; i < 11; ++i) fields >> skipped;
  double user = 0, system = 0;
  fields >> user >> system;
  return (user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

Result WatchingPayrun::stop(int signal) {
  ::kill(child_, signal);
  return waitForEnd();
}

Result WatchingPayrun::waitForEnd() {
  Result result;
  if (out_ >= 0) {
    result.out = pendingOut_ + readToEnd(out_);
    ::close(out_);
  }
  result.err = pendingErr_ + readToEnd(err_);
  ::close(err_);
  waitFor(child_, result);
  child_ = -1;
  return result;
}

fs::path exampleEmployer() { return PAYRUN_EXAMPLE_EMPLOYER; }
fs::path expectedReports() { return PAYRUN_EXPECTED_REPORTS; }

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeFile(const fs::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

std::string readLogs(const fs::path& folder) {
  std::string text;
  for (const auto& entry : fs::directory_iterator(folder)) text += readFile(entry.path());
  return text;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string firstDifference(const std::string& actual, const std::string& expected) {
  if (actual == expected) return {};
  const std::vector<std::string> a = linesOf(actual), b = linesOf(expected);
  std::size_t line = 0;
  while (line < a.size() && line < b.size() && a[line] == b[line]) ++line;
  const auto lineOf = [line](const std::vector<std::string>& lines) {
    return line < lines.size() ? lines[line] : std::string("(the end)");
  };
  return "line " + std::to_string(line + 1) + " is \"" + lineOf(a) + "\" instead of \"" + lineOf(b) + "\"";
}

}  // namespace payrun_test

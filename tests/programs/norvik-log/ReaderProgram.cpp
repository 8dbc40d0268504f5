#include "tests/programs/norvik-log/ReaderProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "tests/support/TemporaryFolder.h"

namespace norvik_log_test {

using norvik::test::TemporaryFolder;

namespace {

[[noreturn]] void becomeReader(const std::vector<std::string>& arguments, int in, int out, int err,
                               const Variables& variables, bool isMeasured = false,
                               const std::function<void()>& prepare = {}) {
  ::dup2(in, STDIN_FILENO);
  ::dup2(out, STDOUT_FILENO);
  ::dup2(err, STDERR_FILENO);
  ::setenv("TZ", "Europe/London", 1);
  ::setenv("LC_ALL", "en_GB.UTF-8", 1);
  for (const char* const name : {"NO_COLOR", "COLUMNS"}) ::unsetenv(name);
  for (const auto& [name, value] : variables) ::setenv(name.c_str(), value.c_str(), 1);
  std::vector<char*> words;
  if (isMeasured) words = {const_cast<char*>(NORVIK_LOG_WRITER), const_cast<char*>("measure")};
  words.push_back(const_cast<char*>(NORVIK_LOG_PROGRAM));
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  if (prepare) prepare();
  ::execv(words[0], words.data());
  ::_exit(127);
}

int openToWrite(const std::string& path) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
}

void waitFor(pid_t child, Result& result) {
  int status = 0;
  if (::waitpid(child, &status, 0) != child) throw std::runtime_error("no child to wait for");
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

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
    if (left.count() <= 0 || ::poll(&wanted, 1, static_cast<int>(left.count())) == 0) {
      throw std::runtime_error("no \"" + text + "\" in 30 s, but \"" + pending + "\"");
    }
    char buffer[65536];
    const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
    if (count <= 0) throw std::runtime_error("the program ended without \"" + text + "\": \"" + pending + "\"");
    pending.append(buffer, static_cast<std::size_t>(count));
  }
}

}  // namespace

namespace {

Result run(const std::vector<std::string>& arguments, const std::string& input, const Variables& variables,
           bool isMeasured, const std::function<void()>& prepare = {}) {
  const TemporaryFolder files;
  files.write("in", input);
  const int in = ::open(files.path("in").c_str(), O_RDONLY | O_CLOEXEC);
  const int out = openToWrite(files.path("out")), err = openToWrite(files.path("err"));
  const pid_t child = ::fork();
  if (child == 0) becomeReader(arguments, in, out, err, variables, isMeasured, prepare);
  for (const int descriptor : {in, out, err}) ::close(descriptor);
  Result result;
  waitFor(child, result);
  result.out = TemporaryFolder::read(files.path("out"));
  result.err = TemporaryFolder::read(files.path("err"));
  return result;
}

}  // namespace

Result runReader(const std::vector<std::string>& arguments, const std::string& input, const Variables& variables) {
  return run(arguments, input, variables, false);
}

Result runReaderPrepared(const std::vector<std::string>& arguments, const std::function<void()>& prepare) {
  return run(arguments, "", {}, false, prepare);
}

Result measureReader(const std::vector<std::string>& arguments) {
  Result result = run(arguments, "", {}, true);
  result.peakKibibytes = std::strtol(result.err.c_str(), nullptr, 10);
  return result;
}

Result runReaderOnTerminal(const std::vector<std::string>& arguments, unsigned short columns,
                           const Variables& variables) {
  const TemporaryFolder files;
  const int err = openToWrite(files.path("err")), in = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  int terminal = -1, end = -1;
  const winsize size{24, columns, 0, 0};
  if (::openpty(&terminal, &end, nullptr, nullptr, &size) != 0) throw std::runtime_error("no terminal");
  const pid_t child = ::fork();
  if (child == 0) becomeReader(arguments, in, end, err, variables);
  for (const int descriptor : {in, end, err}) ::close(descriptor);
  Result result;
  char buffer[4096];
  for (ssize_t count; (count = ::read(terminal, buffer, sizeof buffer)) > 0;) {
    for (ssize_t i = 0; i < count; ++i) {
      if (buffer[i] != '\r') result.out += buffer[i];
    }
  }
  ::close(terminal);
  waitFor(child, result);
  result.err = TemporaryFolder::read(files.path("err"));
  return result;
}

FollowingReader::FollowingReader(const std::vector<std::string>& arguments, const std::function<void()>& prepare,
                                 Out kind) {
  int out[2], err[2];
  if (kind == Out::Pipe ? ::pipe2(out, O_CLOEXEC) != 0 : ::openpty(&out[0], &out[1], nullptr, nullptr, nullptr) != 0) {
    throw std::runtime_error("nothing to write to");
  }
  for (const int end : out) ::fcntl(end, F_SETFD, FD_CLOEXEC);
  if (::pipe2(err, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const int in = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  child_ = ::fork();
  if (child_ == 0) becomeReader(arguments, in, out[1], err[1], {}, false, prepare);
  for (const int descriptor : {in, out[1], err[1]}) ::close(descriptor);
  out_ = out[0];
  err_ = err[0];
}

FollowingReader::~FollowingReader() {
  if (child_ > 0) {
    ::kill(child_, SIGKILL);
    waitForEnd();
  }
  if (out_ >= 0) ::close(out_);
  ::close(err_);
}

std::string FollowingReader::readUntil(const std::string& text) { return takeThrough(pendingOut_, out_, text); }
std::string FollowingReader::readErrorUntil(const std::string& text) { return takeThrough(pendingErr_, err_, text); }

std::string FollowingReader::readToTheEnd() {
  char buffer[4096];
  for (ssize_t count; (count = ::read(out_, buffer, sizeof buffer)) > 0;) {
    pendingOut_.append(buffer, static_cast<std::size_t>(count));
  }
  return std::exchange(pendingOut_, "");
}

void FollowingReader::closeOut() {
  ::close(out_);
  out_ = -1;
}

void FollowingReader::signal(int number) { ::kill(child_, number); }

long FollowingReader::peakKibibytes() const {
  std::ifstream status("/proc/" + std::to_string(child_) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::strtol(line.c_str() + line.find(':') + 1, nullptr, 10);
  }
  throw std::runtime_error("no memory is known");
}

std::string FollowingReader::readErrorToTheEnd() {
  char buffer[4096];
  for (ssize_t count; (count = ::read(err_, buffer, sizeof buffer)) > 0;) {
    pendingErr_.append(buffer, static_cast<std::size_t>(count));
  }
  return std::exchange(pendingErr_, "");
}

int FollowingReader::waitForEnd() {
  int status = 0;
  ::waitpid(child_, &status, 0);
  child_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int FollowingReader::waitForSignal() {
  int status = 0;
  ::waitpid(child_, &status, 0);
  child_ = -1;
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

}  // namespace norvik_log_test

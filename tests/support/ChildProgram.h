// tests/support/ChildProgram.h - starts a program for a test, writes to it, reads from it, and waits for its end.
//
//   ChildProgram program({NORVIK_SOME_PROGRAM, "argument"});
//   EXPECT_EQ(program.readLine(), "ready");
//   program.write("\n");
//   EXPECT_EQ(program.wait(), 0);
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace norvik::test {

class ChildProgram {
 public:
  explicit ChildProgram(const std::vector<std::string>& arguments) {
    int in[2], out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) return;
    std::vector<char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    if (posix_spawn(&process_, pointers[0], &actions, nullptr, pointers.data(), environ) != 0) process_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    toChild_ = in[1];
    fromChild_ = out[0];
    EXPECT_GT(process_, 0) << arguments[0];
  }
  ChildProgram(const ChildProgram&) = delete;
  ChildProgram& operator=(const ChildProgram&) = delete;
  ~ChildProgram() {
    wait();
    close(fromChild_);
  }

  void write(const std::string& text) {
    EXPECT_EQ(::write(toChild_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  /// The next line of its output, without its line end.
  std::string readLine() {
    std::string line;
    for (char byte = 0; read(fromChild_, &byte, 1) == 1 && byte != '\n';) line += byte;
    return line;
  }

  /// The rest of its output, until the program closes it.
  std::string readAll() {
    std::string text;
    char bytes[4096];
    for (ssize_t count; (count = read(fromChild_, bytes, sizeof bytes)) > 0;) {
      text.append(bytes, static_cast<std::size_t>(count));
    }
    return text;
  }

  /// Ends it by SIGKILL.
  void kill() { EXPECT_EQ(::kill(process_, SIGKILL), 0); }

  /// Closes the program's input and waits for its end. Returns its exit code, or 128 plus the number of the signal that
  /// ended it.
  int wait() {
    if (process_ <= 0) return result_;
    close(toChild_);
    int status = 0;
    if (waitpid(process_, &status, 0) != process_) return result_;
    process_ = -1;
    result_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result_;
  }

 private:
  pid_t process_ = -1;
  int toChild_ = -1, fromChild_ = -1;
  int result_ = -1;
};

}  // namespace norvik::test

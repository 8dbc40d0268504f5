// A program that has preferences, for tests of the end of a process: preferences_program DATABASE STEP...
//
//   KEY=NUMBER   sets the value of KEY
//   get:KEY      prints the number and a line end
//   limit:BYTES  limits the size of files to BYTES
//   wait         prints a line end, then reads a line from standard input
//   fork         lets a child do the remaining steps, and ends with its status
//   busy         starts a thread that sets values until the process ends
#include "NorvikCore/platform/foundation/NSUserDefaults.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

using namespace norvik;

int main(int count, char** arguments) {
  NSUserDefaults::setStandardUserDefaults(make<NSUserDefaults>(NSString(arguments[1])));
  NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
  for (int i = 2; i < count; ++i) {
    const std::string step = arguments[i];
    const std::string name = step.substr(0, step.find_first_of("=:"));
    const std::string rest = name.size() < step.size() ? step.substr(name.size() + 1) : "";
    if (step.find('=') != step.npos) {
      defaults.setInteger(std::atoll(rest.c_str()), NSString(name));
    } else if (name == "get") {
      std::printf("%lld\n", static_cast<long long>(defaults.integerForKey(NSString(rest))));
    } else if (name == "limit") {
      const rlimit limit{std::strtoull(rest.c_str(), nullptr, 10), RLIM_INFINITY};
      if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return 2;
    } else if (name == "wait") {
      std::printf("\n");
      std::fflush(stdout);
      char byte = 0;
      if (read(STDIN_FILENO, &byte, 1) != 1) return 3;
    } else if (name == "fork") {
      const pid_t child = fork();
      int status = 0;
      if (child > 0) return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : 4;
    } else if (name == "busy") {
      std::thread([&defaults] {
        for (std::int64_t number = 0;; ++number) defaults.setInteger(number, "busy");
      }).detach();
    } else {
      return 5;
    }
  }
}

// A program that ends in the way that its first argument names, and appends a word for each event to the file that its
// second argument names. For NSApplicationTermination_test.cpp.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "NorvikCore/platform/foundation/NSApplicationTermination.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/foundation/internal/ProcessEnd.h"
#include "NorvikCore/platform/values/NSException.h"

namespace {

using namespace norvik;

int words = -1;

void say(const std::string& word) {
  const std::string text = word + " ";
  if (write(words, text.data(), text.size()) < 0) std::abort();
}

// Constructed before main() and destroyed after it.
struct Static {
  ~Static() {
    if (words >= 0) say("static-destroyed");
  }
} const object;

void observe() {
  NSNotificationCenter::defaultCenter().addObserverForName(NSApplicationWillTerminateNotification, nullptr,
                                                           [](const NSNotification&) { say("posted"); });
}

void flushAtEnd() {
  detail::atProcessEnd([] { say("flushed"); });
}

// The exit status of a child made by fork() that runs `body`.
template <class Body>
int inChild(const Body& body) {
  const pid_t child = fork();
  if (child == 0) std::exit(body());
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int endAs(const std::string& way) {
  if (way == "no-center") {
    flushAtEnd();
    return 0;
  }
  if (way == "two-end-functions") {
    flushAtEnd();
    detail::atProcessEnd([] { say("flushed-too"); });
    return 0;
  }
  if (way == "service") {
    const int status = inChild([] {
      flushAtEnd();
      observe();
      return 7;
    });
    _exit(status == 7 ? 0 : 1);
  }
  flushAtEnd();
  observe();
  if (way == "return") return 0;
  if (way == "abrupt") _exit(0);
  if (way == "exit") std::exit(0);
  if (way == "exit-on-thread") {
    std::thread([] { std::exit(0); }).join();
  } else if (way == "posted-by-application") {
    NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification);
    say("returns");
  } else if (way == "posted-in-other-center") {
    make<NSNotificationCenter>()->postNotificationName(NSApplicationWillTerminateNotification);
    say("returns");
  } else if (way == "observer-raises") {
    dup2(words, STDERR_FILENO);
    NSNotificationCenter::defaultCenter().addObserverForName(
        NSApplicationWillTerminateNotification, nullptr,
        [](const NSNotification&) { throw NSException("PayrollException", "closed"); });
  } else if (way == "observer-exits") {
    NSNotificationCenter::defaultCenter().addObserverForName(NSApplicationWillTerminateNotification, nullptr,
                                                             [](const NSNotification&) { std::exit(3); });
  } else if (way == "forked-child") {
    say("child-begins");
    if (inChild([] { return 5; }) != 5) return 1;
    say("child-ended");
  } else {
    return 98;
  }
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 97;
  words = open(arguments[2], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  return words < 0 ? 96 : endAs(arguments[1]);
}

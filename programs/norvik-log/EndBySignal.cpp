#include "EndBySignal.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <string_view>

#include "programs/common/OutputFile.h"

namespace norvik_log {
namespace {

constexpr int signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM};

std::atomic<bool> hasColours = false;

extern "C" void endInOrder(int number) {
  programs::removeDraft();
  if (hasColours) {
    constexpr std::string_view plain = "\x1b[0m";
    constexpr int patience = 1000;  // milliseconds
    pollfd terminal = {STDOUT_FILENO, POLLOUT, 0};
    if (::poll(&terminal, 1, patience) == 1 && (terminal.revents & POLLOUT) != 0) {
      [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, plain.data(), plain.size());
    }
  }
  struct sigaction usual {};
  usual.sa_handler = SIG_DFL;
  ::sigaction(number, &usual, nullptr);
  ::raise(number);  // the signal ends the process when this function returns
}

}  // namespace

void endInOrderBySignals() {
  struct sigaction action {};
  action.sa_handler = endInOrder;
  for (const int number : signals) ::sigaddset(&action.sa_mask, number);
  for (const int number : signals) {
    struct sigaction before {};
    if (::sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) {
      ::sigaction(number, &action, nullptr);
    }
  }
}

void switchColoursOffAtEnd() noexcept { hasColours = true; }

}  // namespace norvik_log

#include "StopSignals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace payrun {

StopSignals::StopSignals() {
  sigset_t stop;
  ::sigemptyset(&stop);
  ::sigaddset(&stop, SIGINT);
  ::sigaddset(&stop, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &stop, &before_);
  descriptor_ = ::signalfd(-1, &stop, SFD_NONBLOCK | SFD_CLOEXEC);
  if (descriptor_ >= 0) return;
  const int error = errno;
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  throw std::system_error(error, std::generic_category(), "signals cannot be received");
}

StopSignals::~StopSignals() {
  // Also takes signals that arrived during the cleanup. They would end the process before the log is flushed.
  while (take() != 0) {
  }
  ::close(descriptor_);
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

int StopSignals::take() {
  signalfd_siginfo info{};
  ssize_t count = 0;
  do count = ::read(descriptor_, &info, sizeof info);
  while (count < 0 && errno == EINTR);
  return count == static_cast<ssize_t>(sizeof info) ? static_cast<int>(info.ssi_signo) : 0;
}

}  // namespace payrun

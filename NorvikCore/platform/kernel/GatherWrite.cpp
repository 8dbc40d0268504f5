#include "NorvikCore/platform/kernel/GatherWrite.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/uio.h>

#include <limits.h>
#include <algorithm>

namespace norvik::kernel {

bool awaitRoom(int descriptor, std::int64_t deadline) noexcept {
  pollfd wait{descriptor, POLLOUT, 0};
  while (true) {
    const std::int64_t left = std::max<std::int64_t>(0, (deadline - monotonicNanoseconds() + 999'999) / 1'000'000);
    const int ready = poll(&wait, 1, static_cast<int>(std::min<std::int64_t>(left, INT_MAX)));
    if (ready > 0 || (ready < 0 && errno != EINTR)) return true;
    if (left == 0) return false;
  }
}

int writeGathered(int descriptor, std::span<const std::string_view> pieces, std::int64_t deadline,
                  std::size_t& written) noexcept {
  written = 0;
  if (pieces.size() > mostGatheredPieces) return EINVAL;
  iovec parts[mostGatheredPieces];
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    parts[i].iov_base = const_cast<char*>(pieces[i].data());  // NOLINT(cppcoreguidelines-pro-type-const-cast): iovec
    parts[i].iov_len = pieces[i].size();
  }
  WriteSignalGuard guard;
  for (std::size_t part = 0; part < pieces.size();) {
    const ssize_t count = writev(descriptor, parts + part, static_cast<int>(pieces.size() - part));
    if (count < 0) {
      if (errno == EINTR) continue;
      if (errno != EAGAIN) {
        guard.failed(errno);
        return errno;
      }
      if (!awaitRoom(descriptor, deadline)) return ETIMEDOUT;
      continue;
    }
    auto done = static_cast<std::size_t>(count);
    written += done;
    for (; part < pieces.size() && done >= parts[part].iov_len; ++part) done -= parts[part].iov_len;
    if (part < pieces.size()) {
      parts[part].iov_base = static_cast<char*>(parts[part].iov_base) + done;
      parts[part].iov_len -= done;
    }
  }
  return 0;
}

bool mayBlock(int descriptor, std::size_t size) noexcept {
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || S_ISREG(status.st_mode)) return false;
  if (S_ISFIFO(status.st_mode)) {
    int unread = 0;
    if (ioctl(descriptor, FIONREAD, &unread) == 0 && unread == 0) {
      if (size <= PIPE_BUF) return false;  // even the smallest pipe has room for this
      const int room = fcntl(descriptor, F_GETPIPE_SZ);
      if (room > 0 && size <= static_cast<std::size_t>(room)) return false;
    }
  }
  const int flags = fcntl(descriptor, F_GETFL);
  return flags >= 0 && (flags & O_NONBLOCK) == 0;
}

}  // namespace norvik::kernel

#include "FolderWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "InputError.h"

namespace payrun {

FolderWatch::FolderWatch(const std::filesystem::path& folder) : descriptor_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
  constexpr std::uint32_t events = IN_MODIFY | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                   IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
  if (descriptor_ >= 0 && ::inotify_add_watch(descriptor_, folder.c_str(), events) >= 0) return;
  const int error = errno;
  if (descriptor_ >= 0) ::close(descriptor_);
  if (error == ENOENT || error == ENOTDIR) {
    throw InputError(folder.string() + ": cannot be read: " + std::strerror(error));
  }
  throw std::system_error(error, std::generic_category(), folder.string() + " cannot be watched");
}

FolderWatch::~FolderWatch() { ::close(descriptor_); }

FolderWatch::Changes FolderWatch::take() {
  Changes changes;
  alignas(inotify_event) char buffer[16 * 1024];
  for (;;) {
    const ssize_t count = ::read(descriptor_, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return changes;
    for (const char *at = buffer, *const end = buffer + count; at < end;) {
      inotify_event event;
      std::memcpy(&event, at, sizeof event);
      if (event.mask & IN_Q_OVERFLOW) changes.all = true;
      if (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) changes.gone = true;
      if (event.len > 0) changes.names.emplace(at + sizeof event);
      at += sizeof event + event.len;
    }
  }
}

}  // namespace payrun

#include "NorvikCore/platform/kernel/FileDescriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <initializer_list>

namespace norvik::kernel {
namespace {

// The state of the thread's outermost guard, which inner guards use.
struct GuardState {
  bool active;
  bool pipeWaited, sizeWaited;  // such a signal was pending before the guard began
  sigset_t before;
};
thread_local constinit GuardState guarded{};

sigset_t setOf(std::initializer_list<int> signals) noexcept {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  return set;
}

void takeBack(int signal) noexcept {
  const sigset_t only = setOf({signal});
  const timespec atOnce{};
  while (sigtimedwait(&only, nullptr, &atOnce) < 0 && errno == EINTR) {
  }
}

int awaitWritable(int descriptor) noexcept {
  pollfd wait{descriptor, POLLOUT, 0};
  return poll(&wait, 1, -1) < 0 && errno != EINTR ? errno : 0;
}

// For a descriptor that was opened with O_NONBLOCK; clears that flag.
int requireRegular(int descriptor) noexcept {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  if (!S_ISREG(status.st_mode)) return ENXIO;
  const int flags = fcntl(descriptor, F_GETFL);
  return flags >= 0 && fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0 ? 0 : errno;
}

}  // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    close();
    descriptor_ = other.release();
  }
  return *this;
}

FileDescriptor::~FileDescriptor() { close(); }

int FileDescriptor::close() noexcept {
  if (!isOpen()) return 0;
  // An interrupted close() has closed the descriptor; a second call could close one that another thread has opened.
  return ::close(release()) == 0 || errno == EINTR ? 0 : errno;
}

int openFile(const std::string& path, const OpenOptions& options, FileDescriptor& file) {
  if (path.find('\0') != path.npos) return ENOENT;  // the system would open the file named by the part before the NUL
  const bool write = options.write || options.append;
  int flags = O_CLOEXEC | O_NOCTTY | (write ? (options.read ? O_RDWR : O_WRONLY) : O_RDONLY);
  if (options.append) flags |= O_APPEND;
  if (options.create) flags |= O_CREAT | (options.exclusive ? O_EXCL : 0);
  if (options.truncate) flags |= O_TRUNC;
  if (options.regular) flags |= O_NOFOLLOW | O_NONBLOCK;
  int descriptor;
  do {
    descriptor = open(path.c_str(), flags, options.mode);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) return errno;
  if (descriptor <= STDERR_FILENO) {
    FileDescriptor standard(descriptor);
    descriptor = fcntl(standard.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (descriptor < 0) return errno;
  }
  FileDescriptor opened(descriptor);
  if (options.regular) {
    if (const int error = requireRegular(descriptor)) return error;
  }
  file = std::move(opened);
  return 0;
}

WriteSignalGuard::WriteSignalGuard() noexcept : outermost_(!guarded.active) {
  if (!outermost_) return;
  const sigset_t deadly = setOf({SIGPIPE, SIGXFSZ});
  guarded = {};
  guarded.active = true;
  pthread_sigmask(SIG_BLOCK, &deadly, &guarded.before);
  const bool pipeBlocked = sigismember(&guarded.before, SIGPIPE) == 1;
  const bool sizeBlocked = sigismember(&guarded.before, SIGXFSZ) == 1;
  if (!pipeBlocked && !sizeBlocked) return;  // then neither signal can be pending
  sigset_t waiting;
  sigemptyset(&waiting);
  sigpending(&waiting);
  guarded.pipeWaited = sigismember(&waiting, SIGPIPE) == 1;
  guarded.sizeWaited = sigismember(&waiting, SIGXFSZ) == 1;
}

WriteSignalGuard::~WriteSignalGuard() {
  if (!outermost_) return;
  guarded.active = false;
  pthread_sigmask(SIG_SETMASK, &guarded.before, nullptr);
}

void WriteSignalGuard::failed(int error) noexcept {
  if (error == EPIPE && !guarded.pipeWaited) takeBack(SIGPIPE);
  if (error == EFBIG && !guarded.sizeWaited) takeBack(SIGXFSZ);
}

int writeAll(int descriptor, std::string_view bytes, std::size_t* written) noexcept {
  WriteSignalGuard guard;
  std::size_t done = 0;
  int error = 0;
  while (done < bytes.size() && error == 0) {
    const ssize_t count = write(descriptor, bytes.data() + done, bytes.size() - done);
    if (count >= 0) {
      done += static_cast<std::size_t>(count);
    } else if (errno == EAGAIN) {
      error = awaitWritable(descriptor);
    } else if (errno != EINTR) {
      error = errno;
      guard.failed(error);
    }
  }
  if (written) *written = done;
  return error;
}

int readAll(int descriptor, std::string& text) {
  constexpr std::size_t step = 65536;
  for (;;) {
    const std::size_t length = text.size();
    text.resize(length + step);
    const ssize_t count = read(descriptor, text.data() + length, step);
    const int error = count < 0 ? errno : 0;
    text.resize(length + (count > 0 ? static_cast<std::size_t>(count) : 0));
    if (count == 0) return 0;
    if (error != 0 && error != EINTR) return error;
  }
}

int readFile(const std::string& path, std::string& text) {
  text.clear();
  FileDescriptor file;
  if (const int error = openFile(path, {.read = true}, file)) return error;
  return readAll(file.get(), text);
}

int readAt(int descriptor, std::uint64_t offset, char* bytes, std::size_t size, std::size_t* count) noexcept {
  *count = 0;
  while (*count < size) {
    const ssize_t taken = pread(descriptor, bytes + *count, size - *count, static_cast<off_t>(offset + *count));
    if (taken == 0) break;
    if (taken < 0 && errno != EINTR) return errno;
    if (taken > 0) *count += static_cast<std::size_t>(taken);
  }
  return 0;
}

void awaitOtherWrites(int descriptor) noexcept {
  // Writing no bytes takes and releases the file's lock. The result is not needed.
  [[maybe_unused]] const ssize_t nothing = write(descriptor, "", 0);
}

int synchronize(int descriptor) noexcept {
  while (fsync(descriptor) != 0) {
    if (errno == EINVAL || errno == EROFS) return 0;  // a descriptor without a disk
    if (errno != EINTR) return errno;
  }
  return 0;
}

int offsetOf(int descriptor, std::uint64_t& offset) noexcept {
  const off_t at = lseek(descriptor, 0, SEEK_CUR);
  if (at < 0) return errno;
  offset = static_cast<std::uint64_t>(at);
  return 0;
}

int seekTo(int descriptor, std::uint64_t offset) noexcept {
  if (offset > static_cast<std::uint64_t>(INT64_MAX)) return EINVAL;
  return lseek(descriptor, static_cast<off_t>(offset), SEEK_SET) < 0 ? errno : 0;
}

int seekToEnd(int descriptor, std::uint64_t& offset) noexcept {
  const off_t at = lseek(descriptor, 0, SEEK_END);
  if (at < 0) return errno;
  offset = static_cast<std::uint64_t>(at);
  return 0;
}

}  // namespace norvik::kernel

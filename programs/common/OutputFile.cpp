#include "programs/common/OutputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace programs {

namespace {

std::system_error failure(const std::string& what) { return std::system_error(errno, std::generic_category(), what); }

/// Waits until the descriptor takes more bytes. It is needed because another program may have made standard output
/// non-blocking. Returns false if waiting is not possible.
bool waitForRoom(int descriptor) {
  pollfd wanted = {descriptor, POLLOUT, 0};
  const int count = ::poll(&wanted, 1, -1);
  return count > 0 || errno == EINTR;
}

void writeAll(int descriptor, std::string_view text, const std::string& name) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0) {
      if (errno == EINTR || (errno == EAGAIN && waitForRoom(descriptor))) continue;
      throw failure(name + " cannot be written");
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

/// A file that is removed when it is destroyed, unless it was given its final name.
class Draft {
 public:
  explicit Draft(const std::filesystem::path& target) : target_(target) { open(); }
  ~Draft() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!published_) ::unlink(name_.c_str());
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  /// Gives the draft the permissions of the file that it will replace, and that file's owner if this is allowed.
  void takePermissions() {
    struct stat before {};
    struct stat now {};
    if (::stat(target_.c_str(), &before) != 0) return;
    if (::fstat(descriptor_, &now) != 0) fail();
    if ((before.st_uid != now.st_uid || before.st_gid != now.st_gid) &&
        ::fchown(descriptor_, before.st_uid, before.st_gid) != 0 && errno != EPERM &&
        errno != EINVAL)  // not allowed, or an owner that this user namespace does not have
      fail();
    if ((before.st_mode & 0777) != (now.st_mode & 0777) && ::fchmod(descriptor_, before.st_mode & 0777) != 0) fail();
  }
  void write(std::string_view text) { writeAll(descriptor_, text, target_.string()); }
  void flush() {
    if (::fsync(descriptor_) != 0) fail();
  }
  void close() {
    const int closed = ::close(descriptor_);
    descriptor_ = -1;
    if (closed != 0) fail();
  }
  void publish() {
    if (::rename(name_.c_str(), target_.c_str()) != 0) fail();
    published_ = true;
  }
  [[nodiscard]] const char* name() const noexcept { return name_.c_str(); }

 private:
  /// Opens a file of an unused name. A killed process with the same number may have left its draft.
  void open() {
    const std::string name = target_.string() + ".part-" + std::to_string(::getpid());
    for (int attempt = 0; descriptor_ < 0; ++attempt) {
      name_ = attempt == 0 ? name : name + "-" + std::to_string(attempt);
      descriptor_ = ::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (descriptor_ < 0 && errno != EEXIST) fail();
    }
  }
  /// The message names the target, because the user does not know the draft.
  [[noreturn]] void fail() const { throw failure(target_.string() + " cannot be written"); }

  const std::filesystem::path target_;
  std::string name_;
  int descriptor_ = -1;
  bool published_ = false;
};

std::filesystem::path behindLink(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::path target = path;
  for (int links = 0; std::filesystem::is_symlink(target, error); ++links) {
    if (links == 40) return path;
    target = target.parent_path() / std::filesystem::read_symlink(target, error);
  }
  return target;
}

namespace {

/// A terminal, a device or a pipe, for which no draft can be renamed.
bool isWrittenThrough(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::file_type type = std::filesystem::status(path, error).type();
  using enum std::filesystem::file_type;
  return type == character || type == block || type == fifo;
}

/// Blocks all signals of the calling thread while it exists.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_{};
};

std::atomic<const char*> draftName = nullptr;

}  // namespace

void removeDraft() noexcept {
  if (const char* const name = draftName) ::unlink(name);
}

WholeFile::WholeFile(const std::filesystem::path& path) : path_(path) {
  if (isWrittenThrough(path)) {
    descriptor_ = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) throw failure(path.string() + " cannot be written");
    return;
  }
  const SignalsHeld held;  // no signal handler runs between the draft's creation and the storing of its name
  draft_ = std::make_unique<Draft>(behindLink(path));
  draftName = draft_->name();
  try {
    draft_->takePermissions();  // before the draft has any content that others could read
  } catch (...) {
    draftName = nullptr;
    throw;
  }
}

WholeFile::~WholeFile() {
  if (draft_) draftName = nullptr;
  if (descriptor_ >= 0) ::close(descriptor_);
}

void WholeFile::write(std::string_view text) {
  if (draft_) {
    draft_->write(text);
  } else {
    writeAll(descriptor_, text, path_.string());
  }
}

void WholeFile::publish() {
  if (!draft_) return;
  draft_->flush();
  draft_->close();
  draft_->publish();
  draftName = nullptr;
}

void writeWhole(const std::filesystem::path& path, std::string_view text) {
  WholeFile file(path);
  file.write(text);
  file.publish();
}

OutputFolder::OutputFolder(std::filesystem::path folder) : folder_(std::move(folder)) {
  std::error_code error;
  std::filesystem::create_directories(folder_, error);
  if (error) throw std::system_error(error, folder_.string() + " cannot be created");
}

OutputFolder::~OutputFolder() = default;

void OutputFolder::write(const std::string& name, std::string_view text) {
  auto draft = std::make_unique<Draft>(folder_ / name);
  draft->takePermissions();
  draft->write(text);
  draft->close();
  const std::lock_guard lock(mutex_);
  drafts_.push_back(std::move(draft));
}

void OutputFolder::publish() {
  const std::lock_guard lock(mutex_);
  const int descriptor = ::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const bool isFlushed = descriptor >= 0 && ::syncfs(descriptor) == 0;
  const int error = errno;
  if (descriptor >= 0) ::close(descriptor);
  if (!isFlushed) throw std::system_error(error, std::generic_category(), folder_.string() + " cannot be written");
  for (const auto& draft : drafts_) draft->publish();
  drafts_.clear();
}

void printWhole(std::string_view text) { writeAll(STDOUT_FILENO, text, "standard output"); }

}  // namespace programs

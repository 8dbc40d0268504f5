#include "OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <system_error>

namespace payrun {

namespace {

std::system_error failure(const std::string& what) { return std::system_error(errno, std::generic_category(), what); }

void writeAll(int descriptor, std::string_view text, const std::string& name) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      throw failure(name + " cannot be written");
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

/// An open file that is removed unless it was given its final name.
class Draft {
 public:
  explicit Draft(const std::filesystem::path& target) : target_(target) { open(); }
  ~Draft() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!published_) ::unlink(name_.c_str());
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  /// Gives the draft the permissions, and where that is allowed the owner, of the file that it will replace.
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
  void publish() {
    if (::fsync(descriptor_) != 0) fail();
    const int closed = ::close(descriptor_);
    descriptor_ = -1;
    if (closed != 0 || ::rename(name_.c_str(), target_.c_str()) != 0) fail();
    published_ = true;
  }

 private:
  /// Under a name that is free: a process of the same number that was killed may have left its draft.
  void open() {
    const std::string name = target_.string() + ".part-" + std::to_string(::getpid());
    for (int attempt = 0; descriptor_ < 0; ++attempt) {
      name_ = attempt == 0 ? name : name + "-" + std::to_string(attempt);
      descriptor_ = ::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (descriptor_ < 0 && errno != EEXIST) fail();
    }
  }
  /// The user knows the target, not the draft.
  [[noreturn]] void fail() const { throw failure(target_.string() + " cannot be written"); }

  const std::filesystem::path target_;
  std::string name_;
  int descriptor_ = -1;
  bool published_ = false;
};

/// What a link leads to, be it there or not yet; the link itself where it leads back to itself.
std::filesystem::path behindLink(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::path target = path;
  for (int links = 0; std::filesystem::is_symlink(target, error); ++links) {
    if (links == 40) return path;
    target = target.parent_path() / std::filesystem::read_symlink(target, error);
  }
  return target;
}

/// Into something that has no whole: a terminal, a pipe, /dev/null.
void writeThrough(const std::filesystem::path& path, std::string_view text) {
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) throw failure(path.string() + " cannot be written");
  const std::unique_ptr<const int, decltype([](const int* open) { ::close(*open); })> closing(&descriptor);
  writeAll(descriptor, text, path.string());
}

}  // namespace

void writeWhole(const std::filesystem::path& path, std::string_view text) {
  std::error_code error;
  const std::filesystem::file_type type = std::filesystem::status(path, error).type();
  using enum std::filesystem::file_type;
  if (type == character || type == block || type == fifo) return writeThrough(path, text);
  Draft draft(behindLink(path));
  draft.takePermissions();  // before there is anything to read in it
  draft.write(text);
  draft.publish();
}

void printWhole(std::string_view text) { writeAll(STDOUT_FILENO, text, "standard output"); }

}  // namespace payrun

// tests/support/PrivateMount.h - a test's own file system, which no other process sees.
//
// It needs the right to mount: as root, or as an unprivileged user in a new user namespace. A process can enter such a
// namespace only while it has one thread. If neither is allowed, mounted() is false and the test is skipped:
//
//   if (!PrivateMount::isAllowed("ramfs")) GTEST_SKIP() << "this user may not mount";
#pragma once

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace norvik::test {

class PrivateMount {
 public:
  /// Examples: ("ramfs"), ("tmpfs", "size=64k").
  explicit PrivateMount(const char* type, const char* options = "") {
    mounted_ = enterNamespace() && mount("none", folder_.path().c_str(), type, 0, options) == 0;
  }
  PrivateMount(const PrivateMount&) = delete;
  PrivateMount& operator=(const PrivateMount&) = delete;
  ~PrivateMount() {
    if (mounted_) umount2(folder_.path().c_str(), MNT_DETACH);
  }

  [[nodiscard]] bool mounted() const { return mounted_; }
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

  /// Tries it in a child process, so that this process is not changed.
  [[nodiscard]] static bool isAllowed(const char* type) {
    const TemporaryFolder folder;
    const pid_t child = fork();
    if (child == 0) _exit(enterNamespace() && mount("none", folder.path().c_str(), type, 0, "") == 0 ? 0 : 1);
    int status = 1;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
    return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

  /// Returns false if that is not allowed.
  [[nodiscard]] bool makeReadOnly() const {
    return mount("none", folder_.path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
  }

 private:
  // Done once per process, for all its mounts.
  static bool enterNamespace() {
    static const bool entered = [] {
      const uid_t user = getuid();
      const gid_t group = getgid();
      if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
        put("/proc/self/setgroups", "deny");
        put("/proc/self/uid_map", std::to_string(user) + " " + std::to_string(user) + " 1");
        put("/proc/self/gid_map", std::to_string(group) + " " + std::to_string(group) + " 1");
        if (!keepOnlyMounting()) return false;
      }
      return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }();
    return entered;
  }

  // The owner of a namespace has all capabilities in it: the tests that follow could write files that they may not
  // write.
  static bool keepOnlyMounting() {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
    sets[0].effective = sets[0].permitted = 1U << CAP_SYS_ADMIN;
    return syscall(SYS_capset, &header, sets) == 0;
  }

  static void put(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0) return;
    [[maybe_unused]] const ssize_t written = ::write(file, text.data(), text.size());
    close(file);
  }

  TemporaryFolder folder_;
  bool mounted_ = false;
};

}  // namespace norvik::test

#include "NorvikCore/platform/kernel/OpenDescriptors.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace norvik::kernel {
namespace {

std::atomic<const DescriptorSource*> sourceInstead{nullptr};

// Tries every number below the process's limit, for a process that has used them all.
int listWithoutFolder(const DescriptorSource& source, std::vector<int>& numbers) {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return errno;
  constexpr rlim_t most = 1 << 20;  // the largest limit that systems set
  const int end = static_cast<int>(std::min(limit.rlim_cur, most));
  std::string path;
  for (int number = 0; number < end; ++number) {
    if (source.pathOf(number, path) != ENOENT) numbers.push_back(number);
  }
  return 0;
}

}  // namespace

DescriptorSource::~DescriptorSource() = default;

SystemDescriptors::SystemDescriptors(std::string folder) : folder_(std::move(folder)) {}
SystemDescriptors::~SystemDescriptors() = default;

int SystemDescriptors::list(std::vector<int>& numbers) const {
  numbers.clear();
  try {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(folder_.c_str()), closedir);
    if (!folder) {
      if (errno != EMFILE && errno != ENFILE) return errno;
      // The numbers are looked up in the folder one by one. If the folder is missing, that would find none.
      if (faccessat(AT_FDCWD, (folder_ + "/.").c_str(), R_OK | X_OK, AT_EACCESS) != 0) return errno;
      return listWithoutFolder(*this, numbers);
    }
    for (;;) {
      errno = 0;
      const dirent* entry = readdir(folder.get());
      if (!entry) break;
      int number = -1;
      const char* const end = entry->d_name + std::strlen(entry->d_name);
      const auto [stop, error] = std::from_chars(entry->d_name, end, number);
      if (error == std::errc() && stop == end && number != dirfd(folder.get())) numbers.push_back(number);
    }
    if (errno != 0) return errno;
    std::sort(numbers.begin(), numbers.end());
    return 0;
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

int SystemDescriptors::pathOf(int number, std::string& path) const {
  path.clear();
  char text[PATH_MAX + 64];  // a path, and " (deleted)"
  const std::string entry = folder_ + "/" + std::to_string(number);
  const ssize_t length = readlink(entry.c_str(), text, sizeof text);
  if (length < 0) return errno;
  const std::string_view target(text, static_cast<std::size_t>(length));
  // Others are "pipe:[4711]", "socket:[4711]", "anon_inode:[eventfd]"; a file in memory has a name and no path.
  if (target.starts_with('/') && !target.starts_with("/memfd:")) path = target;
  return 0;
}

int SystemDescriptors::test(int number) const noexcept { return fcntl(number, F_GETFD) >= 0 ? 0 : errno; }

const DescriptorSource& descriptorSource() {
  if (const DescriptorSource* source = sourceInstead.load()) return *source;
  return madeOnce([] { return new SystemDescriptors; });
}

DescriptorSourceOverride::DescriptorSourceOverride(const DescriptorSource& source) noexcept
    : before_(sourceInstead.exchange(&source)) {}
DescriptorSourceOverride::~DescriptorSourceOverride() { sourceInstead.store(before_); }

DescriptorState checkDescriptor(const DescriptorSource& source, int number, std::string& path) {
  constexpr int looks = 256;
  bool isBad = true;
  std::string before;
  int pathError = source.pathOf(number, path);
  for (int look = 0; look < looks; ++look) {
    if (pathError != 0 || path.empty()) {
      path.clear();
      return pathError == ENOENT ? DescriptorState::closed : DescriptorState::withoutPath;
    }
    const int error = source.test(number);
    if (error != 0 && error != EBADF) return DescriptorState::failed;
    isBad = isBad && error == EBADF;
    before = path;
    pathError = source.pathOf(number, path);
    if (error == 0 && pathError == 0 && path == before) return DescriptorState::valid;
    if (error == EBADF) sched_yield();
  }
  if (isBad) return DescriptorState::bad;
  path.clear();
  return DescriptorState::closed;  // it was closed and opened again each time
}

}  // namespace norvik::kernel

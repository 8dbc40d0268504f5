#include "NorvikCore/platform/kernel/ExtendedAttributes.h"

#include "NorvikCore/platform/kernel/internal/SideFiles.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

namespace norvik::kernel {
namespace {

constexpr std::string_view prefix = "user.";
// The creation time that FileStatus stores on file systems without birth times; not listed to callers.
constexpr std::string_view ownPrefix = "norvik.";

std::atomic<int> disabled{0};

std::string kernelName(std::string_view name) { return std::string(prefix).append(name); }

bool meansNoSupport(int error) noexcept { return error == ENOTSUP || error == ENOSYS; }

int translated(int error) noexcept { return error == ENODATA ? attributeAbsent : error; }

// The file to which the side files belong: behind all links, or this entry, which must be able to have attributes.
int fileOfSideFiles(const std::string& path, Links links, std::string& file) {
  if (links == Links::stay) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return errno;
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return EPERM;
    file = path;
    return 0;
  }
  char* resolved = realpath(path.c_str(), nullptr);
  if (!resolved) return errno;
  file = resolved;
  free(resolved);
  return 0;
}

// Calls `native` if the file system may have attributes. Otherwise, or if it turns out to have none, calls `side` with
// the path of the file that has them. `native` returns what the system call returns: -1 and errno on failure.
template <class Native, class Side>
int withFallback(const std::string& path, Links links, const Native& native, const Side& side) {
  if (path.find('\0') != path.npos) return ENOENT;  // the system would use only the part before the NUL
  if (disabled.load(std::memory_order_relaxed) == 0) {
    if (native() >= 0) return 0;
    if (!meansNoSupport(errno)) return translated(errno);
  }
  std::string file;
  const int error = fileOfSideFiles(path, links, file);
  return error == 0 ? side(file) : error;
}

// Reads a text after querying its length; repeats that if the text grew in between.
template <class Call>
ssize_t readGrowing(std::string& text, const Call& call) {
  for (;;) {
    const ssize_t needed = call(nullptr, std::size_t{0});
    if (needed <= 0) {
      text.clear();
      return needed;
    }
    text.resize(static_cast<std::size_t>(needed));
    const ssize_t length = call(text.data(), text.size());
    if (length >= 0) text.resize(static_cast<std::size_t>(length));
    if (length >= 0 || errno != ERANGE) return length;
  }
}

// True if the attributes of exactly this entry (links are not followed) would be side files.
bool usesSideFiles(const std::string& path) {
  if (disabled.load(std::memory_order_relaxed) != 0) return true;
  return lgetxattr(path.c_str(), "user.norvik.probe", nullptr, 0) < 0 && meansNoSupport(errno);
}

int renamed(const std::string& from, const std::string& to) noexcept {
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int renamedToFreeName(const std::string& from, const std::string& to) noexcept {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // The file system has no atomic operation for this. A file that appears at `to` between check and renaming is
  // replaced.
  struct stat status {};
  return lstat(to.c_str(), &status) == 0 ? EEXIST : renamed(from, to);
}

}  // namespace

int getAttribute(const std::string& path, std::string_view name, std::string& value, Links links) {
  const std::string full = kernelName(name);
  const auto call = links == Links::stay ? lgetxattr : getxattr;
  std::string found;
  const int error = withFallback(
      path, links,
      [&] {
        return readGrowing(
            found, [&](char* buffer, std::size_t size) { return call(path.c_str(), full.c_str(), buffer, size); });
      },
      [&](const std::string& file) { return detail::getSideFile(file, name, found); });
  if (error == 0) value = std::move(found);
  return links == Links::stay && error == EPERM ? attributeAbsent : error;
}

bool hasAttribute(const std::string& path, std::string_view name, Links links) {
  std::string value;
  return getAttribute(path, name, value, links) == 0;
}

int setAttribute(const std::string& path, std::string_view name, std::string_view value, Links links) {
  const std::string full = kernelName(name);
  const auto call = links == Links::stay ? lsetxattr : setxattr;
  return withFallback(
      path, links, [&] { return call(path.c_str(), full.c_str(), value.data(), value.size(), 0); },
      [&](const std::string& file) { return detail::setSideFile(file, name, value); });
}

int removeAttribute(const std::string& path, std::string_view name, Links links) {
  const std::string full = kernelName(name);
  const auto call = links == Links::stay ? lremovexattr : removexattr;
  return withFallback(
      path, links, [&] { return call(path.c_str(), full.c_str()); },
      [&](const std::string& file) { return detail::removeSideFile(file, name); });
}

int listAttributes(const std::string& path, std::vector<std::string>& names) {
  names.clear();
  std::string list;
  // A file system without attributes may return an empty list, or a list of attributes outside "user."; reading one
  // attribute shows whether it has any.
  const int error = withFallback(
      path, Links::follow,
      [&]() -> ssize_t {
        if (getxattr(path.c_str(), "user.norvik.probe", nullptr, 0) < 0 && errno != ENODATA) return -1;
        return readGrowing(list, [&](char* buffer, std::size_t size) { return listxattr(path.c_str(), buffer, size); });
      },
      [&](const std::string& file) { return detail::listSideFiles(file, names); });
  for (std::size_t at = 0; at < list.size();) {
    const std::string_view name(list.data() + at);
    if (name.starts_with(prefix)) names.emplace_back(name.substr(prefix.size()));
    at += name.size() + 1;
  }
  std::erase_if(names, [](const std::string& name) { return name.starts_with(ownPrefix); });
  std::sort(names.begin(), names.end());
  return error;
}

int copyAttributes(const std::string& from, const std::string& to) {
  std::vector<std::string> names;
  if (const int error = listAttributes(from, names)) return error;
  for (const std::string& name : names) {
    std::string value;
    if (const int error = getAttribute(from, name, value)) return error;
    if (const int error = setAttribute(to, name, value)) return error;
  }
  return 0;
}

int renameWithAttributes(const std::string& from, const std::string& to, Replace replace) {
  const bool sideFiles = usesSideFiles(from);
  if (const int error = replace == Replace::yes ? renamed(from, to) : renamedToFreeName(from, to)) return error;
  return sideFiles && from != to ? detail::moveSideFiles(from, to) : 0;
}

int removeWithAttributes(const std::string& path) {
  const bool sideFiles = usesSideFiles(path);
  if (remove(path.c_str()) != 0) return errno;
  return sideFiles ? detail::removeSideFiles(path) : 0;
}

void leaveOutSideFiles(const std::string& folder, std::vector<std::string>& names) {
  const auto isCandidate = [](const std::string& name) { return !detail::ownerOfSideFile(name).empty(); };
  if (std::none_of(names.begin(), names.end(), isCandidate) || !usesSideFiles(folder)) return;
  std::vector<std::string> all = names;
  std::sort(all.begin(), all.end());
  std::erase_if(names, [&](const std::string& name) {
    return isCandidate(name) && std::binary_search(all.begin(), all.end(), detail::ownerOfSideFile(name));
  });
}

WithoutExtendedAttributes::WithoutExtendedAttributes() noexcept { ++disabled; }
WithoutExtendedAttributes::~WithoutExtendedAttributes() { --disabled; }

}  // namespace norvik::kernel

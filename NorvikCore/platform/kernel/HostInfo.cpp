#include "NorvikCore/platform/kernel/HostInfo.h"

#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <errno.h>
#include <limits.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>

namespace norvik::kernel {
namespace {

constexpr std::int64_t noOverride = INT64_MIN;
std::atomic<std::int64_t> reportedProcessors{noOverride};

std::string kernelRelease() {
  utsname names{};
  return uname(&names) == 0 ? names.release : "";
}

std::string firstLine(const char* path) {
  std::string text;
  if (readFile(path, text) != 0) return "";
  return text.substr(0, text.find_first_of(std::string_view("\n\0", 2)));
}

// The value of KEY=value or KEY="value"; the few escapes that os-release allows do not occur in the keys asked for
// here.
std::string osReleaseValue(std::string_view key) {
  std::string text;
  if (readFile("/etc/os-release", text) != 0 && readFile("/usr/lib/os-release", text) != 0) return "";
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    if (line.size() <= key.size() || !line.starts_with(key) || line[key.size()] != '=') continue;
    std::string_view value = line.substr(key.size() + 1);
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front()) {
      value = value.substr(1, value.size() - 2);
    }
    return std::string(value);
  }
  return "";
}

}  // namespace

std::uint32_t processorCount() noexcept {
  std::int64_t reported = reportedProcessors.load();
  if (reported == noOverride) reported = sysconf(_SC_NPROCESSORS_CONF);
  return reported < 1 ? 1 : static_cast<std::uint32_t>(reported);
}

ProcessorCountOverride::ProcessorCountOverride(std::int32_t reported) noexcept
    : before_(reportedProcessors.exchange(reported)) {}
ProcessorCountOverride::~ProcessorCountOverride() { reportedProcessors.store(before_); }

std::int32_t processId() noexcept { return getpid(); }

std::uint32_t effectiveUserId() noexcept { return geteuid(); }

const std::string& processName() {
  return madeOnce([] {
    return new std::string(*program_invocation_short_name != '\0' ? program_invocation_short_name : "unknown");
  });
}

namespace {
// While the library is loaded: a line of the system console names it, and neither allocates nor waits for anything.
[[maybe_unused]] const std::string& nameAtLoad = processName();
}  // namespace

const std::string& executablePath() {
  return madeOnce([] {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = readlink("/proc/self/exe", target.data(), target.size());
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    constexpr std::string_view removed = " (deleted)";  // what the kernel adds where there is no such file any more
    if (target.ends_with(removed) && access(target.c_str(), F_OK) != 0) target.resize(target.size() - removed.size());
    return new std::string(std::move(target));
  });
}

std::optional<SystemVersion> parseSystemVersion(std::string_view text) noexcept {
  SystemVersion version;
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::uint64_t* part : {&version.major, &version.minor, &version.patch}) {
    const auto [next, error] = std::from_chars(at, end, *part);
    if (error == std::errc::result_out_of_range) return std::nullopt;
    if (error != std::errc()) {
      if (part == &version.major) return std::nullopt;
      break;
    }
    at = next;
    if (at == end || *at != '.') break;
    ++at;
  }
  return version;
}

SystemVersion operatingSystemVersion() {
  if (auto version = parseSystemVersion(osReleaseValue("VERSION_ID"))) return *version;
  return parseSystemVersion(kernelRelease()).value_or(SystemVersion{});
}

const std::string& operatingSystemVersionString() {
  return madeOnce([] {
    const std::string name = osReleaseValue("PRETTY_NAME"), kernel = "Linux " + kernelRelease();
    return new std::string(name.empty() ? kernel : name + ", " + kernel);
  });
}

const std::string& hardwareModel() {
  return madeOnce([] {
    for (const char* path : {"/sys/devices/virtual/dmi/id/product_name", "/proc/device-tree/model"}) {
      if (std::string text = firstLine(path); !text.empty()) return new std::string(std::move(text));
    }
    return new std::string();
  });
}

}  // namespace norvik::kernel

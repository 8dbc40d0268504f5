#include "NorvikCore/platform/kernel/HostInfo.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/internal/OwnFile.h"

#include <errno.h>
#include <limits.h>
#include <strings.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <utility>

namespace norvik::kernel {
namespace {

constexpr std::int64_t noOverride = INT64_MIN;
std::atomic<std::int64_t> reportedProcessors{noOverride};

std::string kernelRelease() {
  utsname names{};
  return uname(&names) == 0 ? names.release : "";
}

std::atomic<const std::string*> systemRoot{nullptr};

// The content of a small file; empty if it cannot be read.
std::string systemFile(const char* path) {
  constexpr std::size_t most = 65536;
  const std::string* root = systemRoot.load();
  std::string text;
  static_cast<void>(readOwnFile(root ? *root + path : path, most, text));
  return text;
}

// Up to the end of the line, or to the zero that ends a text of the device tree.
std::string firstLine(const char* path) {
  const std::string text = systemFile(path);
  const std::string_view line = std::string_view(text).substr(0, text.find_first_of(std::string_view("\n\0", 2)));
  constexpr std::string_view whiteSpace = " \t\r";
  const std::size_t first = line.find_first_not_of(whiteSpace);
  return first == line.npos ? "" : std::string(line.substr(first, line.find_last_not_of(whiteSpace) + 1 - first));
}

// False for an empty field, and for the defaults that manufacturers leave in it.
bool isFilledIn(const std::string& model) {
  if (model.empty()) return false;
  for (const char* unfilled : {"System Product Name", "To be filled by O.E.M.", "Default string", "Not Specified",
                               "Not Applicable", "Product Name", "Unknown", "None", "OEM", "O.E.M."}) {
    if (strcasecmp(model.c_str(), unfilled) == 0) return false;
  }
  return true;
}

// The value of KEY=value or KEY="value". The escapes that os-release allows do not occur in the keys that are read
// here.
std::string osReleaseValue(std::string_view key) {
  std::string text = systemFile("/etc/os-release");
  if (text.empty()) text = systemFile("/usr/lib/os-release");
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
// Made while the library is loaded, so that a line of the system console can contain it without allocating or waiting.
[[maybe_unused]] const std::string& nameAtLoad = processName();
}  // namespace

const std::string& executablePath() {
  return madeOnce([] {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = readlink("/proc/self/exe", target.data(), target.size());
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    constexpr std::string_view removed = " (deleted)";  // added by the kernel if the file no longer exists
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

std::string hardwareModel() {
  for (const char* path : {"/sys/devices/virtual/dmi/id/product_name", "/sys/devices/virtual/dmi/id/board_name",
                           "/proc/device-tree/model"}) {
    if (std::string model = firstLine(path); isFilledIn(model)) return model;
  }
  return "";
}

SystemFilesOverride::SystemFilesOverride(std::string root)
    : root_(std::move(root)), before_(systemRoot.exchange(&root_)) {}
SystemFilesOverride::~SystemFilesOverride() { systemRoot.store(before_); }

}  // namespace norvik::kernel

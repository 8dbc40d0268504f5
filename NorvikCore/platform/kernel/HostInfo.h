// NorvikCore/platform/kernel/HostInfo.h - the machine, its operating system and this process.
//
// Safe on any thread. Texts that are returned by reference are read once and kept until the process ends.
#pragma once  // include time: <string> and <optional> are result types

#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::kernel {

/// How many processors the machine is configured with, whether or not they are running or available to this process; at
/// least 1, even if the system reports none. Some microseconds.
[[nodiscard]] NK_EXPORT std::uint32_t processorCount() noexcept;

/// While an object of this class lives, processorCount() takes `reported` as the system's number of processors, for
/// tests of the single-processor path. The latest object has effect. Synchronised; nested objects must end in reverse
/// order.
class NK_EXPORT ProcessorCountOverride {
 public:
  explicit ProcessorCountOverride(std::int32_t reported) noexcept;
  ~ProcessorCountOverride();
  ProcessorCountOverride(const ProcessorCountOverride&) = delete;
  ProcessorCountOverride& operator=(const ProcessorCountOverride&) = delete;

 private:
  std::int64_t before_;
};

/// The process id. Each call asks the kernel, so it is correct in a forked child.
[[nodiscard]] NK_EXPORT std::int32_t processId() noexcept;

/// The effective user: its rights apply when a file is opened, and it owns new files.
[[nodiscard]] NK_EXPORT std::uint32_t effectiveUserId() noexcept;

/// The last part of the path by which the program was started.
[[nodiscard]] NK_EXPORT const std::string& processName();

/// The file of the running program, with links followed; empty if the system does not report it. If the file was
/// replaced or removed after the start, this is still the original path.
[[nodiscard]] NK_EXPORT const std::string& executablePath();

/// A version in up to three numbers; missing ones are 0.
struct SystemVersion {
  std::uint64_t major = 0, minor = 0, patch = 0;
  bool operator==(const SystemVersion&) const = default;
};

/// The numbers at the beginning of `text`, separated by dots: "10.15.7", "12", "6.1.0-18-amd64". Empty if the text does
/// not begin with a number, or if a number needs more than 64 bits.
[[nodiscard]] NK_EXPORT std::optional<SystemVersion> parseSystemVersion(std::string_view text) noexcept;

/// The distribution's version (VERSION_ID of os-release), or the kernel's if the distribution gives none.
[[nodiscard]] NK_EXPORT SystemVersion operatingSystemVersion();

/// For display: "Debian GNU/Linux 12 (bookworm), Linux 6.1.0-18-amd64".
[[nodiscard]] NK_EXPORT const std::string& operatingSystemVersionString();

/// The machine's model as its firmware reports it (DMI, else the device tree): one line without surrounding spaces and
/// without a terminating zero. If the manufacturer left the field at its default ("System Product Name"), the model of
/// the main board. A virtual machine has the model that its hypervisor reports, such as "KVM" or "VMware Virtual
/// Platform"; a container has its host's. Empty if there is none, or if a container cannot see it. Read on each call,
/// in some tens of microseconds.
[[nodiscard]] NK_EXPORT std::string hardwareModel();

/// While an object of this class lives, operatingSystemVersion() and hardwareModel() read the system's files in the
/// folder `root` instead of "/"; for tests. The latest object has effect. Synchronised; nested objects must end in
/// reverse order.
class NK_EXPORT SystemFilesOverride {
 public:
  explicit SystemFilesOverride(std::string root);
  ~SystemFilesOverride();
  SystemFilesOverride(const SystemFilesOverride&) = delete;
  SystemFilesOverride& operator=(const SystemFilesOverride&) = delete;

 private:
  const std::string root_;
  const std::string* const before_;
};

}  // namespace norvik::kernel

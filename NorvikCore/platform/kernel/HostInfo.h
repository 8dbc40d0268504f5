// NorvikCore/platform/kernel/HostInfo.h - the machine, its system and this process.
//
// Safe on any thread. Texts that are given by reference are read once and kept for the life of the process.
#pragma once  // include time: <string> and <optional> are result types

#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::kernel {

/// How many processors the machine is configured with, whether or not they are running or this process may use
/// them; at least 1, also where the system reports none. Some microseconds.
[[nodiscard]] NK_EXPORT std::uint32_t processorCount() noexcept;

/// Makes processorCount() believe that the system reports `reported` processors, for as long as this object lives; a
/// test of the single-processor path uses it. The latest one made counts. Synchronised; nested ones end in reverse
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

/// The process id, asked of the kernel each time, so that it is right in a forked child.
[[nodiscard]] NK_EXPORT std::int32_t processId() noexcept;

/// The effective user: its rights count when a file is opened, and it owns new files.
[[nodiscard]] NK_EXPORT std::uint32_t effectiveUserId() noexcept;

/// The last part of the path the program was started by.
[[nodiscard]] NK_EXPORT const std::string& processName();

/// The file of the running program, links followed; empty where the system does not tell. A program whose file has been
/// replaced or removed since it was started still has the path it was started from.
[[nodiscard]] NK_EXPORT const std::string& executablePath();

/// A version in up to three numbers; missing ones are 0.
struct SystemVersion {
  std::uint64_t major = 0, minor = 0, patch = 0;
  bool operator==(const SystemVersion&) const = default;
};

/// The numbers at the beginning of `text`, separated by dots: "10.15.7", "12", "6.1.0-18-amd64". Nothing where it
/// does not begin with a number or a number needs more than 64 bits.
[[nodiscard]] NK_EXPORT std::optional<SystemVersion> parseSystemVersion(std::string_view text) noexcept;

/// The distribution's version (VERSION_ID of os-release), or the kernel's where the distribution gives none.
[[nodiscard]] NK_EXPORT SystemVersion operatingSystemVersion();

/// For people: "Debian GNU/Linux 12 (bookworm), Linux 6.1.0-18-amd64".
[[nodiscard]] NK_EXPORT const std::string& operatingSystemVersionString();

/// The machine's model as its firmware gives it (DMI, else the device tree): one line without the blanks around it and
/// without the zero at its end. Where a maker left the field as it was ("System Product Name"), the model of the main
/// board. A virtual machine has the model that its hypervisor gives it, such as "KVM" or "VMware Virtual Platform"; a
/// container has its host's. Empty where there is none, or where a container does not see it. Read each time, in some
/// tens of microseconds.
[[nodiscard]] NK_EXPORT std::string hardwareModel();

/// Makes operatingSystemVersion() and hardwareModel() look for the system's files in the folder `root` instead of in
/// "/", for as long as this object lives; for tests. The latest one made counts. Synchronised; nested ones end in
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

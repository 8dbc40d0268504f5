// NorvikCore/platform/kernel/OpenDescriptors.h - which descriptors this process has open, and whether they are valid.
//
//   const kernel::DescriptorSource& source = kernel::descriptorSource();
//   std::vector<int> numbers;
//   if (int error = source.list(numbers)) return error;
//   std::string path;
//   for (int number : numbers) {
//     if (kernel::checkDescriptor(source, number, path) == kernel::DescriptorState::valid) report(path, number);
//   }
//
// Other threads may open and close descriptors all the while: what was closed since it was listed is no fault, and a
// number that was used again is looked at again. Operations answer 0 or an error number (see SystemError.h). Any
// thread.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"

#include <string>
#include <vector>

namespace norvik::kernel {

/// What is known of this process's descriptors. A test replaces it.
class NK_EXPORT DescriptorSource {
 public:
  DescriptorSource() = default;
  DescriptorSource(const DescriptorSource&) = delete;
  DescriptorSource& operator=(const DescriptorSource&) = delete;
  virtual ~DescriptorSource();

  /// Those that are open, in the order of their numbers. ENOMEM where memory is lacking: `numbers` then has those that
  /// there was room for.
  [[nodiscard]] virtual int list(std::vector<int>& numbers) const = 0;
  /// The path of the file, folder, device or named pipe that is open there, " (deleted)" behind it where it has been
  /// removed; empty for sockets, pipes and whatever else has no path. ENOENT where nothing is open.
  [[nodiscard]] virtual int pathOf(int number, std::string& path) const = 0;
  /// Asks for the descriptor's flags: EBADF where it is bad.
  [[nodiscard]] virtual int test(int number) const noexcept = 0;
};

/// What the system says in a folder of the form of /proc/thread-self/fd. A process that has no descriptor left to open
/// the folder with tries all numbers below its limit instead.
class NK_EXPORT SystemDescriptors final : public DescriptorSource {
 public:
  explicit SystemDescriptors(std::string folder = "/proc/thread-self/fd");
  ~SystemDescriptors() override;

  [[nodiscard]] int list(std::vector<int>& numbers) const override;
  [[nodiscard]] int pathOf(int number, std::string& path) const override;
  [[nodiscard]] int test(int number) const noexcept override;

 private:
  const std::string folder_;
};

/// The system's, or what takes its place.
[[nodiscard]] NK_EXPORT const DescriptorSource& descriptorSource();

/// Puts `source`, which lives longer, in the place of the system's for all threads, as long as this object lives; for
/// tests. Synchronised; nested ones end in reverse order.
class NK_EXPORT DescriptorSourceOverride {
 public:
  explicit DescriptorSourceOverride(const DescriptorSource& source) noexcept;
  ~DescriptorSourceOverride();
  DescriptorSourceOverride(const DescriptorSourceOverride&) = delete;
  DescriptorSourceOverride& operator=(const DescriptorSourceOverride&) = delete;

 private:
  const DescriptorSource* const before_;
};

enum class DescriptorState {
  valid,        ///< and `path` was what is open there, at one and the same time
  withoutPath,  ///< not tested
  closed,       ///< nothing is open there any more, or something else each time
  bad,          ///< EBADF, and listed as open all the while
  failed,       ///< the test failed for another reason
};

/// `path` is empty for withoutPath and closed. A descriptor that is listed and tests bad is looked at 256 times
/// before it counts as bad, since another thread may close and open it in between.
[[nodiscard]] NK_EXPORT DescriptorState checkDescriptor(const DescriptorSource& source, int number, std::string& path);

}  // namespace norvik::kernel

// NorvikCore/platform/kernel/OpenDescriptors.h - the open descriptors of this process, and whether they are valid.
//
//   const kernel::DescriptorSource& source = kernel::descriptorSource();
//   std::vector<int> numbers;
//   if (int error = source.list(numbers)) return error;
//   std::string path;
//   for (int number : numbers) {
//     if (kernel::checkDescriptor(source, number, path) == kernel::DescriptorState::valid) report(path, number);
//   }
//
// Other threads may open and close descriptors meanwhile. A descriptor that was closed after it was listed is not an
// error, and a number that was reused is checked again. Operations return 0 or an error number (see SystemError.h). Any
// thread.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"

#include <string>
#include <vector>

namespace norvik::kernel {

/// The source of information about this process's descriptors. A test replaces it.
class NK_EXPORT DescriptorSource {
 public:
  DescriptorSource() = default;
  DescriptorSource(const DescriptorSource&) = delete;
  DescriptorSource& operator=(const DescriptorSource&) = delete;
  virtual ~DescriptorSource();

  /// The open descriptors, in ascending order. ENOMEM if memory is lacking; `numbers` then contains as many as fitted.
  [[nodiscard]] virtual int list(std::vector<int>& numbers) const = 0;
  /// The path of the file, folder, device or named pipe that is open there, followed by " (deleted)" if it was removed;
  /// empty for sockets, pipes and other objects without a path. ENOENT if the descriptor is not open.
  [[nodiscard]] virtual int pathOf(int number, std::string& path) const = 0;
  /// Reads the descriptor's flags: EBADF if it is bad.
  [[nodiscard]] virtual int test(int number) const noexcept = 0;
};

/// The system's information, from a folder in the form of /proc/thread-self/fd. If the process has no descriptor left
/// to open the folder, it tries all numbers below its limit.
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

/// The system's source, or the one that replaces it.
[[nodiscard]] NK_EXPORT const DescriptorSource& descriptorSource();

/// Replaces the system's source by `source`, which must outlive this object, for all threads while this object lives;
/// for tests. Synchronised; nested objects must end in reverse order.
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
  valid,        ///< `path` was open there at the time of the test
  withoutPath,  ///< not tested
  closed,       ///< no longer open, or reused for something else at each check
  bad,          ///< EBADF, although it was listed as open all the time
  failed,       ///< the test failed for another reason
};

/// `path` is empty for withoutPath and closed. A descriptor that is listed and tests bad is checked 256 times before it
/// counts as bad, because another thread may close and open it between two steps.
[[nodiscard]] NK_EXPORT DescriptorState checkDescriptor(const DescriptorSource& source, int number, std::string& path);

}  // namespace norvik::kernel

// examples/payrun/FolderWatch.h - reports which files of a folder changed; its descriptor can be polled.
#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace payrun {

class FolderWatch {
 public:
  struct Changes {
    std::set<std::string> names;  // of the files that were written, created, renamed or removed
    bool all = false;             // the system lost events: any file may have changed
    bool gone = false;            // the folder itself was removed or renamed; no more changes will be reported
  };

  /// Throws InputError if there is no such folder, and std::system_error if it cannot be watched.
  explicit FolderWatch(const std::filesystem::path& folder);
  ~FolderWatch();
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;

  /// Readable when there are changes; owned by this object.
  [[nodiscard]] int descriptor() const { return descriptor_; }
  /// Returns the changes since the last call. Never blocks.
  Changes take();

 private:
  const int descriptor_;
};

}  // namespace payrun

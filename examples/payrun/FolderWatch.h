// examples/payrun/FolderWatch.h - which files of a folder changed, told by a descriptor to poll.
#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace payrun {

class FolderWatch {
 public:
  struct Changes {
    std::set<std::string> names;  // of the files that were written, made, renamed or removed
    bool all = false;             // the system lost track: any file may have changed
    bool gone = false;            // the folder itself was removed or renamed; nothing more will come
  };

  /// Throws InputError where there is no such folder, std::system_error where it cannot be watched.
  explicit FolderWatch(const std::filesystem::path& folder);
  ~FolderWatch();
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;

  /// Readable when something happened; owned by this object.
  [[nodiscard]] int descriptor() const { return descriptor_; }
  /// Takes what happened since the last call; never waits.
  Changes take();

 private:
  const int descriptor_;
};

}  // namespace payrun

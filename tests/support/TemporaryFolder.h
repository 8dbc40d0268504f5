// tests/support/TemporaryFolder.h - a fresh folder for one test, which is removed with its content.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace norvik::test {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "norvik-test-XXXXXX").string();
    if (!mkdtemp(name.data())) ADD_FAILURE() << "no temporary folder " << name;
    path_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::string& path() const { return path_; }
  /// The path of an entry, which need not exist.
  [[nodiscard]] std::string path(const std::string& name) const { return path_ + "/" + name; }

  /// Creates a file and returns its path.
  std::string write(const std::string& name, const std::string& content = "") const {
    std::ofstream file(path(name), std::ios::binary | std::ios::trunc);
    file << content;
    if (!file.flush()) ADD_FAILURE() << "cannot write " << path(name);
    return path(name);
  }

  [[nodiscard]] static std::string read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) ADD_FAILURE() << "cannot read " << path;
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::string path_;
};

}  // namespace norvik::test

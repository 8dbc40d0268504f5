// programs/common/OutputFile.h - files that are there in whole or not at all.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace programs {

/// What a link leads to, be it there or not yet; the link itself where it leads back to itself. Other paths as they
/// are.
[[nodiscard]] std::filesystem::path behindLink(const std::filesystem::path& path);

/// Writes `text` beside `path` and gives it that name once all of it is on disk; replaces a file of that name, or the
/// one that a link of that name leads to, and takes over its permissions. What is no file, such as a pipe or /dev/null,
/// is written to as it is. Throws std::system_error, and then leaves nothing behind.
void writeWhole(const std::filesystem::path& path, std::string_view text);

class Draft;

/// The same for a text that is written in parts. A process has one at a time.
class WholeFile {
 public:
  /// Throws std::system_error.
  explicit WholeFile(const std::filesystem::path& path);
  /// Removes what was not published.
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  /// Throws std::system_error.
  void write(std::string_view text);
  /// Gives the file its name, once all of it is on disk. Throws std::system_error.
  void publish();

 private:
  const std::filesystem::path path_;
  std::unique_ptr<Draft> draft_;
  int descriptor_ = -1;  // of what is no file
};

/// Removes what a WholeFile has written and not published. For the handler of a signal that ends the process.
void removeDraft() noexcept;

/// Files of one folder that get their names together: flushing each on its own would take far longer than writing it.
/// Synchronised.
class OutputFolder {
 public:
  /// Makes the folder where there is none. Throws std::system_error.
  explicit OutputFolder(std::filesystem::path folder);
  /// Removes what was not published.
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  /// Writes `text` beside the file of that name. Throws std::system_error.
  void write(const std::string& name, std::string_view text);
  /// Gives all files their names once they are on disk; they replace those of that name, and take over their
  /// permissions. Throws std::system_error.
  void publish();

 private:
  const std::filesystem::path folder_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Draft>> drafts_;
};

/// Writes all of `text` to standard output. Throws std::system_error.
void printWhole(std::string_view text);

}  // namespace programs

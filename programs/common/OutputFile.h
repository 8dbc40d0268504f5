// programs/common/OutputFile.h - files that exist completely or not at all.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace programs {

/// The path to which a link leads, whether a file exists there or not. The link itself if the chain of links has no
/// end. A path that is not a link is returned unchanged.
[[nodiscard]] std::filesystem::path behindLink(const std::filesystem::path& path);

/// Writes `text` to a draft beside `path` and renames it to `path` when all of it is on disk. A file of that name, or
/// the file to which a link of that name leads, is replaced, and the new file takes over its permissions. A pipe, a
/// terminal or a device such as /dev/null is written to directly. Throws std::system_error, and then leaves no draft
/// behind.
void writeWhole(const std::filesystem::path& path, std::string_view text);

class Draft;

/// The same as writeWhole for a text that is written in parts. A process may have one WholeFile at a time.
class WholeFile {
 public:
  /// Throws std::system_error.
  explicit WholeFile(const std::filesystem::path& path);
  /// Removes the draft unless it was published.
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  /// Throws std::system_error.
  void write(std::string_view text);
  /// Renames the draft to the file's name when all of it is on disk. Throws std::system_error.
  void publish();

 private:
  const std::filesystem::path path_;
  std::unique_ptr<Draft> draft_;
  int descriptor_ = -1;  // of a pipe, a terminal or a device
};

/// Removes the draft of a WholeFile that is not yet published. For the handler of a signal that ends the process.
void removeDraft() noexcept;

/// Files of one folder that are published together, because flushing each file separately takes far longer than writing
/// it. Synchronised.
class OutputFolder {
 public:
  /// Creates the folder if it does not exist. Throws std::system_error.
  explicit OutputFolder(std::filesystem::path folder);
  /// Removes the drafts that were not published.
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  /// Writes `text` to a draft beside the file of that name. Throws std::system_error.
  void write(const std::string& name, std::string_view text);
  /// Renames all drafts to their files' names when all of them are on disk. They replace existing files, whose
  /// permissions they have. Throws std::system_error.
  void publish();

 private:
  const std::filesystem::path folder_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Draft>> drafts_;
};

/// Writes all of `text` to standard output. Throws std::system_error.
void printWhole(std::string_view text);

}  // namespace programs

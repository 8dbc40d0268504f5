// examples/payrun/TextFile.h - a whole text file in memory, known to be UTF-8, that can say where in it something
// stands.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "InputError.h"

namespace payrun {

class TextFile {
 public:
  /// Reads the file; a byte order mark is left out. Throws InputError for a file that cannot be read or is not UTF-8.
  explicit TextFile(const std::filesystem::path& path);
  /// A text that is already in memory, under the name that messages give it.
  TextFile(std::string name, std::string text);

  [[nodiscard]] const std::string& name() const { return name_; }
  /// Valid as long as this object.
  [[nodiscard]] std::string_view text() const { return text_; }
  /// Line and column of a byte; looks through the text from its beginning.
  [[nodiscard]] Place placeOf(std::size_t offset) const;

  /// Throws InputError for what stands at `offset`.
  [[noreturn]] void refuse(std::size_t offset, const std::string& problem) const;

 private:
  void check();

  std::string name_, text_;
};

}  // namespace payrun

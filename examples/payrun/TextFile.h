// examples/payrun/TextFile.h - a whole text file in memory, checked to be UTF-8. It finds the line and column of a
// byte.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "InputError.h"

namespace payrun {

class TextFile {
 public:
  /// Reads the file without its byte order mark. Throws InputError for a file that cannot be read or is not UTF-8.
  explicit TextFile(const std::filesystem::path& path);
  /// A text that is already in memory. Messages use `name` for it.
  TextFile(std::string name, std::string text);

  [[nodiscard]] const std::string& name() const { return name_; }
  /// Valid while this object exists.
  [[nodiscard]] std::string_view text() const { return text_; }
  /// The line and column of a byte. Searches the text from its beginning.
  [[nodiscard]] Place placeOf(std::size_t offset) const;

  /// Throws InputError for the text at `offset`.
  [[noreturn]] void refuse(std::size_t offset, const std::string& problem) const;

 private:
  void check();

  std::string name_, text_;
};

}  // namespace payrun

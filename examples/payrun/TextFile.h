// examples/payrun/TextFile.h - a text file in memory, or a part of one, checked to be UTF-8. It finds the line and
// column of a byte.
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
  /// A text that is already in memory. Messages use `name` for it. A part of a file begins with line `firstLine`.
  TextFile(std::string name, std::string text, std::size_t firstLine = 1);

  [[nodiscard]] const std::string& name() const { return name_; }
  /// Valid while this object exists.
  [[nodiscard]] std::string_view text() const { return text_; }
  [[nodiscard]] std::size_t firstLine() const { return firstLine_; }
  /// The line and column of a byte. Searches the text from its beginning.
  [[nodiscard]] Place placeOf(std::size_t offset) const;

  /// Throws InputError for the text at `offset`.
  [[noreturn]] void refuse(std::size_t offset, const std::string& problem) const;

 private:
  void check();

  std::string name_, text_;
  std::size_t firstLine_ = 1;
};

}  // namespace payrun

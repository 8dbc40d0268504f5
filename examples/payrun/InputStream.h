// examples/payrun/InputStream.h - the bytes of an input file, read in pieces.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>

#include "InputError.h"

namespace payrun {

/// Reads a file or a pipe from its beginning to its end. Throws InputError if it cannot be read.
class InputStream {
 public:
  explicit InputStream(const std::filesystem::path& path);

  /// The path, as messages show it.
  [[nodiscard]] const std::string& name() const { return name_; }
  /// The size of the file when it was opened; 0 if it has none, as a pipe.
  [[nodiscard]] std::size_t size() const { return size_; }
  /// Appends the next `count` bytes to `text`, or those up to the end if there are fewer. Returns false if there was
  /// none.
  bool appendTo(std::string& text, std::size_t count);

 private:
  [[nodiscard]] InputError unreadable(const char* why) const;

  std::string name_;
  std::ifstream file_;
  std::size_t size_ = 0;
};

}  // namespace payrun

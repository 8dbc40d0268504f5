#include "TextFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <utility>

#include "Characters.h"

namespace payrun {

TextFile::TextFile(const std::filesystem::path& path) : name_(path.string()) {
  const auto unreadable = [this](const char* why) { return InputError(name_ + ": cannot be read: " + why); };
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) throw unreadable("it is a folder");
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) throw unreadable(std::strerror(errno));
  const auto size = std::filesystem::file_size(path, error);
  if (!error) text_.reserve(size);
  constexpr std::size_t chunk = std::size_t{1} << 20;
  while (file) {
    const std::size_t before = text_.size();
    text_.resize(before + chunk);
    file.read(text_.data() + before, chunk);
    text_.resize(before + static_cast<std::size_t>(file.gcount()));
  }
  if (file.bad()) throw unreadable(std::strerror(errno));
  check();
}

TextFile::TextFile(std::string name, std::string text) : name_(std::move(name)), text_(std::move(text)) { check(); }

void TextFile::check() {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (text_.starts_with(byteOrderMark)) text_.erase(0, byteOrderMark.size());
  const std::size_t invalid = firstInvalidUtf8(text_);
  if (invalid == std::string_view::npos) return;
  // Shows the word around the byte, which tells a reader more than the byte alone.
  const std::string_view separators = ",;=\"\r\n";
  const std::size_t before = text_.find_last_of(separators, invalid);
  const std::size_t begin = before == std::string::npos ? 0 : before + 1;
  const std::size_t end = std::min(text_.find_first_of(separators, invalid), text_.size());
  refuse(invalid, quoted(text().substr(begin, end - begin)) + " is not UTF-8");
}

Place TextFile::placeOf(std::size_t offset) const {
  const std::string_view before = text().substr(0, offset);
  Place place;
  place.line += static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
  const std::size_t newline = before.rfind('\n');
  place.column += characterCount(newline == std::string_view::npos ? before : before.substr(newline + 1));
  return place;
}

void TextFile::refuse(std::size_t offset, const std::string& problem) const {
  throw InputError(name_, placeOf(offset), problem);
}

}  // namespace payrun

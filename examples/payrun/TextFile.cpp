#include "TextFile.h"

#include <algorithm>
#include <utility>

#include "Characters.h"
#include "InputStream.h"

namespace payrun {

TextFile::TextFile(const std::filesystem::path& path) {
  InputStream file(path);
  name_ = file.name();
  constexpr std::size_t chunk = std::size_t{1} << 20;
  text_.reserve(file.size() + chunk);
  while (file.appendTo(text_, chunk)) {
  }
  check();
}

TextFile::TextFile(std::string name, std::string text, std::size_t firstLine)
    : name_(std::move(name)), text_(std::move(text)), firstLine_(firstLine) {
  check();
}

void TextFile::check() {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (firstLine_ == 1 && text_.starts_with(byteOrderMark)) text_.erase(0, byteOrderMark.size());
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
  place.line = firstLine_ + countOf('\n', before);
  const std::size_t newline = before.rfind('\n');
  place.column += characterCount(newline == std::string_view::npos ? before : before.substr(newline + 1));
  return place;
}

void TextFile::refuse(std::size_t offset, const std::string& problem) const {
  throw InputError(name_, placeOf(offset), problem);
}

}  // namespace payrun

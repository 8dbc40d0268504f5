#include "InputStream.h"

#include <cerrno>
#include <cstring>
#include <system_error>

namespace payrun {

InputStream::InputStream(const std::filesystem::path& path) : name_(path.string()) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) throw unreadable("it is a folder");
  errno = 0;
  file_.open(path, std::ios::binary);
  if (!file_) throw unreadable(std::strerror(errno));
  const auto size = std::filesystem::file_size(path, error);
  if (!error) size_ = size;
}

bool InputStream::appendTo(std::string& text, std::size_t count) {
  const std::size_t before = text.size();
  text.resize(before + count);
  file_.read(text.data() + before, static_cast<std::streamsize>(count));
  if (file_.bad()) throw unreadable(std::strerror(errno));
  text.resize(before + static_cast<std::size_t>(file_.gcount()));
  return text.size() > before;
}

InputError InputStream::unreadable(const char* why) const { return InputError(name_ + ": cannot be read: " + why); }

}  // namespace payrun

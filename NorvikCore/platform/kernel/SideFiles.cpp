#include "NorvikCore/platform/kernel/internal/SideFiles.h"

#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/SystemError.h"

#include <dirent.h>
#include <errno.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

namespace norvik::kernel::detail {
namespace {

constexpr std::string_view separator = ".attr-";

// The attribute's name as the end of a file name: without '/' and without another separator. So the last separator of a
// side file's name is always the one between file and attribute.
std::string encoded(std::string_view attribute) {
  std::string text;
  for (std::size_t i = 0; i < attribute.size(); ++i) {
    const char byte = attribute[i];
    if (byte == '%') {
      text += "%25";
    } else if (byte == '/') {
      text += "%2F";
    } else if (byte == '-' && i + 1 >= separator.size() && attribute.substr(0, i + 1).ends_with(separator)) {
      text += "%2D";
    } else {
      text += byte;
    }
  }
  return text;
}

std::string decoded(std::string_view text) {
  const struct {
    std::string_view code;
    char byte;
  } codes[] = {{"%25", '%'}, {"%2F", '/'}, {"%2D", '-'}};
  std::string attribute;
  while (!text.empty()) {
    const auto* code = std::find_if(std::begin(codes), std::end(codes),
                                    [&](const auto& candidate) { return text.starts_with(candidate.code); });
    const bool found = code != std::end(codes);
    attribute += found ? code->byte : text.front();
    text.remove_prefix(found ? code->code.size() : 1);
  }
  return attribute;
}

struct Location {
  std::string folder;  // with a trailing '/', or empty
  std::string prefix;  // ".NAME.attr-"
};

Location locate(const std::string& path) {
  std::string_view trimmed = path;
  while (trimmed.size() > 1 && trimmed.back() == '/') trimmed.remove_suffix(1);
  const std::size_t nameAt = trimmed.rfind('/') + 1;  // npos + 1 is 0
  Location location{std::string(trimmed.substr(0, nameAt)), "."};
  location.prefix.append(trimmed.substr(nameAt)).append(separator);
  return location;
}

// A different name for each attempt; it appears in no list of attributes.
std::string unfinishedPath(const Location& location) {
  static std::atomic<unsigned> count{0};
  return location.folder + ".attrtmp-" + std::to_string(getpid()) + "-" + std::to_string(count.fetch_add(1));
}

int answer(int result) noexcept { return result == 0 ? 0 : errno; }

}  // namespace

std::string sideFilePath(const std::string& path, std::string_view attribute) {
  const Location location = locate(path);
  return location.folder + location.prefix + encoded(attribute);
}

std::string_view ownerOfSideFile(std::string_view name) noexcept {
  const std::size_t at = name.rfind(separator);
  return name.starts_with('.') && at != name.npos && at > 1 ? name.substr(1, at - 1) : std::string_view();
}

int getSideFile(const std::string& path, std::string_view attribute, std::string& value) {
  std::string content;
  FileDescriptor file;
  // A regular file only, because any user who may write to the folder could put a link there, or a pipe that blocks.
  int error = openFile(sideFilePath(path, attribute), {.read = true, .regular = true}, file);
  if (error == ENOENT) return attributeAbsent;
  if (error == 0) error = readAll(file.get(), content);
  if (error == 0) value = std::move(content);
  return error;
}

int setSideFile(const std::string& path, std::string_view attribute, std::string_view value) {
  const Location location = locate(path);
  std::string unfinished;
  FileDescriptor file;
  // For this user only, because a creation date that others could change would reorder the log files.
  const OpenOptions options{.write = true, .create = true, .exclusive = true, .mode = 0600};
  int error = 0;
  do {  // a killed process with the same process id may have left some
    unfinished = unfinishedPath(location);
    error = openFile(unfinished, options, file);
  } while (error == EEXIST);
  if (error != 0) return error;
  error = writeAll(file.get(), value);
  if (const int closeError = file.close(); error == 0) error = closeError;
  if (error == 0) error = answer(rename(unfinished.c_str(), sideFilePath(path, attribute).c_str()));
  if (error != 0) unlink(unfinished.c_str());
  return error;
}

int removeSideFile(const std::string& path, std::string_view attribute) {
  const int error = answer(unlink(sideFilePath(path, attribute).c_str()));
  return error == ENOENT ? attributeAbsent : error;
}

int listSideFiles(const std::string& path, std::vector<std::string>& attributes) {
  attributes.clear();
  const Location location = locate(path);
  DIR* folder = opendir(location.folder.empty() ? "." : location.folder.c_str());
  if (!folder) return errno;
  errno = 0;
  while (const dirent* entry = readdir(folder)) {
    const std::string_view name = entry->d_name;
    if (name.size() > location.prefix.size() && name.starts_with(location.prefix) &&
        name.rfind(separator) + separator.size() == location.prefix.size()) {
      attributes.push_back(decoded(name.substr(location.prefix.size())));
    }
  }
  const int error = errno;
  closedir(folder);
  std::sort(attributes.begin(), attributes.end());
  return error;
}

int moveSideFiles(const std::string& from, const std::string& to) {
  std::vector<std::string> attributes;
  int error = removeSideFiles(to);
  const int listError = listSideFiles(from, attributes);
  if (error == 0) error = listError;
  for (const std::string& attribute : attributes) {
    const int moveError = answer(rename(sideFilePath(from, attribute).c_str(), sideFilePath(to, attribute).c_str()));
    if (error == 0) error = moveError;
  }
  return error;
}

int removeSideFiles(const std::string& path) {
  std::vector<std::string> attributes;
  int error = listSideFiles(path, attributes);
  for (const std::string& attribute : attributes) {
    const int removeError = removeSideFile(path, attribute);
    if (error == 0 && removeError != attributeAbsent) error = removeError;
  }
  return error;
}

}  // namespace norvik::kernel::detail

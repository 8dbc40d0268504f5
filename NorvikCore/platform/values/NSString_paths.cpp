// Operations on texts that are file paths.
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {
namespace {

/// Removes trailing slashes, except a slash that is the whole path.
std::string_view withoutTrailingSlashes(std::string_view path) noexcept {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  return path;
}

/// Where the last component of a path without trailing slashes begins.
std::size_t lastComponent(std::string_view path) noexcept {
  if (path == "/") return 0;
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? 0 : slash + 1;
}

/// The position of the extension's dot; npos if there is none. Leading dots belong to the name, because removing one
/// from ".." would name another folder.
std::size_t extensionDot(std::string_view path) noexcept {
  const std::size_t dot = path.rfind('.');
  const std::size_t name = path.find_first_not_of('.', lastComponent(path));
  return dot == path.npos || dot < name ? path.npos : dot;
}

}  // namespace

NSString NSString::lastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(view());
  return sliceBytes(lastComponent(path), path.size());
}

NSString NSString::pathExtension() const {
  const std::string_view path = withoutTrailingSlashes(view());
  const std::size_t dot = extensionDot(path);
  return dot == path.npos ? NSString() : sliceBytes(dot + 1, path.size());
}

NSString NSString::stringByDeletingLastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(view());
  if (path == "/") return sliceBytes(0, 1);
  return sliceBytes(0, withoutTrailingSlashes(path.substr(0, lastComponent(path))).size());
}

NSString NSString::stringByDeletingPathExtension() const {
  const std::string_view path = withoutTrailingSlashes(view());
  const std::size_t dot = extensionDot(path);
  return sliceBytes(0, dot == path.npos ? path.size() : dot);
}

NSString NSString::stringByAppendingPathComponent(const NSString& component) const {
  std::string_view tail = component.view();
  if (empty()) {
    const std::string_view alone = withoutTrailingSlashes(tail);
    return component.sliceBytes(0, alone.size());
  }
  while (!tail.empty() && tail.front() == '/') tail.remove_prefix(1);
  tail = withoutTrailingSlashes(tail);
  const std::string_view path = withoutTrailingSlashes(view());
  if (tail.empty()) return sliceBytes(0, path.size());
  std::string joined(path);
  if (path != "/") joined += '/';
  return copying(joined.append(tail));
}

NSString NSString::stringByAppendingPathExtension(const NSString& extension) const {
  const std::string_view path = withoutTrailingSlashes(view());
  if (path.empty() || path == "/") return *this;
  return copying(std::string(path).append(1, '.').append(extension.view()));
}

}  // namespace norvik

#include "NorvikCore/platform/foundation/NSURL.h"

#include "NorvikCore/platform/kernel/FileStatus.h"

#include <errno.h>
#include <unistd.h>

#include <string>
#include <string_view>

namespace norvik {
namespace {

std::string currentFolder() {
  std::string path(256, '\0');
  while (getcwd(path.data(), path.size()) == nullptr) {
    if (errno != ERANGE) return "/";  // it was removed, or this user may not see where it is
    path.resize(path.size() * 2);
  }
  path.resize(path.find('\0'));
  return path.starts_with('/') ? path : "/";
}

std::string absolute(std::string path) {
  if (!path.starts_with('/')) {
    std::string folder = currentFolder();
    if (!folder.ends_with('/')) folder += '/';
    path.insert(0, folder);
  }
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

bool standsForItself(char c) noexcept {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
         std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

std::string percentEncoded(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : bytes) {
    if (standsForItself(c)) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += {'%', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return encoded;
}

}  // namespace

NSURL::~NSURL() = default;

Ref<NSURL> NSURL::fileURLWithPath(const NSString& path) {
  const std::string bytes = path.bytes();
  kernel::FileStatus status;
  const bool isFolder = bytes.empty() || bytes.ends_with('/') ||
                        (bytes.find('\0') == bytes.npos && kernel::readFileStatus(bytes, status) == 0 &&
                         status.kind == kernel::FileKind::directory);
  return fileURLWithPath(path, isFolder);
}

Ref<NSURL> NSURL::fileURLWithPath(const NSString& path, bool isDirectory) {
  const std::string whole = absolute(path.bytes());
  return Ref<NSURL>::adopt(new NSURL(NSString::fromBytes(whole), isDirectory || whole == "/"));
}

NSString NSURL::scheme() const { return "file"_ns; }

NSString NSURL::absoluteString() const {
  return "file://" + percentEncoded(path_.bytes()) + (isDirectory_ && path_ != "/" ? "/" : "");
}

bool NSURL::isEqual(const NSObject& other) const {
  const auto* url = dynamic_cast<const NSURL*>(&other);
  return url && url->isDirectory_ == isDirectory_ && url->path_ == path_;
}

std::size_t NSURL::hash() const { return std::hash<NSString>{}(path_); }

NSString NSURL::description() const { return absoluteString(); }

void NSURL::encodeWithCoder(NSCoder& coder) const {
  coder.encodeObject(path_, "path");
  coder.encodeBool(isDirectory_, "isDirectory");
}

bool NSURL::initWithCoder(NSCoder& coder) {
  path_ = coder.decode<NSString>("path");
  isDirectory_ = coder.decodeBoolForKey("isDirectory");
  const bool isWhole = path_.hasPrefix("/") && (path_ == "/" ? isDirectory_ : !path_.hasSuffix("/"));
  return isWhole;
}

}  // namespace norvik

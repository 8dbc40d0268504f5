#include "NorvikCore/platform/foundation/NSURL.h"

#include "NorvikCore/platform/foundation/internal/Address.h"
#include "NorvikCore/platform/foundation/internal/HostName.h"
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
    if (errno != ERANGE) return "/";  // the folder was removed, or this user may not see its path
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

std::optional<NSString> text(const std::optional<std::string>& part) {
  return part ? std::optional<NSString>(*part) : std::nullopt;
}

/// Whether a "file:" URL means a file of this machine. (An escaped slash in it would become a separator.)
bool isPlain(const detail::Address& address) {
  return address.scheme == "file" && address.host == "" && !address.query && !address.fragment;
}

bool hasEscapedSlash(std::string_view path) { return detail::asciiLower(path).find("%2f") != std::string::npos; }

}  // namespace

NSURL::NSURL() = default;
NSURL::NSURL(NSString path, bool isDirectory) : path_(std::move(path)), isDirectory_(isDirectory) {}
NSURL::~NSURL() = default;

/// False if the URL cannot mean a file.
bool NSURL::take(detail::Address address) {
  std::string path = detail::percentDecoded(address.path);
  if (isPlain(address) && hasEscapedSlash(address.path)) return false;
  isDirectory_ = path.ends_with('/');
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  path_ = NSString::fromBytes(path);
  if (!isPlain(address)) address_ = detail::Hidden<const detail::Address>(new detail::Address(std::move(address)));
  return true;
}

Ref<NSURL> NSURL::URLWithString(const NSString& text) {
  std::optional<detail::Address> address = detail::readAddress(text.bytes());
  const Ref<NSURL> url = Ref<NSURL>::adopt(new NSURL());
  return address && url->take(std::move(*address)) ? url : nullptr;
}

Ref<NSURL> NSURL::URLWithString(const NSString& text, const NSURL& relativeToURL) {
  const std::optional<detail::Address> base = detail::readAddress(relativeToURL.absoluteString().bytes());
  if (!base) return nullptr;
  std::optional<detail::Address> address = detail::resolveAddress(*base, text.bytes());
  const Ref<NSURL> url = Ref<NSURL>::adopt(new NSURL());
  return address && url->take(std::move(*address)) ? url : nullptr;
}

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

std::optional<NSString> NSURL::scheme() const { return address_ ? text(address_->scheme) : "file"_ns; }

std::optional<NSString> NSURL::host() const {
  return address_ && address_->host != "" ? text(address_->host) : std::nullopt;
}

std::optional<std::int64_t> NSURL::port() const {
  return address_ && address_->port ? std::optional<std::int64_t>(*address_->port) : std::nullopt;
}

std::optional<NSString> NSURL::user() const {
  if (!address_ || !address_->userInfo) return std::nullopt;
  return NSString(address_->userInfo->substr(0, address_->userInfo->find(':')));
}

std::optional<NSString> NSURL::password() const {
  if (!address_ || !address_->userInfo) return std::nullopt;
  const std::size_t colon = address_->userInfo->find(':');
  return colon == std::string::npos ? std::nullopt : std::optional<NSString>(address_->userInfo->substr(colon + 1));
}

NSString NSURL::percentEncodedPath() const {
  if (address_) return address_->path;
  return detail::percentEncoded(path_.bytes(), standsForItself) + (isDirectory_ && path_ != "/" ? "/" : "");
}

std::optional<NSString> NSURL::query() const { return address_ ? text(address_->query) : std::nullopt; }

std::optional<NSString> NSURL::fragment() const { return address_ ? text(address_->fragment) : std::nullopt; }

NSString NSURL::absoluteString() const { return address_ ? address_->text() : "file://" + percentEncodedPath(); }

bool NSURL::isEqual(const NSObject& other) const {
  const auto* url = dynamic_cast<const NSURL*>(&other);
  if (!url || url->isDirectory_ != isDirectory_ || url->path_ != path_) return false;
  if (!address_ || !url->address_) return !address_ && !url->address_;
  return address_->text() == url->address_->text();
}

std::size_t NSURL::hash() const { return std::hash<NSString>{}(path_); }

NSString NSURL::description() const { return absoluteString(); }

void NSURL::encodeWithCoder(NSCoder& coder) const {
  if (address_) {
    coder.encodeObject(absoluteString(), "address");
  } else {
    coder.encodeObject(path_, "path");
    coder.encodeBool(isDirectory_, "isDirectory");
  }
}

bool NSURL::initWithCoder(NSCoder& coder) {
  if (coder.containsValueForKey("address")) {
    std::optional<detail::Address> address = detail::readAddress(coder.decode<NSString>("address").bytes());
    return address && take(std::move(*address));
  }
  path_ = coder.decode<NSString>("path");
  isDirectory_ = coder.decodeBoolForKey("isDirectory");
  const bool isWhole = path_.hasPrefix("/") && (path_ == "/" ? isDirectory_ : !path_.hasSuffix("/"));
  return isWhole;
}

}  // namespace norvik

#include "NorvikCore/platform/foundation/NSHTTPCookieStorage.h"

#include "NorvikCore/platform/foundation/internal/ApplicationFolder.h"
#include "NorvikCore/platform/foundation/internal/CookieStore.h"
#include "NorvikCore/platform/foundation/internal/SQLiteLibrary.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Paths.h"
#include "NorvikCore/platform/kernel/UUID.h"
#include "NorvikCore/platform/kernel/internal/OwnFile.h"

#include <errno.h>

#include <algorithm>
#include <string>
#include <vector>

namespace norvik {
namespace {

constexpr std::size_t largestCookieFile = 16 << 20;

struct Shared {
  Mutex mutex;
  std::atomic<NSHTTPCookieStorage*> current{nullptr};
  std::vector<Ref<NSHTTPCookieStorage>> kept NK_GUARDED_BY(mutex);
  Ref<NSHTTPCookieStorage> usual NK_GUARDED_BY(mutex);
};

Shared& shared() {
  return kernel::madeOnce([] { return new Shared; });
}

/// A device or pipe is refused, so that it is neither waited for nor replaced.
int refusalOf(const kernel::FileStatus& status) noexcept {
  if (status.kind == kernel::FileKind::regular) return 0;
  return status.kind == kernel::FileKind::directory ? EISDIR : ENXIO;
}

/// Replaces the file by one that is readable by this user only.
int replaceFile(const std::string& path, std::string_view content) {
  if (path.empty() || path.find('\0') != path.npos) return ENOENT;
  kernel::FileStatus status;
  if (kernel::readFileStatus(path, status) == 0) {
    if (const int error = refusalOf(status)) return error;
  }
  // Not the file's name with a suffix, because that could be longer than a name may be.
  const std::string made = path.substr(0, path.rfind('/') + 1) + "." + kernel::makeUUID().text();
  int error = kernel::makeOwnFile(made);
  if (error != 0) return error;
  error = kernel::setPermissionsOfFile(made, 0600);  // because the umask may have removed some
  kernel::FileDescriptor file;
  if (error == 0) error = kernel::openFile(made, {.write = true, .regular = true}, file);
  if (error == 0) error = kernel::writeAll(file.get(), content);
  if (const int closeError = file.close(); error == 0) error = closeError;
  if (error == 0) error = kernel::renameWithAttributes(made, path);
  if (error != 0) static_cast<void>(kernel::removeWithAttributes(made));
  return error;
}

int readBoundedFile(const std::string& path, std::string& content) {
  kernel::FileStatus status;
  if (path.find('\0') != path.npos) return ENOENT;
  if (const int error = kernel::readFileStatus(path, status)) return error;
  if (const int error = refusalOf(status)) return error;
  kernel::FileDescriptor file;
  if (const int error = kernel::openFile(path, {.read = true}, file)) return error;
  content.resize(largestCookieFile + 1);
  std::size_t count = 0;
  const int error = kernel::readAt(file.get(), 0, content.data(), content.size(), &count);
  content.resize(count);
  return error != 0 ? error : count > largestCookieFile ? EFBIG : 0;
}

}  // namespace

NSHTTPCookieStorage::NSHTTPCookieStorage(const NSString& databasePath)
    : store_(new detail::CookieStore(detail::checkedDatabasePath(databasePath, "cookies"))) {}

NSHTTPCookieStorage::~NSHTTPCookieStorage() = default;

NSHTTPCookieStorage& NSHTTPCookieStorage::sharedHTTPCookieStorage() {
  Shared& state = shared();
  if (NSHTTPCookieStorage* current = state.current.load(std::memory_order_acquire)) return *current;
  detail::sqlite::load();
  const MutexLock lock(state.mutex);
  if (NSHTTPCookieStorage* current = state.current.load(std::memory_order_relaxed)) return *current;
  if (!state.usual) {
    state.usual = make<NSHTTPCookieStorage>(NSString::fromBytes(detail::pathInApplicationFolder(
        "NORVIK_COOKIES_FOLDER", kernel::stateDirectory(), detail::applicationName(), "cookies.sqlite")));
  }
  state.current.store(state.usual.get(), std::memory_order_release);
  return *state.usual;
}

void NSHTTPCookieStorage::setSharedHTTPCookieStorage(const Ref<NSHTTPCookieStorage>& storage) {
  Shared& state = shared();
  const MutexLock lock(state.mutex);
  if (storage) state.kept.push_back(storage);
  state.current.store(storage ? storage.get() : state.usual.get(), std::memory_order_release);
}

Ref<NSArray> NSHTTPCookieStorage::cookies() const { return NSArray::arrayFrom(store_->all()); }

Ref<NSArray> NSHTTPCookieStorage::cookiesForURL(const NSURL& url) const {
  return NSArray::arrayFrom(store_->forURL(url));
}

void NSHTTPCookieStorage::setCookie(const NSHTTPCookie& cookie) { store_->set(cookie); }

bool NSHTTPCookieStorage::setCookieLine(const NSString& line, const NSURL& url) {
  const Ref<NSHTTPCookie> cookie = NSHTTPCookie::cookieWithSetCookieLine(line, url);
  if (!cookie) return false;
  if (!NSHTTPCookie::isSecureURL(url)) return store_->setFromInsecureAddress(*cookie);
  store_->set(*cookie);
  return true;
}

void NSHTTPCookieStorage::deleteCookie(const NSHTTPCookie& cookie) { store_->remove(cookie); }

void NSHTTPCookieStorage::deleteCookieIfUnchanged(const NSHTTPCookie& cookie) { store_->removeIfUnchanged(cookie); }

bool NSHTTPCookieStorage::writeToCookieFile(const NSString& path, Ref<NSError>* error) const {
  std::string content = "# Netscape HTTP Cookie File\n";
  for (const Ref<NSHTTPCookie>& cookie : store_->all()) content += cookie->cookieFileLine().bytes() + "\n";
  const int number = replaceFile(path.bytes(), content);
  if (number != 0 && error) *error = NSError::posixError(number, "write cookies to", path);
  return number == 0;
}

bool NSHTTPCookieStorage::addFromCookieFile(const NSString& path, Ref<NSError>* error) {
  std::string content;
  if (const int number = readBoundedFile(path.bytes(), content)) {
    if (error) *error = NSError::posixError(number, "read cookies from", path);
    return false;
  }
  store_->setLines(content);
  return true;
}

bool NSHTTPCookieStorage::synchronize() { return store_->synchronize(); }

}  // namespace norvik

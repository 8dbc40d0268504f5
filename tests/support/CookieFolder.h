// tests/support/CookieFolder.h - cookie storages on a database in a fresh folder.
#pragma once

#include "NorvikCore/platform/foundation/NSHTTPCookieStorage.h"
#include "tests/support/TemporaryFolder.h"

#include <string>
#include <vector>

namespace norvik::test {

class CookieFolder {
 public:
  /// Another storage on the same database, as another process would create it.
  [[nodiscard]] Ref<NSHTTPCookieStorage> open() const { return make<NSHTTPCookieStorage>(NSString(path())); }
  [[nodiscard]] std::string path() const { return folder_.path("pay/cookies.sqlite"); }
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
};

/// While it exists, the shared storage is on a database in a fresh folder.
class SharedCookies {
 public:
  SharedCookies() : storage_(folder_.open()) { NSHTTPCookieStorage::setSharedHTTPCookieStorage(storage_); }
  SharedCookies(const SharedCookies&) = delete;
  SharedCookies& operator=(const SharedCookies&) = delete;
  ~SharedCookies() { NSHTTPCookieStorage::setSharedHTTPCookieStorage(nullptr); }

  NSHTTPCookieStorage& operator*() const { return *storage_; }
  NSHTTPCookieStorage* operator->() const { return storage_.get(); }

 private:
  CookieFolder folder_;
  Ref<NSHTTPCookieStorage> storage_;
};

/// "domain path name=value" of each cookie, in order.
inline std::vector<std::string> texts(const NSArray& cookies) {
  std::vector<std::string> result;
  for (const NSHTTPCookie& cookie : cookies.as<NSHTTPCookie>()) {
    result.push_back((cookie.domain() + " " + cookie.path() + " " + cookie.name() + "=" + cookie.value()).bytes());
  }
  return result;
}

}  // namespace norvik::test

// NorvikCore/platform/foundation/NSHTTPCookieStorage_curl.h - one set of cookies for the application and libcurl.
//
//   CURL* curl = curl_easy_init();
//   curl_easy_setopt(curl, CURLOPT_URL, "https://pay.example.com/slips");
//   CURLcode result = performWithCookies(curl);      // instead of curl_easy_perform(curl)
//
// libcurl's cookie engine decides which cookies are sent and which cookies of a response are accepted, and stores those
// in the handle. Before a transfer, the functions here copy the cookies of the storage to the handle; after it, they
// copy what the transfer changed back to the storage. Changes that another thread or process made meanwhile stay,
// unless the response changed the same cookie.
//
// The library is not linked to libcurl; a program that includes this header must be. Any thread may call this, but a
// handle is confined to one thread at a time. A handle must not share its cookies with others by CURLOPT_SHARE.
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/foundation/NSHTTPCookieStorage.h"

#include <curl/curl.h>

#include <utility>
#include <vector>

namespace norvik {

/// For transfers that curl_easy_perform() does not make, such as those of the multi interface: call give() before each
/// transfer and take() after it.
class CurlCookies {
 public:
  /// Does not own them; both must outlive it.
  explicit CurlCookies(CURL* curl,
                       NSHTTPCookieStorage& storage = NSHTTPCookieStorage::sharedHTTPCookieStorage()) noexcept
      : curl_(curl), storage_(storage) {}

  /// Discards the handle's own cookies and the files of CURLOPT_COOKIEFILE.
  void give() {
    curl_easy_setopt(curl_, CURLOPT_COOKIEFILE, nullptr);
    curl_easy_setopt(curl_, CURLOPT_COOKIEFILE, "");  // starts the engine without a file
    curl_easy_setopt(curl_, CURLOPT_COOKIELIST, "ALL");
    const auto stored = NSMutableDictionary::dictionary();
    const Ref<NSArray> cookies = storage_.cookies();
    for (NSHTTPCookie& cookie : cookies->as<NSHTTPCookie>()) {
      stored->setObject(ref(cookie), cookie.storageKey());
      curl_easy_setopt(curl_, CURLOPT_COOKIELIST, cookie.cookieFileLine().bytes().c_str());
    }
    // Read back from the engine, because it may refuse or change a cookie.
    given_.clear();
    for (Ref<NSHTTPCookie>& cookie : inHandle()) {
      const NSString key = cookie->storageKey();
      given_.push_back({key, std::move(cookie), Ref(stored->objectForKey(key).object<NSHTTPCookie>())});
    }
  }

  /// Sets new and changed cookies since give() in the storage, and deletes removed ones.
  void take() {
    const auto present = NSMutableDictionary::dictionary();
    for (const Ref<NSHTTPCookie>& cookie : inHandle()) present->setObject(cookie, cookie->storageKey());
    for (const Given& given : given_) {
      const Value now = present->objectForKey(given.key);
      if (now.isAbsent()) {
        if (given.stored) storage_.deleteCookieIfUnchanged(*given.stored);
      } else if (now == Value(given.inHandle)) {
        present->removeObjectForKey(given.key);
      }
    }
    for (const auto& [key, cookie] : *present) storage_.setCookie(*cookie.object<NSHTTPCookie>());
    given_.clear();
  }

 private:
  struct Given {
    NSString key;
    Ref<NSHTTPCookie> inHandle, stored;
  };

  [[nodiscard]] std::vector<Ref<NSHTTPCookie>> inHandle() const {
    std::vector<Ref<NSHTTPCookie>> cookies;
    curl_slist* lines = nullptr;
    curl_easy_getinfo(curl_, CURLINFO_COOKIELIST, &lines);
    for (const curl_slist* line = lines; line; line = line->next) {
      auto cookie = NSHTTPCookie::cookieWithCookieFileLine(NSString::fromBytes(line->data));
      if (cookie) cookies.push_back(std::move(cookie));
    }
    curl_slist_free_all(lines);
    return cookies;
  }

  CURL* const curl_;
  NSHTTPCookieStorage& storage_;
  std::vector<Given> given_;
};

/// curl_easy_perform() with the cookies of the storage. Cookies that a response set are stored even if the transfer
/// failed later.
inline CURLcode performWithCookies(CURL* curl,
                                   NSHTTPCookieStorage& storage = NSHTTPCookieStorage::sharedHTTPCookieStorage()) {
  CurlCookies cookies(curl, storage);
  cookies.give();
  const CURLcode result = curl_easy_perform(curl);
  cookies.take();
  return result;
}

}  // namespace norvik

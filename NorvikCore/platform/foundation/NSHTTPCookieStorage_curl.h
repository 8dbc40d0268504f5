// NorvikCore/platform/foundation/NSHTTPCookieStorage_curl.h - one set of cookies for the application and libcurl.
//
//   CURL* curl = curl_easy_init();
//   curl_easy_setopt(curl, CURLOPT_URL, "https://pay.example.com/slips");
//   CURLcode result = performWithCookies(curl);      // in the place of curl_easy_perform(curl)
//
// libcurl's cookie engine decides what is sent and what an answer may set, and keeps what an answer set in the handle;
// here the handle is given the cookies of the storage before a transfer, and the storage what the transfer changed
// afterwards. What another thread or process changed meanwhile stays, unless the answer changed the same cookie.
//
// The library is not linked to libcurl: a program that includes this header is. Any thread, one handle on one at a
// time. A handle must not share its cookies with others by CURLOPT_SHARE.
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/foundation/NSHTTPCookieStorage.h"

#include <curl/curl.h>

#include <utility>
#include <vector>

namespace norvik {

/// For transfers that curl_easy_perform() does not make, as with the multi interface: give() before and take() after
/// each.
class CurlCookies {
 public:
  /// Keeps neither, and both outlive it.
  explicit CurlCookies(CURL* curl,
                       NSHTTPCookieStorage& storage = NSHTTPCookieStorage::sharedHTTPCookieStorage()) noexcept
      : curl_(curl), storage_(storage) {}

  /// The handle forgets its own cookies and the files of CURLOPT_COOKIEFILE.
  void give() {
    curl_easy_setopt(curl_, CURLOPT_COOKIEFILE, nullptr);
    curl_easy_setopt(curl_, CURLOPT_COOKIEFILE, "");  // starts the engine, and names no file
    curl_easy_setopt(curl_, CURLOPT_COOKIELIST, "ALL");
    const auto stored = NSMutableDictionary::dictionary();
    const Ref<NSArray> cookies = storage_.cookies();
    for (NSHTTPCookie& cookie : cookies->as<NSHTTPCookie>()) {
      stored->setObject(ref(cookie), cookie.storageKey());
      curl_easy_setopt(curl_, CURLOPT_COOKIELIST, cookie.cookieFileLine().bytes().c_str());
    }
    // As the engine has them: it may refuse one, or change it.
    given_.clear();
    for (Ref<NSHTTPCookie>& cookie : inHandle()) {
      const NSString key = cookie->storageKey();
      given_.push_back({key, std::move(cookie), Ref(stored->objectForKey(key).object<NSHTTPCookie>())});
    }
  }

  /// Sets in the storage what is new or changed since give(), and deletes what is gone.
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

/// curl_easy_perform() with the cookies of the storage. What an answer set is taken also where the transfer failed
/// later.
inline CURLcode performWithCookies(CURL* curl,
                                   NSHTTPCookieStorage& storage = NSHTTPCookieStorage::sharedHTTPCookieStorage()) {
  CurlCookies cookies(curl, storage);
  cookies.give();
  const CURLcode result = curl_easy_perform(curl);
  cookies.take();
  return result;
}

}  // namespace norvik

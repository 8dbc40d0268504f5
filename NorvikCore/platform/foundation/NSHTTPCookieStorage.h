// NorvikCore/platform/foundation/NSHTTPCookieStorage.h - the cookies of the application, kept from one start to the
// next.
//
//   NSHTTPCookieStorage& storage = NSHTTPCookieStorage::sharedHTTPCookieStorage();
//   storage.setCookieLine("lang=en-GB; Max-Age=3600", *url);            // a line "Set-Cookie:" of an answer from url
//   NSHTTPCookie::requestHeaderFieldsWithCookies(*storage.cookiesForURL(*url));      // {"Cookie": "lang=en-GB"}
//
// A cookie with an expiry is on the disk when the operation returns, and in every other process of this user that has
// the database. One without lasts as long as the process, and no other has it. An expired one is never seen. With
// libcurl the store is one: NSHTTPCookieStorage_curl.h.
//
// Where:   <state folder>/<application>/cookies.sqlite, from its first moment readable by this user only. The folder
//          for states is that of kernel/Paths.h (XDG_STATE_HOME), or NORVIK_COOKIES_FOLDER where that variable holds a
//          path that begins with '/'; the application is as NSUserDefaults has it. docs/cookies.md tells more.
// Bounds:  180 cookies of a domain and 3000 in all. One more removes the one that was not set, and not found by
//          cookiesForURL(), for the longest time.
// Errors:  what cannot be written or read is reported as NSUserDefaults does, on the system console, and tried again.
// Threads: synchronised. After a fork parent and child both go on. Each operation looks at all cookies, and a change
//          is written at once: some tens of microseconds with a few cookies, a millisecond or two with 3000.
#pragma once

#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/foundation/NSHTTPCookie.h"
#include "NorvikCore/platform/kernel/Hidden.h"

namespace norvik {

namespace detail {
class CookieStore;
}

class NK_EXPORT NSHTTPCookieStorage : public NSObject {
  NK_OBJECT(NSHTTPCookieStorage, NSObject)

  /// On the database at that path, which begins with '/' and holds no NUL, or NSInvalidArgumentException is raised.
  /// Nothing is made there before a cookie is set. Two objects of one database have session cookies of their own.
  explicit NSHTTPCookieStorage(const NSString& databasePath);
  ~NSHTTPCookieStorage() override;

  /// That of the application. Raises NSInvalidArgumentException where its name cannot name a folder.
  [[nodiscard]] static NSHTTPCookieStorage& sharedHTTPCookieStorage();
  /// Makes another object the shared one, for tests; an empty Ref brings back the usual. Objects that once were the
  /// shared one are kept until the process ends.
  static void setSharedHTTPCookieStorage(const Ref<NSHTTPCookieStorage>& storage);

  /// All, in the order in which they were first set.
  [[nodiscard]] Ref<NSArray> cookies() const;
  /// Those to send to that address: longer paths first, else in the order of cookies().
  [[nodiscard]] Ref<NSArray> cookiesForURL(const NSURL& url) const;

  /// Replaces the one of the same NSHTTPCookie::storageKey(), and takes its place in the order. An expired one removes
  /// it.
  void setCookie(const NSHTTPCookie& cookie);
  /// The text after "Set-Cookie:" in an answer from `url`: NSHTTPCookie::cookieWithSetCookieLine(). False where it
  /// is refused, also because it would replace or hide a Secure cookie and the address is not secure.
  bool setCookieLine(const NSString& line, const NSURL& url);
  /// The one of the same NSHTTPCookie::storageKey(), whatever its value.
  void deleteCookie(const NSHTTPCookie& cookie);
  /// The same, while it still is equal to `cookie`.
  void deleteCookieIfUnchanged(const NSHTTPCookie& cookie);

  /// Every cookie, those of the session too, as a line of a Netscape cookie file, which libcurl, curl and wget read. It
  /// takes the place of what is there in one step, and is readable by this user only. A folder (EISDIR), pipe or
  /// device (ENXIO) stays.
  bool writeToCookieFile(const NSString& path, Ref<NSError>* error = nullptr) const;
  /// Sets each cookie of such a file, of 16 MiB at most; of more than the bounds allow, the last ones. What is no line
  /// of one is passed over.
  bool addFromCookieFile(const NSString& path, Ref<NSError>* error = nullptr);

  /// Writes what could not be written before, and takes in what other processes have changed. False where either
  /// fails. Seldom needed: reads do so when the last look is a quarter of a second ago.
  bool synchronize();

  NK_METHOD(cookies)
  NK_METHOD(synchronize)

 private:
  detail::Hidden<detail::CookieStore> store_;
};

}  // namespace norvik

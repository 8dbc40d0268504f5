// NorvikCore/platform/foundation/NSHTTPCookieStorage.h - the cookies of the application, which outlive the process.
//
//   NSHTTPCookieStorage& storage = NSHTTPCookieStorage::sharedHTTPCookieStorage();
//   storage.setCookieLine("lang=en-GB; Max-Age=3600", *url);     // a line "Set-Cookie:" of a response from url
//   NSHTTPCookie::requestHeaderFieldsWithCookies(*storage.cookiesForURL(*url));      // {"Cookie": "lang=en-GB"}
//
// When an operation returns, a cookie with an expiry is on the disk and visible to every other process of this user
// that uses the database. A cookie without an expiry lasts until the process ends and is visible in this process only.
// Expired cookies are never returned. NSHTTPCookieStorage_curl.h shares the cookies with libcurl.
//
// Where:   <state folder>/<application>/cookies.sqlite; the file is created readable by this user only. The state
//          folder is that of kernel/Paths.h (XDG_STATE_HOME), or NORVIK_COOKIES_FOLDER if that variable holds a path
//          that begins with '/'; the application is determined as for NSUserDefaults. More is in docs/cookies.md.
// Bounds:  180 cookies of a domain and 3000 in all. Beyond that, each new cookie removes the one that was least
//          recently set or returned by cookiesForURL().
// Errors:  failed reads and writes are reported on the system console and repeated, as for NSUserDefaults.
// Threads: synchronised. After a fork, parent and child can both go on using it.
// Cost:    each operation examines all cookies, and a change is written at once: some tens of microseconds with a few
//          cookies, a millisecond or two with 3000.
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

  /// Uses the database at that path. Raises NSInvalidArgumentException unless the path begins with '/' and holds no
  /// NUL. The file is created when the first cookie is set. Two objects of one database have separate session cookies.
  explicit NSHTTPCookieStorage(const NSString& databasePath);
  ~NSHTTPCookieStorage() override;

  /// The storage of the application. Raises NSInvalidArgumentException if the application's name cannot name a folder.
  [[nodiscard]] static NSHTTPCookieStorage& sharedHTTPCookieStorage();
  /// Makes another object the shared one, for tests; an empty Ref restores the usual one. Objects that were the shared
  /// one are retained until the process ends.
  static void setSharedHTTPCookieStorage(const Ref<NSHTTPCookieStorage>& storage);

  /// All cookies, in the order in which they were first set.
  [[nodiscard]] Ref<NSArray> cookies() const;
  /// The cookies to send to that URL: longer paths first, then in the order of cookies().
  [[nodiscard]] Ref<NSArray> cookiesForURL(const NSURL& url) const;

  /// Replaces the cookie with the same NSHTTPCookie::storageKey() and takes its place in the order. An expired cookie
  /// removes it.
  void setCookie(const NSHTTPCookie& cookie);
  /// Sets the cookie of the text after "Set-Cookie:" in a response from `url`
  /// (NSHTTPCookie::cookieWithSetCookieLine()). False if it is refused; it is also refused if the URL is not secure and
  /// the cookie would replace or hide a Secure cookie.
  bool setCookieLine(const NSString& line, const NSURL& url);
  /// Deletes the cookie with the same NSHTTPCookie::storageKey(), whatever its value.
  void deleteCookie(const NSHTTPCookie& cookie);
  /// The same, but only if the stored cookie is still equal to `cookie`.
  void deleteCookieIfUnchanged(const NSHTTPCookie& cookie);

  /// Writes every cookie, including those of the session, as a line of a Netscape cookie file, which libcurl, curl and
  /// wget read. The file replaces an existing one in one step and is readable by this user only. A folder (EISDIR),
  /// pipe or device (ENXIO) is not replaced.
  bool writeToCookieFile(const NSString& path, Ref<NSError>* error = nullptr) const;
  /// Sets each cookie of such a file, which may have 16 MiB at most; if there are more than the bounds allow, the last
  /// ones. Other lines are ignored.
  bool addFromCookieFile(const NSString& path, Ref<NSError>* error = nullptr);

  /// Writes what could not be written before, and reads the changes of other processes. False if either fails. Seldom
  /// needed, because a read does the same if the last check was at least a quarter of a second ago.
  bool synchronize();

  NK_METHOD(cookies)
  NK_METHOD(synchronize)

 private:
  detail::Hidden<detail::CookieStore> store_;
};

}  // namespace norvik

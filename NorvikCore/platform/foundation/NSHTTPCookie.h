// NorvikCore/platform/foundation/NSHTTPCookie.h - a cookie: a name and a value that a web server gave out, and which
// addresses they are sent to.
//
//   Ref<NSURL> url = NSURL::URLWithString("https://pay.example.co.uk/slips/april");
//   const NSString line = "lang=en-GB; Domain=example.co.uk; Max-Age=60";
//   Ref<NSHTTPCookie> cookie = NSHTTPCookie::cookieWithSetCookieLine(line, *url);
//   cookie->domain();          // ".example.co.uk": that host and all below it
//   cookie->path();            // "/slips": that folder and all below it
//   cookie->isSessionOnly();   // false
//
// A line is read by RFC 6265, and refused where libcurl and browsers refuse it too:
// - without a name or '=', with control characters, with more than 4096 bytes of name and value (an attribute of more
//   than 1024 bytes is left out);
// - Domain is not the host or a domain above it, or ends with a full stop; it is a public suffix such as "co.uk", by
//   libpsl's list, unless it is the host itself, which then alone gets the cookie; it is an address by numbers other
//   than the host;
// - Secure, from an address that is not secure;
// - its name begins with "__Secure-", and it is not Secure; or with "__Host-", and it is not Secure, has a Domain, or
//   another Path than "/". The case of these beginnings does not count.
//
// Name and value are bytes, as NSString::fromBytes has them; nothing is decoded. Secure addresses are those of https
// and wss and of this machine: localhost, 127.0.0.1 and ::1. Immutable, any thread. libpsl is loaded with the first
// line that has a Domain (NSGenericException without it).
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSURL.h"

#include <optional>

namespace norvik {

namespace detail {
class CookieStore;
}

// The keys of a cookie's properties.
NK_EXPORT extern const NSString NSHTTPCookieName;
NK_EXPORT extern const NSString NSHTTPCookieValue;
/// With a full stop at its beginning for a domain and all below it, without for one host.
NK_EXPORT extern const NSString NSHTTPCookieDomain;
NK_EXPORT extern const NSString NSHTTPCookiePath;
/// A date; absent for a cookie of the session.
NK_EXPORT extern const NSString NSHTTPCookieExpires;
/// Booleans.
NK_EXPORT extern const NSString NSHTTPCookieSecure;
NK_EXPORT extern const NSString NSHTTPCookieHTTPOnly;

class NK_EXPORT NSHTTPCookie : public NSObject {
  NK_OBJECT(NSHTTPCookie, NSObject)
  ~NSHTTPCookie() override;

  /// Of the application's own making, which no public suffix limits. Empty where name or domain is missing, where the
  /// domain is no host, a text holds a control character, name or value a ';', or these are longer than 4096 bytes
  /// together. Without a path it is "/". A value of another kind raises NSInvalidArgumentException.
  [[nodiscard]] static Ref<NSHTTPCookie> cookieWithProperties(const NSDictionary& properties);
  /// The text after "Set-Cookie:" in an answer from `url`. Empty where it is refused. An expired cookie is a
  /// cookie too: storing it removes the one that it replaces.
  [[nodiscard]] static Ref<NSHTTPCookie> cookieWithSetCookieLine(const NSString& line, const NSURL& url);
  /// A line of a Netscape cookie file: "domain TRUE path secure expiry name value", with tabs between them, as libcurl
  /// writes and reads it. Empty for a comment and for what is no such line.
  [[nodiscard]] static Ref<NSHTTPCookie> cookieWithCookieFileLine(const NSString& line);

  [[nodiscard]] const NSString& name() const noexcept { return name_; }
  [[nodiscard]] const NSString& value() const noexcept { return value_; }
  /// In lower case, an international one as "xn--...". ".example.com" is for that host and all below it, "example.com"
  /// for that host alone.
  [[nodiscard]] const NSString& domain() const noexcept { return domain_; }
  [[nodiscard]] const NSString& path() const noexcept { return path_; }
  /// In whole seconds. Absent for a cookie that lasts as long as the process.
  [[nodiscard]] std::optional<Date> expiresDate() const noexcept { return expires_; }
  [[nodiscard]] bool isSessionOnly() const noexcept { return !expires_; }
  /// Sent to secure addresses only.
  [[nodiscard]] bool isSecure() const noexcept { return isSecure_; }
  /// Not for scripts of web pages. It makes no difference here.
  [[nodiscard]] bool isHTTPOnly() const noexcept { return isHTTPOnly_; }
  NK_METHOD(name)
  NK_METHOD(value)
  NK_METHOD(domain)
  NK_METHOD(path)
  NK_METHOD(expiresDate)
  NK_METHOD(isSessionOnly)
  NK_METHOD(isSecure)
  NK_METHOD(isHTTPOnly)

  /// Domain, path without '/' at its end, and name, with tabs between them: cookies with one key replace one another.
  /// So do those of "/slips" and "/slips/", because libcurl takes the second for a line without a path, RFC 6265 the
  /// first.
  [[nodiscard]] NSString storageKey() const;
  /// Whether it goes to that address, by host, path and security; its expiry aside.
  [[nodiscard]] bool matchesURL(const NSURL& url) const;
  /// Whether cookies that are Secure go to that address, and may come from it.
  [[nodiscard]] static bool isSecureURL(const NSURL& url);
  /// Under the keys above, for cookieWithProperties().
  [[nodiscard]] Ref<NSDictionary> properties() const;
  /// For cookieWithCookieFileLine() and libcurl's CURLOPT_COOKIELIST. Without line end.
  [[nodiscard]] NSString cookieFileLine() const;

  /// "a=1; b=2" under "Cookie", in the order of the array; without cookies an empty dictionary.
  [[nodiscard]] static Ref<NSDictionary> requestHeaderFieldsWithCookies(const NSArray& cookies);

  /// Everything equal.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// Name, domain and path; not the value, which may be a secret.
  [[nodiscard]] NSString description() const override;

 private:
  NSHTTPCookie() = default;
  friend class detail::CookieStore;
  struct Parts;
  /// What of an address decides whether a cookie goes there.
  struct Target {
    explicit Target(const NSURL& url);
    std::optional<NSString> host;
    NSString path;
    bool isSecure;
  };
  [[nodiscard]] static Ref<NSHTTPCookie> made(Parts parts);
  [[nodiscard]] Ref<NSHTTPCookie> copyWithCreation(std::int64_t creation) const;
  [[nodiscard]] bool matches(const Target& target) const;

  NSString name_, value_, domain_, path_ = "/";
  std::optional<Date> expires_;
  bool isSecure_ = false, isHTTPOnly_ = false;
  std::int64_t creation_ = 0;  ///< of one in a store; nanoseconds since 1970
};

}  // namespace norvik

// NorvikCore/platform/foundation/NSHTTPCookie.h - a cookie: a name and a value that a web server set, and the URLs that
// it is sent to.
//
//   Ref<NSURL> url = NSURL::URLWithString("https://pay.example.co.uk/slips/april");
//   const NSString line = "lang=en-GB; Domain=example.co.uk; Max-Age=60";
//   Ref<NSHTTPCookie> cookie = NSHTTPCookie::cookieWithSetCookieLine(line, *url);
//   cookie->domain();          // ".example.co.uk": that host and all hosts below it
//   cookie->path();            // "/slips": that folder and all folders below it
//   cookie->isSessionOnly();   // false
//
// A line is read by RFC 6265. It is refused in these cases, in which libcurl and browsers refuse it too:
// - It has no name or no '=', has control characters, or has more than 4096 bytes of name and value. (An attribute of
//   more than 1024 bytes is ignored.)
// - Domain is not the host or a domain above it, or ends with a full stop.
// - Domain is a public suffix such as "co.uk", by libpsl's list. If it is the host itself, the line is accepted and the
//   cookie is for that host alone.
// - Domain is a numeric address other than the host.
// - It has Secure, and the URL is not secure.
// - Its name begins with "__Secure-" and it is not Secure; or its name begins with "__Host-" and it is not Secure, has
//   a Domain, or has another Path than "/". The case of these prefixes is ignored.
//
// Name and value are bytes in NSString::fromBytes form; nothing is decoded. Secure URLs are those of https and wss and
// of this machine: localhost, 127.0.0.1 and ::1. Immutable, any thread. libpsl is loaded when the first line with a
// Domain is read; NSGenericException is raised if that fails.
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
/// With a leading full stop, the domain and all hosts below it; without it, one host.
NK_EXPORT extern const NSString NSHTTPCookieDomain;
NK_EXPORT extern const NSString NSHTTPCookiePath;
/// A date; absent for a session cookie.
NK_EXPORT extern const NSString NSHTTPCookieExpires;
/// Booleans.
NK_EXPORT extern const NSString NSHTTPCookieSecure;
NK_EXPORT extern const NSString NSHTTPCookieHTTPOnly;

class NK_EXPORT NSHTTPCookie : public NSObject {
  NK_OBJECT(NSHTTPCookie, NSObject)
  ~NSHTTPCookie() override;

  /// A cookie that the application makes; public suffixes do not limit it. Returns an empty Ref if name or domain is
  /// missing, if the domain is not a host, if the path does not begin with '/', if a text holds a control character, if
  /// the name holds '=', if name or value holds ';', or if they are longer than 4096 bytes together. The default path
  /// is "/". A value of a wrong kind raises NSInvalidArgumentException.
  [[nodiscard]] static Ref<NSHTTPCookie> cookieWithProperties(const NSDictionary& properties);
  /// Reads the text after "Set-Cookie:" in a response from `url`. Returns an empty Ref if it is refused. An expired
  /// cookie is returned too: storing it removes the cookie that it replaces.
  [[nodiscard]] static Ref<NSHTTPCookie> cookieWithSetCookieLine(const NSString& line, const NSURL& url);
  /// A line of a Netscape cookie file, as libcurl writes and reads it: "domain TRUE path secure expiry name value",
  /// separated by tabs. Returns an empty Ref for a comment and for any other line.
  [[nodiscard]] static Ref<NSHTTPCookie> cookieWithCookieFileLine(const NSString& line);

  [[nodiscard]] const NSString& name() const noexcept { return name_; }
  [[nodiscard]] const NSString& value() const noexcept { return value_; }
  /// In lower case; an international name as "xn--...". ".example.com" means that host and all hosts below it,
  /// "example.com" that host alone.
  [[nodiscard]] const NSString& domain() const noexcept { return domain_; }
  [[nodiscard]] const NSString& path() const noexcept { return path_; }
  /// In whole seconds. Absent for a session cookie, which lasts until the process ends.
  [[nodiscard]] std::optional<Date> expiresDate() const noexcept { return expires_; }
  [[nodiscard]] bool isSessionOnly() const noexcept { return !expires_; }
  /// Sent to secure URLs only.
  [[nodiscard]] bool isSecure() const noexcept { return isSecure_; }
  /// Hidden from scripts of web pages. Has no effect in this library.
  [[nodiscard]] bool isHTTPOnly() const noexcept { return isHTTPOnly_; }
  NK_METHOD(name)
  NK_METHOD(value)
  NK_METHOD(domain)
  NK_METHOD(path)
  NK_METHOD(expiresDate)
  NK_METHOD(isSessionOnly)
  NK_METHOD(isSecure)
  NK_METHOD(isHTTPOnly)

  /// Domain, path without a trailing '/', and name, separated by tabs: cookies with the same key replace one another.
  /// Cookies of "/slips" and "/slips/" have the same key, because a line without a path gives the second one in libcurl
  /// and the first one by RFC 6265.
  [[nodiscard]] NSString storageKey() const;
  /// Whether host, path and security of the URL allow the cookie to be sent there. Its expiry is not considered.
  [[nodiscard]] bool matchesURL(const NSURL& url) const;
  /// Whether Secure cookies are sent to that URL and accepted from it.
  [[nodiscard]] static bool isSecureURL(const NSURL& url);
  /// Under the keys above, for cookieWithProperties().
  [[nodiscard]] Ref<NSDictionary> properties() const;
  /// For cookieWithCookieFileLine() and libcurl's CURLOPT_COOKIELIST. Without a line end.
  [[nodiscard]] NSString cookieFileLine() const;

  /// {"Cookie": "a=1; b=2"}, in the order of the array; an empty dictionary if there are no cookies.
  [[nodiscard]] static Ref<NSDictionary> requestHeaderFieldsWithCookies(const NSArray& cookies);

  /// Equal if all properties are equal.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// Name, domain and path. The value is left out because it may be a secret.
  [[nodiscard]] NSString description() const override;

 private:
  NSHTTPCookie() = default;
  friend class detail::CookieStore;
  struct Parts;
  /// The parts of a URL that decide whether a cookie is sent there.
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
  std::int64_t creation_ = 0;  ///< set for a cookie in a store: nanoseconds since 1970
};

}  // namespace norvik

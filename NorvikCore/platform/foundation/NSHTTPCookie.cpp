#include "NorvikCore/platform/foundation/NSHTTPCookie.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/foundation/internal/HostName.h"
#include "NorvikCore/platform/foundation/internal/PublicSuffixes.h"
#include "NorvikCore/platform/foundation/internal/SetCookie.h"
#include "NorvikCore/platform/kernel/Clock.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

namespace norvik {

constexpr NSString NSHTTPCookieName = "Name";
constexpr NSString NSHTTPCookieValue = "Value";
constexpr NSString NSHTTPCookieDomain = "Domain";
constexpr NSString NSHTTPCookiePath = "Path";
constexpr NSString NSHTTPCookieExpires = "Expires";
constexpr NSString NSHTTPCookieSecure = "Secure";
constexpr NSString NSHTTPCookieHTTPOnly = "HttpOnly";

struct NSHTTPCookie::Parts {
  std::string name, value, domain, path;
  std::optional<std::int64_t> expires;  ///< seconds since 1970
  bool isSecure = false, isHTTPOnly = false;
};

namespace {

constexpr std::string_view httpOnlyMark = "#HttpOnly_";

std::int64_t unixNow() { return kernel::wallNanoseconds() / 1'000'000'000; }

/// Whether the cookie fulfils what the prefix of its name promises. A server sees only the name and value of a cookie.
bool keepsPrefixPromise(const detail::SetCookie& cookie) {
  const std::string name = detail::asciiLower(cookie.name);
  if (name.starts_with("__secure-")) return cookie.isSecure;
  if (name.starts_with("__host-")) return cookie.isSecure && !cookie.domain && cookie.path == "/";
  return true;
}

/// The domain of the cookie, with a leading full stop if it covers more than one host; absent if the host may not set
/// it.
std::optional<std::string> acceptedDomain(const std::optional<std::string>& attribute, const std::string& host) {
  if (!attribute) return host;
  const std::optional<std::string> domain =
      attribute->find(':') == attribute->npos ? detail::canonicalHost(*attribute) : detail::asciiLower(*attribute);
  if (!domain || domain->ends_with('.') || !detail::domainMatches(host, *domain)) return std::nullopt;
  if (detail::isIpAddress(host)) return host;
  if (*domain != host) return detail::mayHostSetCookiesFor(*domain, host) ? std::optional("." + *domain) : std::nullopt;
  return detail::isPublicSuffix(host) ? host : "." + host;
}

/// The canonical form of NSHTTPCookieDomain.
std::optional<std::string> canonicalDomain(std::string_view domain) {
  if (domain.find(':') != domain.npos) {
    const Ref<NSURL> url = NSURL::URLWithString("http://[" + NSString::fromBytes(domain) + "]/");
    return url ? std::optional(url->host()->str()) : std::nullopt;
  }
  const bool isWide = domain.starts_with('.');
  const std::optional<std::string> host = detail::canonicalHost(domain.substr(isWide ? 1 : 0));
  if (!host || host->empty() || host->starts_with('.')) return std::nullopt;
  return isWide && !detail::isIpAddress(*host) ? "." + *host : *host;
}

std::optional<bool> booleanOf(std::string_view text) {
  const std::string upper = detail::asciiLower(text);
  return upper == "true" ? std::optional(true) : upper == "false" ? std::optional(false) : std::nullopt;
}

}  // namespace

NSHTTPCookie::~NSHTTPCookie() = default;

Ref<NSHTTPCookie> NSHTTPCookie::made(Parts parts) {
  if (parts.name.empty() || parts.name.size() + parts.value.size() > detail::longestCookie ||
      parts.name.find('=') != parts.name.npos || !parts.path.starts_with('/')) {
    return nullptr;
  }
  if (!detail::isCookieText(parts.name) || !detail::isCookieText(parts.value) || !detail::isCookiePath(parts.path)) {
    return nullptr;
  }
  const std::optional<std::string> domain = canonicalDomain(parts.domain);
  if (!domain) return nullptr;
  const Ref<NSHTTPCookie> cookie = Ref<NSHTTPCookie>::adopt(new NSHTTPCookie());
  cookie->name_ = NSString::fromBytes(parts.name);
  cookie->value_ = NSString::fromBytes(parts.value);
  cookie->domain_ = *domain;
  cookie->path_ = NSString::fromBytes(parts.path);
  if (parts.expires) cookie->expires_ = Date::dateWithTimeIntervalSince1970(static_cast<double>(*parts.expires));
  cookie->isSecure_ = parts.isSecure;
  cookie->isHTTPOnly_ = parts.isHTTPOnly;
  return cookie;
}

Ref<NSHTTPCookie> NSHTTPCookie::cookieWithProperties(const NSDictionary& properties) {
  const auto text = [&](const NSString& key, const char* usual) {
    const Value value = properties.objectForKey(key);
    return value.isAbsent() ? std::string(usual) : value.as<NSString>().bytes();
  };
  const auto isSet = [&](const NSString& key) {
    const Value value = properties.objectForKey(key);
    return !value.isAbsent() && value.as<bool>();
  };
  Parts parts{.name = text(NSHTTPCookieName, ""),
              .value = text(NSHTTPCookieValue, ""),
              .domain = text(NSHTTPCookieDomain, ""),
              .path = text(NSHTTPCookiePath, "/"),
              .expires = std::nullopt,
              .isSecure = isSet(NSHTTPCookieSecure),
              .isHTTPOnly = isSet(NSHTTPCookieHTTPOnly)};
  if (const Value value = properties.objectForKey(NSHTTPCookieExpires); !value.isAbsent()) {
    const double seconds = value.as<Date>().timeIntervalSince1970();
    parts.expires =
        seconds > 0 ? static_cast<std::int64_t>(std::min(std::floor(seconds), static_cast<double>(detail::lastExpiry)))
                    : 0;
  }
  return made(std::move(parts));
}

Ref<NSHTTPCookie> NSHTTPCookie::cookieWithSetCookieLine(const NSString& line, const NSURL& url) {
  const std::optional<NSString> urlHost = url.host();
  std::optional<detail::SetCookie> read = detail::readSetCookie(line.bytes(), unixNow());
  if (!urlHost || !read) return nullptr;
  const std::string host = urlHost->bytes();
  if (host.starts_with('.')) return nullptr;  // because that would mean the domain of every host below it
  if ((read->isSecure && !isSecureURL(url)) || !keepsPrefixPromise(*read)) return nullptr;
  const std::optional<std::string> domain = acceptedDomain(read->domain, host);
  if (!domain) return nullptr;
  return made({.name = std::move(read->name),
               .value = std::move(read->value),
               .domain = *domain,
               .path = read->path ? *read->path : detail::defaultCookiePath(url.percentEncodedPath().bytes()),
               .expires = read->expires,
               .isSecure = read->isSecure,
               .isHTTPOnly = read->isHttpOnly});
}

Ref<NSHTTPCookie> NSHTTPCookie::cookieWithCookieFileLine(const NSString& fileLine) {
  const std::string bytes = fileLine.bytes();
  std::string_view line = bytes;
  while (line.ends_with('\r') || line.ends_with('\n')) line.remove_suffix(1);
  const bool isHTTPOnly = line.starts_with(httpOnlyMark);
  if (isHTTPOnly) line.remove_prefix(httpOnlyMark.size());
  if (line.starts_with('#')) return nullptr;
  enum Field { DomainField, WideField, PathField, SecureField, ExpiryField, NameField, ValueField, fieldCount };
  std::array<std::string_view, fieldCount> fields;
  for (std::size_t i = 0; i < fieldCount; ++i) {
    const std::size_t end = line.find('\t');
    // If the value is empty, the tab before it may be missing.
    if (end == line.npos ? i < NameField : i == ValueField) return nullptr;
    fields[i] = line.substr(0, end);
    if (end == line.npos) break;
    line.remove_prefix(end + 1);
  }
  const std::optional<bool> isWide = booleanOf(fields[WideField]), isSecure = booleanOf(fields[SecureField]);
  std::int64_t expires = 0;
  const std::string_view expiry = fields[ExpiryField];
  const auto [end, error] = std::from_chars(expiry.data(), expiry.data() + expiry.size(), expires);
  const bool isTooLarge = error == std::errc::result_out_of_range && !expiry.starts_with('-');
  if (isTooLarge) expires = detail::lastExpiry;
  if (!isWide || !isSecure || (error != std::errc() && !isTooLarge) || end != expiry.data() + expiry.size()) {
    return nullptr;
  }
  std::string domain(fields[DomainField].substr(fields[DomainField].starts_with('.') ? 1 : 0));
  if (*isWide) domain.insert(0, ".");
  return made({.name = std::string(fields[NameField]),
               .value = std::string(fields[ValueField]),
               .domain = std::move(domain),
               .path = std::string(fields[PathField]),
               .expires = expires == 0
                              ? std::nullopt
                              : std::optional<std::int64_t>(std::clamp<std::int64_t>(expires, 0, detail::lastExpiry)),
               .isSecure = *isSecure,
               .isHTTPOnly = isHTTPOnly});
}

NSString NSHTTPCookie::storageKey() const {
  std::string_view path = path_.view();
  if (path.ends_with('/')) path.remove_suffix(1);
  return domain_ + "\t" + path + "\t" + name_;
}

Ref<NSHTTPCookie> NSHTTPCookie::copyWithCreation(std::int64_t creation) const {
  const Ref<NSHTTPCookie> copy = Ref<NSHTTPCookie>::adopt(new NSHTTPCookie());
  copy->name_ = name_;
  copy->value_ = value_;
  copy->domain_ = domain_;
  copy->path_ = path_;
  copy->expires_ = expires_;
  copy->isSecure_ = isSecure_;
  copy->isHTTPOnly_ = isHTTPOnly_;
  copy->creation_ = creation;
  return copy;
}

bool NSHTTPCookie::isSecureURL(const NSURL& url) {
  const std::optional<NSString> scheme = url.scheme(), host = url.host();
  if (!scheme || !host) return false;
  return *scheme == "https" || *scheme == "wss" || *host == "localhost" || *host == "127.0.0.1" || *host == "::1";
}

NSHTTPCookie::Target::Target(const NSURL& url)
    : host(url.host()), path(url.percentEncodedPath()), isSecure(isSecureURL(url)) {
  if (path.empty()) path = "/";
}

bool NSHTTPCookie::matches(const Target& target) const {
  if (!target.host || (isSecure_ && !target.isSecure)) return false;
  const std::string_view host = target.host->view(), domain = domain_.view();
  const bool isOfDomain = domain.starts_with('.') ? detail::domainMatches(host, domain.substr(1)) : domain == host;
  return isOfDomain && detail::pathMatches(target.path.view(), path_.view());
}

bool NSHTTPCookie::matchesURL(const NSURL& url) const { return matches(Target(url)); }

Ref<NSDictionary> NSHTTPCookie::properties() const {
  const Ref<NSMutableDictionary> properties = NSMutableDictionary::dictionary();
  properties->setObject(name_, NSHTTPCookieName);
  properties->setObject(value_, NSHTTPCookieValue);
  properties->setObject(domain_, NSHTTPCookieDomain);
  properties->setObject(path_, NSHTTPCookiePath);
  properties->setObject(isSecure_, NSHTTPCookieSecure);
  properties->setObject(isHTTPOnly_, NSHTTPCookieHTTPOnly);
  if (expires_) properties->setObject(*expires_, NSHTTPCookieExpires);
  return properties->copy();
}

NSString NSHTTPCookie::cookieFileLine() const {
  const bool isWide = domain_.hasPrefix(".");
  std::string line;
  if (isHTTPOnly_) line += httpOnlyMark;
  line += domain_.view();
  line += isWide ? "\tTRUE\t" : "\tFALSE\t";
  line += path_.bytes();
  line += isSecure_ ? "\tTRUE\t" : "\tFALSE\t";
  // 0 means a session cookie.
  const double expiry = expires_ ? std::max(expires_->timeIntervalSince1970(), 1.0) : 0;
  line += std::to_string(static_cast<std::int64_t>(expiry));
  ((line += '\t') += name_.bytes() + '\t') += value_.bytes();
  return NSString::fromBytes(line);
}

Ref<NSDictionary> NSHTTPCookie::requestHeaderFieldsWithCookies(const NSArray& cookies) {
  std::string line;
  for (const NSHTTPCookie& cookie : cookies.as<NSHTTPCookie>()) {
    if (!line.empty()) line += "; ";
    line += cookie.name_.bytes() + "=" + cookie.value_.bytes();
  }
  return line.empty() ? NSDictionary::dictionary()
                      : NSDictionary::dictionaryWith({{"Cookie", NSString::fromBytes(line)}});
}

bool NSHTTPCookie::isEqual(const NSObject& other) const {
  const auto* cookie = dynamic_cast<const NSHTTPCookie*>(&other);
  return cookie && cookie->name_ == name_ && cookie->value_ == value_ && cookie->domain_ == domain_ &&
         cookie->path_ == path_ && cookie->expires_ == expires_ && cookie->isSecure_ == isSecure_ &&
         cookie->isHTTPOnly_ == isHTTPOnly_;
}

std::size_t NSHTTPCookie::hash() const { return std::hash<NSString>{}(name_)*31 + std::hash<NSString>{}(domain_); }

NSString NSHTTPCookie::description() const { return "<NSHTTPCookie " + name_ + " of " + domain_ + path_ + ">"; }

}  // namespace norvik

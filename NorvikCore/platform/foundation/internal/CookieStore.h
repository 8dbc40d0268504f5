// NorvikCore/platform/foundation/internal/CookieStore.h - the cookies of one database and those of the session.
//
// A cookie with an expiry is a row of the database (KeyedStore): the key is its storageKey(), and the value is when it
// was created, in nanoseconds since 1970, a space and its line of a cookie file. One without is in memory only. Expired
// ones are never seen, and leave the database with the next change.
//
// Synchronised. Each operation looks at all cookies.
#pragma once

#include "NorvikCore/platform/foundation/NSHTTPCookie.h"
#include "NorvikCore/platform/foundation/internal/KeyedStore.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace norvik::detail {

class CookieStore {
 public:
  static constexpr std::size_t mostOfADomain = 180, most = 3000;

  /// In the order in which they were created.
  using Cookies = std::vector<Ref<NSHTTPCookie>>;

  explicit CookieStore(std::string path);

  [[nodiscard]] Cookies all();
  /// Those that match, as RFC 6265 orders them: longer paths first. They count as used.
  [[nodiscard]] Cookies forURL(const NSURL& url);
  /// Replaces the one of its domain, path and name, which gives it its place in the order. An expired one removes it.
  /// Beyond the bounds the one that was not used for the longest time is removed.
  void set(const NSHTTPCookie& cookie);
  /// Sets each cookie of a cookie file, at once: of more than the bounds allow, only those that would be left.
  void setLines(std::string_view cookieFile);
  /// False where it is not to replace or hide a secure cookie, because it comes from an address that is not secure.
  [[nodiscard]] bool setFromInsecureAddress(const NSHTTPCookie& cookie);
  void remove(const NSHTTPCookie& cookie);
  /// Only while it is still equal to that one.
  void removeIfUnchanged(const NSHTTPCookie& cookie);
  bool synchronize();

 private:
  using Keyed = std::pair<NSString, Ref<NSHTTPCookie>>;
  using Domains = std::set<std::string, std::less<>>;  ///< without a full stop before them

  [[nodiscard]] static Value decode(const NSString& key, std::string_view bytes);
  [[nodiscard]] static Cookies withoutKeys(std::vector<Keyed> found);
  [[nodiscard]] static bool isCreatedBefore(const Keyed& a, const Keyed& b);
  /// In no order.
  [[nodiscard]] std::vector<Keyed> gather(std::vector<NSString>* expired = nullptr) NK_REQUIRES(mutex_);
  [[nodiscard]] Ref<NSHTTPCookie> present(const NSString& key) NK_REQUIRES(mutex_);
  void put(const NSHTTPCookie& cookie) NK_REQUIRES(mutex_);
  /// True where it is one more than before.
  bool keep(const NSHTTPCookie& cookie) NK_REQUIRES(mutex_);
  void erase(const NSString& key) NK_REQUIRES(mutex_);
  void eraseStored(const NSString& key) NK_REQUIRES(mutex_);
  /// That of the domains, and that of all.
  void keepBounds(const Domains& domains) NK_REQUIRES(mutex_);

  Mutex mutex_;  ///< taken before those of stored_
  KeyedStore stored_;
  std::map<NSString, Ref<NSHTTPCookie>> session_ NK_GUARDED_BY(mutex_);
  std::unordered_map<NSString, std::uint64_t> uses_ NK_GUARDED_BY(mutex_);  ///< by key: the number of the last one
  std::uint64_t useCount_ NK_GUARDED_BY(mutex_) = 0;
  std::int64_t lastCreation_ NK_GUARDED_BY(mutex_) = 0;
};

}  // namespace norvik::detail

// NorvikCore/platform/foundation/internal/CookieStore.h - the cookies of one database and those of the session.
//
// A cookie with an expiry is a row of the database (KeyedStore). The key is its storageKey(); the value is its time of
// creation in nanoseconds since 1970, a space and its line of a cookie file. A cookie without an expiry is in memory
// only. Expired cookies are never returned; they are removed from the database by the next change.
//
// Synchronised. Each operation examines all cookies.
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
  /// The matching cookies in the order of RFC 6265: longer paths first. They are marked as used.
  [[nodiscard]] Cookies forURL(const NSURL& url);
  /// Replaces the cookie with the same domain, path and name and takes its place in the order. An expired cookie
  /// removes it. If the bounds are exceeded, the least recently used cookie is removed.
  void set(const NSHTTPCookie& cookie);
  /// Sets each cookie of a cookie file in one step. If there are more than the bounds allow, only those that would
  /// remain.
  void setLines(std::string_view cookieFile);
  /// False, without effect, if the cookie would replace or hide a secure cookie, because its URL is not secure.
  [[nodiscard]] bool setFromInsecureAddress(const NSHTTPCookie& cookie);
  void remove(const NSHTTPCookie& cookie);
  /// Only if the stored cookie is still equal to this one.
  void removeIfUnchanged(const NSHTTPCookie& cookie);
  bool synchronize();

 private:
  using Keyed = std::pair<NSString, Ref<NSHTTPCookie>>;
  using Domains = std::set<std::string, std::less<>>;  ///< without a leading full stop

  [[nodiscard]] static Value decode(const NSString& key, std::string_view bytes);
  [[nodiscard]] static Cookies withoutKeys(std::vector<Keyed> found);
  [[nodiscard]] static bool isCreatedBefore(const Keyed& a, const Keyed& b);
  /// The cookies that are not expired, in no order.
  [[nodiscard]] std::vector<Keyed> gather(std::vector<NSString>* expired = nullptr) NK_REQUIRES(mutex_);
  [[nodiscard]] Ref<NSHTTPCookie> present(const NSString& key) NK_REQUIRES(mutex_);
  void put(const NSHTTPCookie& cookie) NK_REQUIRES(mutex_);
  /// True if the number of cookies grew.
  bool keep(const NSHTTPCookie& cookie) NK_REQUIRES(mutex_);
  void erase(const NSString& key) NK_REQUIRES(mutex_);
  void eraseStored(const NSString& key) NK_REQUIRES(mutex_);
  /// Enforces the bound of each domain and that of all cookies.
  void keepBounds(const Domains& domains) NK_REQUIRES(mutex_);

  Mutex mutex_;  ///< locked before those of stored_
  KeyedStore stored_;
  std::map<NSString, Ref<NSHTTPCookie>> session_ NK_GUARDED_BY(mutex_);
  std::unordered_map<NSString, std::uint64_t> uses_ NK_GUARDED_BY(mutex_);  ///< by key: the number of the last use
  std::uint64_t useCount_ NK_GUARDED_BY(mutex_) = 0;
  std::int64_t lastCreation_ NK_GUARDED_BY(mutex_) = 0;
};

}  // namespace norvik::detail

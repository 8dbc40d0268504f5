#include "NorvikCore/platform/foundation/internal/CookieStore.h"

#include "NorvikCore/platform/foundation/internal/SetCookie.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <tuple>
#include <unordered_set>
#include <utility>

namespace norvik::detail {
namespace {

std::string_view withoutDot(std::string_view domain) { return domain.substr(domain.starts_with('.') ? 1 : 0); }

bool isExpired(const NSHTTPCookie& cookie, double now = kernel::wallSeconds()) {
  const std::optional<Date> expires = cookie.expiresDate();
  return expires && expires->timeIntervalSinceReferenceDate() <= now;
}

/// Whether a cookie could be sent in place of `secure` to a URL that gets `secure`.
bool mayBeTakenFor(const NSHTTPCookie& cookie, const NSHTTPCookie& secure) {
  const std::string_view domain = withoutDot(cookie.domain().view()), other = withoutDot(secure.domain().view());
  return secure.isSecure() && secure.name() == cookie.name() &&
         (domainMatches(domain, other) || domainMatches(other, domain)) &&
         pathMatches(cookie.path().view(), secure.path().view());
}

/// The cookies of a file that remain after setting them one after the other, in that order: a later cookie replaces an
/// earlier one with the same key, and the last ones of each domain, and of all, are kept.
std::vector<Ref<NSHTTPCookie>> lastCookies(std::string_view cookieFile) {
  std::vector<Ref<NSHTTPCookie>> last;
  std::unordered_set<NSString> keys;
  std::map<std::string, std::size_t, std::less<>> counts;
  const double now = kernel::wallSeconds();
  for (std::size_t count = 0; !cookieFile.empty() && count < CookieStore::most;) {
    const std::size_t lineEnd = cookieFile.rfind('\n');
    const std::string_view line = cookieFile.substr(lineEnd + 1);  // npos + 1 is 0
    cookieFile.remove_suffix(cookieFile.size() - (lineEnd == cookieFile.npos ? 0 : lineEnd));
    Ref<NSHTTPCookie> cookie = NSHTTPCookie::cookieWithCookieFileLine(NSString::fromBytes(line));
    if (!cookie || !keys.insert(cookie->storageKey()).second) continue;
    if (!isExpired(*cookie, now)) {  // an expired cookie only removes another one
      std::size_t& ofDomain = counts[std::string(withoutDot(cookie->domain().view()))];
      if (ofDomain == CookieStore::mostOfADomain) continue;
      ++ofDomain;
      ++count;
    }
    last.push_back(std::move(cookie));
  }
  std::ranges::reverse(last);
  return last;
}

struct Candidate {
  std::uint64_t lastUse;
  std::int64_t creation;
  const NSString* key;
};

/// Adds the least recently used candidates beyond the bound to `removed`.
void removeBeyond(std::size_t bound, std::vector<Candidate>& candidates, std::set<const NSString*>& removed) {
  if (candidates.size() <= bound) return;
  const auto end = candidates.begin() + static_cast<std::ptrdiff_t>(candidates.size() - bound);
  std::ranges::nth_element(candidates, end - 1, [](const Candidate& a, const Candidate& b) {
    return std::tie(a.lastUse, a.creation, *a.key) < std::tie(b.lastUse, b.creation, *b.key);
  });
  for (auto candidate = candidates.begin(); candidate != end; ++candidate) removed.insert(candidate->key);
}

}  // namespace

CookieStore::CookieStore(std::string path)
    : stored_(std::move(path),
              {.table = {.format = {.applicationId = 0x4E6B436B,
                                    .version = 1,
                                    .schema = "CREATE TABLE cookie(key PRIMARY KEY, value BLOB NOT NULL) "
                                              "WITHOUT ROWID",
                                    .sample = "SELECT key, value FROM cookie"},
                         .all = "SELECT key, value FROM cookie",
                         .put = "INSERT OR REPLACE INTO cookie(key, value) VALUES(?, ?)",
                         .remove = "DELETE FROM cookie WHERE key = ?"},
               .plural = "cookies",
               .singular = "cookie",
               .decode = &CookieStore::decode}) {}

Value CookieStore::decode(const NSString& key, std::string_view bytes) {
  std::int64_t creation = 0;
  const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), creation);
  const auto length = static_cast<std::size_t>(end - bytes.data());
  Ref<NSHTTPCookie> cookie;
  if (error == std::errc() && bytes.substr(length).starts_with(' ')) {
    cookie = NSHTTPCookie::cookieWithCookieFileLine(NSString::fromBytes(bytes.substr(length + 1)));
  }
  if (!cookie) NSException::raise(NSInvalidUnarchiveOperationException, "it is not a line of a cookie file");
  // Under another key it could be neither found, replaced nor deleted.
  if (key != cookie->storageKey()) NSException::raise(NSInvalidUnarchiveOperationException, "it is another cookie");
  cookie->creation_ = creation;
  return cookie;
}

std::vector<CookieStore::Keyed> CookieStore::gather(std::vector<NSString>* expired) {
  if (stored_.hasChanges()) static_cast<void>(stored_.takeChanges());  // discarded, because they would accumulate
  std::vector<Keyed> found(session_.begin(), session_.end());
  const double now = kernel::wallSeconds();
  for (auto& [key, value] : stored_.all()) {
    Ref<NSHTTPCookie> cookie = value.as<Ref<NSHTTPCookie>>();
    if (isExpired(*cookie, now)) {
      if (expired) expired->push_back(key);
    } else if (!session_.contains(key)) {
      found.emplace_back(key, std::move(cookie));
    }
  }
  return found;
}

Ref<NSHTTPCookie> CookieStore::present(const NSString& key) {
  if (const auto found = session_.find(key); found != session_.end()) return found->second;
  Ref<NSHTTPCookie> cookie = stored_.value(key).as<Ref<NSHTTPCookie>>();
  return cookie && !isExpired(*cookie) ? cookie : nullptr;
}

CookieStore::Cookies CookieStore::all() {
  std::vector<Keyed> found;
  {
    const MutexLock lock(mutex_);
    found = gather();
  }
  std::ranges::sort(found, isCreatedBefore);
  return withoutKeys(std::move(found));
}

CookieStore::Cookies CookieStore::forURL(const NSURL& url) {
  const NSHTTPCookie::Target target(url);
  std::vector<Keyed> found;
  {
    const MutexLock lock(mutex_);
    found = gather();
    std::erase_if(found, [&](const Keyed& keyed) { return !keyed.second->matches(target); });
    for (const auto& [key, cookie] : found) uses_[key] = ++useCount_;
  }
  std::ranges::sort(found, isCreatedBefore);
  std::ranges::stable_sort(found, std::greater(),
                           [](const Keyed& keyed) { return keyed.second->path().view().size(); });
  return withoutKeys(std::move(found));
}

CookieStore::Cookies CookieStore::withoutKeys(std::vector<Keyed> found) {
  Cookies cookies;
  cookies.reserve(found.size());
  for (Keyed& keyed : found) cookies.push_back(std::move(keyed.second));
  return cookies;
}

bool CookieStore::isCreatedBefore(const Keyed& a, const Keyed& b) {
  const std::int64_t first = a.second->creation_, second = b.second->creation_;
  return first != second ? first < second : a.first < b.first;
}

void CookieStore::set(const NSHTTPCookie& cookie) {
  const MutexLock lock(mutex_);
  put(cookie);
}

bool CookieStore::setFromInsecureAddress(const NSHTTPCookie& cookie) {
  const MutexLock lock(mutex_);
  for (const auto& [key, other] : gather()) {
    if (mayBeTakenFor(cookie, *other)) return false;
  }
  put(cookie);
  return true;
}

void CookieStore::setLines(std::string_view cookieFile) {
  const Cookies cookies = lastCookies(cookieFile);
  const MutexLock lock(mutex_);
  Domains domains;
  for (const Ref<NSHTTPCookie>& cookie : cookies) {
    if (keep(*cookie)) domains.emplace(withoutDot(cookie->domain().view()));
  }
  if (!domains.empty()) keepBounds(domains);
}

void CookieStore::put(const NSHTTPCookie& cookie) {
  if (keep(cookie)) keepBounds({std::string(withoutDot(cookie.domain().view()))});
}

bool CookieStore::keep(const NSHTTPCookie& cookie) {
  const NSString key = cookie.storageKey();
  if (isExpired(cookie)) {
    erase(key);
    return false;
  }
  const Ref<NSHTTPCookie> former = present(key);
  uses_[key] = ++useCount_;
  if (former && former->isEqual(cookie)) return false;
  const Ref<NSHTTPCookie> kept =
      cookie.copyWithCreation(former ? former->creation_ : std::max(kernel::wallNanoseconds(), lastCreation_ + 1));
  lastCreation_ = std::max(lastCreation_, kept->creation_);
  if (cookie.isSessionOnly()) {
    eraseStored(key);
    session_[key] = kept;
  } else {
    session_.erase(key);
    stored_.set(key, kept, std::to_string(kept->creation_) + " " + cookie.cookieFileLine().bytes());
  }
  return !former;
}

void CookieStore::keepBounds(const Domains& domains) {
  std::vector<NSString> expired;
  const std::vector<Keyed> everyone = gather(&expired);
  std::vector<Candidate> all;
  std::map<std::string_view, std::vector<Candidate>> ofDomains;
  all.reserve(everyone.size());
  for (const auto& [key, cookie] : everyone) {
    const auto use = uses_.find(key);
    all.push_back({use == uses_.end() ? 0 : use->second, cookie->creation_, &key});
    const auto domain = domains.find(withoutDot(cookie->domain().view()));
    if (domain != domains.end()) ofDomains[*domain].push_back(all.back());
  }
  std::set<const NSString*> removed;
  for (auto& [domain, candidates] : ofDomains) removeBeyond(mostOfADomain, candidates, removed);
  std::erase_if(all, [&](const Candidate& candidate) { return removed.contains(candidate.key); });
  removeBeyond(most, all, removed);
  for (const NSString& key : expired) erase(key);
  for (const NSString* key : removed) erase(*key);
  if (uses_.size() <= 2 * most) return;
  // Drops the uses of cookies that other processes have removed.
  std::unordered_map<NSString, std::uint64_t> uses;
  for (const auto& [key, cookie] : everyone) {
    if (const auto use = uses_.find(key); use != uses_.end()) uses.insert(*use);
  }
  uses_ = std::move(uses);
}

void CookieStore::erase(const NSString& key) {
  uses_.erase(key);
  session_.erase(key);
  eraseStored(key);
}

void CookieStore::eraseStored(const NSString& key) {
  if (!stored_.value(key).isAbsent()) stored_.remove(key);
}

void CookieStore::remove(const NSHTTPCookie& cookie) {
  const MutexLock lock(mutex_);
  erase(cookie.storageKey());
}

void CookieStore::removeIfUnchanged(const NSHTTPCookie& cookie) {
  const MutexLock lock(mutex_);
  const NSString key = cookie.storageKey();
  const Ref<NSHTTPCookie> found = present(key);
  if (found && found->isEqual(cookie)) erase(key);
}

bool CookieStore::synchronize() { return stored_.synchronize(); }

}  // namespace norvik::detail

#include "NorvikCore/Categories/NSURL+NorvikCore.h"

#include "NorvikCore/constants/NKDebuggerAttached.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"
#include "NorvikCore/platform/foundation/NSHTTPCookieStorage.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/foundation/internal/Address.h"
#include "NorvikCore/platform/foundation/internal/HostName.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/object/AnnouncedChange.h"
#include "NorvikCore/platform/object/AssociatedObjects.h"

#include <string>
#include <string_view>
#include <vector>

namespace norvik {
namespace {

/// Its address is the key of the association.
constinit const NSString deleteAfterUseKey = "nk_deleteAfterUse";

NK_CATEGORY_PROPERTY(NSURL, bool, nk_deleteAfterUse, nk_setDeleteAfterUse)

bool isAllowedInQuery(char c) {
  return detail::isAsciiLetter(c) || detail::isAsciiDigit(c) ||
         std::string_view("-._~!$&'()*+,;=:@/?").find(c) != std::string_view::npos;
}

void print(const char* what, const NSHTTPCookie& cookie) {
  if (NKDebuggerAttached) NSLog("%@ : %@", what, cookie.domain());
}

void deleteCookies(const NSArray& cookies, bool sessionOnly, const char* what) {
  for (const NSHTTPCookie& cookie : cookies.as<NSHTTPCookie>()) {
    if (sessionOnly && !cookie.isSessionOnly()) continue;
    NSHTTPCookieStorage::sharedHTTPCookieStorage().deleteCookie(cookie);
    print(what, cookie);
  }
}

}  // namespace

Ref<NSURL> nk_URLWithString(const NSString& text) {
  if (Ref<NSURL> url = NSURL::URLWithString(text)) return url;
  return NSURL::URLWithString(detail::percentEncoded(detail::tidiedAddress(text.bytes()), isAllowedInQuery));
}

std::optional<NSString> nk_domain(const NSURL& url) {
  const std::optional<NSString> host = url.host();
  if (!host) return std::nullopt;
  std::string_view labels = host->view();
  if (labels.ends_with('.')) labels.remove_suffix(1);
  const std::size_t last = labels.rfind('.');
  const std::size_t secondLast = last == labels.npos || last == 0 ? labels.npos : labels.rfind('.', last - 1);
  if (secondLast != labels.npos) labels.remove_prefix(secondLast + 1);
  return labels.empty() ? std::nullopt : std::optional<NSString>(labels);
}

Ref<NSArray> nk_domainCookies(const NSURL& url) {
  const std::optional<NSString> domain = nk_domain(url);
  std::vector<Value> found;
  if (!domain) return NSArray::array();
  const std::string wanted = detail::asciiLower(domain->view());
  const Ref<NSArray> cookies = NSHTTPCookieStorage::sharedHTTPCookieStorage().cookies();
  for (const NSHTTPCookie& cookie : cookies->as<NSHTTPCookie>()) {
    print("App cookie", cookie);
    std::string its = detail::asciiLower(cookie.domain().view());
    if (its.ends_with('.')) its.pop_back();
    if (its == wanted || its.ends_with("." + wanted)) found.emplace_back(ref(const_cast<NSHTTPCookie&>(cookie)));
  }
  return make<NSArray>(std::move(found));
}

void nk_deleteDomainCookiesSessionOnly(const NSURL& url, bool sessionOnly) {
  deleteCookies(*nk_domainCookies(url), sessionOnly, "Deleted domain cookie");
}

void nk_deleteDomainCookiesForUrlString(const NSString& urlString, bool sessionOnly) {
  if (const Ref<NSURL> url = NSURL::URLWithString(urlString)) nk_deleteDomainCookiesSessionOnly(*url, sessionOnly);
}

void nk_deleteCookiesSessionOnly(bool sessionOnly) {
  deleteCookies(*NSHTTPCookieStorage::sharedHTTPCookieStorage().cookies(), sessionOnly, "Deleted cookie");
}

bool nk_deleteAfterUse(const NSURL& url) {
  if (!url.isFileURL()) return false;
  const Value mark = associatedValue(url, &deleteAfterUseKey);
  return !mark.isAbsent() && mark.as<bool>();
}

void nk_setDeleteAfterUse(NSURL& url, bool deleteAfterUse) {
  if (!url.isFileURL()) return;
  const Ref<NSURL> kept = ref(url);  // an observer may release it
  url.willChangeValueForKey(deleteAfterUseKey);
  setAssociatedValue(url, &deleteAfterUseKey, deleteAfterUse);
  url.didChangeValueForKey(deleteAfterUseKey);
  if (deleteAfterUse) {
    nk_deletePolicyCache().addObject(kept);
  } else {
    nk_deletePolicyCache().removeObject(kept);
  }
}

void nk_applyDeletePolicy(NSURL& url) {
  if (!nk_deleteAfterUse(url)) return;
  const Ref<NSURL> kept = ref(url);  // the set may hold the last reference
  NSFileManager::defaultManager().removeItemAtPath(url.path());
  nk_deletePolicyCache().removeObject(kept);
}

void nk_applyDeletePolicyToCache() {
  const Ref<NSSet> copy = nk_deletePolicyCache().copy();
  for (const Value& url : *copy) nk_applyDeletePolicy(*url.as<Ref<NSURL>>());
}

NSMutableSet& nk_deletePolicyCache() {
  return kernel::madeOnce([] { return NSMutableSet::set().take(); });
}

}  // namespace norvik

// NorvikCore/Categories/NSURL+NorvikCore.h - URLs from typed text, cookies of a domain, and files that are deleted
// after use.
//
//   Ref<NSURL> service = nk_URLWithString("https://pay.example.com/slips for April");
//   nk_domain(*service);                                    // "example.com"
//   nk_deleteDomainCookiesSessionOnly(*service, false);     // those of example.com and all below it
//
//   Ref<NSURL> draft = NSURL::fileURLWithPath("/tmp/slip.pdf", false);
//   nk_setDeleteAfterUse(*draft, true);                     // marks the file
//   nk_applyDeletePolicyToCache();                          // deletes all marked files, for example at the end
//
// The cookies are those of NSHTTPCookieStorage::sharedHTTPCookieStorage(); any thread. While NKDebuggerAttached is
// true, the cookie operations print on the system console (NSLog) the domains of the cookies that they read and delete.
//
// The mark and the set of marked URLs are confined to one thread, the main thread.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSURL.h"

namespace norvik {

/// The URL given by the text. If the text is not a URL, each byte of its UTF-8 is replaced by '%' and two digits,
/// except ASCII letters, digits and -._~!$&'()*+,;=:@/?, and the result is tried. '%', '#' and brackets are replaced
/// too, so "a b#c" has no fragment. Empty if the result is not a URL either. White space at the ends is left out in
/// both cases, as by NSURL.
[[nodiscard]] NK_EXPORT Ref<NSURL> nk_URLWithString(const NSString& text);

/// The host's last two labels: "b.c" of "a.b.c". A host of one or two labels is returned whole. Absent without a host.
/// No list of public suffixes is used, deliberately: the domain of "a.b.co.uk" is "co.uk", and deleting its cookies
/// deletes those of every host under "co.uk". The domain of "192.168.1.10" is "1.10". A full stop at the end of a host
/// or of a cookie's domain is ignored. An IPv6 address is one label.
[[nodiscard]] NK_EXPORT std::optional<NSString> nk_domain(const NSURL& url);

/// The cookies of nk_domain() and of all domains below it, in the store's order; none if there is no domain.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_domainCookies(const NSURL& url);
NK_EXPORT void nk_deleteDomainCookiesSessionOnly(const NSURL& url, bool sessionOnly);
/// The same for the URL given by the text (NSURL::URLWithString). Does nothing if the text is not a URL.
NK_EXPORT void nk_deleteDomainCookiesForUrlString(const NSString& urlString, bool sessionOnly);
/// Deletes cookies of the whole store.
NK_EXPORT void nk_deleteCookiesSessionOnly(bool sessionOnly);

/// Whether the file is to be deleted after use. The mark belongs to this object, not to other objects with the same
/// URL. False if the URL is not a file's. Key-value observers see it as "nk_deleteAfterUse".
[[nodiscard]] NK_EXPORT bool nk_deleteAfterUse(const NSURL& url);
/// Does nothing if the URL is not a file's. Observers are notified before the set is changed.
///
/// The set contains URLs. Two equal objects are one member: the one that was marked first, which the set keeps alive.
/// So the last call counts: removing the mark of any of them removes the URL from the set. The URL of a file and the
/// URL of a folder, which ends with '/', are different even if the path is the same.
NK_EXPORT void nk_setDeleteAfterUse(NSURL& url, bool deleteAfterUse);

/// If the URL is marked, deletes the file, the link (not its target) or the folder with all its contents, and removes
/// the URL from the set. The URL is removed even if the file is missing or cannot be deleted; neither is reported. The
/// folder "/" is not deleted.
NK_EXPORT void nk_applyDeletePolicy(NSURL& url);
/// Applies the policy to each member of a copy of the set, so the set may change during the call.
NK_EXPORT void nk_applyDeletePolicyToCache();
/// The set itself, one for the process; empty at first.
[[nodiscard]] NK_EXPORT NSMutableSet& nk_deletePolicyCache();

}  // namespace norvik

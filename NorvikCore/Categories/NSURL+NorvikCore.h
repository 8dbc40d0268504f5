// NorvikCore/Categories/NSURL+NorvikCore.h - addresses from what was typed, cookies of a domain, and files that are
// deleted once they were used.
//
//   Ref<NSURL> service = nk_URLWithString("https://pay.example.com/slips for April");
//   nk_domain(*service);                                    // "example.com"
//   nk_deleteDomainCookiesSessionOnly(*service, false);     // those of example.com and all below it
//
//   Ref<NSURL> draft = NSURL::fileURLWithPath("/tmp/slip.pdf", false);
//   nk_setDeleteAfterUse(*draft, true);                     // remembered, and deleted by
//   nk_applyDeletePolicyToCache();                          // when the application ends, say
//
// The cookies are those of NSHTTPCookieStorage::sharedHTTPCookieStorage(), on any thread. While NKDebuggerAttached is
// set, the cookie operations print the domains that they look at and delete on the system console (NSLog).
//
// The mark and the set of marked addresses are confined to one thread, the main one.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSURL.h"

namespace norvik {

/// The address that the text is. If it is none, the one it is after each byte of its UTF-8 but letters, digits and
/// -._~!$&'()*+,;=:@/? of ASCII became '%' and two digits: also '%', '#' and brackets, so that "a b#c" has no fragment.
/// Empty if that is none either. White space at the ends is left out in both cases, as NSURL has it.
[[nodiscard]] NK_EXPORT Ref<NSURL> nk_URLWithString(const NSString& text);

/// The host's last two labels, "b.c" of "a.b.c"; a host of one or two labels itself. Absent without a host. On purpose
/// no list of public suffixes is asked: of "a.b.co.uk" it is "co.uk", and deleting its cookies deletes those of every
/// host under "co.uk". Likewise it is "1.10" of "192.168.1.10". A full stop at the end of a host or
/// a cookie's domain does not count; an IPv6 address is one label.
[[nodiscard]] NK_EXPORT std::optional<NSString> nk_domain(const NSURL& url);

/// The cookies of nk_domain() and of all domains below it, in the store's order; none without a domain.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_domainCookies(const NSURL& url);
NK_EXPORT void nk_deleteDomainCookiesSessionOnly(const NSURL& url, bool sessionOnly);
/// The same for the address that the text is (NSURL::URLWithString); nothing where it is none.
NK_EXPORT void nk_deleteDomainCookiesForUrlString(const NSString& urlString, bool sessionOnly);
/// Every cookie of the store.
NK_EXPORT void nk_deleteCookiesSessionOnly(bool sessionOnly);

/// Whether the file is to be deleted after use: the mark of this object, not of others of the same address. False for
/// what is no file's address. Key-value observers see it as "nk_deleteAfterUse".
[[nodiscard]] NK_EXPORT bool nk_deleteAfterUse(const NSURL& url);
/// Does nothing to what is no file's address. Observers are notified before the set is changed.
///
/// The set is of addresses: two equal objects are one in it, the first that was marked, which it keeps alive. So the
/// last word counts: unmarking any of them takes the address out of the set. Of one path the address of a file and that
/// of a folder, which ends with '/', are two.
NK_EXPORT void nk_setDeleteAfterUse(NSURL& url, bool deleteAfterUse);

/// If the address is marked: deletes the file, the link (not what it leads to) or the folder with all that is in it,
/// and takes the address out of the set, also if the file is gone or cannot be deleted, which nothing reports. The
/// folder "/" is not deleted.
NK_EXPORT void nk_applyDeletePolicy(NSURL& url);
/// For a copy of the set, so that it may change meanwhile.
NK_EXPORT void nk_applyDeletePolicyToCache();
/// The set itself; of the process, empty at first.
[[nodiscard]] NK_EXPORT NSMutableSet& nk_deletePolicyCache();

}  // namespace norvik

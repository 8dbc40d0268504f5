// NorvikCore/platform/foundation/internal/PublicSuffixes.h - the domains under which anybody can have a name of his own
// ("co.uk"), so that no host may set cookies for all of one.
//
// The list is libpsl's, which is loaded when the first cookie with a Domain attribute is read: the newest of the
// distribution's file and the one that libpsl was built with. libcurl asks it in the same way. Synchronised.
#pragma once

#include <string>

namespace norvik::detail {

// Names are in lower case, international ones as "xn--...", without a full stop at their end. Each raises
// NSGenericException where libpsl cannot be loaded; the next call tries again.
[[nodiscard]] bool mayHostSetCookiesFor(const std::string& domain, const std::string& host);

/// "co.uk", "uk", and every last label that the list does not know.
[[nodiscard]] bool isPublicSuffix(const std::string& domain);

}  // namespace norvik::detail

// NorvikCore/platform/foundation/internal/PublicSuffixes.h - the domains under which anyone can register a name, such
// as "co.uk". No host may set cookies for such a domain.
//
// The list is libpsl's: the newer of the distribution's file and the one that libpsl was built with. libpsl is loaded
// when the first cookie with a Domain attribute is read. libcurl uses it in the same way. Synchronised.
#pragma once

#include <string>

namespace norvik::detail {

// Names must be in lower case, international ones as "xn--...", without a full stop at the end. Each function raises
// NSGenericException if libpsl cannot be loaded; the next call tries again.
[[nodiscard]] bool mayHostSetCookiesFor(const std::string& domain, const std::string& host);

/// True for "co.uk", for "uk", and for every last label that the list does not have.
[[nodiscard]] bool isPublicSuffix(const std::string& domain);

}  // namespace norvik::detail

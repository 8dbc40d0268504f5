// examples/cookies/cookies.cpp - the code of docs/cookies.md.
#include <iostream>

#include "NorvikCore/Categories/NSURL+NorvikCore.h"
#include "NorvikCore/platform/foundation/NSHTTPCookieStorage.h"

using namespace norvik;

int main() {
  // A URL as typed, with a space in it.
  const Ref<NSURL> slips = nk_URLWithString("HTTPS://Pay.Example.co.uk/slips/April 2024");
  std::cout << slips->absoluteString() << "\n";

  // The example's own storage. It stays in memory, because all of its cookies end with the session.
  const auto storage = make<NSHTTPCookieStorage>("/tmp/example/cookies.sqlite");
  storage->setCookieLine("session=4711; Path=/; Secure; HttpOnly", *slips);
  storage->setCookieLine("lang=en-GB; Domain=example.co.uk", *slips);
  storage->setCookieLine("everywhere=1; Domain=co.uk", *slips);  // refused: a public suffix
  const Ref<NSArray> cookies = storage->cookiesForURL(*slips);
  std::cout << NSHTTPCookie::requestHeaderFieldsWithCookies(*cookies)->objectForKey("Cookie") << "\n";

  NSHTTPCookieStorage::setSharedHTTPCookieStorage(storage);
  nk_deleteCookiesSessionOnly(true);
  std::cout << storage->cookies()->count() << " left\n";
}

#include <gtest/gtest.h>

#include <string>

#include "tests/support/CookieFolder.h"
#include "tests/support/OnThreads.h"

namespace norvik {
namespace {

using norvik::test::CookieFolder;
using norvik::test::onThreads;

std::string numbered(int thread, int number) { return "c" + std::to_string(thread) + "x" + std::to_string(number); }

TEST(NSHTTPCookieStorageThreads, ManyReadAndWriteOneStorage) {
  constexpr int threads = 4, cookies = 20;
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  const Ref<NSURL> url = NSURL::URLWithString("https://pay.example.co.uk/");
  onThreads(threads, [&](int thread) {
    const Ref<NSURL> own = NSURL::URLWithString("https://pay.example.co.uk/");
    for (int i = 0; i < cookies; ++i) {
      const char* end = i % 2 == 0 ? "=1; Max-Age=600" : "=1; Domain=example.co.uk";
      EXPECT_TRUE(storage->setCookieLine(numbered(thread, i) + end, *own));
      EXPECT_TRUE(storage->setCookieLine("shared=" + std::to_string(thread) + "; Max-Age=600", *url));
      EXPECT_GE(storage->cookiesForURL(*url)->count(), static_cast<std::size_t>(i) + 1);
      if (i % 10 == 9) {
        const Ref<NSHTTPCookie> gone =
            NSHTTPCookie::cookieWithSetCookieLine(numbered(thread, i) + "=; Domain=example.co.uk", *own);
        storage->deleteCookie(*gone);
        EXPECT_TRUE(storage->synchronize());
      }
    }
  });
  EXPECT_EQ(storage->cookies()->count(), 73u);
  EXPECT_EQ(folder.open()->cookies()->count(), 41u);
}

TEST(NSHTTPCookieStorageThreads, SeveralStoragesOfOneDatabaseLoseNothing) {
  constexpr int threads = 3, cookies = 20;
  const CookieFolder folder;
  onThreads(threads, [&](int thread) {
    const Ref<NSHTTPCookieStorage> storage = folder.open();
    const Ref<NSURL> url = NSURL::URLWithString("http://h" + NSString(std::to_string(thread)) + ".example.com/");
    for (int i = 0; i < cookies; ++i) {
      EXPECT_TRUE(storage->setCookieLine(numbered(thread, i) + "=1; Max-Age=600", *url));
    }
  });
  EXPECT_EQ(folder.open()->cookies()->count(), 60u);
}

TEST(NSHTTPCookieStorageThreads, AllThreadsGetOneSharedStorage) {
  const test::TemporaryFolder folder;
  setenv("NORVIK_COOKIES_FOLDER", folder.path().c_str(), 1);
  NSHTTPCookieStorage* found[4] = {};
  onThreads(4, [&](int thread) { found[thread] = &NSHTTPCookieStorage::sharedHTTPCookieStorage(); });
  for (const NSHTTPCookieStorage* each : found) EXPECT_EQ(each, found[0]);
}

TEST(NSHTTPCookieStorageThreads, TheFirstAddressesOfManyThreadsAreRead) {
  onThreads(4, [](int) {
    const Ref<NSURL> url = NSURL::URLWithString("http://b%C3%BCcher.example/a/../b");
    EXPECT_EQ(url->absoluteString(), "http://xn--bcher-kva.example/b");
  });
}

}  // namespace
}  // namespace norvik

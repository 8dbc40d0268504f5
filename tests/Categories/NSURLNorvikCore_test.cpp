#include "NorvikCore/Categories/NSURL+NorvikCore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "NorvikCore/constants/NKDebuggerAttached.h"
#include "NorvikCore/platform/foundation/NSHTTPCookieStorage.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "tests/support/CookieFolder.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using kernel::SystemLogCapture;
using norvik::test::SharedCookies;
using norvik::test::TemporaryFolder;
using norvik::test::texts;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Ref<NSURL> url(const char* text) { return NSURL::URLWithString(text); }

/// The process has one set, so each test begins and ends with an empty one.
class NSURLNorvikCore : public ::testing::Test {
 protected:
  NSURLNorvikCore() { nk_deletePolicyCache().removeAllObjects(); }
  ~NSURLNorvikCore() override {
    nk_deletePolicyCache().removeAllObjects();
    NKDebuggerAttached = false;
  }

  Ref<NSURL> marked(const std::string& path, bool isDirectory = false) {
    const Ref<NSURL> file = NSURL::fileURLWithPath(NSString::fromBytes(path), isDirectory);
    nk_setDeleteAfterUse(*file, true);
    return file;
  }

  static std::size_t cached() { return nk_deletePolicyCache().count(); }
  static bool exists(const std::string& path) { return std::filesystem::exists(std::filesystem::symlink_status(path)); }

  TemporaryFolder folder_;
};

void fill(NSHTTPCookieStorage& storage) {
  for (const char* line :
       {"pay.example.com\tFALSE\t/\tFALSE\t0\tsession\t1", ".example.com\tTRUE\t/\tFALSE\t4102444800\tkept\t1",
        "anexample.com\tFALSE\t/\tFALSE\t0\tother\t1", "example.com\tFALSE\t/\tFALSE\t0\thost\t1",
        "example.org\tFALSE\t/\tFALSE\t4102444800\tthird\t1"}) {
    storage.setCookie(*NSHTTPCookie::cookieWithCookieFileLine(line));
  }
}

TEST_F(NSURLNorvikCore, HeaderExample) {
  const SharedCookies cookies;
  fill(*cookies);
  const Ref<NSURL> service = nk_URLWithString("https://pay.example.com/slips for April");
  EXPECT_EQ(service->absoluteString(), "https://pay.example.com/slips%20for%20April");
  EXPECT_EQ(nk_domain(*service), "example.com"_ns);
  nk_deleteDomainCookiesSessionOnly(*service, false);
  EXPECT_THAT(texts(*cookies->cookies()), ElementsAre("anexample.com / other=1", "example.org / third=1"));
  const std::string path = folder_.write("slip.pdf");
  const Ref<NSURL> draft = NSURL::fileURLWithPath(NSString(path), false);
  nk_setDeleteAfterUse(*draft, true);
  nk_applyDeletePolicyToCache();
  EXPECT_FALSE(exists(path));
}

TEST_F(NSURLNorvikCore, ATextIsTakenAsItIsOrElseEncoded) {
  const struct {
    const char *text, *address;
  } rows[] = {
      {"http://h/a%20b#c", "http://h/a%20b#c"},
      {"http://[::1]/a", "http://[::1]/a"},
      {" http://h/a\n", "http://h/a"},
      // encoded
      {"http://h/a b", "http://h/a%20b"},
      {"http://h/a b%20c#d", "http://h/a%20b%2520c%23d"},
      {"http://h/a b?c=d e&f", "http://h/a%20b?c=d%20e&f"},
      {"http://h/AZaz09-._~!$&'()*+,;=:@/?\"<>[]^`{|}",
       "http://h/AZaz09-._~!$&'()*+,;=:@/?%22%3C%3E%5B%5D%5E%60%7B%7C%7D"},
      {"http://h/\xC2\xA3\xF0\x9F\x98\x80", "http://h/%C2%A3%F0%9F%98%80"},
      {"http://h/\xFF", "http://h/%FF"},
      {"http://h/100%", "http://h/100%25"},
      {"http://b\xC3\xBC"
       "cher.example/",
       "http://xn--bcher-kva.example/"},
      {"http:\\\\good.example\\@evil.example\\ x", "http://good.example/@evil.example/%20x"},
      {" http://h/a b \n", "http://h/a%20b"},
      {"a b", "a%20b"},
      {"50% off", "50%25%20off"},
      {"mailto:pat smith@h", "mailto:pat%20smith@h"},
      {"file:///a b", "file:///a%20b"},
  };
  for (const auto& row : rows) {
    const Ref<NSURL> made = nk_URLWithString(NSString::fromBytes(row.text));
    ASSERT_TRUE(made) << row.text;
    EXPECT_EQ(made->absoluteString(), row.address) << row.text;
  }
  for (const char* text : {"", " ", "http://", "http://h h/", "http://[::1]/a b", "http://h:x/", "a b:c"}) {
    EXPECT_FALSE(nk_URLWithString(text)) << text;
  }
}

TEST_F(NSURLNorvikCore, ADomainIsTheLastTwoLabels) {
  const struct {
    const char *text, *domain;
  } rows[] = {
      {"http://localhost/", "localhost"},
      {"http://example.com/", "example.com"},
      {"http://b.example.com/", "example.com"},
      {"http://a.b.c.d/", "c.d"},
      {"http://a.b.c/", "b.c"},
      {"http://A.Example.COM:8080/x?y", "example.com"},
      {"http://www.example.com./", "example.com"},
      {"http://example.com./", "example.com"},
      {"http://localhost./", "localhost"},
      // With a list of public suffixes these would differ.
      {"http://www.example.co.uk/", "co.uk"},
      {"http://192.168.1.10/", "1.10"},
      {"http://[::1]/", "::1"},
      {"http://[::ffff:1.2.3.4]/", "::ffff:102:304"},
      {"ftp://files.example.com/", "example.com"},
      {"//a.b.c/x", "b.c"},
      {"http://a..b/", ".b"},
  };
  for (const auto& row : rows) EXPECT_EQ(nk_domain(*url(row.text)), NSString(row.domain)) << row.text;
  for (const char* none : {"mailto:pat@example.com", "file:///a.b.c", "a.b.c", "file:///", "x:///a"}) {
    EXPECT_EQ(nk_domain(*url(none)), std::nullopt) << none;
  }
}

TEST_F(NSURLNorvikCore, DomainCookiesAreThoseOfTheDomainAndAllBelowIt) {
  const SharedCookies cookies;
  fill(*cookies);
  EXPECT_THAT(texts(*nk_domainCookies(*url("https://WWW.Example.com/x"))),
              ElementsAre("pay.example.com / session=1", ".example.com / kept=1", "example.com / host=1"));
  EXPECT_THAT(texts(*nk_domainCookies(*url("https://example.com./"))),
              ElementsAre("pay.example.com / session=1", ".example.com / kept=1", "example.com / host=1"));
  EXPECT_EQ(nk_domainCookies(*url("http://com/"))->count(), 4u);
  EXPECT_THAT(texts(*nk_domainCookies(*url("http://example.net/"))), IsEmpty());
  for (const char* none : {"mailto:pat@example.com", "file:///example.com", "example.com", "x:///"}) {
    EXPECT_THAT(texts(*nk_domainCookies(*url(none))), IsEmpty()) << none;
  }
  cookies->setCookie(*NSHTTPCookie::cookieWithCookieFileLine("www.example.net.\tFALSE\t/\tFALSE\t0\ta\t1"));
  EXPECT_THAT(texts(*nk_domainCookies(*url("http://www.example.net./"))), ElementsAre("www.example.net. / a=1"));
}

TEST_F(NSURLNorvikCore, DeletingOfAnHostUnderAPublicSuffixDeletesForAllOfIt) {
  const SharedCookies cookies;
  for (const char* line : {"www.example.co.uk\tFALSE\t/\tFALSE\t0\ta\t1", ".another.co.uk\tTRUE\t/\tFALSE\t0\tb\t1",
                           "example.com\tFALSE\t/\tFALSE\t0\tc\t1"}) {
    cookies->setCookie(*NSHTTPCookie::cookieWithCookieFileLine(line));
  }
  nk_deleteDomainCookiesForUrlString("https://www.example.co.uk/", false);
  EXPECT_THAT(texts(*cookies->cookies()), ElementsAre("example.com / c=1"));
}

TEST_F(NSURLNorvikCore, SessionOnlyKeepsWhatHasAnExpiry) {
  const SharedCookies cookies;
  fill(*cookies);
  nk_deleteDomainCookiesForUrlString("https://www.example.com/", true);
  EXPECT_THAT(texts(*cookies->cookies()),
              ElementsAre(".example.com / kept=1", "anexample.com / other=1", "example.org / third=1"));
  nk_deleteCookiesSessionOnly(true);
  EXPECT_THAT(texts(*cookies->cookies()), ElementsAre(".example.com / kept=1", "example.org / third=1"));
  nk_deleteCookiesSessionOnly(false);
  EXPECT_THAT(texts(*cookies->cookies()), IsEmpty());
}

TEST_F(NSURLNorvikCore, ATextThatIsNoAddressDeletesNothing) {
  const SharedCookies cookies;
  fill(*cookies);
  for (const char* text : {"", "https://www.example.com/a b", "www.example.com", "mailto:a@example.com", "http://"}) {
    nk_deleteDomainCookiesForUrlString(text, false);
    EXPECT_EQ(cookies->cookies()->count(), 5u) << text;
  }
}

TEST_F(NSURLNorvikCore, TheConsoleShowsDomainsWhileADebuggerIsAttached) {
  const SharedCookies cookies;
  const SystemLogCapture console;
  for (const bool isAttached : {false, true}) {
    NKDebuggerAttached = isAttached;
    for (const char* line :
         {"pay.example.com\tFALSE\t/\tFALSE\t0\ta\tsecret", "example.org\tFALSE\t/\tFALSE\t0\tb\t1"}) {
      cookies->setCookie(*NSHTTPCookie::cookieWithCookieFileLine(line));
    }
    nk_deleteDomainCookiesForUrlString("http://example.com/", false);
    nk_deleteCookiesSessionOnly(true);
    EXPECT_EQ(console.lines().size(), isAttached ? 4u : 0u);
  }
  EXPECT_THAT(console.lines(), ElementsAre("App cookie : pay.example.com", "App cookie : example.org",
                                           "Deleted domain cookie : pay.example.com", "Deleted cookie : example.org"));
}

TEST_F(NSURLNorvikCore, AMarkedFileIsInTheSetUntilItIsUnmarked) {
  const Ref<NSURL> file = NSURL::fileURLWithPath("/pay/draft.pdf", false);
  EXPECT_FALSE(nk_deleteAfterUse(*file));
  nk_setDeleteAfterUse(*file, false);
  EXPECT_EQ(cached(), 0u);
  nk_setDeleteAfterUse(*file, true);
  nk_setDeleteAfterUse(*file, true);
  EXPECT_TRUE(nk_deleteAfterUse(*file));
  EXPECT_EQ(cached(), 1u);
  EXPECT_TRUE(nk_deletePolicyCache().containsObject(file));
  nk_setDeleteAfterUse(*file, false);
  EXPECT_FALSE(nk_deleteAfterUse(*file));
  EXPECT_EQ(cached(), 0u);
}

TEST_F(NSURLNorvikCore, OnlyAFilesAddressIsMarked) {
  for (const char* text : {"http://h/a", "a/b", "file://server/a", "file:///a?b"}) {
    const Ref<NSURL> address = url(text);
    nk_setDeleteAfterUse(*address, true);
    EXPECT_FALSE(nk_deleteAfterUse(*address)) << text;
    nk_applyDeletePolicy(*address);
    EXPECT_EQ(cached(), 0u) << text;
  }
}

TEST_F(NSURLNorvikCore, TheSetKeepsWhatIsMarked) {
  const std::string path = folder_.write("draft.pdf");
  const Weak<NSURL> weak = marked(path);
  EXPECT_TRUE(weak.lock());
  nk_applyDeletePolicyToCache();
  EXPECT_FALSE(weak.lock());
  EXPECT_FALSE(exists(path));
}

TEST_F(NSURLNorvikCore, EveryFileOfTheSetIsDeletedAndTheSetIsEmpty) {
  std::vector<std::string> paths;
  for (const char* name : {"a.pdf", "b.pdf", "c.pdf"}) marked(paths.emplace_back(folder_.write(name)));
  const std::string kept = folder_.write("kept.pdf");
  EXPECT_EQ(cached(), 3u);
  nk_applyDeletePolicyToCache();
  for (const std::string& path : paths) EXPECT_FALSE(exists(path)) << path;
  EXPECT_TRUE(exists(kept));
  EXPECT_EQ(cached(), 0u);
}

TEST_F(NSURLNorvikCore, AFileThatIsNotMarkedStays) {
  const std::string path = folder_.write("a.pdf");
  const Ref<NSURL> file = NSURL::fileURLWithPath(NSString(path));
  nk_applyDeletePolicy(*file);
  nk_setDeleteAfterUse(*file, true);
  nk_setDeleteAfterUse(*file, false);
  nk_applyDeletePolicy(*file);
  nk_applyDeletePolicyToCache();
  EXPECT_TRUE(exists(path));
}

TEST_F(NSURLNorvikCore, AFileThatIsGoneOrCannotBeDeletedLeavesTheSetSilently) {
  const SystemLogCapture console;
  const Ref<NSURL> gone = marked(folder_.path("gone.pdf")), below = marked(folder_.path("gone/below")),
                   system = marked("/proc/version"), nowhere = url("file:///a%00b");
  nk_setDeleteAfterUse(*nowhere, true);
  EXPECT_EQ(cached(), 4u);
  nk_applyDeletePolicyToCache();
  EXPECT_EQ(cached(), 0u);
  EXPECT_TRUE(exists("/proc/version"));
  EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(NSURLNorvikCore, AFolderGoesWithAllThatIsInIt) {
  std::filesystem::create_directories(folder_.path("drafts/april"));
  folder_.write("drafts/april/a.pdf");
  std::filesystem::create_symlink("/etc", folder_.path("drafts/april/link"));
  marked(folder_.path("drafts"), true);
  nk_applyDeletePolicyToCache();
  EXPECT_FALSE(exists(folder_.path("drafts")));
  EXPECT_TRUE(exists("/etc/passwd"));
}

TEST_F(NSURLNorvikCore, AFolderByItsOwnOrItsParentsNameStays) {
  std::filesystem::create_directories(folder_.path("drafts/april"));
  const std::string path = folder_.write("drafts/april/a.pdf");
  for (const char* name : {"drafts/april/.", "drafts/april/.."}) marked(folder_.path(name), true);
  EXPECT_EQ(cached(), 2u);
  nk_applyDeletePolicyToCache();
  EXPECT_EQ(cached(), 0u);
  EXPECT_TRUE(exists(path));
}

TEST_F(NSURLNorvikCore, ALinkGoesAndNotWhatItLeadsTo) {
  std::filesystem::create_directory(folder_.path("kept"));
  folder_.write("kept/a.pdf");
  for (const bool isDirectory : {false, true}) {
    std::filesystem::create_symlink(folder_.path("kept"), folder_.path("link"));
    marked(folder_.path("link"), isDirectory);
    nk_applyDeletePolicyToCache();
    EXPECT_FALSE(exists(folder_.path("link")));
    EXPECT_TRUE(exists(folder_.path("kept/a.pdf")));
  }
  std::filesystem::create_symlink(folder_.path("nothing"), folder_.path("link"));
  marked(folder_.path("link"));
  nk_applyDeletePolicyToCache();
  EXPECT_FALSE(exists(folder_.path("link")));
}

TEST_F(NSURLNorvikCore, ANameMayHaveAnyBytes) {
  for (const char* name : {"p\xE4y", "a%20b", "a b?c#d", "\n", "\\", "*", "-rf", "\xF0\x9F\x98\x80", "a:b", "..."}) {
    const std::string path = folder_.write(name), neighbour = folder_.write("a");
    marked(path);
    nk_applyDeletePolicyToCache();
    EXPECT_FALSE(exists(path)) << name;
    EXPECT_TRUE(exists(neighbour)) << name;
  }
}

TEST_F(NSURLNorvikCore, TwoObjectsOfOnePathAreOneInTheSetAndTheLastWordCounts) {
  const std::string path = folder_.write("a.pdf");
  const Ref<NSURL> one = marked(path), other = NSURL::fileURLWithPath(NSString(path), false);
  EXPECT_FALSE(nk_deleteAfterUse(*other));
  nk_setDeleteAfterUse(*other, true);
  EXPECT_EQ(cached(), 1u);
  nk_setDeleteAfterUse(*other, false);
  EXPECT_EQ(cached(), 0u);
  EXPECT_TRUE(nk_deleteAfterUse(*one));
  nk_applyDeletePolicyToCache();
  EXPECT_TRUE(exists(path));
  nk_setDeleteAfterUse(*one, true);
  nk_applyDeletePolicyToCache();
  EXPECT_FALSE(exists(path));
  marked(folder_.path("x"), false);
  marked(folder_.path("x"), true);
  EXPECT_EQ(cached(), 2u);
}

class MarkObserver : public NSObject {
  NK_OBJECT(MarkObserver, NSObject)
  void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange& change, void*) override {
    seen.push_back((change.oldValue().as<bool>() ? 100 : 0) + (change.newValue().as<bool>() ? 10 : 0) +
                   static_cast<int>(nk_deletePolicyCache().count()));
    if (markNext) nk_setDeleteAfterUse(*std::exchange(markNext, nullptr), true);
  }
  std::vector<int> seen;
  Ref<NSURL> markNext;
};

TEST_F(NSURLNorvikCore, ObserversHearOfTheMarkBeforeTheSetChanges) {
  const Ref<NSURL> file = NSURL::fileURLWithPath("/pay/draft.pdf", false);
  EXPECT_EQ(file->valueForKey("nk_deleteAfterUse"), Value(false));
  const auto observer = make<MarkObserver>();
  file->addObserver(*observer, "nk_deleteAfterUse", NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld);
  nk_setDeleteAfterUse(*file, true);
  EXPECT_EQ(file->valueForKey("nk_deleteAfterUse"), Value(true));
  nk_setDeleteAfterUse(*file, false);
  file->setValue_forKey(true, "nk_deleteAfterUse");
  observer->markNext = NSURL::fileURLWithPath("/pay/another.pdf", false);
  nk_setDeleteAfterUse(*file, true);
  EXPECT_THAT(observer->seen, ElementsAre(10, 101, 10, 111));
  EXPECT_EQ(cached(), 2u);
  file->removeObserver(*observer, "nk_deleteAfterUse");
  nk_setDeleteAfterUse(*file, false);
  EXPECT_EQ(observer->seen.size(), 4u);
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/platform/foundation/NSHTTPCookie.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "NorvikCore/platform/kernel/Clock.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/InChild.h"

namespace norvik {
namespace {

Ref<NSHTTPCookie> cookie(std::string_view line, const char* url = "https://pay.example.co.uk/slips/april") {
  return NSHTTPCookie::cookieWithSetCookieLine(NSString::fromBytes(line), *NSURL::URLWithString(url));
}

/// The cookie's line in a cookie file, or "nothing".
std::string read(std::string_view line, const char* url = "https://pay.example.co.uk/slips/april") {
  const Ref<NSHTTPCookie> made = cookie(line, url);
  return made ? made->cookieFileLine().bytes() : "nothing";
}

/// The expiry date, "session" if there is none, or "nothing" if the line is refused.
std::string expiry(const std::string& attributes) {
  const Ref<NSHTTPCookie> made = cookie("a=1; " + attributes);
  if (!made) return "nothing";
  return made->expiresDate() ? made->expiresDate()->description() : "session";
}

TEST(NSHTTPCookie, HeaderExample) {
  const Ref<NSURL> url = NSURL::URLWithString("https://pay.example.co.uk/slips/april");
  const Ref<NSHTTPCookie> cookie =
      NSHTTPCookie::cookieWithSetCookieLine("lang=en-GB; Domain=example.co.uk; Max-Age=60", *url);
  EXPECT_EQ(cookie->domain(), ".example.co.uk");
  EXPECT_EQ(cookie->path(), "/slips");
  EXPECT_FALSE(cookie->isSessionOnly());
}

TEST(NSHTTPCookie, ALineSaysThis) {
  const struct {
    const char *line, *cookie;
  } rows[] = {
      {"a=1", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta\t1"},
      {"a=", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta\t"},
      {" a b \t=\t 1=2 \"x, y\" ", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta b\t1=2 \"x, y\""},
      {"a=1;;; ;=;x;y=z", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta\t1"},
      {"a=1; Path=/", "pay.example.co.uk\tFALSE\t/\tFALSE\t0\ta\t1"},
      {"a=1;path = /x/ ", "pay.example.co.uk\tFALSE\t/x/\tFALSE\t0\ta\t1"},
      {"a=1; Path=x", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta\t1"},
      {"a=1; Path=/x; Path=/y", "pay.example.co.uk\tFALSE\t/y\tFALSE\t0\ta\t1"},
      {"a=1; Path=/x; Path", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta\t1"},
      {"a=1; SECURE; httpOnly", "#HttpOnly_pay.example.co.uk\tFALSE\t/slips\tTRUE\t0\ta\t1"},
      {"a=1; Secure=no", "pay.example.co.uk\tFALSE\t/slips\tTRUE\t0\ta\t1"},
      {"a=1; Domain=", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta\t1"},
      {"a=1; Domain=.", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta\t1"},
      {"a=1; Domain=pay.example.co.uk", ".pay.example.co.uk\tTRUE\t/slips\tFALSE\t0\ta\t1"},
      {"a=1; Domain=.Example.CO.uk", ".example.co.uk\tTRUE\t/slips\tFALSE\t0\ta\t1"},
      {"a=1; SameSite=Lax; Priority=High", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta\t1"},
      {"a=\xC2\xA3\xFF", "pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\ta\t\xC2\xA3\xFF"},
      {"__Secure-a=1; Secure", "pay.example.co.uk\tFALSE\t/slips\tTRUE\t0\t__Secure-a\t1"},
      {"__Host-a=1; Secure; Path=/", "pay.example.co.uk\tFALSE\t/\tTRUE\t0\t__Host-a\t1"},
  };
  for (const auto& row : rows) EXPECT_EQ(read(row.line), row.cookie) << row.line;
}

TEST(NSHTTPCookie, TheseLinesAreRefused) {
  for (const char* line : {"",
                           "a",
                           "=1",
                           " =1",
                           ";a=1",
                           "a;b=1",
                           "a\tb=1",
                           "a=1\t2",
                           "a=1\r\nb=2",
                           "a=1\n",
                           "a=1; Path=/\x01",
                           "a=\x7F",
                           "a=1; Domain=co.uk",
                           "a=1; Domain=uk",
                           "a=1; Domain=.uk",
                           "a=1; Domain=other.example.co.uk",
                           "a=1; Domain=x.pay.example.co.uk",
                           "a=1; Domain=xample.co.uk",
                           "a=1; Domain=example.co.uk.",
                           "a=1; Domain=pay.example.co.uk.",
                           "a=1; Domain=..co.uk",
                           "a=1; Domain=a b",
                           "__Secure-a=1",
                           "__secure-a=1",
                           "__Host-a=1; Secure",
                           "__Host-a=1; Path=/",
                           "__Host-a=1; Secure; Path=/; Domain=pay.example.co.uk",
                           "__HOST-a=1; Secure; Path=/x"}) {
    EXPECT_EQ(read(line), "nothing") << line;
  }
  EXPECT_EQ(read({"a=1\0", 4}), "nothing");
  EXPECT_EQ(read("a=1; Secure", "http://pay.example.co.uk/"), "nothing");
  EXPECT_EQ(read("a=1", "mailto:pat@example.co.uk"), "nothing");
  EXPECT_EQ(read("a=1", "file:///tmp/x"), "nothing");
  EXPECT_EQ(read("a=1", "http://.co.uk/"), "nothing");
}

TEST(NSHTTPCookie, SizesAreBounded) {
  EXPECT_NE(read("a=" + std::string(4095, 'x')), "nothing");
  EXPECT_EQ(read("a=" + std::string(4096, 'x')), "nothing");
  EXPECT_NE(read(std::string(4096, 'x') + "="), "nothing");
  EXPECT_EQ(cookie("a=1; Path=/" + std::string(1023, 'x'))->path().length(), 1024u);
  EXPECT_EQ(cookie("a=1; Path=/" + std::string(1024, 'x'))->path(), "/slips");
  EXPECT_EQ(expiry("Max-Age=60; Max-Age=" + std::string(1025, '1')).substr(0, 2), "20");
}

// These names depend on the following lines of the public suffix list: "com", "co.uk", "github.io", "*.ck", "!www.ck".
TEST(NSHTTPCookie, NobodySetsCookiesForAPublicSuffix) {
  const struct {
    const char *url, *domain, *cookieDomain;
  } rows[] = {
      {"http://a.b.com/", "b.com", ".b.com"},
      {"http://a.b.com/", "com", "nothing"},
      {"http://a.github.io/", "github.io", "nothing"},
      {"http://a.b.ck/", "b.ck", "nothing"},
      {"http://a.www.ck/", "www.ck", ".www.ck"},
      {"http://a.intranet/", "intranet", "nothing"},
      {"http://b\xC3\xBC.\xE5\x85\xAC\xE5\x8F\xB8.cn/", "\xE5\x85\xAC\xE5\x8F\xB8.cn", "nothing"},
      {"http://xn--55qx5d.cn/", "xn--55qx5d.cn", "xn--55qx5d.cn"},
      {"http://github.io/", "github.io", "github.io"},
      {"http://localhost/", "localhost", "localhost"},
      {"http://192.168.1.10/", "192.168.1.10", "192.168.1.10"},
      {"http://192.168.1.10/", "1.10", "nothing"},
      {"http://[::1]/", "::1", "::1"},
      {"http://a.com./", "a.com.", "nothing"},
      {"http://a.co.uk./", "co.uk.", "nothing"},
      {"http://www.b%C3%BCcher.example.com/",
       "b\xC3\xBC"
       "cher.example.com",
       ".xn--bcher-kva.example.com"},
  };
  for (const auto& row : rows) {
    std::string url;
    for (const char* c = row.url; *c; ++c) {
      constexpr std::string_view digits = "0123456789ABCDEF";
      const auto byte = static_cast<unsigned char>(*c);
      url += byte < 0x80 ? std::string(1, *c) : std::string{'%', digits[byte >> 4], digits[byte & 15]};
    }
    const Ref<NSHTTPCookie> made = cookie("a=1; Domain=" + std::string(row.domain), url.c_str());
    EXPECT_EQ(made ? made->domain() : "nothing"_ns, row.cookieDomain) << row.url << " " << row.domain;
  }
}

TEST(NSHTTPCookie, DatesComeInManyForms) {
  const struct {
    const char *text, *date;
  } rows[] = {
      {"Wed, 09 Jun 2021 10:18:14 GMT", "2021-06-09 10:18:14 +0000"},
      {"Wednesday, 09-Jun-21 10:18:14 GMT", "2021-06-09 10:18:14 +0000"},
      {"Wed Jun  9 10:18:14 2021", "2021-06-09 10:18:14 +0000"},
      {"2021 jUNE 9 1:2:3", "2021-06-09 01:02:03 +0000"},
      {"09 Jun 2021 10:18:14 +0100", "2021-06-09 10:18:14 +0000"},
      {"10:18:14x 9th Jun 2021AD", "2021-06-09 10:18:14 +0000"},
      {"9 Jun 70 00:00:01", "1970-06-09 00:00:01 +0000"},
      {"9 Jun 99 00:00:00", "1999-06-09 00:00:00 +0000"},
      {"9 Jun 69 00:00:00", "2069-06-09 00:00:00 +0000"},
      {"9 Jun 00 00:00:00", "2000-06-09 00:00:00 +0000"},
      {"29 Feb 2024 23:59:59", "2024-02-29 23:59:59 +0000"},
      {"31 Dec 9999 23:59:59", "9999-12-31 23:59:59 +0000"},
      {"9 Jun 1601 00:00:00", "1970-01-01 00:00:00 +0000"},
      {"9 Jun 1600 00:00:00", "session"},
      {"29 Feb 2023 00:00:00", "session"},
      {"31 Apr 2024 00:00:00", "session"},
      {"0 Jun 2024 00:00:00", "session"},
      {"9 Jun 2024 24:00:00", "session"},
      {"9 Jun 2024 23:60:00", "session"},
      {"9 Jun 2024 23:59:60", "session"},
      {"9 Jun 2024 23:59", "session"},
      {"9 Jun 2024", "session"},
      {"Jun 2024 10:18:14", "session"},
      {"9 2024 10:18:14", "session"},
      {"9 Jun 10:18:14", "session"},
      {"9 Jun 20245 10:18:14", "session"},
      {"009 Jun 2024 10:18:14", "session"},
      {"", "session"},
      {"0", "session"},
      {"never", "session"},
  };
  for (const auto& row : rows) EXPECT_EQ(expiry("Expires=" + std::string(row.text)), row.date) << row.text;
}

TEST(NSHTTPCookie, AnAgeCountsMoreThanADate) {
  const std::string date = "Expires=Wed, 09 Jun 2021 10:18:14 GMT";
  EXPECT_EQ(expiry("Max-Age=0; " + date), "1970-01-01 00:00:00 +0000");
  EXPECT_EQ(expiry(date + "; Max-Age=-1"), "1970-01-01 00:00:00 +0000");
  EXPECT_EQ(expiry("max-age=99999999999999999999"), "9999-12-31 23:59:59 +0000");
  for (const char* none :
       {"Max-Age=", "Max-Age", "Max-Age=-", "Max-Age=1x", "Max-Age=+1", "Max-Age=1.5", "Max-Age=x", "Max-Age=\"1\""}) {
    EXPECT_EQ(expiry(date + "; " + none), "2021-06-09 10:18:14 +0000") << none;
  }
  const double before = kernel::wallSeconds();
  const double expires = cookie("a=1; Max-Age=60")->expiresDate()->timeIntervalSinceReferenceDate();
  EXPECT_GE(expires, before + 59);
  EXPECT_LE(expires, kernel::wallSeconds() + 60);
}

TEST(NSHTTPCookie, WithoutAPathItIsTheFolderOfTheAddress) {
  const struct {
    const char *url, *path;
  } rows[] = {
      {"http://h", "/"},
      {"http://h/", "/"},
      {"http://h/a", "/"},
      {"http://h/a/", "/a"},
      {"http://h/a/b", "/a"},
      {"http://h/a/b/?c/d", "/a/b"},
      {"http://h/a%2Fb/c", "/a%2Fb"},
      {"http://h/a;b/c", "/a;b"},
  };
  for (const auto& row : rows) EXPECT_EQ(cookie("a=1", row.url)->path(), row.path) << row.url;
}

TEST(NSHTTPCookie, GoesToTheseAddresses) {
  const struct {
    const char *line, *url;
    bool isSent;
  } rows[] = {
      {".example.com\tTRUE\t/\tFALSE\t0\ta\t1", "http://example.com/", true},
      {".example.com\tTRUE\t/\tFALSE\t0\ta\t1", "http://A.b.Example.com/", true},
      {".example.com\tTRUE\t/\tFALSE\t0\ta\t1", "http://anexample.com/", false},
      {".example.com\tTRUE\t/\tFALSE\t0\ta\t1", "http://example.com./", false},
      {"example.com\tFALSE\t/\tFALSE\t0\ta\t1", "http://example.com/", true},
      {"example.com\tFALSE\t/\tFALSE\t0\ta\t1", "http://a.example.com/", false},
      {"example.com\tFALSE\t/pay\tFALSE\t0\ta\t1", "http://example.com/pay", true},
      {"example.com\tFALSE\t/pay\tFALSE\t0\ta\t1", "http://example.com/pay/x", true},
      {"example.com\tFALSE\t/pay\tFALSE\t0\ta\t1", "http://example.com/payroll", false},
      {"example.com\tFALSE\t/pay\tFALSE\t0\ta\t1", "http://example.com/Pay", false},
      {"example.com\tFALSE\t/pay/\tFALSE\t0\ta\t1", "http://example.com/pay", false},
      {"example.com\tFALSE\t/pay/\tFALSE\t0\ta\t1", "http://example.com/pay/x", true},
      {"example.com\tFALSE\t/pay\tFALSE\t0\ta\t1", "http://example.com/x/../pay/", true},
      {"example.com\tFALSE\t/\tTRUE\t0\ta\t1", "http://example.com/", false},
      {"example.com\tFALSE\t/\tTRUE\t0\ta\t1", "https://example.com/", true},
      {"example.com\tFALSE\t/\tTRUE\t0\ta\t1", "wss://example.com/", true},
      {"localhost\tFALSE\t/\tTRUE\t0\ta\t1", "http://localhost/", true},
      {"127.0.0.1\tFALSE\t/\tTRUE\t0\ta\t1", "http://127.1/", true},
      {"::1\tFALSE\t/\tTRUE\t0\ta\t1", "http://[::1]/", true},
      {"example.com\tFALSE\t/\tFALSE\t0\ta\t1", "slips/april", false},
      {"example.com\tFALSE\t/\tFALSE\t0\ta\t1", "file:///example.com", false},
  };
  for (const auto& row : rows) {
    const Ref<NSHTTPCookie> made = NSHTTPCookie::cookieWithCookieFileLine(row.line);
    ASSERT_TRUE(made) << row.line;
    EXPECT_EQ(made->matchesURL(*NSURL::URLWithString(row.url)), row.isSent) << row.line << " " << row.url;
  }
}

TEST(NSHTTPCookie, ALineOfACookieFileIsReadAsItIsWritten) {
  for (const char* line :
       {"example.com\tFALSE\t/\tFALSE\t0\ta\t1", "#HttpOnly_.example.com\tTRUE\t/x y\tTRUE\t4102444800\ta b\t\"1 2\"",
        "example.com\tFALSE\t/\tFALSE\t1\ta\t", "::1\tFALSE\t/\tFALSE\t0\ta\t=\xFF"}) {
    const Ref<NSHTTPCookie> made = NSHTTPCookie::cookieWithCookieFileLine(NSString::fromBytes(line));
    ASSERT_TRUE(made) << line;
    EXPECT_EQ(made->cookieFileLine().bytes(), line);
    EXPECT_TRUE(made->isEqual(*NSHTTPCookie::cookieWithProperties(*made->properties()))) << line;
  }
  const struct {
    const char *line, *written;
  } rows[] = {
      {"Example.com\ttrue\t/\tfalse\t0\ta\t1\r\n", ".example.com\tTRUE\t/\tFALSE\t0\ta\t1"},
      {".example.com\tFALSE\t/\tFALSE\t0\ta\t1", "example.com\tFALSE\t/\tFALSE\t0\ta\t1"},
      {"example.com\tFALSE\t/\tFALSE\t0\ta", "example.com\tFALSE\t/\tFALSE\t0\ta\t"},
      {"example.com\tFALSE\t/\tFALSE\t-5\ta\t1", "example.com\tFALSE\t/\tFALSE\t1\ta\t1"},
      {"example.com\tFALSE\t/\tFALSE\t99999999999999999999\ta\t1", "example.com\tFALSE\t/\tFALSE\t253402300799\ta\t1"},
      {"127.0.0.1\tTRUE\t/\tFALSE\t0\ta\t1", "127.0.0.1\tFALSE\t/\tFALSE\t0\ta\t1"},
  };
  for (const auto& row : rows) {
    const Ref<NSHTTPCookie> made = NSHTTPCookie::cookieWithCookieFileLine(row.line);
    ASSERT_TRUE(made) << row.line;
    EXPECT_EQ(made->cookieFileLine(), row.written) << row.line;
  }
  for (const char* line : {"", "# Netscape HTTP Cookie File", "#example.com\tFALSE\t/\tFALSE\t0\ta\t1", "example.com",
                           "example.com\tFALSE\t/\tFALSE\t0", "example.com\tFALSE\t/\tFALSE\t0\t\t1",
                           "\tFALSE\t/\tFALSE\t0\ta\t1", ".\tTRUE\t/\tFALSE\t0\ta\t1", "a b\tFALSE\t/\tFALSE\t0\ta\t1",
                           "example.com\tYES\t/\tFALSE\t0\ta\t1", "example.com\tFALSE\tx\tFALSE\t0\ta\t1",
                           "example.com\tFALSE\t/\tNO\t0\ta\t1", "example.com\tFALSE\t/\tFALSE\t\ta\t1",
                           "example.com\tFALSE\t/\tFALSE\t1.5\ta\t1", "example.com\tFALSE\t/\tFALSE\t0\ta\t1\t2",
                           "example.com\tFALSE\t/\tFALSE\t0\ta;b\t1", "example.com\tFALSE\t/\tFALSE\t0\ta=b\t1"}) {
    EXPECT_FALSE(NSHTTPCookie::cookieWithCookieFileLine(line)) << line;
  }
}

TEST(NSHTTPCookie, IsMadeOfProperties) {
  const Ref<NSHTTPCookie> made = NSHTTPCookie::cookieWithProperties(
      *NSDictionary::dictionaryWith({{NSHTTPCookieName, "a"},
                                     {NSHTTPCookieValue, "1"},
                                     {NSHTTPCookieDomain, ".CO.uk"},
                                     {NSHTTPCookieSecure, true},
                                     {NSHTTPCookieExpires, Date::dateWithTimeIntervalSince1970(86400.75)}}));
  EXPECT_EQ(made->cookieFileLine(), ".co.uk\tTRUE\t/\tTRUE\t86400\ta\t1");
  EXPECT_EQ(made->expiresDate(), Date::dateWithTimeIntervalSince1970(86400));
  const auto refused = [](const char* name, const char* domain, const char* value, const char* path) {
    return !NSHTTPCookie::cookieWithProperties(*NSDictionary::dictionaryWith({{NSHTTPCookieName, name},
                                                                              {NSHTTPCookieDomain, domain},
                                                                              {NSHTTPCookieValue, value},
                                                                              {NSHTTPCookiePath, path}}));
  };
  EXPECT_FALSE(refused("a", "h", "1", "/"));
  EXPECT_TRUE(refused("", "h", "1", "/"));
  EXPECT_TRUE(refused("a", "", "1", "/"));
  EXPECT_TRUE(refused("a", "h/x", "1", "/"));
  EXPECT_TRUE(refused("a", "h", "1\r\nX: y", "/"));
  EXPECT_TRUE(refused("a", "h", "1; Secure", "/"));
  EXPECT_TRUE(refused("a\n", "h", "1", "/"));
  EXPECT_TRUE(refused("a", "h", "1", "x"));
  EXPECT_TRUE(refused("a", "h", "1", "/\t"));
  EXPECT_FALSE(NSHTTPCookie::cookieWithProperties(*NSDictionary::dictionaryWith({{NSHTTPCookieName, "a"}})));
  EXPECT_RAISES(
      static_cast<void>(NSHTTPCookie::cookieWithProperties(*NSDictionary::dictionaryWith({{NSHTTPCookieName, 1}}))),
      "NSInvalidArgumentException");
}

TEST(NSHTTPCookie, ManyMakeOneLineOfARequest) {
  const auto line = [](const Ref<NSArray>& cookies) {
    return NSHTTPCookie::requestHeaderFieldsWithCookies(*cookies)->objectForKey("Cookie");
  };
  EXPECT_EQ(line(NSArray::arrayWithObjects(cookie("a=1"), cookie("b=\"2 3\""), cookie("c="))),
            Value("a=1; b=\"2 3\"; c="));
  EXPECT_TRUE(line(NSArray::array()).isAbsent());
}

TEST(NSHTTPCookie, DescribesItselfWithoutItsValue) {
  EXPECT_EQ(cookie("session=secret")->description(), "<NSHTTPCookie session of pay.example.co.uk/slips>");
}

TEST(NSHTTPCookie, EqualOnesHaveEverythingEqual) {
  EXPECT_TRUE(cookie("a=1; Path=/")->isEqual(*cookie("a=1; path=/")));
  EXPECT_EQ(cookie("a=1; Path=/")->hash(), cookie("a=1; path=/")->hash());
  for (const char* other : {"a=2; Path=/", "b=1; Path=/", "a=1", "a=1; Path=/; Secure", "a=1; Path=/; HttpOnly",
                            "a=1; Path=/; Max-Age=0", "a=1; Path=/; Domain=pay.example.co.uk"}) {
    EXPECT_FALSE(cookie("a=1; Path=/")->isEqual(*cookie(other))) << other;
  }
}

TEST(NSHTTPCookie, TheListOfSuffixesIsLoadedWithTheFirstDomain) {
  RUN_IN_CHILD({
    const auto isLoaded = [] { return dlopen("libpsl.so.5", RTLD_NOLOAD | RTLD_LAZY) != nullptr; };
    EXPECT_NE(read("a=1"), "nothing");
    EXPECT_FALSE(isLoaded());
    EXPECT_NE(read("a=1; Domain=example.co.uk"), "nothing");
    EXPECT_TRUE(isLoaded());
  });
}

}  // namespace
}  // namespace norvik

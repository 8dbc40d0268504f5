// Sharing cookies with libcurl: a program of two processes, real transfers, and libcurl's own cookie file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/ChildProgram.h"
#include "tests/support/CookieFolder.h"
#include "tests/support/HttpServer.h"

namespace norvik {
namespace {

using norvik::test::ChildProgram;
using norvik::test::CookieFolder;
using norvik::test::HttpServer;
using norvik::test::TemporaryFolder;
using norvik::test::texts;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

std::vector<std::string> program(const CookieFolder& folder, const HttpServer& server, std::vector<std::string> steps) {
  std::vector<std::string> arguments = {NORVIK_COOKIES_PROGRAM, folder.path(), std::to_string(server.port())};
  arguments.insert(arguments.end(), steps.begin(), steps.end());
  return arguments;
}

/// The cookies that a server received, to be compared in any order, because libcurl orders cookies of one path by its
/// own rules.
std::vector<std::string> sent(const std::string& line) {
  std::vector<std::string> cookies;
  for (std::size_t start = 0; start <= line.size();) {
    const std::size_t end = std::min(line.find("; ", start), line.size());
    cookies.push_back(line.substr(start, end - start));
    start = end + 2;
  }
  return cookies;
}

TEST(NSHTTPCookieStorageCurl, WhatAServerSetsByLibcurlIsInTheStorageOfAnotherProcess) {
  const CookieFolder folder;
  const HttpServer server;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  ChildProgram client(program(folder, server,
                              {"get:http://pay.example.co.uk/slips/april", "show", "get:http://www.example.co.uk/",
                               "get:http://pay.example.co.uk/slips/"}));
  EXPECT_EQ(server.answer("Set-Cookie: kept=1; Expires=Fri, 01 Jan 2100 00:00:00 GMT; Path=/; HttpOnly\r\n"
                          "Set-Cookie: wide=2; Max-Age=3600; Domain=example.co.uk; Path=/\r\n"
                          "Set-Cookie: session=3; Path=/slips\r\n"
                          "Set-Cookie: suffix=4; Domain=co.uk\r\n"
                          "Set-Cookie: foreign=5; Domain=example.org\r\n"
                          "Set-Cookie: secure=6; Secure\r\n"),
            "none");
  EXPECT_EQ(server.answer(""), "wide=2");
  EXPECT_THAT(sent(server.answer("")), UnorderedElementsAre("session=3", "kept=1", "wide=2"));
  const std::string shown = client.readAll();
  EXPECT_EQ(client.wait(), 0);
  EXPECT_THAT(shown, HasSubstr("#HttpOnly_pay.example.co.uk\tFALSE\t/\tFALSE\t4102444800\tkept\t1\n"));
  EXPECT_THAT(shown, HasSubstr("pay.example.co.uk\tFALSE\t/slips\tFALSE\t0\tsession\t3\n"));
  EXPECT_TRUE(storage->synchronize());
  EXPECT_THAT(texts(*storage->cookies()),
              UnorderedElementsAre("pay.example.co.uk / kept=1", ".example.co.uk / wide=2"));
}

TEST(NSHTTPCookieStorageCurl, WhatIsInTheStorageIsSentByLibcurlInAnotherProcess) {
  const CookieFolder folder;
  const HttpServer server;
  const Ref<NSURL> url = NSURL::URLWithString("https://pay.example.co.uk/");
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  for (const char* line : {"host=1; Max-Age=60", "wide=\"2 3\"; Max-Age=60; Domain=example.co.uk", "empty=; Max-Age=60",
                           "deep=4; Max-Age=60; Path=/slips", "secret=5; Max-Age=60; Secure"}) {
    EXPECT_TRUE(storage->setCookieLine(line, *url)) << line;
  }
  // libcurl refuses this cookie of the application, because it breaks the promise of its name. The storage keeps it.
  storage->setCookie(
      *NSHTTPCookie::cookieWithCookieFileLine("pay.example.co.uk\tFALSE\t/\tFALSE\t4102444800\t__Secure-a\t1"));
  ChildProgram client(program(folder, server,
                              {"get:http://pay.example.co.uk/slips/x", "get:http://www.example.co.uk/slips",
                               "get:http://pay.example.co.uk/slipsx"}));
  EXPECT_THAT(sent(server.answer("")), UnorderedElementsAre("deep=4", "host=1", "wide=\"2 3\"", "empty="));
  EXPECT_EQ(server.answer(""), "wide=\"2 3\"");
  EXPECT_THAT(sent(server.answer("")), UnorderedElementsAre("host=1", "wide=\"2 3\"", "empty="));
  EXPECT_EQ(client.wait(), 0);
  EXPECT_TRUE(storage->synchronize());
  EXPECT_EQ(storage->cookies()->count(), 6u);
}

TEST(NSHTTPCookieStorageCurl, AServerChangesAndRemovesWhatIsInTheStorage) {
  const CookieFolder folder;
  const HttpServer server;
  const Ref<NSURL> url = NSURL::URLWithString("http://pay.example.co.uk/");
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  for (const char* line : {"a=1; Max-Age=600", "b=1; Max-Age=600", "c=1; Max-Age=600", "d=1; Max-Age=600"}) {
    EXPECT_TRUE(storage->setCookieLine(line, *url));
  }
  ChildProgram client(
      program(folder, server,
              {"line:session=1", "get:http://pay.example.co.uk/", "show", "wait", "get:http://pay.example.co.uk/"}));
  EXPECT_THAT(sent(server.answer("Set-Cookie: a=2; Max-Age=600\r\nSet-Cookie: b=; Max-Age=0\r\nSet-Cookie: c=2\r\n"
                                 "Set-Cookie: session=; Max-Age=0\r\n")),
              UnorderedElementsAre("a=1", "b=1", "c=1", "d=1", "session=1"));
  EXPECT_TRUE(client.readLine().ends_with("\ta\t2"));
  // Another process changes the cookies while libcurl has them in its handle.
  EXPECT_TRUE(storage->synchronize());
  EXPECT_THAT(texts(*storage->cookies()), ElementsAre("pay.example.co.uk / a=2", "pay.example.co.uk / d=1"));
  EXPECT_TRUE(storage->setCookieLine("d=2; Max-Age=600", *url));
  EXPECT_TRUE(storage->setCookieLine("a=; Max-Age=0", *url));
  client.write("\n");
  EXPECT_THAT(sent(server.answer("", "500 Internal Server Error")), ::testing::Contains("c=2"));
  EXPECT_EQ(client.wait(), 0);
  EXPECT_TRUE(storage->synchronize());
  EXPECT_THAT(texts(*storage->cookies()), ElementsAre("pay.example.co.uk / d=2"));
}

TEST(NSHTTPCookieStorageCurl, ARedirectionTakesTheCookiesOfEachStep) {
  const CookieFolder folder;
  const HttpServer server;
  ChildProgram client(program(folder, server, {"get:http://pay.example.co.uk/"}));
  EXPECT_EQ(server.answer("Set-Cookie: a=1; Max-Age=600\r\nSet-Cookie: w=1; Domain=example.co.uk; Max-Age=600\r\n"
                          "Location: http://www.example.co.uk/next\r\n",
                          "302 Found"),
            "none");
  EXPECT_EQ(server.answer("Set-Cookie: b=1; Max-Age=600\r\n"), "w=1");
  EXPECT_EQ(client.wait(), 0);
  EXPECT_THAT(texts(*folder.open()->cookies()),
              UnorderedElementsAre("pay.example.co.uk / a=1", ".example.co.uk / w=1", "www.example.co.uk / b=1"));
}

TEST(NSHTTPCookieStorageCurl, LibcurlReadsTheCookieFileAndTheStorageReadsLibcurls) {
  const CookieFolder folder;
  const HttpServer server;
  const std::string file = folder.folder().path("cookies.txt");
  const Ref<NSURL> url = NSURL::URLWithString("http://pay.example.co.uk/");
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  for (const char* line :
       {"a=1; Max-Age=600; HttpOnly", "wide=2; Domain=example.co.uk", "empty=", "gone=1; Max-Age=600"}) {
    EXPECT_TRUE(storage->setCookieLine(line, *url));
  }
  EXPECT_TRUE(storage->writeToCookieFile(NSString(file)));
  ChildProgram client(program(folder, server, {"jar:" + file, "plain:http://pay.example.co.uk/"}));
  EXPECT_THAT(sent(server.answer("Set-Cookie: b=3; Expires=Fri, 01 Jan 2100 00:00:00 GMT; Secure=; HttpOnly\r\n"
                                 "Set-Cookie: c=4; Expires=Fri, 01 Jan 2100 00:00:00 GMT; HttpOnly\r\n"
                                 "Set-Cookie: gone=; Max-Age=0\r\n")),
              UnorderedElementsAre("a=1", "wide=2", "empty=", "gone=1"));
  EXPECT_EQ(client.wait(), 0);
  const CookieFolder another;
  const Ref<NSHTTPCookieStorage> read = another.open();
  EXPECT_TRUE(read->addFromCookieFile(NSString(file)));
  EXPECT_THAT(texts(*read->cookies()), UnorderedElementsAre("pay.example.co.uk / a=1", ".example.co.uk / wide=2",
                                                            "pay.example.co.uk / empty=", "pay.example.co.uk / c=4"));
  const Ref<NSArray> kept = read->cookies();
  for (const NSHTTPCookie& cookie : kept->as<NSHTTPCookie>()) {
    EXPECT_EQ(cookie.isHTTPOnly(), cookie.name() == "a" || cookie.name() == "c") << cookie.name();
    EXPECT_EQ(cookie.isSessionOnly(), cookie.name() == "wide" || cookie.name() == "empty") << cookie.name();
  }
}

}  // namespace
}  // namespace norvik

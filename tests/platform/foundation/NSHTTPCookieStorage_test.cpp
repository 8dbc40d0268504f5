#include "NorvikCore/platform/foundation/NSHTTPCookieStorage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/CookieFolder.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/ForeignDatabase.h"
#include "tests/support/InChild.h"

namespace norvik {
namespace {

using kernel::SystemLogCapture;
using norvik::test::CookieFolder;
using norvik::test::ForeignDatabase;
using norvik::test::TemporaryFolder;
using norvik::test::texts;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

Ref<NSURL> url(const char* text = "https://pay.example.com/slips/april") { return NSURL::URLWithString(text); }

std::vector<std::string> all(const NSHTTPCookieStorage& storage) { return texts(*storage.cookies()); }

std::string numbered(const char* before, int number, const char* after = "") {
  return before + std::to_string(number) + after;
}

TEST(NSHTTPCookieStorage, HeaderExample) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  const Ref<NSURL> url = NSURL::URLWithString("https://pay.example.com/slips/april");
  EXPECT_TRUE(storage->setCookieLine("lang=en-GB; Max-Age=3600", *url));
  EXPECT_EQ(NSHTTPCookie::requestHeaderFieldsWithCookies(*storage->cookiesForURL(*url))->objectForKey("Cookie"),
            Value("lang=en-GB"));
}

TEST(NSHTTPCookieStorage, WhatHasAnExpiryIsKeptAndTheRestIsInMemoryOnly) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(storage->setCookieLine("kept=1; Max-Age=3600; Path=/; HttpOnly; Secure; Domain=example.com", *url()));
  EXPECT_TRUE(storage->setCookieLine("session=2; Path=/", *url()));
  EXPECT_THAT(all(*storage), ElementsAre(".example.com / kept=1", "pay.example.com / session=2"));
  const Ref<NSArray> again = folder.open()->cookies();
  ASSERT_EQ(again->count(), 1u);
  EXPECT_EQ(again->objectAtIndex(0), storage->cookies()->objectAtIndex(0));
  EXPECT_EQ(ForeignDatabase(folder.path()).run("SELECT count(*) FROM cookie"), "1");
}

TEST(NSHTTPCookieStorage, ACookieTakesThePlaceOfTheFormerOne) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  for (const char* line : {"a=1; Max-Age=60", "b=1", "a=2; Max-Age=60", "a=1; Max-Age=60; Path=/",
                           "a=1; Max-Age=60; Domain=pay.example.com", "b=2; Max-Age=60", "a=3"}) {
    EXPECT_TRUE(storage->setCookieLine(line, *url())) << line;
  }
  EXPECT_THAT(all(*storage), ElementsAre("pay.example.com /slips a=3", "pay.example.com /slips b=2",
                                         "pay.example.com / a=1", ".pay.example.com /slips a=1"));
  EXPECT_THAT(all(*folder.open()),
              ElementsAre("pay.example.com /slips b=2", "pay.example.com / a=1", ".pay.example.com /slips a=1"));
}

// For a line without a path, libcurl uses "/slips/" and RFC 6265 "/slips".
TEST(NSHTTPCookieStorage, PathsThatDifferInTheirLastSlashAreOneAsInLibcurl) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  storage->setCookie(*NSHTTPCookie::cookieWithCookieFileLine("pay.example.com\tFALSE\t/slips/\tFALSE\t0\ta\t1"));
  EXPECT_TRUE(storage->setCookieLine("a=2; Max-Age=60", *url()));
  EXPECT_TRUE(storage->setCookieLine("a=3; Path=/", *url()));
  EXPECT_THAT(all(*storage), ElementsAre("pay.example.com /slips a=2", "pay.example.com / a=3"));
  storage->setCookie(*NSHTTPCookie::cookieWithCookieFileLine("pay.example.com\tFALSE\t/slips/\tFALSE\t1\ta\t1"));
  EXPECT_THAT(all(*folder.open()), IsEmpty());
}

TEST(NSHTTPCookieStorage, AnExpiredOneRemovesAndIsNeverSeen) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(storage->setCookieLine("a=1; Max-Age=60", *url()));
  EXPECT_TRUE(storage->setCookieLine("b=1", *url()));
  EXPECT_TRUE(storage->setCookieLine("c=1", *url()));
  EXPECT_TRUE(storage->setCookieLine("a=; Max-Age=0", *url()));
  EXPECT_TRUE(storage->setCookieLine("b=; Expires=Thu, 01 Jan 1970 00:00:00 GMT", *url()));
  EXPECT_TRUE(storage->setCookieLine("never=; Max-Age=0", *url()));
  EXPECT_THAT(all(*storage), ElementsAre("pay.example.com /slips c=1"));
  EXPECT_THAT(all(*folder.open()), IsEmpty());
}

TEST(NSHTTPCookieStorage, WhatExpiresOnTheDiskIsNotSeenAndGoesWithTheNextChange) {
  const CookieFolder folder;
  EXPECT_TRUE(folder.open()->setCookieLine("a=1; Max-Age=60", *url()));
  ForeignDatabase database(folder.path());
  database.run(
      "UPDATE cookie SET value = CAST(replace(CAST(value AS TEXT), substr(CAST(value AS TEXT), "
      "instr(CAST(value AS TEXT), 'FALSE\t' || '1') + 6, 10), '0000000001') AS BLOB)");
  EXPECT_EQ(database.run("SELECT CAST(value AS TEXT) LIKE '%FALSE\t0000000001\ta\t1' FROM cookie"), "1");
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_THAT(all(*storage), IsEmpty());
  EXPECT_EQ(database.run("SELECT count(*) FROM cookie"), "1");
  EXPECT_TRUE(storage->setCookieLine("b=1", *url()));
  EXPECT_EQ(database.run("SELECT count(*) FROM cookie"), "0");
}

TEST(NSHTTPCookieStorage, LongerPathsAreSentFirst) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  for (const char* line : {"a=1; Path=/", "b=1; Path=/slips/april", "c=1; Path=/slips; Max-Age=60", "d=1; Path=/other",
                           "e=1; Path=/; Secure", "f=1; Path=/slips", "g=1; Path=/; Domain=example.com"}) {
    EXPECT_TRUE(storage->setCookieLine(line, *url())) << line;
  }
  const auto sent = [&](const char* text) {
    std::string names;
    const Ref<NSArray> cookies = storage->cookiesForURL(*url(text));
    for (const NSHTTPCookie& cookie : cookies->as<NSHTTPCookie>()) names += cookie.name().str();
    return names;
  };
  EXPECT_EQ(sent("https://pay.example.com/slips/april"), "bcfaeg");
  EXPECT_EQ(sent("http://pay.example.com/slips/april"), "bcfag");
  EXPECT_EQ(sent("https://pay.example.com/slipsx"), "aeg");
  EXPECT_EQ(sent("https://www.example.com/slips"), "g");
  EXPECT_EQ(sent("https://example.org/slips"), "");
}

TEST(NSHTTPCookieStorage, AnInsecureAddressNeitherReplacesNorHidesASecureCookie) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(storage->setCookieLine("id=secret; Secure; Path=/pay; Domain=example.com", *url()));
  const Ref<NSURL> insecure = url("http://pay.example.com/");
  for (const char* line : {"id=forged; Path=/pay; Domain=example.com", "id=forged; Path=/pay/x",
                           "id=; Max-Age=0; Path=/pay; Domain=example.com", "id=forged; Secure"}) {
    EXPECT_FALSE(storage->setCookieLine(line, *insecure)) << line;
  }
  EXPECT_FALSE(storage->setCookieLine("id=forged; Path=/pay", *url("http://example.com/")));
  EXPECT_TRUE(storage->setCookieLine("id=other; Path=/payroll", *insecure));
  EXPECT_TRUE(storage->setCookieLine("ID=other; Path=/pay", *insecure));
  EXPECT_TRUE(storage->setCookieLine("id=other; Path=/pay", *url("http://example.org/")));
  EXPECT_TRUE(storage->setCookieLine("id=new; Secure; Path=/pay; Domain=example.com", *url()));
  EXPECT_THAT(all(*storage), ElementsAre(".example.com /pay id=new", "pay.example.com /payroll id=other",
                                         "pay.example.com /pay ID=other", "example.org /pay id=other"));
}

TEST(NSHTTPCookieStorage, DeletesTheOneOfTheSameDomainPathAndName) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  for (const char* line : {"a=1; Max-Age=60", "b=1", "c=1; Max-Age=60"}) {
    EXPECT_TRUE(storage->setCookieLine(line, *url()));
  }
  const auto cookie = [](const char* line) { return NSHTTPCookie::cookieWithSetCookieLine(line, *url()); };
  storage->deleteCookie(*cookie("a=another"));
  storage->deleteCookie(*cookie("b=another; Max-Age=60"));
  storage->deleteCookie(*cookie("c=1; Path=/"));
  storage->deleteCookie(*cookie("unknown=1"));
  EXPECT_THAT(all(*storage), ElementsAre("pay.example.com /slips c=1"));
  storage->deleteCookieIfUnchanged(*cookie("c=2"));
  EXPECT_THAT(all(*folder.open()), ElementsAre("pay.example.com /slips c=1"));
  storage->deleteCookieIfUnchanged(*storage->cookies()->objectAtIndex(0).object<NSHTTPCookie>());
  EXPECT_THAT(all(*folder.open()), IsEmpty());
}

TEST(NSHTTPCookieStorage, TheCookiesOfADomainAreBounded) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(storage->setCookieLine("other=1", *url("https://example.com/")));
  for (int i = 0; i < 180; ++i) {
    const char* end = i % 2 == 0 ? "; Path=/" : "; Path=/; Domain=pay.example.com";
    EXPECT_TRUE(storage->setCookieLine(numbered("a", i, "=1") + end, *url()));
  }
  EXPECT_TRUE(storage->setCookieLine("used=1; Path=/used", *url("https://pay2.example.com/")));
  EXPECT_EQ(storage->cookies()->count(), 182u);
  EXPECT_TRUE(storage->setCookieLine("a0=2; Path=/", *url()));  // so that it was used later than a1
  EXPECT_TRUE(storage->setCookieLine("a180=1; Path=/", *url()));
  EXPECT_EQ(storage->cookies()->count(), 182u);
  const std::vector<std::string> present = all(*storage);
  EXPECT_THAT(present, Contains("pay.example.com / a0=2"));
  EXPECT_THAT(present, Contains("pay.example.com / a180=1"));
  EXPECT_THAT(present, Not(Contains(".pay.example.com / a1=1")));
  EXPECT_THAT(present, Contains("pay.example.com / a2=1"));
}

TEST(NSHTTPCookieStorage, AllCookiesAreBoundedAndThoseInUseAreKept) {
  const CookieFolder folder;
  std::string file;
  for (int i = 0; i < 3000; ++i) {
    file += numbered("h", i / 100, ".example.com\tFALSE\t/\tFALSE\t0\ta") + std::to_string(i) + "\t1\n";
  }
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(storage->addFromCookieFile(folder.folder().write("cookies.txt", file)));
  EXPECT_EQ(storage->cookies()->count(), 3000u);
  EXPECT_EQ(storage->cookiesForURL(*url("http://h0.example.com/"))->count(), 100u);
  EXPECT_TRUE(storage->setCookieLine("last=1", *url("http://example.org/")));
  EXPECT_EQ(storage->cookies()->count(), 3000u);
  EXPECT_EQ(storage->cookiesForURL(*url("http://h0.example.com/"))->count(), 100u);
  EXPECT_EQ(storage->cookiesForURL(*url("http://h1.example.com/"))->count(), 99u);
  EXPECT_EQ(all(*storage).back(), "example.org / last=1");
}

TEST(NSHTTPCookieStorage, ReadingMakesNoFile) {
  const CookieFolder folder;
  EXPECT_THAT(all(*folder.open()), IsEmpty());
  EXPECT_TRUE(folder.open()->setCookieLine("session=1", *url()));
  EXPECT_FALSE(std::filesystem::exists(folder.path()));
}

TEST(NSHTTPCookieStorage, FolderAndFilesAreForTheUserOnly) {
  for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{0777}}) {
    RUN_IN_CHILD({
      const CookieFolder folder;
      // With this mask no user can access a new folder, so the folder is created in advance.
      if (mask == 0777) std::filesystem::create_directory(folder.folder().path("pay"), folder.folder().path());
      umask(mask);
      const Ref<NSHTTPCookieStorage> storage = folder.open();
      EXPECT_TRUE(storage->setCookieLine("a=1; Max-Age=60", *url()));
      const std::string exported = folder.folder().path("cookies.txt");
      const auto permissions = [](const std::string& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 0777;
      };
      EXPECT_EQ(permissions(folder.folder().path("pay")) & 077, 0u);
      EXPECT_EQ(permissions(folder.path()), 0600u);
      EXPECT_EQ(permissions(folder.path() + "-wal"), 0600u);
      EXPECT_TRUE(storage->writeToCookieFile(exported));
      EXPECT_EQ(permissions(exported), 0600u);
    });
  }
}

TEST(NSHTTPCookieStorage, TheSharedOneIsInTheStateFolderUnderTheApplicationsName) {
  for (const bool isElsewhere : {false, true}) {
    RUN_IN_CHILD({
      const TemporaryFolder folder;
      setenv("XDG_STATE_HOME", folder.path("state").c_str(), 1);
      setenv("NORVIK_BUNDLE_IDENTIFIER", "uk.co.example.pay", 1);
      unsetenv("NORVIK_COOKIES_FOLDER");
      if (isElsewhere) setenv("NORVIK_COOKIES_FOLDER", folder.path("elsewhere").c_str(), 1);
      EXPECT_TRUE(NSHTTPCookieStorage::sharedHTTPCookieStorage().setCookieLine("a=1; Max-Age=60", *url()));
      EXPECT_NE(std::filesystem::exists(folder.path("state/uk.co.example.pay/cookies.sqlite")), isElsewhere);
      EXPECT_EQ(std::filesystem::exists(folder.path("elsewhere/uk.co.example.pay/cookies.sqlite")), isElsewhere);
    });
  }
}

TEST(NSHTTPCookieStorage, WhatCannotNameAFileRaises) {
  EXPECT_RAISES(static_cast<void>(make<NSHTTPCookieStorage>("cookies.sqlite")), "NSInvalidArgumentException");
  EXPECT_RAISES(static_cast<void>(make<NSHTTPCookieStorage>("/tmp/\0x"_ns)), "NSInvalidArgumentException");
}

TEST(NSHTTPCookieStorage, WhatAnotherHasSetIsThereAfterSynchronizing) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> one = folder.open(), other = folder.open();
  EXPECT_TRUE(one->setCookieLine("a=1; Max-Age=60", *url()));
  EXPECT_TRUE(other->synchronize());
  EXPECT_THAT(all(*other), ElementsAre("pay.example.com /slips a=1"));
  other->deleteCookie(*other->cookies()->objectAtIndex(0).object<NSHTTPCookie>());
  EXPECT_TRUE(one->synchronize());
  EXPECT_THAT(all(*one), IsEmpty());
}

TEST(NSHTTPCookieStorage, AChildReadsAndWritesWhatItsParentHasOpen) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(storage->setCookieLine("a=1; Max-Age=60", *url()));
  EXPECT_TRUE(storage->setCookieLine("session=1", *url()));
  const pid_t child = fork();
  if (child == 0) {
    const bool isDone = storage->cookies()->count() == 2 && storage->setCookieLine("b=1; Max-Age=60", *url());
    _exit(isDone && storage->synchronize() ? 0 : 1);
  }
  int status = 1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(storage->synchronize());
  EXPECT_THAT(all(*storage), ElementsAre("pay.example.com /slips a=1", "pay.example.com /slips session=1",
                                         "pay.example.com /slips b=1"));
}

TEST(NSHTTPCookieStorage, AFileThatIsNoDatabaseIsReportedOnceAndLeftAsItIs) {
  const CookieFolder folder;
  std::filesystem::create_directory(folder.folder().path("pay"));
  const std::string content(8192, 'x');
  folder.folder().write("pay/cookies.sqlite", content);
  const SystemLogCapture console;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(storage->setCookieLine("a=1; Max-Age=60", *url()));
  EXPECT_TRUE(storage->setCookieLine("b=1; Max-Age=60", *url()));
  EXPECT_THAT(all(*storage), ElementsAre("pay.example.com /slips a=1", "pay.example.com /slips b=1"));
  EXPECT_THAT(console.lines(),
              ElementsAre("The cookies in " + folder.path() + " cannot be read: file is not a database.",
                          "The cookies in " + folder.path() +
                              " cannot be written: file is not a database. Values that are set are kept in memory, and "
                              "writing is tried again until this process ends."));
  EXPECT_EQ(TemporaryFolder::read(folder.path()), content);
}

TEST(NSHTTPCookieStorage, ADamagedCookieIsReportedOnceAndTheOthersAreRead) {
  const CookieFolder folder;
  {
    const Ref<NSHTTPCookieStorage> storage = folder.open();
    EXPECT_TRUE(storage->setCookieLine("a=1; Max-Age=60", *url()));
    EXPECT_TRUE(storage->setCookieLine("b=1; Max-Age=60", *url()));
    EXPECT_TRUE(storage->setCookieLine("c=1; Max-Age=60", *url()));
  }
  {
    ForeignDatabase database(folder.path());
    database.run("UPDATE cookie SET value = 'x' WHERE key LIKE '%\ta'");
    database.run("UPDATE cookie SET key = 'of another' WHERE key LIKE '%\tc'");
  }
  const SystemLogCapture console;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_THAT(all(*storage), ElementsAre("pay.example.com /slips b=1"));
  EXPECT_THAT(console.lines(), UnorderedElementsAre("The cookie \"pay.example.com\t/slips\ta\" in " + folder.path() +
                                                        " is damaged: it is not a line of a cookie file",
                                                    "The cookie \"of another\" in " + folder.path() +
                                                        " is damaged: it is another cookie"));
  EXPECT_TRUE(storage->setCookieLine("a=2; Max-Age=60", *url()));
  EXPECT_THAT(all(*folder.open()), ElementsAre("pay.example.com /slips b=1", "pay.example.com /slips a=2"));
}

// The limit on the size of files simulates a full disk. It applies to every user, and exceeding it sends a deadly
// signal.
TEST(NSHTTPCookieStorage, AFullDiskIsReportedAndWhatIsLeftIsWrittenOnceThereIsRoom) {
  RUN_IN_CHILD({
    const CookieFolder folder;
    const Ref<NSHTTPCookieStorage> storage = folder.open();
    EXPECT_TRUE(storage->setCookieLine("before=1; Max-Age=60", *url()));
    const SystemLogCapture console;
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlim_t greatest = limit.rlim_cur;
    limit.rlim_cur = 65536;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const std::string large = "=" + std::string(4000, 'x') + "; Max-Age=60";
    for (int i = 0; i < 40; ++i) EXPECT_TRUE(storage->setCookieLine(numbered("a", i) + large, *url()));
    EXPECT_EQ(storage->cookies()->count(), 41u);
    EXPECT_FALSE(storage->synchronize());
    Ref<NSError> error;
    EXPECT_FALSE(storage->writeToCookieFile(NSString(folder.folder().path("cookies.txt")), &error));
    EXPECT_EQ(error->code(), EFBIG);
    // Neither the file nor a partial file is there, only the folder of the database.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.folder().path()), {}), 1);
    limit.rlim_cur = greatest;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_TRUE(storage->synchronize());
    EXPECT_EQ(folder.open()->cookies()->count(), 41u);
    EXPECT_THAT(console.lines(),
                AllOf(Not(IsEmpty()), Each("The cookies in " + folder.path() +
                                           " cannot be written: disk I/O error (File too large). Values that are set "
                                           "are kept in memory, and writing is tried again until this process ends.")));
  });
}

TEST(NSHTTPCookieStorage, ACookieFileHasEveryCookieAndComesBack) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(
      storage->setCookieLine("a=1; Expires=Fri, 01 Jan 2100 00:00:00 GMT; Domain=example.com; HttpOnly", *url()));
  EXPECT_TRUE(storage->setCookieLine("b=; Secure", *url()));
  const std::string path = folder.folder().write("cookies.txt", "what was there before");
  EXPECT_TRUE(storage->writeToCookieFile(NSString(path)));
  EXPECT_EQ(TemporaryFolder::read(path),
            "# Netscape HTTP Cookie File\n"
            "#HttpOnly_.example.com\tTRUE\t/slips\tFALSE\t4102444800\ta\t1\n"
            "pay.example.com\tFALSE\t/slips\tTRUE\t0\tb\t\n");
  const CookieFolder another;
  const Ref<NSHTTPCookieStorage> read = another.open();
  EXPECT_TRUE(read->addFromCookieFile(NSString(path)));
  EXPECT_TRUE(read->cookies()->isEqual(*storage->cookies()));
}

TEST(NSHTTPCookieStorage, WhatIsNoLineOfACookieFileIsPassedOver) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  const std::string path = folder.folder().write(
      "cookies.txt",
      "\xEF\xBB\xBF# comment\r\n\r\nrubbish\r\nexample.com\tFALSE\t/\tFALSE\t0\ta\t1\r\n\x01\x02\n"
      "example.com\tFALSE\t/\tFALSE\t1\texpired\t1\nexample.com\tFALSE\t/\tFALSE\t0\tb\t2");
  EXPECT_TRUE(storage->addFromCookieFile(NSString(path)));
  EXPECT_THAT(all(*storage), ElementsAre("example.com / a=1", "example.com / b=2"));
}

TEST(NSHTTPCookieStorage, AFileOfTooManyCookiesLeavesTheLastOnes) {
  std::string file;
  for (int i = 0; i < 100'000; ++i) file += numbered("h", i, ".example.com\tFALSE\t/\tFALSE\t0\ta\t1\n");
  for (int i = 0; i < 400; ++i) file += numbered("example.org\tFALSE\t/\tFALSE\t0\tb", i, "\t1\n");
  file += "h99999.example.com\tFALSE\t/\tFALSE\t1\ta\texpired\n";
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(storage->setCookieLine("old=1", *url()));
  const std::clock_t start = std::clock();
  EXPECT_TRUE(storage->addFromCookieFile(NSString(folder.folder().write("cookies.txt", file))));
  const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  EXPECT_LT(seconds, 30) << "setting each and removing another takes minutes";
  const std::vector<std::string> present = all(*storage);
  ASSERT_EQ(present.size(), 3000u);
  EXPECT_EQ(present.front(), "h97179.example.com / a=1");
  EXPECT_EQ(present[2819], "h99998.example.com / a=1");
  EXPECT_EQ(present[2820], "example.org / b220=1");
  EXPECT_EQ(present.back(), "example.org / b399=1");
}

TEST(NSHTTPCookieStorage, AFileLeavesWhatIsLeftWhenItsCookiesAreSetOneByOne) {
  std::string file;
  std::uint32_t random = 4711;
  const auto next = [&](std::uint32_t bound) {
    return static_cast<int>((random = random * 1664525 + 1013904223) >> 8) % static_cast<int>(bound);
  };
  for (int i = 0; i < 3000; ++i) {
    const int host = next(3), name = next(400), kept = next(2);
    file += numbered("h", host, ".example.com\tFALSE\t/\tFALSE\t") + (kept ? "4102444800" : "0") +
            numbered("\ta", name, "\t") + std::to_string(i) + "\n";
  }
  const CookieFolder first, second;
  const Ref<NSHTTPCookieStorage> atOnce = first.open(), oneByOne = second.open();
  for (const Ref<NSHTTPCookieStorage>& storage : {atOnce, oneByOne}) {
    for (int i = 0; i < 100; ++i) storage->setCookieLine(numbered("old", i, "=1"), *url("http://h1.example.com/"));
  }
  EXPECT_TRUE(atOnce->addFromCookieFile(NSString(first.folder().write("cookies.txt", file))));
  for (std::size_t start = 0; start < file.size(); start = file.find('\n', start) + 1) {
    const std::string line = file.substr(start, file.find('\n', start) - start);
    oneByOne->setCookie(*NSHTTPCookie::cookieWithCookieFileLine(NSString(line)));
  }
  EXPECT_EQ(atOnce->cookies()->count(), 540u);
  EXPECT_THAT(all(*atOnce), ::testing::UnorderedElementsAreArray(all(*oneByOne)));
}

TEST(NSHTTPCookieStorage, AFullStorageOfAFullDomainLosesOneForOneMore) {
  std::string file;
  for (int i = 0; i < 180; ++i) file += numbered("example.org\tFALSE\t/\tFALSE\t0\ta", i, "\t1\n");
  for (int i = 0; i < 2820; ++i) file += numbered("h", i, ".example.com\tFALSE\t/\tFALSE\t0\ta\t1\n");
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  EXPECT_TRUE(storage->addFromCookieFile(NSString(folder.folder().write("cookies.txt", file))));
  EXPECT_EQ(storage->cookies()->count(), 3000u);
  EXPECT_TRUE(storage->setCookieLine("last=1", *url("http://example.org/")));
  EXPECT_EQ(storage->cookies()->count(), 3000u);
  EXPECT_EQ(all(*storage).front(), "example.org / a1=1");
  EXPECT_EQ(all(*storage).back(), "example.org / last=1");
}

TEST(NSHTTPCookieStorage, ACookieFileTakesNoPlaceOfADeviceOrPipe) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  const std::string pipe = folder.folder().path("pipe"), link = folder.folder().path("link");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/null", link);
  for (const std::string& path : {pipe, link}) {
    Ref<NSError> error;
    EXPECT_FALSE(storage->writeToCookieFile(NSString(path), &error)) << path;
    ASSERT_TRUE(error) << path;
    EXPECT_EQ(error->code(), ENXIO) << path;
    EXPECT_FALSE(storage->addFromCookieFile(NSString(path), &error)) << path;
    EXPECT_EQ(error->code(), ENXIO) << path;
  }
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST(NSHTTPCookieStorage, ACookieFilesNameMayBeAsLongAsOneCanBe) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  Ref<NSError> error;
  EXPECT_TRUE(storage->writeToCookieFile(NSString(folder.folder().path(std::string(255, 'n'))), &error)) << error;
  EXPECT_FALSE(storage->writeToCookieFile(NSString(folder.folder().path(std::string(256, 'n'))), &error));
  EXPECT_EQ(error->code(), ENAMETOOLONG);
  EXPECT_FALSE(storage->writeToCookieFile(NSString("/" + std::string(5000, '/') + "n"), &error));
  EXPECT_EQ(error->code(), ENAMETOOLONG);
  EXPECT_FALSE(storage->addFromCookieFile(NSString("/" + std::string(5000, '/') + "n"), &error));
  EXPECT_EQ(error->code(), ENAMETOOLONG);
}

TEST(NSHTTPCookieStorage, ACookieFileThatCannotBeReadOrWrittenIsAnError) {
  const CookieFolder folder;
  const Ref<NSHTTPCookieStorage> storage = folder.open();
  Ref<NSError> error;
  EXPECT_FALSE(storage->addFromCookieFile(NSString(folder.folder().path("none")), &error));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_FALSE(storage->addFromCookieFile("/tmp\0x"_ns, &error));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_FALSE(storage->addFromCookieFile(NSString(folder.folder().path()), &error));
  EXPECT_EQ(error->code(), EISDIR);
  EXPECT_FALSE(storage->addFromCookieFile("/dev/zero", &error));
  EXPECT_NE(error->code(), 0);
  const std::string large = folder.folder().write("large", std::string((16 << 20) + 1, 'x'));
  EXPECT_FALSE(storage->addFromCookieFile(NSString(large), &error));
  EXPECT_EQ(error->code(), EFBIG);
  std::filesystem::resize_file(large, 16 << 20);
  EXPECT_TRUE(storage->addFromCookieFile(NSString(large), &error));
  EXPECT_FALSE(storage->writeToCookieFile(NSString(folder.folder().path("none/cookies.txt")), &error));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_FALSE(storage->writeToCookieFile("", &error));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_FALSE(storage->writeToCookieFile(NSString(folder.folder().path()), &error));
  EXPECT_EQ(error->code(), EISDIR);
  EXPECT_EQ(error->localizedDescription().substringToIndex(17), "write cookies to ");
}

}  // namespace
}  // namespace norvik

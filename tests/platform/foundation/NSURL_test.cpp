#include "NorvikCore/platform/foundation/NSURL.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using norvik::test::TemporaryFolder;

NSString file(const char* path) { return NSURL::fileURLWithPath(path, false)->absoluteString(); }

TEST(NSURL, HeaderExample) {
  const Ref<NSURL> url = NSURL::fileURLWithPath("/home/pat/Pay/April \u00A3.csv", false);
  EXPECT_EQ(url->absoluteString(), "file:///home/pat/Pay/April%20%C2%A3.csv");
  EXPECT_EQ(url->path(), "/home/pat/Pay/April \u00A3.csv");
}

TEST(NSURL, BytesThatMayNotStandInAPathAreEncoded) {
  EXPECT_EQ(file("/AZaz09-._~!$&'()*+,;=:@"), "file:///AZaz09-._~!$&'()*+,;=:@");
  EXPECT_EQ(file("/a b?c#d%e\"f<g>h[i]j\\k^l`m{n|o}"),
            "file:///a%20b%3Fc%23d%25e%22f%3Cg%3Eh%5Bi%5Dj%5Ck%5El%60m%7Bn%7Co%7D");
  EXPECT_EQ(file("/a\nb\x7F"), "file:///a%0Ab%7F");
}

TEST(NSURL, ANameThatIsNotUTF8ComesBackAsItWas) {
  const Ref<NSURL> url = NSURL::fileURLWithPath(NSString::fromBytes("/p\xE4y"), false);
  EXPECT_EQ(url->absoluteString(), "file:///p%E4y");
  EXPECT_EQ(url->path().bytes(), "/p\xE4y");
}

TEST(NSURL, AFoldersAddressEndsWithASlashAndItsPathDoesNot) {
  for (const char* path : {"/home/pat", "/home/pat/", "/home/pat//"}) {
    const Ref<NSURL> url = NSURL::fileURLWithPath(path, true);
    EXPECT_EQ(url->absoluteString(), "file:///home/pat/") << path;
    EXPECT_EQ(url->path(), "/home/pat") << path;
    EXPECT_TRUE(url->hasDirectoryPath()) << path;
  }
  EXPECT_EQ(NSURL::fileURLWithPath("/", false)->absoluteString(), "file:///");
  EXPECT_EQ(NSURL::fileURLWithPath("/", false)->path(), "/");
}

TEST(NSURL, WithoutBeingToldItLooksWhatIsThere) {
  const TemporaryFolder folder;
  const NSString there = folder.write("pay.csv");
  EXPECT_TRUE(NSURL::fileURLWithPath(folder.path())->hasDirectoryPath());
  EXPECT_FALSE(NSURL::fileURLWithPath(there)->hasDirectoryPath());
  EXPECT_FALSE(NSURL::fileURLWithPath(folder.path("nothing"))->hasDirectoryPath());
  EXPECT_TRUE(NSURL::fileURLWithPath(folder.path("nothing/"))->hasDirectoryPath());
  EXPECT_FALSE(NSURL::fileURLWithPath(NSString(folder.path()) + "\0"_ns)->hasDirectoryPath());
}

TEST(NSURL, ARelativePathIsTakenFromTheCurrentFolder) {
  RUN_IN_CHILD({
    ASSERT_EQ(chdir("/usr/share"), 0);
    EXPECT_EQ(NSURL::fileURLWithPath("pay/april.csv")->path(), "/usr/share/pay/april.csv");
    EXPECT_EQ(NSURL::fileURLWithPath("")->absoluteString(), "file:///usr/share/");
    EXPECT_EQ(NSURL::fileURLWithPath("../x", false)->path(), "/usr/share/../x");
    EXPECT_EQ(NSURL::fileURLWithPath("~/x", false)->path(), "/usr/share/~/x");
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(NSURL::fileURLWithPath("etc")->absoluteString(), "file:///etc/");
  });
}

TEST(NSURL, EqualAddressesAreEqualAndHaveOneHash) {
  const Ref<NSURL> a = NSURL::fileURLWithPath("/pay/april", false), b = NSURL::fileURLWithPath("/pay/april", false);
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_EQ(NSSet::setWithObjects(a, b)->count(), 1u);
  EXPECT_FALSE(a->isEqual(*NSURL::fileURLWithPath("/pay/may", false)));
  EXPECT_FALSE(a->isEqual(*NSURL::fileURLWithPath("/pay/april", true)));
  EXPECT_FALSE(a->isEqual(*NSData::data()));
}

TEST(NSURL, DescribesItselfByItsAddress) {
  EXPECT_EQ(NSURL::fileURLWithPath("/pay/a b", false)->description(), "file:///pay/a%20b");
}

TEST(NSURL, KeyPathsFindItsParts) {
  const Ref<NSURL> url = NSURL::fileURLWithPath("/pay/april.csv", false);
  EXPECT_EQ(url->valueForKey("path"), Value("/pay/april.csv"));
  EXPECT_EQ(url->valueForKey("lastPathComponent"), Value("april.csv"));
  EXPECT_EQ(url->valueForKey("scheme"), Value("file"));
  EXPECT_EQ(url->valueForKey("isFileURL"), Value(true));
}

TEST(NSURL, IsArchived) {
  for (const bool isDirectory : {false, true}) {
    const Ref<NSURL> url = NSURL::fileURLWithPath(NSString::fromBytes("/p\xE4y/a b"), isDirectory);
    const Value read = NSKeyedUnarchiver::unarchiveObjectWithData(*NSKeyedArchiver::archivedDataWithRootObject(url));
    EXPECT_TRUE(url->isEqual(*read.as<Ref<NSURL>>()));
  }
}

}  // namespace
}  // namespace norvik

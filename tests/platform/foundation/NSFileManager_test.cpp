#include "NorvikCore/platform/foundation/NSFileManager.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "tests/support/PrivateMount.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

namespace fs = std::filesystem;
using norvik::test::TemporaryFolder;
using ::testing::UnorderedElementsAre;

NSFileManager& files = NSFileManager::defaultManager();

std::vector<std::string> namesIn(const NSString& folder) {
  std::vector<std::string> names;
  const Ref<NSArray> list = files.contentsOfDirectoryAtPath(folder);
  if (!list) return {"no list"};
  for (const Value& name : *list) names.push_back(name.as<NSString>().bytes());
  return names;
}

NSString textAt(const NSString& path) {
  const Ref<NSData> data = files.contentsAtPath(path);
  return data ? NSString(data->text()) : "no content";
}

Value attribute(const NSString& path, const NSString& key) {
  const Ref<NSDictionary> attributes = files.attributesOfItemAtPath(path);
  return attributes ? attributes->objectForKey(key) : Value();
}

TEST(NSFileManager, HeaderExample) {
  const TemporaryFolder temporary;
  const NSString folder = temporary.path("2024/April"), path = folder + "/pay.csv";
  Ref<NSError> error;
  EXPECT_TRUE(files.createDirectoryAtPath(folder, true, nullptr, &error));
  EXPECT_TRUE(files.createFileAtPath(path, NSData::dataWithText("1,234.50\n")));
  EXPECT_EQ(files.attributesOfItemAtPath(path, &error)->objectForKey(NSFileSize), Value(9));
  EXPECT_FALSE(error);
}

TEST(NSFileManager, ThereIsOneDefaultManager) {
  EXPECT_EQ(&NSFileManager::defaultManager(), &NSFileManager::defaultManager());
}

TEST(NSFileManager, FilesAndFoldersExistAndLinksToNothingDoNot) {
  const TemporaryFolder folder;
  fs::create_symlink("/nowhere", folder.path("dead"));
  fs::create_symlink(folder.path(), folder.path("alive"));
  bool isDirectory = true;
  EXPECT_TRUE(files.fileExistsAtPath(folder.write("a"), &isDirectory));
  EXPECT_FALSE(isDirectory);
  EXPECT_TRUE(files.fileExistsAtPath(folder.path("alive"), &isDirectory));
  EXPECT_TRUE(isDirectory);
  EXPECT_FALSE(files.fileExistsAtPath(folder.path("dead"), &isDirectory));
  EXPECT_TRUE(isDirectory) << "set only where something exists";
  EXPECT_FALSE(files.fileExistsAtPath(""));
}

TEST(NSFileManager, AFolderThatIsThereIsSuccessOnlyWithIntermediateOnes) {
  const TemporaryFolder folder;
  Ref<NSError> error;
  EXPECT_TRUE(files.createDirectoryAtPath(folder.path(), true, nullptr, &error));
  EXPECT_FALSE(error);
  EXPECT_FALSE(files.createDirectoryAtPath(folder.path(), false, nullptr, &error));
  EXPECT_EQ(error->code(), EEXIST);
  EXPECT_FALSE(files.createDirectoryAtPath(folder.path("a/b"), false, nullptr));
  EXPECT_TRUE(files.createDirectoryAtPath(folder.path("a"), false, nullptr));
}

TEST(NSFileManager, AFailureTellsWhatFailedOnWhatAndWhy) {
  const TemporaryFolder folder;
  const std::string file = folder.write("file");
  Ref<NSError> error;
  EXPECT_FALSE(files.createDirectoryAtPath(file + "/April/Pay", true, nullptr, &error));
  EXPECT_EQ(error->domain(), NSPOSIXErrorDomain);
  EXPECT_EQ(error->code(), EEXIST);
  EXPECT_EQ(error->userInfo()->objectForKey(NSFilePathErrorKey), Value(file));
  EXPECT_EQ(error->localizedDescription(), "create folder " + file + ": File exists");
  EXPECT_FALSE(files.attributesOfItemAtPath(folder.path("absent"), &error));
  EXPECT_EQ(error->localizedDescription(),
            "read attributes of " + folder.path("absent") + ": No such file or directory");
}

TEST(NSFileManager, ANewFolderTakesPermissionsFromItsAttributes) {
  const TemporaryFolder folder;
  ASSERT_TRUE(files.createDirectoryAtPath(folder.path("private"), false,
                                          NSDictionary::dictionaryWith({{NSFilePosixPermissions, 0700}})));
  EXPECT_EQ(attribute(folder.path("private"), NSFilePosixPermissions), Value(0700));
}

TEST(NSFileManager, NamesThatAreNoUTF8AreListedAndUsable) {
  const TemporaryFolder folder;
  folder.write("pay\xFF.csv", "found");
  folder.write("Zo\xC3\xAB");
  const Ref<NSArray> names = files.contentsOfDirectoryAtPath(folder.path());
  ASSERT_EQ(names->count(), 2U);
  EXPECT_THAT(namesIn(folder.path()), UnorderedElementsAre("pay\xFF.csv", "Zo\u00EB"));
  const NSString odd = NSString::fromBytes("pay\xFF.csv");
  ASSERT_TRUE(names->containsObject(odd));
  EXPECT_EQ(textAt(NSString(folder.path()).stringByAppendingPathComponent(odd)), "found");
}

TEST(NSFileManager, AFolderThatCannotBeListedIsAnError) {
  const TemporaryFolder folder;
  Ref<NSError> error;
  EXPECT_FALSE(files.contentsOfDirectoryAtPath(folder.path("absent"), &error));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_FALSE(files.contentsOfDirectoryAtPath(folder.write("a"), &error));
  EXPECT_EQ(error->code(), ENOTDIR);
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a"});
}

TEST(NSFileManager, SideFilesOfAttributesAreNotListed) {
  const kernel::WithoutExtendedAttributes off;
  const TemporaryFolder folder;
  ASSERT_EQ(kernel::setAttribute(folder.write("pay.csv"), "payroll.locked", ""), 0);
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"pay.csv"});
}

TEST(NSFileManager, AttributesDescribeAFile) {
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv", "12345");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  fs::create_hard_link(path, folder.path("second"));
  const Ref<NSDictionary> attributes = files.attributesOfItemAtPath(path);
  EXPECT_EQ(attributes->objectForKey(NSFileType), Value("NSFileTypeRegular"));
  EXPECT_EQ(attributes->objectForKey(NSFileSize), Value(5));
  EXPECT_EQ(attributes->objectForKey(NSFilePosixPermissions), Value(0640));
  EXPECT_EQ(attributes->objectForKey(NSFileOwnerAccountID), Value(geteuid()));
  EXPECT_EQ(attributes->objectForKey(NSFileReferenceCount), Value(2));
  const double age = Date::systemDate().timeIntervalSinceReferenceDate() -
                     attributes->objectForKey(NSFileCreationDate).as<Date>().timeIntervalSinceReferenceDate();
  EXPECT_GE(age, -0.001);
  EXPECT_LT(age, 60);
}

TEST(NSFileManager, ALinkIsDescribedItself) {
  const TemporaryFolder folder;
  fs::create_symlink(folder.write("a", "12345"), folder.path("link"));
  EXPECT_EQ(attribute(folder.path("link"), NSFileType), Value("NSFileTypeSymbolicLink"));
  EXPECT_EQ(attribute(folder.path(), NSFileType), Value("NSFileTypeDirectory"));
  EXPECT_EQ(attribute("/dev/null", NSFileType), Value("NSFileTypeCharacterSpecial"));
}

TEST(NSFileManager, DatesComeBackAsTheyWereSet) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a");
  for (const double seconds : {0.0, 0.5, 600'000'000.25, -31'622'400.5}) {
    const Date date = Date::fromReferenceSeconds(seconds);
    EXPECT_TRUE(files.setAttributes(*NSDictionary::dictionaryWith({{NSFileModificationDate, date}}), path));
    EXPECT_EQ(attribute(path, NSFileModificationDate), Value(date));
  }
}

TEST(NSFileManager, ADateThatIsNoneIsRefused) {
  const TemporaryFolder folder;
  Ref<NSError> error;
  const Value never = Date::fromReferenceSeconds(std::numeric_limits<double>::quiet_NaN());
  EXPECT_FALSE(
      files.setAttributes(*NSDictionary::dictionaryWith({{NSFileModificationDate, never}}), folder.write("a"), &error));
  EXPECT_EQ(error->code(), EINVAL);
}

TEST(NSFileManager, ANewFileHasItsContentAndReplacesAnOldOne) {
  const TemporaryFolder folder;
  const NSString path = folder.path("a");
  EXPECT_TRUE(files.createFileAtPath(path, NSData::dataWithText("a long text")));
  EXPECT_EQ(textAt(path), "a long text");
  EXPECT_TRUE(files.createFileAtPath(path, NSData::dataWithText("short"),
                                     NSDictionary::dictionaryWith({{NSFilePosixPermissions, 0600}})));
  EXPECT_EQ(textAt(path), "short");
  EXPECT_EQ(attribute(path, NSFilePosixPermissions), Value(0600));
  EXPECT_TRUE(files.createFileAtPath(path, nullptr));
  EXPECT_EQ(textAt(path), "");
}

TEST(NSFileManager, AFileThatCannotBeMadeIsRefused) {
  const TemporaryFolder folder;
  Ref<NSError> error;
  EXPECT_FALSE(files.createFileAtPath(folder.path("absent/a"), nullptr, nullptr, &error));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_FALSE(files.contentsAtPath(folder.path("absent"), &error));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_FALSE(files.createFileAtPath(folder.path(), nullptr));
  EXPECT_FALSE(files.createFileAtPath(NSString(folder.path("a") + std::string("\0b", 2)), nullptr));
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>());
  EXPECT_FALSE(files.contentsAtPath(folder.path("absent")));
}

TEST(NSFileManager, AMovedFileKeepsItsAttributes) {
  const TemporaryFolder folder;
  const std::string from = folder.write("a", "text"), to = folder.path("b");
  ASSERT_EQ(kernel::setAttribute(from, "payroll.locked", ""), 0);
  EXPECT_TRUE(files.moveItemAtPath(from, to));
  EXPECT_FALSE(files.fileExistsAtPath(from));
  EXPECT_EQ(textAt(to), "text");
  EXPECT_TRUE(kernel::hasAttribute(to, "payroll.locked"));
}

TEST(NSFileManager, AMoveReplacesNothing) {
  const TemporaryFolder folder;
  const std::string from = folder.write("a", "new"), to = folder.write("b", "old");
  Ref<NSError> error;
  EXPECT_FALSE(files.moveItemAtPath(from, to, &error));
  EXPECT_EQ(error->code(), EEXIST);
  EXPECT_EQ(error->localizedDescription(), "move " + from + " to " + to + ": File exists");
  EXPECT_EQ(textAt(to), "old");
  EXPECT_EQ(textAt(from), "new");
}

TEST(NSFileManager, AMoveToAnotherFileSystemIsACopyAndARemoval) {
  const TemporaryFolder folder;
  const std::string other = fs::exists("/dev/shm") ? "/dev/shm" : "/run";
  struct stat here {
  }, there{};
  ASSERT_EQ(stat(folder.path().c_str(), &here), 0);
  ASSERT_EQ(stat(other.c_str(), &there), 0);
  if (here.st_dev == there.st_dev || access(other.c_str(), W_OK) != 0) {
    GTEST_SKIP() << other << " is no other file system that this user may write to";
  }
  std::string target = other + "/norvik-test-XXXXXX";
  ASSERT_NE(mkdtemp(target.data()), nullptr);
  ASSERT_TRUE(files.createDirectoryAtPath(folder.path("a/b"), true, nullptr));
  ASSERT_EQ(kernel::setAttribute(folder.write("a/b/pay.csv", "12"), "payroll.locked", "yes"), 0);
  EXPECT_TRUE(files.moveItemAtPath(folder.path("a"), target + "/a"));
  EXPECT_FALSE(files.fileExistsAtPath(folder.path("a")));
  EXPECT_EQ(textAt(target + "/a/b/pay.csv"), "12");
  EXPECT_TRUE(kernel::hasAttribute(target + "/a/b/pay.csv", "payroll.locked"));
  EXPECT_TRUE(files.removeItemAtPath(target));
}

TEST(NSFileManager, ACopyLeavesTheOriginal) {
  const TemporaryFolder folder;
  const std::string from = folder.write("a", "text"), to = folder.path("b");
  Ref<NSError> error;
  EXPECT_TRUE(files.copyItemAtPath(from, to, &error));
  EXPECT_EQ(textAt(from), "text");
  EXPECT_EQ(textAt(to), "text");
  EXPECT_FALSE(files.copyItemAtPath(from, to, &error));
  EXPECT_EQ(error->code(), EEXIST);
}

TEST(NSFileManager, AFolderIsRemovedWithItsContentAndALinkAlone) {
  const TemporaryFolder folder;
  ASSERT_TRUE(files.createDirectoryAtPath(folder.path("a/b"), true, nullptr));
  const std::string kept = folder.write("kept");
  folder.write("a/b/pay.csv");
  fs::create_symlink(kept, folder.path("link"));
  EXPECT_TRUE(files.removeItemAtPath(folder.path("a")));
  EXPECT_TRUE(files.removeItemAtPath(folder.path("link")));
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"kept"});
  Ref<NSError> error;
  EXPECT_FALSE(files.removeItemAtPath(folder.path("a"), &error));
  EXPECT_EQ(error->localizedDescription(), "remove " + folder.path("a") + ": No such file or directory");
}

TEST(NSFileManager, AReadOnlyDiskRefusesWithItsReason) {
  const norvik::test::PrivateMount disk("tmpfs", "size=64k");
  if (!disk.mounted()) GTEST_SKIP() << "this user may not mount";
  const std::string path = disk.folder().write("a");
  ASSERT_TRUE(disk.makeReadOnly());
  Ref<NSError> error;
  EXPECT_FALSE(files.removeItemAtPath(path, &error));
  EXPECT_EQ(error->code(), EROFS);
  EXPECT_FALSE(files.createDirectoryAtPath(disk.folder().path("b"), true, nullptr, &error));
  EXPECT_EQ(error->localizedFailureReason(), NSString("Read-only file system"));
  EXPECT_TRUE(files.createDirectoryAtPath(disk.folder().path(), true, nullptr)) << "it is there";
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/logging/DDLogFileInfo.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/InChild.h"
#include "tests/support/PrivateMount.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <ctime>
#include <filesystem>
#include <string>

namespace norvik {
namespace {

using kernel::SystemLogCapture;
using test::PrivateMount;
using test::TemporaryFolder;
using ::testing::ElementsAre;

double unixNow() { return static_cast<double>(std::time(nullptr)); }

void setModification(const std::string& path, std::time_t unixSeconds) {
  const std::timespec times[2] = {{unixSeconds, 0}, {unixSeconds, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST(DDLogFileInfo, HeaderExample) {
  const TemporaryFolder folder;
  const double before = unixNow();
  auto info = DDLogFileInfo::logFileWithPath(folder.write("log-3F2504.txt", "text"));
  ASSERT_TRUE(info->creationDate());
  EXPECT_GE(info->creationDate()->timeIntervalSince1970(), before - 1);
  EXPECT_FALSE(info->isArchived());
  info->setIsArchived(true);
  EXPECT_TRUE(info->isArchived());
}

TEST(DDLogFileInfo, TellsNameSizeAndDates) {
  const TemporaryFolder folder;
  const double before = unixNow();
  const std::string path = folder.write("log-ABC123.txt", "12345");
  setModification(path, 1600000000);
  const auto info = DDLogFileInfo::logFileWithPath(path);
  EXPECT_EQ(info->filePath(), path);
  EXPECT_EQ(info->fileName(), "log-ABC123.txt");
  EXPECT_EQ(info->fileSize(), 5U);
  EXPECT_EQ(info->modificationDate(), Date::dateWithTimeIntervalSince1970(1600000000));
  ASSERT_TRUE(info->creationDate());
  EXPECT_GE(info->creationDate()->timeIntervalSince1970(), before - 1);
  EXPECT_LE(info->creationDate()->timeIntervalSince1970(), unixNow() + 2);
  EXPECT_GE(info->age(), 0);
  EXPECT_LT(info->age(), 60);
}

TEST(DDLogFileInfo, AFileThatIsNotThereHasNothing) {
  const auto info = DDLogFileInfo::initWithFilePath("/nowhere/log-ABC123.txt");
  EXPECT_FALSE(info->fileAttributes());
  EXPECT_FALSE(info->creationDate());
  EXPECT_FALSE(info->modificationDate());
  EXPECT_EQ(info->fileSize(), 0U);
  EXPECT_EQ(info->age(), 0);
  EXPECT_FALSE(info->isArchived());
}

TEST(DDLogFileInfo, KeepsWhatItReadUntilItIsResetButForASizeOfZero) {
  const TemporaryFolder folder;
  const std::string path = folder.write("log", "");
  setModification(path, 1600000000);
  const auto info = DDLogFileInfo::logFileWithPath(path);
  EXPECT_EQ(info->modificationDate(), Date::dateWithTimeIntervalSince1970(1600000000));
  EXPECT_EQ(info->fileSize(), 0U);
  folder.write("log", "12345");
  setModification(path, 1700000000);
  EXPECT_EQ(info->modificationDate(), Date::dateWithTimeIntervalSince1970(1600000000));
  EXPECT_EQ(info->fileSize(), 5U);
  folder.write("log", "1234567");
  setModification(path, 1700000000);
  EXPECT_EQ(info->fileSize(), 5U);
  info->reset();
  EXPECT_EQ(info->modificationDate(), Date::dateWithTimeIntervalSince1970(1700000000));
  EXPECT_EQ(info->fileSize(), 5U);  // the size is kept
}

TEST(DDLogFileInfo, TheArchivedMarkIsAnExtendedAttribute) {
  const TemporaryFolder folder;
  const std::string path = folder.write("log", "");
  const auto info = DDLogFileInfo::logFileWithPath(path);
  EXPECT_FALSE(info->isArchived());
  info->setIsArchived(true);
  EXPECT_TRUE(info->isArchived());
  EXPECT_TRUE(info->hasExtendedAttributeWithName("quillmarch.log.archived"));
  if (setxattr(path.c_str(), "user.probe", "", 0, 0) == 0) {  // a file system with attributes
    EXPECT_EQ(getxattr(path.c_str(), "user.quillmarch.log.archived", nullptr, 0), 0);
  }
  info->setIsArchived(true);
  info->setIsArchived(false);
  EXPECT_FALSE(info->isArchived());
}

TEST(DDLogFileInfo, TheArchivedMarkNeedsNoExtendedAttributes) {
  const TemporaryFolder folder;
  const kernel::WithoutExtendedAttributes without;
  const auto info = DDLogFileInfo::logFileWithPath(folder.write("log", ""));
  info->setIsArchived(true);
  EXPECT_TRUE(info->isArchived());
  EXPECT_TRUE(DDLogFileInfo::logFileWithPath(folder.path("log"))->isArchived());
  info->renameFile("other");
  EXPECT_TRUE(info->isArchived());
  info->setIsArchived(false);
  EXPECT_FALSE(info->isArchived());
}

TEST(DDLogFileInfo, TheArchivedMarkWorksOnRamfs) {
  if (!PrivateMount::isAllowed("ramfs"))
    GTEST_SKIP() << "this user may not mount ramfs; see the test without attributes";
  RUN_IN_CHILD({
    const PrivateMount ramfs("ramfs");
    ASSERT_TRUE(ramfs.mounted());
    const std::string path = ramfs.folder().write("log-ABC123.txt", "");
    ASSERT_NE(setxattr(path.c_str(), "user.probe", "", 0, 0), 0) << "this ramfs has attributes";
    const auto info = DDLogFileInfo::logFileWithPath(path);
    info->setIsArchived(true);
    EXPECT_TRUE(info->isArchived());
    info->renameFile("log-ABC124.txt");
    EXPECT_TRUE(info->isArchived());
    info->setIsArchived(false);
    EXPECT_FALSE(info->isArchived());
  });
}

/// If a link replaces a log file, the archived mark of its target is neither read nor changed.
void expectALinkIsNotFollowed() {
  const TemporaryFolder folder, elsewhere;
  const std::string outside = elsewhere.write("outside"), link = folder.path("log-ABC123.txt");
  std::filesystem::create_symlink(outside, link);
  const auto info = DDLogFileInfo::logFileWithPath(link), target = DDLogFileInfo::logFileWithPath(outside);
  const SystemLogCapture console;
  info->setIsArchived(true);
  EXPECT_FALSE(target->isArchived());
  EXPECT_FALSE(info->isArchived());
  target->setIsArchived(true);
  EXPECT_FALSE(info->isArchived());
  info->setIsArchived(false);
  EXPECT_TRUE(target->isArchived());
  EXPECT_THAT(console.lines(),
              ElementsAre("DDLogFileInfo: setxattr(quillmarch.log.archived, log-ABC123.txt): error = 1",
                          "DDLogFileInfo: removexattr(quillmarch.log.archived, log-ABC123.txt): error = 1"));
}

TEST(DDLogFileInfo, ALinkInThePlaceOfALogFileIsNeitherMarkedNorFollowed) {
  expectALinkIsNotFollowed();
  const kernel::WithoutExtendedAttributes without;
  expectALinkIsNotFollowed();
}

TEST(DDLogFileInfo, APipeIsNotOpenedToBeMarked) {
  const TemporaryFolder folder;
  const std::string pipe = folder.path("log-ABC123.txt");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const SystemLogCapture console;
  const auto info = DDLogFileInfo::logFileWithPath(pipe);
  info->setIsArchived(true);
  EXPECT_FALSE(info->isArchived());
  EXPECT_EQ(info->fileSize(), 0U);
  EXPECT_EQ(console.lines().size(), 1U);
}

TEST(DDLogFileInfo, AReportIsOneLineWhateverTheFileIsCalled) {
  const SystemLogCapture console;
  const auto info = DDLogFileInfo::logFileWithPath("/nowhere/log-ABC123\nforged");
  info->setIsArchived(true);
  info->setIsArchived(false);
  info->renameFile("other");
  ASSERT_EQ(console.lines().size(), 3U);
  for (const std::string& line : console.lines()) EXPECT_THAT(line, ::testing::HasSubstr("log-ABC123\\nforged"));
  for (const std::string& line : console.lines()) EXPECT_THAT(line, ::testing::Not(::testing::HasSubstr("\n")));
}

TEST(DDLogFileInfo, AnAttributeThatCannotBeSetIsReported) {
  const SystemLogCapture console;
  DDLogFileInfo::logFileWithPath("/nowhere/log-ABC123.txt")->addExtendedAttributeWithName("mark");
  EXPECT_THAT(console.lines(), ElementsAre("DDLogFileInfo: setxattr(mark, log-ABC123.txt): error = 2"));
}

TEST(DDLogFileInfo, AnAttributeThatCannotBeRemovedIsReportedUnlessItIsAbsent) {
  const TemporaryFolder folder;
  const SystemLogCapture console;
  DDLogFileInfo::logFileWithPath(folder.write("log", ""))->removeExtendedAttributeWithName("mark");
  EXPECT_THAT(console.lines(), ElementsAre());
  DDLogFileInfo::logFileWithPath("/nowhere/log-ABC123.txt")->removeExtendedAttributeWithName("mark");
  EXPECT_THAT(console.lines(), ElementsAre("DDLogFileInfo: removexattr(mark, log-ABC123.txt): error = 2"));
}

TEST(DDLogFileInfo, RenamingMovesTheFileWithinItsFolder) {
  const TemporaryFolder folder;
  const auto info = DDLogFileInfo::logFileWithPath(folder.write("old", "text"));
  EXPECT_EQ(info->fileName(), "old");
  info->renameFile("new");
  EXPECT_EQ(info->filePath(), folder.path("new"));
  EXPECT_EQ(info->fileName(), "new");
  EXPECT_EQ(TemporaryFolder::read(folder.path("new")), "text");
  EXPECT_FALSE(std::filesystem::exists(folder.path("old")));
  info->renameFile("new");
  EXPECT_EQ(TemporaryFolder::read(folder.path("new")), "text");
}

TEST(DDLogFileInfo, ARenameThatFailsIsReportedAndTheInfoIsAboutTheNewPathAllTheSame) {
  const TemporaryFolder folder;
  const SystemLogCapture console;
  const auto info = DDLogFileInfo::logFileWithPath(folder.write("old", "old text"));
  folder.write("new", "new text");
  info->renameFile("new");
  ASSERT_EQ(console.lines().size(), 1U);
  EXPECT_THAT(console.lines()[0], ::testing::StartsWith("DDLogFileInfo: Error renaming file (old): "));
  EXPECT_EQ(info->filePath(), folder.path("new"));
  EXPECT_EQ(TemporaryFolder::read(folder.path("new")), "new text");
  EXPECT_EQ(TemporaryFolder::read(folder.path("old")), "old text");
}

TEST(DDLogFileInfo, ANameThatLeadsOutOfTheFolderIsRefused) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path("logs"));
  std::filesystem::create_directory(folder.path("logs/inner"));
  const std::string path = folder.write("logs/old", "text");
  for (const NSString& name :
       {NSString("../new"), NSString("inner/new"), NSString("/new"), NSString("."), NSString(".."), NSString("")}) {
    const SystemLogCapture console;
    const auto info = DDLogFileInfo::logFileWithPath(path);
    info->renameFile(name);
    ASSERT_EQ(console.lines().size(), 1U) << name;
    EXPECT_THAT(console.lines()[0], ::testing::StartsWith("DDLogFileInfo: Error renaming file (old): ")) << name;
    EXPECT_THAT(console.lines()[0], ::testing::HasSubstr("Invalid argument")) << name;
    EXPECT_EQ(TemporaryFolder::read(path), "text") << name;
    EXPECT_NE(info->filePath(), path) << name;
  }
  EXPECT_FALSE(std::filesystem::exists(folder.path("new")));
  EXPECT_FALSE(std::filesystem::exists(folder.path("logs/inner/new")));
}

TEST(DDLogFileInfo, RenamingALinkMovesTheLinkItself) {
  const TemporaryFolder folder, elsewhere;
  const std::string outside = elsewhere.write("outside", "text");
  std::filesystem::create_symlink(outside, folder.path("old"));
  DDLogFileInfo::logFileWithPath(folder.path("old"))->renameFile("new");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path("new")));
  EXPECT_EQ(TemporaryFolder::read(outside), "text");
}

TEST(DDLogFileInfo, InfosAboutOnePathAreEqual) {
  const auto a = DDLogFileInfo::logFileWithPath("/a"), same = DDLogFileInfo::logFileWithPath("/a"),
             b = DDLogFileInfo::logFileWithPath("/b");
  EXPECT_TRUE(a->isEqual(*same));
  EXPECT_EQ(a->hash(), same->hash());
  EXPECT_FALSE(a->isEqual(*b));
}

TEST(DDLogFileInfo, NothingOfAnotherClassIsEqual) {
  const auto info = DDLogFileInfo::logFileWithPath("/a");
  EXPECT_FALSE(info->isEqual(*NSArray::arrayWith({"/a"})));
}

TEST(DDLogFileInfo, TheNewestComesFirst) {
  const TemporaryFolder folder;
  const std::string older = folder.write("older"), newer = folder.write("newer"), equal = folder.write("equal");
  setModification(older, 1600000000);
  setModification(newer, 1600000001);
  setModification(equal, 1600000001);
  const auto a = DDLogFileInfo::logFileWithPath(older), b = DDLogFileInfo::logFileWithPath(newer),
             c = DDLogFileInfo::logFileWithPath(equal), none = DDLogFileInfo::logFileWithPath("/nowhere/file");
  EXPECT_EQ(a->reverseCompareByModificationDate(*b), NSOrderedDescending);
  EXPECT_EQ(b->reverseCompareByModificationDate(*a), NSOrderedAscending);
  EXPECT_EQ(b->reverseCompareByModificationDate(*c), NSOrderedSame);
  EXPECT_EQ(none->reverseCompareByModificationDate(*a), NSOrderedDescending);
  EXPECT_EQ(none->reverseCompareByCreationDate(*a), NSOrderedDescending);
  EXPECT_EQ(a->reverseCompareByCreationDate(*none), NSOrderedAscending);
  EXPECT_EQ(a->reverseCompareByCreationDate(*a), NSOrderedSame);
}

TEST(DDLogFileInfo, ADescriptionHasAllKeys) {
  const TemporaryFolder folder;
  const NSString text = DDLogFileInfo::logFileWithPath(folder.write("log-ABC123.txt", "12345"))->description();
  for (const char* key : {"filePath", "fileName", "fileAttributes", "creationDate", "modificationDate", "fileSize",
                          "age", "isArchived"}) {
    EXPECT_TRUE(text.containsString(key)) << key << " in " << text;
  }
}

TEST(DDLogFileInfo, ADescriptionShowsWhatIsMissingAsTheEmptyText) {
  const NSString text = DDLogFileInfo::logFileWithPath("/there/is/no/log-ABC123.txt")->description();
  for (const char* line : {"fileAttributes = \"\";", "creationDate = \"\";", "modificationDate = \"\";"}) {
    EXPECT_TRUE(text.containsString(line)) << line << " in " << text;
  }
  EXPECT_TRUE(text.containsString("fileName = \"log-ABC123.txt\";")) << text;
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/platform/kernel/FileStatus.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>

#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "tests/support/PrivateMount.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

namespace fs = std::filesystem;
using kernel::FileKind;
using kernel::FileStatus;
using norvik::test::TemporaryFolder;

constexpr std::int64_t second = 1'000'000'000;

FileStatus statusOf(const std::string& path, kernel::Links links = kernel::Links::follow) {
  FileStatus status;
  EXPECT_EQ(kernel::readFileStatus(path, status, links), 0) << path;
  return status;
}

// Sets the times of last access and last write, which also sets the time of last change to now.
void setModification(const std::string& path, std::int64_t seconds) {
  const timespec times[2] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST(FileStatus, HeaderExample) {
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv", "1,234.50\n");
  FileStatus status;
  ASSERT_EQ(kernel::readFileStatus(path, status), 0);
  EXPECT_LT(std::abs(status.creation - kernel::wallNanoseconds()), 60 * second);
}

TEST(FileStatus, TellsSizePermissionsOwnerAndLinks) {
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv", "1,234.50\n");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  fs::create_hard_link(path, folder.path("second.csv"));
  const FileStatus status = statusOf(path);
  EXPECT_EQ(status.size, 9U);
  EXPECT_EQ(status.permissions, 0640U);
  EXPECT_EQ(status.owner, geteuid());
  EXPECT_EQ(status.links, 2U);
  EXPECT_EQ(status.inode, statusOf(folder.path("second.csv")).inode);
  EXPECT_EQ(status.device, statusOf(folder.path("second.csv")).device);
}

TEST(FileStatus, TellsKindsApart) {
  const TemporaryFolder folder;
  const std::string file = folder.write("file");
  fs::create_symlink(file, folder.path("link"));
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(statusOf(file).kind, FileKind::regular);
  EXPECT_EQ(statusOf(folder.path()).kind, FileKind::directory);
  EXPECT_EQ(statusOf(folder.path("pipe")).kind, FileKind::pipe);
  EXPECT_EQ(statusOf("/dev/null").kind, FileKind::characterDevice);
  EXPECT_EQ(statusOf(folder.path("link")).kind, FileKind::regular);
  EXPECT_EQ(statusOf(folder.path("link"), kernel::Links::stay).kind, FileKind::symbolicLink);
}

TEST(FileStatus, AnAbsentFileIsAnErrorAndLeavesTheAnswerAlone) {
  FileStatus status;
  status.size = 77;
  EXPECT_EQ(kernel::readFileStatus("/nowhere/at all", status), ENOENT);
  EXPECT_EQ(status.size, 77U);
}

TEST(FileStatus, AnOpenFileIsTheSameAsItsPath) {
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv", "12");
  kernel::FileDescriptor file;
  ASSERT_EQ(kernel::openFile(path, {.read = true}, file), 0);
  FileStatus status;
  ASSERT_EQ(kernel::readFileStatus(file.get(), status), 0);
  EXPECT_EQ(status.inode, statusOf(path).inode);
  EXPECT_EQ(status.size, 2U);
  EXPECT_EQ(kernel::readFileStatus(-1, status), EBADF);
}

TEST(FileStatus, PermissionsAndTheTimeOfModificationCanBeSet) {
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv");
  EXPECT_EQ(kernel::setPermissions(path, 0604), 0);
  EXPECT_EQ(statusOf(path).permissions, 0604U);
  for (const std::int64_t time : {1'000'000'000 * second + 123'456'789, std::int64_t{0}, -5 * second + 7}) {
    EXPECT_EQ(kernel::setModificationTime(path, time), 0);
    EXPECT_EQ(statusOf(path).modification, time);
  }
  EXPECT_EQ(kernel::setPermissions(folder.path("absent"), 0600), ENOENT);
  EXPECT_EQ(kernel::setModificationTime(folder.path("absent"), 0), ENOENT);
}

// The source of the creation time, which later operations must not change.
enum class Source { birthTime, keptByHand, keptByHandWithoutAttributes, keptOnRamfs };

class FileCreation : public ::testing::TestWithParam<Source> {
 protected:
  void SetUp() override {
    if (GetParam() == Source::keptOnRamfs) {
      ramfs_ = std::make_unique<norvik::test::PrivateMount>("ramfs");
      if (!ramfs_->mounted()) GTEST_SKIP() << "this user may not mount; the same tests run with birth times hidden";
    } else if (GetParam() == Source::birthTime) {
      if (!statusOf(folder_.path()).hasBirthTime) GTEST_SKIP() << "the temporary folder has no birth times";
    } else {
      hidden_.emplace();
    }
    if (GetParam() == Source::keptByHandWithoutAttributes) off_.emplace();
  }

  std::string newFile() const {
    const std::string path = (ramfs_ ? ramfs_->folder() : folder_).write("log.txt", "first line\n");
    EXPECT_EQ(kernel::noteCreation(path), 0);
    return path;
  }

 private:
  TemporaryFolder folder_;
  std::unique_ptr<norvik::test::PrivateMount> ramfs_;
  std::optional<kernel::WithoutBirthTimes> hidden_;
  std::optional<kernel::WithoutExtendedAttributes> off_;
};

std::string nameOfSource(const ::testing::TestParamInfo<Source>& row) {
  const char* const names[] = {"BirthTime", "KeptByHand", "KeptByHandWithoutAttributes", "KeptOnRamfs"};
  return names[static_cast<int>(row.param)];
}

INSTANTIATE_TEST_SUITE_P(From, FileCreation,
                         ::testing::Values(Source::birthTime, Source::keptByHand, Source::keptByHandWithoutAttributes,
                                           Source::keptOnRamfs),
                         nameOfSource);

TEST_P(FileCreation, IsTheTimeTheFileWasMade) {
  const std::int64_t before = kernel::wallNanoseconds();
  const std::string path = newFile();
  // The file system's clock ticks a few hundred times a second.
  EXPECT_GE(statusOf(path).creation, before - second / 50);
  EXPECT_LE(statusOf(path).creation, kernel::wallNanoseconds());
}

TEST_P(FileCreation, IsNotMovedByOtherTimes) {
  const std::string path = newFile();
  const std::int64_t made = statusOf(path).creation;
  setModification(path, 1'000'000'000);
  EXPECT_EQ(statusOf(path).creation, made);
  EXPECT_EQ(statusOf(path).modification, 1'000'000'000 * second);
  setModification(path, 4'000'000'000);
  EXPECT_EQ(statusOf(path).creation, made);
}

TEST_P(FileCreation, IsNotMovedByAttributesAndRenaming) {
  const std::string path = newFile(), archived = path + ".old";
  const std::int64_t made = statusOf(path).creation;
  ASSERT_EQ(kernel::setAttribute(path, "archived", ""), 0);
  ASSERT_EQ(kernel::renameWithAttributes(path, archived), 0);
  EXPECT_EQ(statusOf(archived).creation, made);
}

TEST_P(FileCreation, IsNotListedAsAnAttribute) {
  std::vector<std::string> names;
  ASSERT_EQ(kernel::listAttributes(newFile(), names), 0);
  EXPECT_EQ(names, std::vector<std::string>());
}

TEST(FileCreationFallback, WithoutBirthTimeAndNoteItIsTheEarlierOfTheLastWriteAndTheLastChange) {
  const kernel::WithoutBirthTimes hidden;
  const TemporaryFolder folder;
  const std::string path = folder.write("log.txt");
  setModification(path, 1'000'000'000);  // before the last change, which is now
  EXPECT_FALSE(statusOf(path).hasBirthTime);
  EXPECT_EQ(statusOf(path).creation, 1'000'000'000 * second);
  setModification(path, 4'000'000'000);  // after it
  EXPECT_LT(std::abs(statusOf(path).creation - kernel::wallNanoseconds()), 60 * second);
}

TEST(FileCreationFallback, NothingIsNotedThroughALink) {
  const test::TemporaryFolder folder;
  const kernel::WithoutBirthTimes hidden;
  const std::string path = folder.write("file"), link = folder.path("link");
  ASSERT_EQ(symlink(path.c_str(), link.c_str()), 0);
  EXPECT_EQ(kernel::noteCreation(link), EPERM);
  EXPECT_FALSE(kernel::hasAttribute(path, "norvik.created"));
}

TEST(FileCreationFallback, ADamagedNoteCountsAsNone) {
  const kernel::WithoutBirthTimes hidden;
  const TemporaryFolder folder;
  const std::string path = folder.write("log.txt");
  setModification(path, 1'000'000'000);
  for (const char* damaged : {"", "soon", "12 ", "99999999999999999999"}) {
    ASSERT_EQ(kernel::setAttribute(path, "norvik.created", damaged), 0);
    EXPECT_EQ(statusOf(path).creation, 1'000'000'000 * second) << damaged;
  }
}

TEST(FileStatus, PermissionsAreSetOfAnOpenFileAndOfAFolderButNotThroughALink) {
  const TemporaryFolder folder;
  kernel::FileDescriptor file;
  ASSERT_EQ(kernel::openFile(folder.write("a"), {.write = true}, file), 0);
  EXPECT_EQ(kernel::setPermissions(file.get(), 0640), 0);
  EXPECT_EQ(statusOf(folder.path("a")).permissions, 0640U);
  EXPECT_EQ(kernel::setPermissions(-1, 0640), EBADF);
  std::filesystem::create_directory(folder.path("inner"));
  std::filesystem::create_directory_symlink("inner", folder.path("link"));
  EXPECT_EQ(kernel::setFolderPermissions(folder.path("inner"), 0710), 0);
  EXPECT_EQ(kernel::setFolderPermissions(folder.path("link"), 0777), ENOTDIR);
  EXPECT_EQ(kernel::setFolderPermissions(folder.path("a"), 0777), ENOTDIR);
  EXPECT_EQ(statusOf(folder.path("inner")).permissions, 0710U);
  EXPECT_EQ(statusOf(folder.path("a")).permissions, 0640U);
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/platform/kernel/ExtendedAttributes.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <optional>

#include "tests/support/InChild.h"
#include "tests/support/PrivateMount.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

namespace fs = std::filesystem;
using kernel::attributeAbsent;
using Names = std::vector<std::string>;

// Where attributes are stored: as the file system of the temporary folder does it, in side files because extended
// attributes are switched off, or in side files because the file system (ramfs) has none.
enum class Keeping { asTheFileSystemDoes, switchedOff, onRamfs };

class ExtendedAttributes : public testing::TestWithParam<Keeping> {
 protected:
  void SetUp() override {
    if (GetParam() == Keeping::switchedOff) off_.emplace();
    if (GetParam() == Keeping::onRamfs) {
      ramfs_ = std::make_unique<norvik::test::PrivateMount>("ramfs");
      if (!ramfs_->mounted())
        GTEST_SKIP() << "this user may not mount; the same tests run with attributes switched off";
    }
  }

  const norvik::test::TemporaryFolder& folder() const { return ramfs_ ? ramfs_->folder() : folder_; }
  std::string file(const std::string& name = "pay.csv") const { return folder().write(name, "1,234.50\n"); }

  static std::string valueOf(const std::string& path, std::string_view name) {
    std::string value = "untouched";
    const int error = kernel::getAttribute(path, name, value);
    return error == 0 ? value : "error " + std::to_string(error);
  }
  static Names namesOf(const std::string& path) {
    Names names;
    EXPECT_EQ(kernel::listAttributes(path, names), 0);
    return names;
  }

 private:
  norvik::test::TemporaryFolder folder_;
  std::unique_ptr<norvik::test::PrivateMount> ramfs_;
  std::optional<kernel::WithoutExtendedAttributes> off_;
};

std::string nameOf(const ::testing::TestParamInfo<Keeping>& row) {
  const char* const names[] = {"AsTheFileSystemDoes", "SwitchedOff", "OnRamfs"};
  return names[static_cast<int>(row.param)];
}

INSTANTIATE_TEST_SUITE_P(Kept, ExtendedAttributes,
                         testing::Values(Keeping::asTheFileSystemDoes, Keeping::switchedOff, Keeping::onRamfs), nameOf);

TEST_P(ExtendedAttributes, HeaderExample) {
  const std::string path = file(), newPath = folder().path("paid.csv");
  std::string value;
  EXPECT_EQ(kernel::setAttribute(path, "payroll.locked", ""), 0);
  EXPECT_EQ(kernel::getAttribute(path, "payroll.locked", value), 0);
  EXPECT_EQ(kernel::getAttribute(path, "payroll.sealed", value), attributeAbsent);
  EXPECT_EQ(kernel::renameWithAttributes(path, newPath), 0);
  EXPECT_TRUE(kernel::hasAttribute(newPath, "payroll.locked"));
  EXPECT_FALSE(fs::exists(path));
}

TEST_P(ExtendedAttributes, AValueComesBackAsItWasSet) {
  const std::string path = file();
  const std::string bytes("\0line\nfeed\xFF", 11);
  EXPECT_EQ(kernel::setAttribute(path, "payroll.note", bytes), 0);
  EXPECT_EQ(valueOf(path, "payroll.note"), bytes);
}

TEST_P(ExtendedAttributes, AFileThatKeepsThemIsTheUsersAlone) {
  const std::string path = file();
  const auto before = umask(0);
  EXPECT_EQ(kernel::setAttribute(path, "payroll.note", "short"), 0);
  umask(before);
  for (const auto& entry : fs::directory_iterator(folder().path())) {
    if (entry.path() == path) continue;
    EXPECT_EQ(entry.status().permissions(), fs::perms::owner_read | fs::perms::owner_write) << entry.path();
  }
}

TEST_P(ExtendedAttributes, AnEmptyValueIsAValue) {
  const std::string path = file();
  EXPECT_EQ(kernel::setAttribute(path, "payroll.locked", ""), 0);
  EXPECT_EQ(valueOf(path, "payroll.locked"), "");
  EXPECT_TRUE(kernel::hasAttribute(path, "payroll.locked"));
}

TEST_P(ExtendedAttributes, SettingAgainReplacesTheValue) {
  const std::string path = file();
  EXPECT_EQ(kernel::setAttribute(path, "payroll.note", "a long note"), 0);
  EXPECT_EQ(kernel::setAttribute(path, "payroll.note", "short"), 0);
  EXPECT_EQ(valueOf(path, "payroll.note"), "short");
  EXPECT_EQ(namesOf(path), (Names{"payroll.note"}));
}

TEST_P(ExtendedAttributes, AnAbsentAttributeIsError93AndLeavesTheValueAlone) {
  const std::string path = file();
  std::string value = "untouched";
  EXPECT_EQ(kernel::getAttribute(path, "payroll.locked", value), 93);
  EXPECT_EQ(value, "untouched");
  EXPECT_EQ(kernel::removeAttribute(path, "payroll.locked"), 93);
  EXPECT_FALSE(kernel::hasAttribute(path, "payroll.locked"));
}

TEST_P(ExtendedAttributes, AnAbsentFileIsAnErrorOfItsOwn) {
  const std::string path = folder().path("nobody.csv");
  std::string value;
  Names names;
  EXPECT_EQ(kernel::getAttribute(path, "payroll.locked", value), ENOENT);
  EXPECT_EQ(kernel::setAttribute(path, "payroll.locked", ""), ENOENT);
  EXPECT_EQ(kernel::removeAttribute(path, "payroll.locked"), ENOENT);
  EXPECT_EQ(kernel::listAttributes(path, names), ENOENT);
  EXPECT_EQ(kernel::renameWithAttributes(path, folder().path("x")), ENOENT);
  EXPECT_EQ(kernel::removeWithAttributes(path), ENOENT);
}

TEST_P(ExtendedAttributes, APathWithAZeroByteNamesNoFile) {
  const std::string path = file(), longer = path + std::string("\0b", 2);
  EXPECT_EQ(kernel::setAttribute(longer, "payroll.locked", ""), ENOENT);
  EXPECT_FALSE(kernel::hasAttribute(path, "payroll.locked"));
  EXPECT_EQ(kernel::setAttribute(path, "payroll.locked", ""), 0);
  EXPECT_FALSE(kernel::hasAttribute(longer, "payroll.locked"));
  EXPECT_EQ(kernel::removeAttribute(longer, "payroll.locked"), ENOENT);
  EXPECT_TRUE(kernel::hasAttribute(path, "payroll.locked"));
}

TEST_P(ExtendedAttributes, ARemovedAttributeIsGone) {
  const std::string path = file();
  ASSERT_EQ(kernel::setAttribute(path, "payroll.locked", ""), 0);
  EXPECT_EQ(kernel::removeAttribute(path, "payroll.locked"), 0);
  EXPECT_FALSE(kernel::hasAttribute(path, "payroll.locked"));
  EXPECT_EQ(namesOf(path), Names());
}

TEST_P(ExtendedAttributes, NamesAreListedInAlphabeticalOrder) {
  const std::string path = file();
  for (const char* name : {"c", "payroll.locked", "A", "user.b"})
    ASSERT_EQ(kernel::setAttribute(path, name, "v"), 0) << name;
  EXPECT_EQ(namesOf(path), (Names{"A", "c", "payroll.locked", "user.b"}));
}

TEST_P(ExtendedAttributes, UnusualNamesStayApart) {
  const std::string path = file(), other = file("pay.csv.attr-a");
  const Names names = {"100%", "a", "a.attr-b", "a/b", "a%2Fb", "norvic", "\u20AC"};
  for (const std::string& name : names) ASSERT_EQ(kernel::setAttribute(path, name, "of " + name), 0) << name;
  ASSERT_EQ(kernel::setAttribute(other, "b", "of the other file"), 0);
  for (const std::string& name : names) EXPECT_EQ(valueOf(path, name), "of " + name);
  EXPECT_EQ(valueOf(other, "b"), "of the other file");
  EXPECT_EQ(namesOf(path), (Names{"100%", "a", "a%2Fb", "a.attr-b", "a/b", "norvic", "\u20AC"}));
  EXPECT_EQ(namesOf(other), (Names{"b"}));
}

TEST_P(ExtendedAttributes, AttributesLeaveTheContentAlone) {
  const std::string path = file();
  ASSERT_EQ(kernel::setAttribute(path, "payroll.locked", "yes"), 0);
  EXPECT_EQ(folder().read(path), "1,234.50\n");
}

TEST_P(ExtendedAttributes, ALinkLeadsToTheFilesAttributes) {
  const std::string path = file(), link = folder().path("link.csv");
  fs::create_symlink(path, link);
  ASSERT_EQ(kernel::setAttribute(link, "payroll.locked", "through the link"), 0);
  EXPECT_EQ(valueOf(path, "payroll.locked"), "through the link");
}

TEST_P(ExtendedAttributes, ALinkThatIsNotFollowedHasNoneAndIsGivenNone) {
  const std::string path = file(), link = folder().path("link.csv");
  ASSERT_EQ(symlink(path.c_str(), link.c_str()), 0);
  ASSERT_EQ(kernel::setAttribute(path, "payroll.locked", ""), 0);
  std::string value = "untouched";
  EXPECT_EQ(kernel::getAttribute(link, "payroll.locked", value, kernel::Links::stay), attributeAbsent);
  EXPECT_EQ(value, "untouched");
  EXPECT_FALSE(kernel::hasAttribute(link, "payroll.locked", kernel::Links::stay));
  EXPECT_EQ(kernel::setAttribute(link, "payroll.sealed", "", kernel::Links::stay), EPERM);
  EXPECT_EQ(kernel::removeAttribute(link, "payroll.locked", kernel::Links::stay), EPERM);
  EXPECT_EQ(namesOf(path), Names({"payroll.locked"}));
  EXPECT_FALSE(fs::exists(folder().path(".link.csv.attr-payroll.sealed")));
}

TEST_P(ExtendedAttributes, AFileIsGivenThemWhetherLinksAreFollowedOrNot) {
  const std::string path = file();
  ASSERT_EQ(kernel::setAttribute(path, "payroll.locked", "yes", kernel::Links::stay), 0);
  EXPECT_EQ(valueOf(path, "payroll.locked"), "yes");
  EXPECT_EQ(kernel::removeAttribute(path, "payroll.locked", kernel::Links::stay), 0);
  EXPECT_EQ(kernel::removeAttribute(path, "payroll.locked", kernel::Links::stay), attributeAbsent);
  EXPECT_EQ(kernel::setAttribute(folder().path("nowhere"), "payroll.locked", "", kernel::Links::stay), ENOENT);
}

TEST_P(ExtendedAttributes, AFolderHasAttributesToo) {
  const std::string path = folder().path("April");
  fs::create_directory(path);
  ASSERT_EQ(kernel::setAttribute(path + "/", "payroll.locked", "whole month"), 0);
  EXPECT_EQ(valueOf(path, "payroll.locked"), "whole month");
  ASSERT_EQ(kernel::renameWithAttributes(path, folder().path("May")), 0);
  EXPECT_EQ(valueOf(folder().path("May"), "payroll.locked"), "whole month");
}

TEST_P(ExtendedAttributes, AReplacedFileTakesItsAttributesWithIt) {
  const std::string path = file("new.csv"), old = file("old.csv");
  ASSERT_EQ(kernel::setAttribute(path, "payroll.note", "of the new one"), 0);
  ASSERT_EQ(kernel::setAttribute(old, "payroll.locked", "of the old one"), 0);
  ASSERT_EQ(kernel::renameWithAttributes(path, old), 0);
  EXPECT_EQ(namesOf(old), (Names{"payroll.note"}));
}

TEST_P(ExtendedAttributes, AFileThatMustNotBeReplacedStays) {
  const std::string path = file("new.csv"), old = folder().write("old.csv", "old");
  ASSERT_EQ(kernel::setAttribute(path, "payroll.note", "of the new one"), 0);
  EXPECT_EQ(kernel::renameWithAttributes(path, old, kernel::Replace::no), EEXIST);
  EXPECT_EQ(folder().read(old), "old");
  EXPECT_EQ(namesOf(path), (Names{"payroll.note"}));
  EXPECT_EQ(namesOf(old), Names());
  EXPECT_EQ(kernel::renameWithAttributes(path, folder().path("free.csv"), kernel::Replace::no), 0);
  EXPECT_EQ(valueOf(folder().path("free.csv"), "payroll.note"), "of the new one");
}

TEST_P(ExtendedAttributes, AFileRenamedToItsOwnNameKeepsItsAttributes) {
  const std::string path = file();
  ASSERT_EQ(kernel::setAttribute(path, "payroll.locked", "still"), 0);
  ASSERT_EQ(kernel::renameWithAttributes(path, path), 0);
  EXPECT_EQ(valueOf(path, "payroll.locked"), "still");
}

TEST_P(ExtendedAttributes, ARemovedFileLeavesNothingBehind) {
  const std::string path = file();
  ASSERT_EQ(kernel::setAttribute(path, "payroll.locked", ""), 0);
  ASSERT_EQ(kernel::setAttribute(path, "payroll.note", "x"), 0);
  ASSERT_EQ(kernel::removeWithAttributes(path), 0);
  EXPECT_TRUE(fs::is_empty(folder().path()));
  file();
  EXPECT_EQ(namesOf(path), Names());
}

TEST_P(ExtendedAttributes, ANameThatIsTooLongIsRefused) {
  const std::string path = file();
  EXPECT_NE(kernel::setAttribute(path, std::string(300, 'n'), ""), 0);
  EXPECT_EQ(namesOf(path), Names());
}

TEST(ExtendedAttributesStorage, AnAttributeIsTheKernelsInTheUserNamespace) {
  const norvik::test::TemporaryFolder folder;
  const std::string path = folder.write("pay.csv");
  if (setxattr(path.c_str(), "user.norvik-test", "", 0, 0) != 0)
    GTEST_SKIP() << "the temporary folder has no attributes";
  ASSERT_EQ(kernel::setAttribute(path, "payroll.locked", "yes"), 0);
  char value[8] = {};
  EXPECT_EQ(getxattr(path.c_str(), "user.payroll.locked", value, sizeof value), 3);
  EXPECT_STREQ(value, "yes");
}

TEST(ExtendedAttributesStorage, AnAttributeIsASideFileWhereThereAreNone) {
  const kernel::WithoutExtendedAttributes off;
  const norvik::test::TemporaryFolder folder;
  const std::string path = folder.write("pay.csv");
  ASSERT_EQ(kernel::setAttribute(path, "payroll.locked", "yes"), 0);
  EXPECT_EQ(folder.read(folder.path(".pay.csv.attr-payroll.locked")), "yes");
  ASSERT_EQ(kernel::setAttribute(path, "a/b.attr-c%", ""), 0);
  EXPECT_TRUE(fs::exists(folder.path(".pay.csv.attr-a%2Fb.attr%2Dc%25")));
}

TEST(ExtendedAttributesStorage, SideFilesAreLeftOutOfAListOnlyBesideTheirFile) {
  const norvik::test::TemporaryFolder folder;
  const Names all = {".pay.csv.attr-a", ".gone.csv.attr-a", "pay.csv", ".hidden", ".attr-a"};
  Names names = all;
  {
    const kernel::WithoutExtendedAttributes off;
    kernel::leaveOutSideFiles(folder.path(), names);
    EXPECT_EQ(names, (Names{".gone.csv.attr-a", "pay.csv", ".hidden", ".attr-a"}));
  }
  if (setxattr(folder.path().c_str(), "user.norvik-test", "", 0, 0) != 0) return;
  names = all;
  kernel::leaveOutSideFiles(folder.path(), names);
  EXPECT_EQ(names, all) << "where attributes are the file system's, such a file is one like any other";
}

TEST(ExtendedAttributesStorage, APipeOrALinkInThePlaceOfASideFileIsNotOpened) {
  RUN_IN_CHILD({
    alarm(60);  // ends the child if a read waits for a writer
    const kernel::WithoutExtendedAttributes off;
    const norvik::test::TemporaryFolder folder;
    const std::string path = folder.write("pay.csv"), secret = folder.write("secret", "secret");
    ASSERT_EQ(mkfifo(folder.path(".pay.csv.attr-pipe").c_str(), 0600), 0);
    ASSERT_EQ(symlink(secret.c_str(), folder.path(".pay.csv.attr-link").c_str()), 0);
    std::string value;
    EXPECT_EQ(kernel::getAttribute(path, "pipe", value), ENXIO);
    EXPECT_EQ(kernel::getAttribute(path, "link", value), ELOOP);
    EXPECT_EQ(value, "");
    EXPECT_EQ(kernel::setAttribute(path, "link", "own"), 0);
    EXPECT_EQ(kernel::setAttribute(path, "pipe", "own"), 0);
    EXPECT_EQ(folder.read(secret), "secret");
    EXPECT_EQ(kernel::getAttribute(path, "pipe", value), 0);
    EXPECT_EQ(value, "own");
  });
}

TEST(ExtendedAttributesStorage, WhatAKilledProcessLeftUnfinishedIsNoObstacle) {
  RUN_IN_CHILD({
    const kernel::WithoutExtendedAttributes off;
    const norvik::test::TemporaryFolder folder;
    const std::string path = folder.write("pay.csv");
    for (int i = 0; i < 10; ++i) folder.write(".attrtmp-" + std::to_string(getpid()) + "-" + std::to_string(i), "left");
    EXPECT_EQ(kernel::setAttribute(path, "payroll.locked", ""), 0);
    EXPECT_TRUE(kernel::hasAttribute(path, "payroll.locked"));
    EXPECT_EQ(folder.read(folder.path(".attrtmp-" + std::to_string(getpid()) + "-0")), "left");
  });
}

TEST(ExtendedAttributesStorage, ARelativePathHasItsSideFileInTheSameFolder) {
  const kernel::WithoutExtendedAttributes off;
  const norvik::test::TemporaryFolder folder;
  folder.write("pay.csv");
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  EXPECT_EQ(kernel::setAttribute("pay.csv", "payroll.locked", "yes"), 0);
  EXPECT_EQ(kernel::renameWithAttributes("pay.csv", "paid.csv"), 0);
  EXPECT_TRUE(kernel::hasAttribute("paid.csv", "payroll.locked"));
  fs::current_path(before);
  EXPECT_TRUE(fs::exists(folder.path(".paid.csv.attr-payroll.locked")));
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/Categories/NSUserDefaults+Norvik.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "NorvikCore/constants/PreferenceKeys.h"
#include "NorvikCore/platform/archives/NSArchiver.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/InChild.h"

namespace norvik {
namespace {

using norvik::test::DefaultsFolder;
using norvik::test::StandardDefaults;
using norvik::test::TemporaryFolder;

const NSString key = "NSNavLastRootDirectory";

NSUserDefaults& defaults() { return NSUserDefaults::standardUserDefaults(); }

/// The home folder is new, and the standard user defaults are empty. For tests in a process of their own.
class Home {
 public:
  Home() { setenv("HOME", folder.path().c_str(), 1); }
  TemporaryFolder folder;

  /// Creates a folder in the home folder and returns its path.
  [[nodiscard]] NSString make(const char* name) const {
    std::filesystem::create_directory(folder.path(name));
    return folder.path(name);
  }

 private:
  StandardDefaults standard_;
};

TEST(NSUserDefaultsNorvik, HeaderExample) {
  RUN_IN_CHILD({
    const Home home;
    setColor(defaults(), *NSColor::redColor(), NKAppMessageColor);
    EXPECT_TRUE(colorForKey(defaults(), NKAppMessageColor)->isEqual(*NSColor::redColor()));
    const NSString payroll = home.make("Payroll");
    setNavLastRootDirectory("~/Payroll");
    EXPECT_EQ(navLastRootDirectory(), payroll);
  });
}

TEST(NSUserDefaultsNorvik, AColourComesBackFromTheDiskExactlyAsItWas) {
  const DefaultsFolder folder;
  const double third = 1.0 / 3.0, tiny = std::nextafter(0.0, 1.0), nearlyOne = std::nextafter(1.0, 0.0);
  setColor(*folder.open(), *NSColor::colorWithRed(third, tiny, nearlyOne, 0.1), NKAppTitleColor);
  const Ref<NSColor> back = colorForKey(*folder.open(), NKAppTitleColor);
  EXPECT_EQ(back->redComponent(), third);
  EXPECT_EQ(back->greenComponent(), tiny);
  EXPECT_EQ(back->blueComponent(), nearlyOne);
  EXPECT_EQ(back->alphaComponent(), 0.1);
}

TEST(NSUserDefaultsNorvik, AFontComesBackFromTheDiskExactlyAsItWas) {
  const DefaultsFolder folder;
  setFont(*folder.open(), *make<NSFont>("Gill Sans \u00E9", 11.1, true, true), NKTextHeading1Font);
  const Ref<NSFont> back = fontForKey(*folder.open(), NKTextHeading1Font);
  EXPECT_EQ(back->familyName(), "Gill Sans \u00E9");
  EXPECT_EQ(back->pointSize(), 11.1);
  EXPECT_TRUE(back->isBold());
  EXPECT_TRUE(back->isItalic());
}

TEST(NSUserDefaultsNorvik, WithoutDataThereIsNoColourAndNoFont) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> empty = folder.open();
  EXPECT_FALSE(colorForKey(*empty, NKAppTitleColor));
  EXPECT_FALSE(fontForKey(*empty, NKTextHeading1Font));
  empty->setObject("red", NKAppTitleColor);
  EXPECT_FALSE(colorForKey(*empty, NKAppTitleColor));
}

TEST(NSUserDefaultsNorvik, WhatIsStoredIsTheArchiversData) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> stored = folder.open();
  setColor(*stored, *NSColor::redColor(), NKAppTitleColor);
  EXPECT_EQ(stored->objectForKey(NKAppTitleColor), Value(NSArchiver::archivedDataWithRootObject(NSColor::redColor())));
}

TEST(NSUserDefaultsNorvik, DataThatHoldNoColourOrFontRaise) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> stored = folder.open();
  const Ref<NSData> colour = NSArchiver::archivedDataWithRootObject(NSColor::redColor());
  const Ref<NSData> font = NSArchiver::archivedDataWithRootObject(NSFont::systemFontOfSize(12));
  const Ref<NSData> neither[] = {
      NSData::data(), NSData::dataWithText("red"), colour->subdataWithRange({0, colour->length() - 1}),
      NSArchiver::archivedDataWithRootObject("red"), NSArchiver::archivedDataWithRootObject(Value())};
  for (const Ref<NSData>& data : neither) {
    stored->setObject(data, "key");
    EXPECT_RAISES((void)colorForKey(*stored, "key"), "NSInvalidUnarchiveOperationException") << data->description();
    EXPECT_RAISES((void)fontForKey(*stored, "key"), "NSInvalidUnarchiveOperationException") << data->description();
  }
  stored->setObject(colour, "key");
  EXPECT_RAISES((void)fontForKey(*stored, "key"), "NSInvalidUnarchiveOperationException");
  stored->setObject(font, "key");
  EXPECT_RAISES((void)colorForKey(*stored, "key"), "NSInvalidUnarchiveOperationException");
}

TEST(NSUserDefaultsNorvik, WithoutAStoredFolderTheLastOneIsTheHomeFolder) {
  RUN_IN_CHILD({
    const Home home;
    EXPECT_EQ(navLastRootDirectory(), NSString(home.folder.path()));
    EXPECT_EQ(navLastRootURL()->absoluteString(), NSString("file://" + home.folder.path() + "/"));
  });
}

TEST(NSUserDefaultsNorvik, AStoredFolderIsReadWithItsTildeExpanded) {
  RUN_IN_CHILD({
    const Home home;
    const NSString pay = home.make("Pay");
    defaults().setObject("~/Pay", key);
    EXPECT_EQ(navLastRootDirectory(), pay);
    EXPECT_EQ(navLastRootURL()->absoluteString(), "file://" + pay + "/");
    defaults().setObject(pay, key);
    EXPECT_EQ(navLastRootDirectory(), pay);
  });
}

TEST(NSUserDefaultsNorvik, WhatIsNoFolderFallsBackToTheHomeFolder) {
  RUN_IN_CHILD({
    const Home home;
    const Value rows[] = {home.folder.path("gone"),      home.folder.write("file"), "~/gone", "~no such user", "",
                          NSArray::arrayWithObjects("/")};
    for (const Value& row : rows) {
      defaults().setObject(row, key);
      EXPECT_EQ(navLastRootDirectory(), NSString(home.folder.path())) << row;
    }
  });
}

TEST(NSUserDefaultsNorvik, AFolderIsStoredWithTheHomeFolderAbbreviated) {
  RUN_IN_CHILD({
    const Home home;
    const NSString pay = home.make("Pay");
    const struct {
      NSString path, stored;
    } rows[] = {{pay, "~/Pay"}, {"~/Pay", "~/Pay"}, {"~/Pay/", "~/Pay"}, {"~", "~"}, {"/usr", "/usr"}, {"/", "/"}};
    for (const auto& row : rows) {
      setNavLastRootDirectory(row.path);
      EXPECT_EQ(defaults().objectForKey(key), Value(row.stored)) << row.path;
    }
  });
}

TEST(NSUserDefaultsNorvik, APathToAFileOrToNothingLeavesWhatIsStored) {
  RUN_IN_CHILD({
    const Home home;
    (void)home.make("Pay");
    setNavLastRootDirectory("~/Pay");
    (void)home.folder.write("file");
    for (const char* path : {"~/file", "~/gone", "", "~no such user/Pay"}) {
      setNavLastRootDirectory(path);
      EXPECT_EQ(defaults().objectForKey(key), Value("~/Pay")) << path;
    }
  });
}

TEST(NSUserDefaultsNorvik, AMovedFolderIsFollowedWhereItIsTheOneRemembered) {
  RUN_IN_CHILD({
    const Home home;
    for (const char* name : {"Old", "New", "Other"}) (void)home.make(name);
    setNavLastRootDirectory("~/Old");
    setNavLastRootDirectoryIfMatches("~/Other", "~/New");
    EXPECT_EQ(defaults().objectForKey(key), Value("~/Old"));
    setNavLastRootDirectoryIfMatches("~/Old", home.folder.path("New"));
    EXPECT_EQ(defaults().objectForKey(key), Value("~/New"));
    setNavLastRootDirectoryIfMatches(home.folder.path("New"), "~/Old/");
    EXPECT_EQ(defaults().objectForKey(key), Value("~/Old"));
  });
}

TEST(NSUserDefaultsNorvik, AMovedFolderIsNotFollowedToWhatIsNoFolder) {
  RUN_IN_CHILD({
    const Home home;
    (void)home.make("Old");
    setNavLastRootDirectory("~/Old");
    setNavLastRootDirectoryIfMatches("~/Old", "~/New");
    EXPECT_EQ(defaults().objectForKey(key), Value("~/Old"));
  });
}

TEST(NSUserDefaultsNorvik, AFolderThatIsGoneIsRememberedNoMore) {
  RUN_IN_CHILD({
    const Home home;
    (void)home.make("Old");
    setNavLastRootDirectory("~/Old");
    std::filesystem::rename(home.folder.path("Old"), home.folder.path("New"));
    setNavLastRootDirectoryIfMatches("~/Old", "~/New");
    EXPECT_EQ(navLastRootDirectory(), NSString(home.folder.path()));
    setNavLastRootDirectoryIfMatches("~", "~/New");
    EXPECT_EQ(navLastRootDirectory(), NSString(home.folder.path("New")));
  });
}

}  // namespace
}  // namespace norvik

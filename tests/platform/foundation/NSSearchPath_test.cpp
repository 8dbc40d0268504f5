#include "NorvikCore/platform/foundation/NSSearchPath.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace norvik {
namespace {

// HOME is /home/pat and no XDG variable is set. Each test runs in a process of its own.
class NSSearchPath : public ::testing::Test {
 protected:
  NSSearchPath() : home_(std::getenv("HOME") ? std::getenv("HOME") : "") {
    setenv("HOME", "/home/pat", 1);
    for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) unsetenv(name);
  }
  ~NSSearchPath() override { setenv("HOME", home_.c_str(), 1); }

  static NSString paths(NSSearchPathDirectory directory, NSSearchPathDomainMask mask, bool expand = true) {
    return NSSearchPathForDirectoriesInDomains(directory, mask, expand)->componentsJoinedByString(" ");
  }

 private:
  std::string home_;
};

TEST_F(NSSearchPath, HeaderExample) {
  EXPECT_EQ(NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, true)->firstObject(),
            Value("/home/pat/.local/share"));
}

TEST_F(NSSearchPath, TheUsersFoldersAreThoseOfTheConventions) {
  EXPECT_EQ(paths(NSApplicationSupportDirectory, NSUserDomainMask), "/home/pat/.local/share");
  EXPECT_EQ(paths(NSDocumentDirectory, NSUserDomainMask), "/home/pat/Documents");
  EXPECT_EQ(paths(NSDesktopDirectory, NSUserDomainMask), "/home/pat/Desktop");
  EXPECT_EQ(paths(NSDownloadsDirectory, NSUserDomainMask), "/home/pat/Downloads");
  EXPECT_EQ(paths(NSCachesDirectory, NSUserDomainMask), "/home/pat/.cache");
  EXPECT_EQ(NSHomeDirectory(), "/home/pat");
}

TEST_F(NSSearchPath, TheUsersPathComesFirst) {
  EXPECT_EQ(paths(NSLibraryDirectory, NSAllDomainsMask), "/home/pat/.local/share /usr/local/share /usr/share");
  EXPECT_EQ(paths(NSLibraryDirectory, NSLocalDomainMask | NSSystemDomainMask), "/usr/local/share /usr/share");
  EXPECT_EQ(paths(NSUserDirectory, NSAllDomainsMask), "/home");
}

TEST_F(NSSearchPath, AKindWithoutAFolderInTheDomainGivesNoPath) {
  EXPECT_EQ(paths(NSDocumentDirectory, NSSystemDomainMask), "");
  EXPECT_EQ(paths(NSLibraryDirectory, NSNetworkDomainMask), "");
  EXPECT_EQ(paths(static_cast<NSSearchPathDirectory>(4711), NSAllDomainsMask), "");
}

TEST_F(NSSearchPath, WithoutExpansionTheHomeFolderIsATilde) {
  EXPECT_EQ(paths(NSDocumentDirectory, NSUserDomainMask, false), "~/Documents");
  EXPECT_EQ(paths(NSLibraryDirectory, NSLocalDomainMask, false), "/usr/local/share");
  setenv("XDG_DATA_HOME", "/data", 1);
  EXPECT_EQ(paths(NSLibraryDirectory, NSUserDomainMask, false), "/data");
  unsetenv("XDG_DATA_HOME");
}

}  // namespace
}  // namespace norvik

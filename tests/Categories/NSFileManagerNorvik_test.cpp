#include "NorvikCore/Categories/NSFileManager+Norvik.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "NorvikCore/platform/foundation/NSSearchPath.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/InChild.h"
#include "tests/support/OnThreads.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using test::TemporaryFolder;

constexpr NSString fallback = "/the/fallback";

NSString folderOr(const NSString& path) {
  return nk_createDirectoryAtPath(NSFileManager::defaultManager(), path, fallback);
}

/// Raises in one of the two steps.
class RaisingManager : public NSFileManager {
  NK_OBJECT(RaisingManager, NSFileManager)

  bool fileExistsAtPath(const NSString& path, bool* isDirectory) const override {
    if (raisesInLook) raise();
    return NSFileManager::fileExistsAtPath(path, isDirectory);
  }
  bool createDirectoryAtPath(const NSString&, bool, const Ref<NSDictionary>&, Ref<NSError>*) override {
    raise();
    return true;
  }
  void raise() const {
    if (raisesPlatformException) NSException::raise(NSGenericException, "no folder today");
    throw std::runtime_error("no folder today");
  }
  bool raisesInLook = false, raisesPlatformException = true;
};

TEST(NSFileManagerNorvik, HeaderExample) {
  const TemporaryFolder folder;
  const NSString office = folder.path("office/Exports");
  NSString exports = nk_createDirectoryAtPath(NSFileManager::defaultManager(), office, NSTemporaryDirectory());
  EXPECT_EQ(exports, office);
}

TEST(NSFileManagerNorvik, AFolderThatIsThereIsTaken) {
  const TemporaryFolder folder;
  EXPECT_EQ(folderOr(folder.path()), NSString(folder.path()));
  EXPECT_EQ(folderOr(folder.path() + "/"), NSString(folder.path() + "/")) << "as it was written";
  std::filesystem::create_symlink(folder.path(), folder.path("link"));
  EXPECT_EQ(folderOr(folder.path("link")), NSString(folder.path("link")));
}

TEST(NSFileManagerNorvik, OneThatIsMissingIsMadeWithThoseAboveIt) {
  const TemporaryFolder folder;
  EXPECT_EQ(folderOr(folder.path("2024/April/Exports")), NSString(folder.path("2024/April/Exports")));
  EXPECT_TRUE(std::filesystem::is_directory(folder.path("2024/April/Exports")));
}

TEST(NSFileManagerNorvik, AFileInItsPlaceGivesTheFallbackAndNothingIsMade) {
  const TemporaryFolder folder;
  const std::string file = folder.write("Exports", "1,234.50\n");
  EXPECT_EQ(folderOr(file), fallback);
  EXPECT_EQ(TemporaryFolder::read(file), "1,234.50\n");
  EXPECT_FALSE(std::filesystem::exists("/the"));
  EXPECT_EQ(folderOr(file + "/below"), fallback) << "a file above it";
}

TEST(NSFileManagerNorvik, WhatCannotBeMadeGivesTheFallback) {
  const TemporaryFolder folder;
  std::filesystem::create_symlink("nowhere", folder.path("link"));
  EXPECT_EQ(folderOr(folder.path("link")), fallback) << "a link that leads nowhere";
  EXPECT_FALSE(std::filesystem::exists(folder.path("nowhere")));
  EXPECT_EQ(folderOr(""), fallback);
  EXPECT_EQ(folderOr(NSString(std::string_view("/tmp\0/x", 7))), fallback) << "a path with a zero byte names nothing";
  EXPECT_EQ(folderOr(folder.path(std::string(256, 'a'))), fallback) << "a name that is too long";
  EXPECT_EQ(folderOr("/proc/Exports"), fallback);
}

TEST(NSFileManagerNorvik, AFolderThatMayNotBeMadeGivesTheFallback) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    if (geteuid() == 0) {
      ASSERT_TRUE(test::becomeUserWithoutRights(folder.path()));
    }
    ASSERT_EQ(chmod(folder.path().c_str(), 0500), 0);
    EXPECT_EQ(folderOr(folder.path("Exports")), fallback);
    EXPECT_EQ(folderOr(folder.path()), NSString(folder.path())) << "it is there, though it cannot be written to";
  });
}

TEST(NSFileManagerNorvik, TheFallbackIsNotLookedAt) {
  const TemporaryFolder folder;
  const std::string file = folder.write("Exports");
  for (const char* anything : {"", "relative", "/nowhere/at/all"}) {
    EXPECT_EQ(nk_createDirectoryAtPath(NSFileManager::defaultManager(), file, anything), NSString(anything));
  }
}

TEST(NSFileManagerNorvik, APlatformExceptionInEitherStepGivesTheFallback) {
  const TemporaryFolder folder;
  const auto manager = make<RaisingManager>();
  EXPECT_EQ(nk_createDirectoryAtPath(*manager, folder.path("Exports"), fallback), fallback);
  EXPECT_EQ(nk_createDirectoryAtPath(*manager, folder.path(), fallback), NSString(folder.path()));
  manager->raisesInLook = true;
  EXPECT_EQ(nk_createDirectoryAtPath(*manager, folder.path(), fallback), fallback);
}

TEST(NSFileManagerNorvik, AnotherExceptionPasses) {
  const TemporaryFolder folder;
  const auto manager = make<RaisingManager>();
  manager->raisesPlatformException = false;
  EXPECT_THROW(static_cast<void>(nk_createDirectoryAtPath(*manager, folder.path("Exports"), fallback)),
               std::runtime_error);
  manager->raisesInLook = true;
  EXPECT_THROW(static_cast<void>(nk_createDirectoryAtPath(*manager, folder.path(), fallback)), std::runtime_error);
}

TEST(NSFileManagerNorvik, ThreadsThatMakeOneFolderAllGetIt) {
  const TemporaryFolder folder;
  test::onThreads(8, [&](int) {
    for (int round = 0; round < 50; ++round) {
      const NSString path = folder.path(std::to_string(round) + "/April");
      EXPECT_EQ(folderOr(path), path);
    }
  });
}

}  // namespace
}  // namespace norvik

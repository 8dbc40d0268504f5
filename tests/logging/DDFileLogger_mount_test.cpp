// A file logger on disks that are full, read-only, or without attributes. Each test mounts one in a process of its own,
// before a thread is started there.
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/InChild.h"
#include "tests/support/LogFolder.h"
#include "tests/support/PrivateMount.h"
#include "tests/support/RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>
#include <string>

namespace norvik {
namespace {

using kernel::SystemLogCapture;
using test::allLinesIn;
using test::filesIn;
using test::PrivateMount;
using test::RecordingManager;

/// Skips if this user may not even mount in a user namespace.
class DDFileLoggerMount : public ::testing::Test {
 protected:
  static bool may(const char* type) { return PrivateMount::isAllowed(type); }
  static void sayNow(const NSString& text) { test::say(text, LOG_FLAG_ERROR, false); }
  static Ref<DDFileLogger> addLogger(const std::string& folder) {
    auto logger = DDFileLogger::initWithLogFileManager(make<RecordingManager>(folder));
    logger->setLogFormatter(nullptr);
    DDLog::addLogger(logger);
    return logger;
  }
};

#define REQUIRE_MOUNT(type) \
  if (!may(type)) GTEST_SKIP() << "neither this user nor one in a namespace of its own may mount " type

TEST_F(DDFileLoggerMount, AFullDiskLosesLinesAndWritingGoesOnWhenThereIsRoom) {
  REQUIRE_MOUNT("tmpfs");
  RUN_IN_CHILD({
    const PrivateMount tmpfs("tmpfs", "size=64k");
    ASSERT_TRUE(tmpfs.mounted());
    const SystemLogCapture console;
    addLogger(tmpfs.folder().path("logs"));
    const std::string ballast = tmpfs.folder().write("ballast", std::string(32768, 'x'));
    for (int i = 0; i < 100; ++i) sayNow(std::string(1000, 'y'));
    EXPECT_EQ(console.lines().size(), 11U);
    EXPECT_THAT(console.lines()[0], ::testing::HasSubstr("No space left on device"));
    std::filesystem::remove(ballast);
    sayNow("room again");
    EXPECT_EQ(allLinesIn(tmpfs.folder().path("logs")).back(), "room again");
  });
}

TEST_F(DDFileLoggerMount, AReadOnlyFolderLosesLinesAndWritingGoesOnWhenItIsWritable) {
  REQUIRE_MOUNT("tmpfs");
  RUN_IN_CHILD({
    const PrivateMount tmpfs("tmpfs", "size=1m");
    ASSERT_TRUE(tmpfs.mounted());
    ASSERT_TRUE(tmpfs.makeReadOnly());
    const std::string logs = tmpfs.folder().path();
    addLogger(logs);
    sayNow("lost");
    EXPECT_TRUE(filesIn(logs).empty());
    ASSERT_EQ(mount("none", logs.c_str(), nullptr, MS_REMOUNT, nullptr), 0);
    for (int i = 0; i < 1000; ++i) sayNow("lost at worst");
    sayNow("here");
    ASSERT_EQ(filesIn(logs).size(), 1U);
    EXPECT_EQ(allLinesIn(logs).back(), "here");
  });
}

TEST_F(DDFileLoggerMount, AFileSystemWithoutAttributesAndBirthTimesWorks) {
  REQUIRE_MOUNT("ramfs");
  RUN_IN_CHILD({
    const PrivateMount ramfs("ramfs");
    ASSERT_TRUE(ramfs.mounted());
    const std::string logs = ramfs.folder().path("logs");
    const auto logger = addLogger(logs);
    logger->setMaximumFileSize(10);
    logger->logFileManager()->setMaximumNumberOfLogFiles(2);
    for (int i = 0; i < 8; ++i) sayNow("0123456789");
    EXPECT_EQ(filesIn(logs).size(), 3U);
    for (const std::string& path : filesIn(logs)) EXPECT_TRUE(DDLogFileInfo::logFileWithPath(path)->isArchived());
  });
}

}  // namespace
}  // namespace norvik

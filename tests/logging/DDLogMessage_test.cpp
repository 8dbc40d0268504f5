#include "NorvikCore/logging/DDLogMessage.h"

#include "NorvikCore/logging/DDLogger.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/values/Format.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>
#include <string>
#include <thread>

namespace norvik {
namespace {

Ref<DDLogMessage> messageAt(const char* file = "f", const char* function = "g", std::uint32_t options = 0) {
  return DDLogMessage::initWithLogMsg("text", 3, 2, 0, file, function, 1, Value(), options);
}

class MyFormatter : public DDLogFormatter {
  NK_OBJECT(MyFormatter, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    return stringWithFormat("%@ %@:%d", message.logMsg(), message.fileName(), message.lineNumber());
  }
};

TEST(DDLogMessage, HeaderExample) {
  const auto made = DDLogMessage::initWithLogMsg("40 payslips", 3, 2, 0, "path/Payslip.m", "pay", 12, Value(), 0);
  EXPECT_EQ(make<MyFormatter>()->formatLogMessage(*made), "40 payslips Payslip:12");
}

TEST(DDLogMessage, KeepsWhatItWasMadeOf) {
  const auto made = DDLogMessage::initWithLogMsg("text", 31, 16, 5, "path/File.m", "run:", 12, Value(7), 0);
  EXPECT_EQ(made->logMsg(), "text");
  EXPECT_EQ(made->logLevel(), 31);
  EXPECT_EQ(made->logFlag(), 16);
  EXPECT_EQ(made->logContext(), 5);
  EXPECT_STREQ(made->file(), "path/File.m");
  EXPECT_STREQ(made->function(), "run:");
  EXPECT_EQ(made->lineNumber(), 12);
  EXPECT_EQ(made->tag(), Value(7));
  EXPECT_EQ(made->options(), 0U);
}

TEST(DDLogMessage, BorrowsItsTextsUnlessItIsToldToCopyThem) {
  const std::string file = "File.m", function = "run";
  const auto borrowing = messageAt(file.c_str(), function.c_str());
  EXPECT_EQ(borrowing->file(), file.c_str());
  EXPECT_EQ(borrowing->function(), function.c_str());
  const auto copyingFile = messageAt(file.c_str(), function.c_str(), DDLogMessage::copyFile);
  EXPECT_NE(copyingFile->file(), file.c_str());
  EXPECT_STREQ(copyingFile->file(), "File.m");
  EXPECT_EQ(copyingFile->function(), function.c_str());
  const auto copyingFunction = messageAt(file.c_str(), function.c_str(), DDLogMessage::copyFunction);
  EXPECT_EQ(copyingFunction->file(), file.c_str());
  EXPECT_NE(copyingFunction->function(), function.c_str());
  EXPECT_STREQ(copyingFunction->function(), "run");
}

TEST(DDLogMessage, ANullFileOrFunctionStaysNull) {
  const auto made = messageAt(nullptr, nullptr, DDLogMessage::copyFile | DDLogMessage::copyFunction);
  EXPECT_EQ(made->file(), nullptr);
  EXPECT_EQ(made->function(), nullptr);
  EXPECT_EQ(made->fileName(), std::nullopt);
  EXPECT_EQ(made->methodName(), std::nullopt);
}

TEST(DDLogMessage, HasTheTimeOfItsMakingAlsoWhileAnotherDateIsMocked) {
  const auto unixNow = [] { return static_cast<double>(std::time(nullptr)); };
  const auto before = unixNow();
  const auto old = Date::setCurrentDateSource([]() -> std::optional<Date> { return Date::distantPast(); });
  const auto made = messageAt();
  Date::setCurrentDateSource(old);
  EXPECT_GE(made->timestamp().timeIntervalSince1970(), before - 1);
  EXPECT_LE(made->timestamp().timeIntervalSince1970(), unixNow() + 2);
}

TEST(DDLogMessage, NamesItsThread) {
  Ref<DDLogMessage> made, renamed;
  std::uint32_t id = 0;
  std::thread([&] {
    id = static_cast<std::uint32_t>(syscall(SYS_gettid));
    kernel::setCurrentThreadName("Pay run of Norvik Engineering");
    made = messageAt();
    kernel::setCurrentThreadName("Another");
    renamed = messageAt();
  }).join();
  EXPECT_EQ(made->machThreadID(), id);
  EXPECT_EQ(made->threadName(), "Pay run of Norvik Engineering");
  EXPECT_EQ(renamed->threadName(), "Another");
  char hexadecimal[16];
  std::snprintf(hexadecimal, sizeof hexadecimal, "%x", id);
  EXPECT_EQ(made->threadID(), hexadecimal);
}

TEST(DDLogMessage, CanBeMadeWhileTheThreadEnds) {
  struct AtThreadEnd {
    Ref<DDLogMessage>* result = nullptr;
    ~AtThreadEnd() {
      if (result) *result = messageAt();
    }
  };
  Ref<DDLogMessage> last;
  std::thread([&] {
    static thread_local AtThreadEnd atEnd;
    atEnd.result = &last;  // created first, so destroyed last
    messageAt();
  }).join();
  ASSERT_TRUE(last);
  EXPECT_EQ(last->logMsg(), "text");
}

TEST(DDLogMessage, KeepsTheLabelOfItsQueueAfterTheQueueIsGone) {
  Ref<DDLogMessage> shortLabel, longLabel;
  dispatch_sync(dispatch_queue_create("payroll"), [&] { shortLabel = messageAt(); });
  const std::string label(200, 'q');
  dispatch_sync(dispatch_queue_create(label.c_str()), [&] { longLabel = messageAt(); });
  EXPECT_STREQ(shortLabel->queueLabel(), "payroll");
  EXPECT_EQ(longLabel->queueLabel(), label);
}

TEST(DDLogMessage, FileNameIsWithoutFoldersAndExtension) {
  EXPECT_EQ(messageAt("/a/b/File.m")->fileName(), "File");
  EXPECT_EQ(messageAt("Categories/NSDate+Norvik")->fileName(), "NSDate+Norvik");
  EXPECT_EQ(messageAt("f", "nk_addDays:")->methodName(), "nk_addDays:");
}

TEST(DDLogMessage, TheNameOfAFileEndsAtTheLastDotOfItsPath) {
  const struct {
    const char *path, *name;
  } rows[] = {
      {"/a/b/File.m", "File"},
      {"File", "File"},
      {"File.m", "File"},
      {"a/b.c.d", "b.c"},
      {"", ""},
      {"/", ""},
      {"a/", ""},
      {".m", ""},
      {"a/.profile", ""},
      {"Zoë.m", "Zoë"},
      {"dir.d/name", "name"},
      {"dir.d/name.m", "name"},
      {"dir.d/", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(DDExtractFileNameWithoutExtension(row.path, true), row.name) << row.path;
    EXPECT_EQ(DDExtractFileNameWithoutExtension(row.path, false), row.name) << row.path;
  }
  EXPECT_EQ(DDExtractFileNameWithoutExtension(nullptr, true), std::nullopt);
  EXPECT_EQ(DDExtractFileNameWithoutExtension(nullptr, false), std::nullopt);
}

TEST(DDLogMessage, TheNameOfAFileIsCopiedOnlyWhenAskedFor) {
  static const char path[] = "/a/b/File.m";
  EXPECT_EQ(DDExtractFileNameWithoutExtension(path, false)->view().data(), path + 5);
  EXPECT_NE(DDExtractFileNameWithoutExtension(path, true)->view().data(), path + 5);
}

}  // namespace
}  // namespace norvik

#include "NorvikCore/logging/DDLogLineFormatter.h"

#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "tests/support/LogFolder.h"
#include "tests/support/RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using ::testing::MatchesRegex;

struct Place {
  const char* file;
  int line;
};

Ref<DDLogMessage> message(const NSString& text, int flag = LOG_FLAG_ERROR, Place place = {"PayRun.cpp", 42}) {
  return DDLogMessage::initWithLogMsg(text, 31, flag, 0, place.file, "g", place.line, Value(), 0);
}

std::string line(const DDLogMessage& message) { return make<DDLogLineFormatter>()->formatLogMessage(message)->str(); }

TEST(DDLogLineFormatter, HeaderExample) {
  const auto logger = make<test::RecordingLogger>();
  const auto formatter = make<DDLogLineFormatter>();
  logger->setLogFormatter(formatter);
  EXPECT_EQ(logger->logFormatter(), formatter);
  const NSString text = "\"Zoë\nSmith\" has no bank account";
  EXPECT_THAT(line(*message(text, LOG_FLAG_WARN)),
              MatchesRegex("20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z WARN    "
                           "\\[com\\.norvik\\.main-thread:[0-9]+\\] PayRun\\.cpp:42  "
                           "\"Zoë\\\\nSmith\" has no bank account"));
  EXPECT_EQ(DDLogLineFormatter::unescaped("Zoë\\nSmith"), "Zoë\nSmith");
}

TEST(DDLogLineFormatter, TheTimeIsUTCWhateverTheZone) {
  const auto made = message("text");
  const auto seconds = static_cast<std::time_t>(made->timestamp().timeIntervalSince1970());
  std::tm fields{};
  gmtime_r(&seconds, &fields);
  char expected[32];
  ASSERT_EQ(std::strftime(expected, sizeof expected, "%Y-%m-%dT%H:%M:%S.", &fields), 20U);
  EXPECT_EQ(line(*made).substr(0, 20), expected);
  EXPECT_EQ(line(*made).substr(23, 2), "Z ");
}

TEST(DDLogLineFormatter, EachLevelIsSevenCharactersWide) {
  const struct {
    int flag;
    const char* level;
  } rows[] = {
      {LOG_FLAG_ERROR, "ERROR   ["},
      {LOG_FLAG_WARN, "WARN    ["},
      {LOG_FLAG_INFO, "INFO    ["},
      {LOG_FLAG_DEBUG, "DEBUG   ["},
      {LOG_FLAG_VERBOSE, "VERBOSE ["},
      {64, "64      ["},
      {0, "0       ["},
      {-1, "-1      ["},
      {123456789, "123456789 ["},
  };
  for (const auto& row : rows) {
    const std::string text = line(*message("text", row.flag));
    EXPECT_EQ(text.substr(25, text.find('[') - 24), row.level) << row.flag;
  }
}

TEST(DDLogLineFormatter, InBracketsStandTheQueueOrTheThreadAndTheThreadsNumber) {
  Ref<DDLogMessage> made;
  std::uint32_t thread = 0;
  dispatch_sync(dispatch_queue_create("save [all]\n"), [&] {
    made = message("text");
    thread = kernel::currentThreadId();
  });
  EXPECT_THAT(line(*made),
              ::testing::HasSubstr(" [save [all\\x5d\\n:" + std::to_string(thread) + "] PayRun.cpp:42  text"));
  std::thread([&] {
    pthread_setname_np(pthread_self(), "reader");
    made = message("text");
    thread = kernel::currentThreadId();
  }).join();
  EXPECT_THAT(line(*made), ::testing::HasSubstr(" [reader:" + std::to_string(thread) + "] "));
}

TEST(DDLogLineFormatter, TheFileIsTheLastPartOfItsPath) {
  const struct {
    Place place;
    const char* expected;
  } rows[] = {
      {{"/home/pat/Run.cpp", 7}, "] Run.cpp:7  text"},
      {{"Run.cpp", 0}, "] Run.cpp:0  text"},
      {{nullptr, 7}, "] -:7  text"},
      {{"", 7}, "] -:7  text"},
      {{"dir/", -1}, "] -:-1  text"},
      {{"a b\n.cpp", 7}, "] a\\x20b\\n.cpp:7  text"},
      {{"\xff.cpp", 7}, "] \\xff.cpp:7  text"},
  };
  for (const auto& row : rows) {
    const std::string text = line(*message("text", LOG_FLAG_ERROR, row.place));
    EXPECT_EQ(text.substr(text.find(']')), row.expected);
  }
}

const struct {
  const char* why;
  NSString text;
  std::string escaped;
} forms[] = {
    {"nothing", "", ""},
    {"plain", "40 payslips written", "40 payslips written"},
    {"letters", "Zoë 給与 \U0001F4B7", "Zoë 給与 \U0001F4B7"},
    {"a backslash", "C:\\pay\\n", "C:\\\\pay\\\\n"},
    {"line feed, return, tab", "a\nb\rc\td", "a\\nb\\rc\\td"},
    {"a line feed at the end", "text\n", "text\\n"},
    {"a zero byte", NSString(std::string_view("a\0b", 3)), "a\\x00b"},
    {"the first and the last control character", "\x01\x1f ", "\\x01\\x1f "},
    {"the last plain one and DEL", "~\x7f", "~\\x7f"},
    {"a terminal's escape sequence", "\x1b[2J", "\\x1b[2J"},
    {"the last of Latin's controls", "\u0080\u009f\u00a0", "\\u0080\\u009f\u00a0"},
    {"separators", "\u2027\u2028\u2029", "\u2027\\u2028\\u2029"},
    {"turned direction", "\u202a\u202e\u202f\u2065\u2066\u2069\u206a",
     "\\u202a\\u202e\u202f\u2065\\u2066\\u2069\u206a"},
    {"bytes that are not UTF-8", NSString(std::string_view("\x80 \xff")), "\\x80 \\xff"},
    {"a first half", NSString("\U0001F600").substringToIndex(1), "\\ud83d"},
    {"a second half", NSString("\U0001F600").substringFromIndex(1), "\\ude00"},
    {"what looks like an escape", "\\x41 \\u0041", "\\\\x41 \\\\u0041"},
};

TEST(DDLogLineFormatter, WhatCouldBreakALineIsEscapedAndCanBeTakenBack) {
  for (const auto& form : forms) {
    EXPECT_EQ(DDLogLineFormatter::escaped(form.text).str(), form.escaped) << form.why;
    EXPECT_EQ(DDLogLineFormatter::unescaped(form.escaped), form.text) << form.why;
  }
}

TEST(DDLogLineFormatter, EachPlaceInAWordOfEightBytesIsLookedAt) {
  for (std::size_t length = 1; length < 20; ++length) {
    for (std::size_t at = 0; at < length; ++at) {
      for (const char bad : {'\0', '\n', '\x1f', '\x7f', '\\'}) {
        std::string text(length, ' ');
        text[at] = bad;
        const std::string escaped = DDLogLineFormatter::escaped(text).str();
        EXPECT_GT(escaped.size(), length) << length << " " << at << " " << static_cast<int>(bad);
        EXPECT_EQ(DDLogLineFormatter::unescaped(escaped), NSString(text));
      }
    }
  }
}

TEST(DDLogLineFormatter, WhatIsNoEscapeIsRefused) {
  for (const char* text : {"\\", "a\\", "\\a", "\\x", "\\x4", "\\x4g", "\\X41", "\\xAB", "\\u004", "\\u00zz", "\\N"}) {
    EXPECT_FALSE(DDLogLineFormatter::unescaped(text).has_value()) << text;
  }
  EXPECT_FALSE(DDLogLineFormatter::unescaped(NSString("\U0001F600").substringToIndex(1)).has_value());
}

/// True if the text contains anything that is not printable in one line.
bool hasControl(const std::string& text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }) ||
         text.find("\u2028") != text.npos || text.find("\u2029") != text.npos || !utf8::isValid(text);
}

TEST(DDLogLineFormatter, AnyTextIsOneLineAndComesBack) {
  std::mt19937 random(4711);
  const char32_t points[] = {0,      '\n',   '\r',   '\\',   'n',    'x',    'u',     '0',     ' ',     0x7f,
                             0x85,   0x9f,   0xa0,   0x2028, 0x2029, 0x202e, 0xd800,  0xdbff,  0xdc00,  0xdc80,
                             0xdcff, 0xdfff, 0xfffd, 0xfeff, 0x1b,   'a',    0x1f600, 0x10fff, 0x10ffff};
  for (int round = 0; round < 20000; ++round) {
    NSString text;
    for (std::size_t i = random() % 24; i > 0; --i)
      text = text + NSString::fromCodePoint(points[random() % std::size(points)]);
    const std::string escaped = DDLogLineFormatter::escaped(text).str();
    ASSERT_FALSE(hasControl(escaped)) << escaped;
    ASSERT_EQ(DDLogLineFormatter::unescaped(escaped), text) << escaped;
  }
}

// A message that contains the text of another message's line.
TEST(DDLogLineFormatter, AMessageCannotForgeAnother) {
  const std::string forged = line(*message("all is well"));
  const std::string honest = line(*message("from outside: \n" + NSString(forged)));
  EXPECT_FALSE(hasControl(honest));
  EXPECT_EQ(honest.substr(honest.find(":42  ")), ":42  from outside: \\n" + forged);
}

class DDLogLineFormatterInAFile : public test::CleanDDLog {};

TEST_F(DDLogLineFormatterInAFile, MessagesInARowLookAsIfTheyCameOneByOne) {
  const test::TemporaryFolder folder;
  const auto logger =
      DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory(folder.path()));
  logger->setLogFormatter(make<DDLogLineFormatter>());
  DDLog::addLogger(logger);
  const auto sayAll = [&](bool asynchronous) {
    for (const auto& form : forms) {
      DDLog::log(asynchronous, LOG_LEVEL_VERBOSE, LOG_FLAG_WARN, 0, "/a/File.cpp", "g", 7, Value(), "%@", form.text);
    }
  };
  const dispatch_semaphore_t gate = dispatch_semaphore_create(0);
  dispatch_async(DDLog::loggingQueue(), [gate] { dispatch_semaphore_wait(gate, DISPATCH_TIME_FOREVER); });
  sayAll(true);
  dispatch_semaphore_signal(gate);
  sayAll(false);
  const std::vector<std::string> lines = test::allLinesIn(folder.path());
  ASSERT_EQ(lines.size(), 2 * std::size(forms));
  const std::string head =
      "WARN    [com.norvik.main-thread:" + std::to_string(kernel::currentThreadId()) + "] File.cpp:7  ";
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i].substr(25), head + forms[i % std::size(forms)].escaped) << i;
  }
  clean();
  dispatch_sync(logger->loggerQueue(), [] {});  // the file is archived then
}

}  // namespace
}  // namespace norvik

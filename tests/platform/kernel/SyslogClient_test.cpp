#include "NorvikCore/platform/kernel/SyslogClient.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "tests/support/LogServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::kernel {
namespace {

using test::fieldOf;
using test::journalFields;
using test::LogService;
using test::textOfLine;
using ::testing::MatchesRegex;

class SyslogClientTest : public ::testing::Test {
 protected:
  const test::TemporaryFolder folder_;
  const std::string journal_ = folder_.path("journal"), lines_ = folder_.path("log");
  const SyslogPlaces places_{journal_, lines_};
};

TEST_F(SyslogClientTest, HeaderExample) {
  LogService journal(journal_, SOCK_DGRAM);
  kernel::SyslogClient client("payrun");
  client.log({.level = 4, .text = "no bank account for Zo\u00EB Smith", .file = "PayRun.cpp", .line = 42});
  EXPECT_FALSE(client.hasWaiting());
  EXPECT_EQ(fieldOf(journalFields(journal.receive()), "MESSAGE"), "no bank account for Zo\u00EB Smith");
}

TEST_F(SyslogClientTest, TheJournalGetsEachPartAsAField) {
  LogService journal(journal_, SOCK_DGRAM);
  SyslogClient client("payrun");
  EXPECT_EQ(client.service(), SyslogClient::Service::journal);
  client.log({.level = 2,
              .text = "no bank account for Zoë Smith",
              .file = "/src/PayRun.cpp",
              .function = "run",
              .line = 42,
              .threadId = 4713,
              .threadName = "pay",
              .queueLabel = "payroll.run"});
  const auto fields = journalFields(journal.receive());
  EXPECT_EQ(fieldOf(fields, "MESSAGE"), "no bank account for Zoë Smith");
  EXPECT_EQ(fieldOf(fields, "PRIORITY"), "2");
  EXPECT_EQ(fieldOf(fields, "SYSLOG_IDENTIFIER"), "payrun");
  EXPECT_EQ(fieldOf(fields, "SYSLOG_FACILITY"), "1");
  EXPECT_EQ(fieldOf(fields, "CODE_FILE"), "/src/PayRun.cpp");
  EXPECT_EQ(fieldOf(fields, "CODE_LINE"), "42");
  EXPECT_EQ(fieldOf(fields, "CODE_FUNC"), "run");
  EXPECT_EQ(fieldOf(fields, "TID"), "4713");
  EXPECT_EQ(fieldOf(fields, "THREAD_NAME"), "pay");
  EXPECT_EQ(fieldOf(fields, "QUEUE_LABEL"), "payroll.run");
  EXPECT_EQ(fields.size(), 10U);
  EXPECT_EQ(client.taken(), 1U);
}

TEST_F(SyslogClientTest, WhatIsNotKnownIsNoField) {
  LogService journal(journal_, SOCK_DGRAM);
  SyslogClient client("payrun");
  client.log({.text = ""});
  EXPECT_EQ(journal.receive(), "MESSAGE=\nPRIORITY=5\nSYSLOG_FACILITY=1\nSYSLOG_IDENTIFIER=payrun\n");
}

TEST_F(SyslogClientTest, AValueCannotPassForAnotherField) {
  LogService journal(journal_, SOCK_DGRAM);
  SyslogClient client("payrun");
  const std::string text("100 %s\nPRIORITY=0\n\0 =", 21), function = "f\nTID=1";
  client.log({.text = text, .function = function});
  const auto fields = journalFields(journal.receive());
  EXPECT_EQ(fieldOf(fields, "MESSAGE"), text);
  EXPECT_EQ(fieldOf(fields, "CODE_FUNC"), function);
  EXPECT_EQ(fieldOf(fields, "PRIORITY"), "5");
  EXPECT_EQ(fieldOf(fields, "TID"), "(none)");
}

TEST_F(SyslogClientTest, ALargeEntryGoesToTheJournalAsASealedFile) {
  LogService journal(journal_, SOCK_DGRAM);
  SyslogClient client("payrun");
  const std::string text(10 << 20, 'x');
  client.log({.level = 1, .text = text});
  const auto fields = journalFields(journal.receive());
  EXPECT_EQ(journal.filesReceived(), 1);
  EXPECT_TRUE(journal.lastFileWasSealed());
  EXPECT_TRUE(fieldOf(fields, "MESSAGE") == text);
  EXPECT_EQ(fieldOf(fields, "PRIORITY"), "1");
  client.log({.text = "small again"});
  EXPECT_EQ(fieldOf(journalFields(journal.receive()), "MESSAGE"), "small again");
  EXPECT_EQ(client.lost(), 0U);
}

TEST_F(SyslogClientTest, ADaemonGetsALineWithPriorityTimeSourceAndProcess) {
  LogService daemon(lines_, SOCK_DGRAM);
  SyslogClient client("com.apple.console");
  EXPECT_EQ(client.service(), SyslogClient::Service::datagrams);
  client.log({.level = 3, .text = "40 % done, %s %n", .localSeconds = 1620657012});  // 2021-05-10 14:30:12
  EXPECT_EQ(daemon.receive(),
            "<11>May 10 14:30:12 com.apple.console[" + std::to_string(getpid()) + "]: 40 % done, %s %n");
  client.log({.level = 7, .text = "", .localSeconds = -1});
  EXPECT_EQ(daemon.receive(), "<15>Dec 31 23:59:59 com.apple.console[" + std::to_string(getpid()) + "]: ");
  client.log({.level = 0, .text = "x", .localSeconds = 5 * 86400});
  EXPECT_EQ(daemon.receive(), "<8>Jan  6 00:00:00 com.apple.console[" + std::to_string(getpid()) + "]: x");
}

TEST_F(SyslogClientTest, ALineStaysOneLine) {
  LogService daemon(lines_, SOCK_DGRAM);
  SyslogClient client("payrun");
  using std::string_view_literals::operator""sv;
  client.log({.text = "a\n<0>b\r\0\x1B[31m\x7F\tc \xC2\x9B \xC2\xA0 Zoë"sv});
  EXPECT_EQ(textOfLine(daemon.receive()), "a#012<0>b#015#000#033[31m#177\tc #302#233 \xC2\xA0 Zoë");
}

TEST_F(SyslogClientTest, ALongLineIsCutBetweenCharacters) {
  LogService daemon(lines_, SOCK_DGRAM);
  SyslogClient client("payrun");
  const std::string fits(65536, 'x');
  client.log({.text = fits});
  EXPECT_TRUE(textOfLine(daemon.receive()) == fits);
  client.log({.text = fits + "x"});
  EXPECT_TRUE(textOfLine(daemon.receive()) == std::string(65531, 'x') + "[cut]");
  std::string wide;
  for (int i = 0; i < 5 << 20; ++i) wide += "ë";
  client.log({.text = wide});
  const std::string cut = textOfLine(daemon.receive());
  EXPECT_TRUE(cut == wide.substr(0, 65530) + "[cut]");
  EXPECT_EQ(client.lost(), 0U);
}

TEST_F(SyslogClientTest, ALineIsCutByItsLengthWithControlCharactersAsNumbers) {
  LogService daemon(lines_, SOCK_DGRAM);
  SyslogClient client("payrun");
  const auto repeated = [](std::string_view part, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += part;
    return text;
  };
  client.log({.text = repeated("\n", 16'384)});  // four bytes each, 65536 in all
  EXPECT_TRUE(textOfLine(daemon.receive()) == repeated("#012", 16'384));
  client.log({.text = repeated("\n", 16'385)});
  EXPECT_TRUE(textOfLine(daemon.receive()) == repeated("#012", 16'382) + "[cut]");
  client.log({.text = repeated("\xC2\x9B", 60'000)});
  EXPECT_TRUE(textOfLine(daemon.receive()) == repeated("#302#233", 8'191) + "[cut]");
  EXPECT_EQ(client.lost(), 0U);
}

TEST_F(SyslogClientTest, AStreamGetsTheSameLinesEachWithAnEnd) {
  LogService daemon(lines_, SOCK_STREAM);
  SyslogClient client("payrun");
  EXPECT_EQ(client.service(), SyslogClient::Service::stream);
  client.log({.text = "first"});
  client.log({.text = std::string_view("sec\0nd", 6)});
  EXPECT_EQ(textOfLine(daemon.receive()), "first");
  EXPECT_EQ(textOfLine(daemon.receive()), "sec#000nd");
}

TEST_F(SyslogClientTest, AMissingServiceCostsEntriesAndTenAttemptsASecond) {
  SyslogClient client("payrun");
  EXPECT_EQ(client.service(), SyslogClient::Service::none);
  const std::int64_t before = monotonicNanoseconds();
  for (int i = 0; i < 10'000; ++i) client.log({.text = "lost"});
  EXPECT_LT(monotonicNanoseconds() - before, 1'000'000'000);
  EXPECT_EQ(client.lost(), 10'000U);
  EXPECT_EQ(client.lastError(), ENOENT);
  EXPECT_FALSE(client.hasWaiting());
}

TEST_F(SyslogClientTest, APathThatIsTooLongIsAMissingService) {
  const SyslogPlaces places("/" + std::string(107, 'j'), "/" + std::string(107, 'l'));
  SyslogClient client("payrun");
  client.log({.text = "lost"});
  EXPECT_EQ(client.lost(), 1U);
  EXPECT_EQ(client.lastError(), ENAMETOOLONG);
}

TEST_F(SyslogClientTest, WhereAFileHasTheNameOfTheServiceEntriesAreLost) {
  (void)folder_.write("journal");
  (void)folder_.write("log");
  SyslogClient client("payrun");
  client.log({.text = "lost"});
  EXPECT_EQ(client.lost(), 1U);
  EXPECT_EQ(client.lastError(), ECONNREFUSED);
}

TEST_F(SyslogClientTest, ARestartedServiceGetsTheNextEntry) {
  for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
    auto daemon = std::make_unique<LogService>(lines_, type);
    SyslogClient client("payrun");
    client.log({.text = "before"});
    EXPECT_EQ(textOfLine(daemon->receive()), "before");
    daemon.reset();
    daemon = std::make_unique<LogService>(lines_, type);
    client.log({.text = "after"});
    EXPECT_EQ(textOfLine(daemon->receive()), "after") << type;
    EXPECT_EQ(client.lost(), 0U) << type;
  }
}

TEST_F(SyslogClientTest, AJournalThatIsReplacedByADaemonIsFollowed) {
  auto journal = std::make_unique<LogService>(journal_, SOCK_DGRAM);
  SyslogClient client("payrun");
  journal.reset();
  LogService daemon(lines_, SOCK_DGRAM);
  client.log({.text = "after"});
  EXPECT_EQ(client.service(), SyslogClient::Service::datagrams);
  EXPECT_EQ(textOfLine(daemon.receive()), "after");
}

TEST_F(SyslogClientTest, WhatAFullServiceDoesNotTakeWaitsAndComesInOrder) {
  for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
    LogService daemon(lines_, type);
    SyslogClient client("payrun");
    const std::string filler(1000, '.');
    int logged = 0;
    for (; !client.hasWaiting() && logged < 100'000; ++logged) client.log({.text = std::to_string(logged) + filler});
    ASSERT_TRUE(client.hasWaiting());
    for (int i = 0; i < 100; ++i, ++logged) client.log({.text = std::to_string(logged) + filler});
    for (int i = 0; i < logged; ++i) {
      EXPECT_EQ(textOfLine(daemon.receive()), std::to_string(i) + filler) << type;
      client.sendWaiting();
    }
    EXPECT_FALSE(client.hasWaiting());
    EXPECT_EQ(client.lost(), 0U) << type;
    EXPECT_EQ(client.taken(), static_cast<std::uint64_t>(logged)) << type;
  }
}

TEST_F(SyslogClientTest, OneThousandEntriesOrAMegabyteWait) {
  LogService daemon(lines_, SOCK_DGRAM);
  for (const std::size_t size : {std::size_t{10}, std::size_t{50'000}}) {
    SyslogClient client("payrun");
    const std::string text(size, 'x');
    const std::int64_t before = monotonicNanoseconds();
    for (int i = 0; i < 3000; ++i) client.log({.text = text});
    EXPECT_LT(monotonicNanoseconds() - before, 2'000'000'000);
    const std::uint64_t waiting = 3000 - client.taken() - client.lost();
    EXPECT_EQ(waiting, size == 10 ? 1000U : 20U);
    EXPECT_EQ(client.lastError(), EAGAIN);
  }
}

TEST_F(SyslogClientTest, WhatAServiceDoesNotTakeInFiveSecondsIsLost) {
  LogService daemon(lines_, SOCK_DGRAM);
  ManualClock clock(0, 0);
  SyslogClient client("payrun", clock);
  for (int i = 0; i < 100'000 && !client.hasWaiting(); ++i) client.log({.text = "x"});
  ASSERT_TRUE(client.hasWaiting());
  client.log({.text = "y"});
  clock.advance(4'999'999'999);
  client.sendWaiting();
  EXPECT_TRUE(client.hasWaiting());
  EXPECT_EQ(client.lost(), 0U);
  clock.advance(1);
  client.sendWaiting();
  EXPECT_FALSE(client.hasWaiting());
  EXPECT_EQ(client.lost(), 2U);
}

TEST_F(SyslogClientTest, ADescriptorThatTheProgramHasClosedIsLeftToItsNewOwner) {
  LogService daemon(lines_, SOCK_DGRAM);
  const int next = dup(STDERR_FILENO);
  close(next);
  std::optional<SyslogClient> client("payrun");
  client->log({.text = "before"});
  EXPECT_EQ(textOfLine(daemon.receive()), "before");
  int pair[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, pair), 0);
  ASSERT_EQ(dup2(pair[0], next), next);  // another connection under the same number
  client->log({.text = "after"});
  EXPECT_EQ(textOfLine(daemon.receive()), "after");
  char byte = 0;
  EXPECT_EQ(recv(pair[1], &byte, 1, MSG_DONTWAIT), -1);
  client.reset();
  EXPECT_EQ(send(next, "x", 1, 0), 1);  // still open
  EXPECT_EQ(recv(pair[1], &byte, 1, MSG_DONTWAIT), 1);
  for (const int end : {pair[0], pair[1], next}) close(end);
}

TEST_F(SyslogClientTest, TheStandardDescriptorsAreNotTaken) {
  LogService daemon(lines_, SOCK_DGRAM);
  const pid_t child = fork();
  if (child == 0) {
    for (const int standard : {0, 1, 2}) close(standard);
    SyslogClient client("payrun");
    client.log({.text = "from a daemon"});
    _exit(fcntl(0, F_GETFD) < 0 && fcntl(1, F_GETFD) < 0 && fcntl(2, F_GETFD) < 0 ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(textOfLine(daemon.receive()), "from a daemon");
}

TEST_F(SyslogClientTest, AForkedChildHasItsOwnNumberAndNotWhatWaited) {
  for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
    LogService daemon(lines_, type);
    SyslogClient client("payrun");
    const std::string filler(1000, '.');
    int logged = 0;
    for (; !client.hasWaiting() && logged < 100'000; ++logged) client.log({.text = std::to_string(logged) + filler});
    const pid_t child = fork();
    if (child == 0) {
      client.sendWaiting();
      const bool isEmpty = !client.hasWaiting() && client.lost() == 0;
      if (type == SOCK_STREAM) client.log({.text = "child"});
      _exit(isEmpty && client.lost() == 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << type;
    bool isChildHeard = false;
    for (int i = 0; i < logged;) {
      const std::string line = daemon.receive();
      if (line.find("[" + std::to_string(child) + "]: child") != line.npos) {
        isChildHeard = true;
      } else {
        ASSERT_EQ(textOfLine(line), std::to_string(i) + filler) << type;
        ++i;
      }
      client.sendWaiting();
    }
    EXPECT_FALSE(client.hasWaiting());
    if (type == SOCK_STREAM && !isChildHeard) isChildHeard = textOfLine(daemon.receive()) == "child";
    EXPECT_EQ(isChildHeard, type == SOCK_STREAM);
  }
}

}  // namespace
}  // namespace norvik::kernel

// tests/programs/norvik-log/norvik_log_server_test.cpp - the reader on logs of DDPostgreSQLLogger on a real server.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <regex>
#include <thread>

#include "tests/programs/norvik-log/ReaderProgram.h"
#include "tests/programs/norvik-log/StrictJson.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/PostgresServer.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik_log_test {
namespace {

using norvik::test::ChildProgram;
using norvik::test::PostgresServer;
using norvik::test::TemporaryFolder;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Entry = StrictJson::Object;

std::vector<Entry> entriesOf(const Result& result) {
  EXPECT_EQ(result.err, "");
  return StrictJson::lines(result.out);
}

std::vector<Entry> withoutSources(std::vector<Entry> entries) {
  for (Entry& entry : entries) entry.erase("source");
  return entries;
}

std::vector<Entry> sorted(std::vector<Entry> entries) {
  std::sort(entries.begin(), entries.end());
  return entries;
}

bool isByTime(const std::vector<Entry>& entries) {
  return std::is_sorted(entries.begin(), entries.end(),
                        [](const Entry& a, const Entry& b) { return a.at("time") < b.at("time"); });
}

/// Converts a time by another program, to a text such as "2021-05-10T13:30:12.000Z".
std::string utcOf(const std::string& phrase, const std::string& zone) {
  const auto run = [](const std::string& command) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    char line[64] = "";
    if (std::fgets(line, sizeof line, pipe.get()) == nullptr) ADD_FAILURE() << command;
    const std::string text = line;
    return text.substr(0, text.find('\n'));
  };
  return run("date -u -d @$(TZ=" + zone + " date -d '" + phrase + "' +%s) +%Y-%m-%dT%H:%M:%S.000Z");
}

/// The same time in seconds since 1970.
long long secondsOf(const std::string& utc) {
  std::tm parts{};
  ::strptime(utc.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  return ::timegm(&parts);
}

int rankOf(const Entry& entry) {
  const std::vector<std::string> levels = {"ERROR", "WARN", "INFO", "DEBUG", "VERBOSE"};
  return static_cast<int>(std::find(levels.begin(), levels.end(), entry.at("level")) - levels.begin());
}

/// A program that logs to a folder, to an SQLite database and to a server at the same time.
class LoggedThrice : public testing::Test {
 protected:
  void SetUp() override { server_.start(); }

  void log(const std::vector<std::string>& commands) {
    ChildProgram writer({"/usr/bin/env", "NORVIK_LOG_WRITER_SQLITE=" + database_,
                         "NORVIK_LOG_WRITER_POSTGRES=" + server_.connection(), NORVIK_LOG_WRITER, "line", logs_});
    for (const std::string& command : commands) {
      writer.write(command + "\n");
      EXPECT_EQ(writer.readLine(), "done") << command;
    }
    EXPECT_EQ(writer.wait(), 0);
  }
  std::vector<std::string> sources() const { return {logs_, database_, server_.address()}; }

  PostgresServer server_;
  const TemporaryFolder folder_;
  const std::string logs_ = folder_.path("logs"), database_ = folder_.path("log.db");
};

TEST_F(LoggedThrice, EachSourceHasEachEntryOnceAndTogetherTheyAreMergedByTime) {
  log({"at 1620653412.011999500 early", "many 500 paid", "roll now", "tick now",
       "log warn Zo\xc3\xab\\nSmith \"\\\\ has no account", "log error \x1b[2J \xe2\x80\xae \xf0\x9f\x98\x80 100%",
       "thread bank transferred", "many 500 filed"});
  const std::vector<Entry> all = withoutSources(entriesOf(runReader({"--json", logs_})));
  ASSERT_EQ(all.size(), 1004u);
  EXPECT_EQ(all[0].at("time"), "2021-05-10T13:30:12.012Z");
  EXPECT_EQ(all[501].at("text"), "Zo\xc3\xab\nSmith \"\\\\ has no account");
  EXPECT_EQ(all[502].at("text"), "\x1b[2J \xe2\x80\xae \xf0\x9f\x98\x80 100%");
  EXPECT_EQ(withoutSources(entriesOf(runReader({"--json", database_}))), all);
  const std::vector<Entry> ofServer = entriesOf(runReader({"--json", server_.address()}));
  EXPECT_TRUE(isByTime(ofServer));
  EXPECT_EQ(sorted(withoutSources(ofServer)), sorted(all));
  EXPECT_THAT(ofServer[0].at("source"), StartsWith("postgresql:///postgres "));
  EXPECT_THAT(ofServer[0].at("source"), HasSubstr(" norvik_log_writer["));

  const std::vector<Entry> merged =
      withoutSources(entriesOf(runReader({"--json", sources()[0], sources()[1], sources()[2]})));
  EXPECT_TRUE(isByTime(merged));
  std::vector<Entry> thrice;
  for (int i = 0; i < 3; ++i) thrice.insert(thrice.end(), all.begin(), all.end());
  EXPECT_EQ(sorted(merged), sorted(thrice));
}

TEST_F(LoggedThrice, FiltersGiveWhatAPlainEvaluationGives) {
  std::vector<std::string> commands;
  const std::vector<std::string> zones = {"Europe/London", "Pacific/Apia"};
  for (const std::string& zone : zones) {
    const long long second = secondsOf(utcOf("yesterday 14:00", zone));
    for (const std::string fraction : {"000000000", "001000000", "500000000"}) {
      commands.push_back("at " + std::to_string(second) + "." + fraction + " about " + zone);
    }
    commands.push_back("at " + std::to_string(second - 1) + ".998500000 before " + zone);
    commands.push_back("at " + std::to_string(second - 1) + ".999999000 just before " + zone);
  }
  for (const std::string level : {"error", "warn", "info", "debug"}) {
    commands.push_back("log " + level + " paid 12 of C:\\\\pay");
    commands.push_back("log " + level + " Filing\\nfiled 7");
  }
  commands.insert(commands.end(), {"thread bank transferred", "thread 4711 sent", "many 20 Paid"});
  log(commands);
  const std::vector<Entry> all = withoutSources(entriesOf(runReader({"--json", server_.address()})));
  ASSERT_EQ(all.size(), 10u + 8 + 2 + 20);
  const std::string mainThread = all[0].at("thread");

  using Judge = std::function<bool(const Entry&)>;
  const auto isThread = [](const Entry& entry, const std::string& wanted) {
    return entry.at("thread") == wanted || entry.at("queue") == wanted ||
           entry.at("queue") + ":" + entry.at("thread") == wanted;
  };
  const auto matches = [](const std::string& pattern) -> Judge {
    return [expression = std::regex(pattern, std::regex::ECMAScript | std::regex::multiline)](const Entry& entry) {
      return std::regex_search(entry.at("text"), expression);
    };
  };
  const struct {
    std::vector<std::string> options;
    Judge judge;
  } rows[] = {
      {{"-l", "error"}, [](const Entry& entry) { return rankOf(entry) <= 0; }},
      {{"-l", "warn"}, [](const Entry& entry) { return rankOf(entry) <= 1; }},
      {{"-l", "info"}, [](const Entry& entry) { return rankOf(entry) <= 2; }},
      {{"-l", "debug"}, [](const Entry& entry) { return rankOf(entry) <= 3; }},
      {{"-l", "8"}, [](const Entry& entry) { return rankOf(entry) <= 3; }},
      {{"--thread", mainThread}, [&](const Entry& entry) { return isThread(entry, mainThread); }},
      {{"--thread", "bank"}, [&](const Entry& entry) { return isThread(entry, "bank"); }},
      {{"--thread", "4711"}, [&](const Entry& entry) { return isThread(entry, "4711"); }},
      {{"--thread", "com.norvik.main-thread:" + mainThread},
       [&](const Entry& entry) { return isThread(entry, "com.norvik.main-thread:" + mainThread); }},
      {{"--thread", "nobody"}, [&](const Entry& entry) { return isThread(entry, "nobody"); }},
      {{"-t", "paid"}, [](const Entry& entry) { return entry.at("text").find("paid") != std::string::npos; }},
      {{"-t", "C:\\\\pay"}, [](const Entry& entry) { return entry.at("text").find("C:\\\\pay") != std::string::npos; }},
      {{"-i", "-t", "paid"},
       [](const Entry& entry) {
         std::string lower = entry.at("text");
         for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
         return lower.find("paid") != std::string::npos;
       }},
      {{"-e", "^filed [0-9]$"}, matches("^filed [0-9]$")},
      {{"-e", "[pP]aid 1"}, matches("[pP]aid 1")},
      {{"-l", "warn", "-e", "paid|filed"},
       [&](const Entry& entry) { return rankOf(entry) <= 1 && matches("paid|filed")(entry); }},
  };
  std::size_t admitted = 0;
  const auto compare = [&](const std::vector<std::string>& options, const std::string& zone, const Judge& judge) {
    std::vector<Entry> expected;
    std::copy_if(all.begin(), all.end(), std::back_inserter(expected), judge);
    expected = sorted(expected);
    admitted += expected.size();
    for (const std::string& source : sources()) {
      std::vector<std::string> arguments = {"--json", source};
      arguments.insert(arguments.end(), options.begin(), options.end());
      const Result result = runReader(arguments, "", {{"TZ", zone}});
      EXPECT_EQ(sorted(withoutSources(entriesOf(result))), expected)
          << testing::PrintToString(options) << " " << zone << " " << source;
      EXPECT_EQ(result.status, expected.empty() ? 1 : 0);
    }
  };
  for (const auto& row : rows) compare(row.options, "Europe/London", row.judge);
  for (const std::string& zone : zones) {
    std::string moment;
    do {  // repeated if midnight passes in between
      moment = utcOf("yesterday 14:00", zone);
      compare({"--since", "yesterday 14:00"}, zone, [&](const Entry& entry) { return entry.at("time") >= moment; });
      compare({"--until", "yesterday 14:00"}, zone, [&](const Entry& entry) { return entry.at("time") < moment; });
      compare({"--since", "yesterday 14:00", "-t", "before"}, zone, [&](const Entry& entry) {
        return entry.at("time") >= moment && entry.at("text").find("before") != std::string::npos;
      });
    } while (moment != utcOf("yesterday 14:00", zone));
  }
  EXPECT_GT(admitted, 100u);
}

TEST_F(LoggedThrice, AWrongPasswordIsRefusedInALineWithoutIt) {
  log({"log info paid"});
  EXPECT_EQ(server_.query("CREATE ROLE clerk LOGIN PASSWORD 'r1ght'; GRANT SELECT ON norvik_log TO clerk"), "");
  EXPECT_THAT(runReader({server_.address("clerk:r1ght")}).out, HasSubstr("  paid\n"));
  const Result typed = runReader({server_.address("clerk:wr0ng%3d")});
  const Result inherited = runReader({server_.address("clerk")}, "", {{"PGPASSWORD", "wr0ng="}});
  const Result missing = runReader({server_.address("clerk")}, "", {{"PGPASSFILE", folder_.path("none")}});
  for (const Result* const result : {&typed, &inherited, &missing}) {
    EXPECT_EQ(result->status, 2);
    EXPECT_EQ(result->out, "");
    EXPECT_THAT(result->err, StartsWith("norvik-log: postgresql:///postgres: cannot be reached: "));
    EXPECT_THAT(result->err, HasSubstr("password"));
    EXPECT_EQ(std::count(result->err.begin(), result->err.end(), '\n'), 1) << result->err;
    EXPECT_THAT(result->err, Not(HasSubstr("wr0ng")));
  }
}

TEST_F(LoggedThrice, AnInfiniteTimeIsTheFirstOrTheLast) {
  log({"log info paid"});
  EXPECT_EQ(server_.query("INSERT INTO norvik_log SELECT nextval('norvik_log_id_seq'), i, machine, program, process, "
                          "level, context, thread, queue, file, function, line, text || ' ' || i FROM norvik_log, "
                          "(VALUES('infinity'::timestamptz), ('-infinity'), ('0044-03-15 BC'), ('20000-01-01')) v(i)"),
            "");
  const std::vector<Entry> entries = entriesOf(runReader({"--json", server_.address()}));
  ASSERT_EQ(entries.size(), 5u);
  EXPECT_EQ(entries[0].at("time"), "0001-01-01T00:00:00.000Z");
  EXPECT_EQ(entries[0].at("text"), "paid -infinity");
  EXPECT_EQ(entries[1].at("time"), "0001-01-01T00:00:00.000Z");
  EXPECT_EQ(entries[2].at("text"), "paid");
  EXPECT_EQ(entries[3].at("time"), "9999-12-31T23:59:59.999Z");
  EXPECT_EQ(entries[4].at("time"), "9999-12-31T23:59:59.999Z");
  EXPECT_EQ(entries[4].at("text"), "paid infinity");
}

/// A client of the server with its own transaction.
class Client {
 public:
  explicit Client(const PostgresServer& server) : connection_(PQconnectdb(server.connection().c_str())) {}
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client() { PQfinish(connection_); }
  void run(const std::string& sql) {
    PGresult* const result = PQexec(connection_, sql.c_str());
    EXPECT_STREQ(PQresultErrorMessage(result), "");
    PQclear(result);
  }
  void insert(const std::string& text) {
    run("INSERT INTO norvik_log(time, machine, program, process, level, context, thread, queue, line, text) "
        "VALUES(now(), "
        "'m', 'p', 1, 4, 0, 7, 'q', 1, '" +
        text + "')");
  }

 private:
  PGconn* const connection_;
};

int countOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST_F(LoggedThrice, WhileItIsFollowedAnEntryThatIsCommittedLateIsShownOnceHoweverManyCameBefore) {
  log({"log info begun"});
  Client late(server_), later(server_), other(server_);
  FollowingReader reader({"-f", server_.address()});
  reader.readUntil("begun");
  late.run("BEGIN");
  late.insert("late 1");
  other.insert("between 1");
  reader.readUntil("between 1");
  later.run("BEGIN");
  later.insert("late 2");
  other.run(
      "INSERT INTO norvik_log(time, machine, program, process, level, context, thread, queue, line, text) SELECT "
      "now(), 'm', 'p', 1, 4, 0, 7, 'q', 1, 'many ' || n FROM generate_series(1, 15000) n");
  std::string shown = reader.readUntil("many 15000");
  late.insert("late 3");
  late.run("COMMIT");
  shown += reader.readUntil("late 3");
  other.insert("between 2");
  shown += reader.readUntil("between 2");
  later.run("ROLLBACK");
  later.run("BEGIN");
  later.insert("late 4");
  other.insert("between 3");
  shown += reader.readUntil("between 3");
  later.run("COMMIT");
  shown += reader.readUntil("late 4");
  other.insert("the end");
  shown += reader.readUntil("the end");
  EXPECT_EQ(countOf(shown, "  many "), 15000);
  for (const std::string text : {"late 1", "late 3", "late 4", "between 2", "between 3"}) {
    EXPECT_EQ(countOf(shown, "  " + text + "\n"), 1) << text;
  }
  for (const std::string text : {"begun", "between 1", "late 2"}) EXPECT_EQ(countOf(shown, "  " + text + "\n"), 0);
}

TEST_F(LoggedThrice, WhileItIsFollowedAServerThatComesBackIsReadOn) {
  log({"log info first"});
  FollowingReader reader({"-f", server_.address(), logs_});
  reader.readUntil("first");
  reader.readUntil("first");
  server_.stop();
  EXPECT_THAT(reader.readErrorUntil("norvik-log"), StartsWith("norvik-log: postgresql:///postgres: cannot be "));
  server_.start();
  Client client(server_);
  client.insert("second");
  const std::string shown = reader.readUntil("second");
  EXPECT_EQ(countOf(shown, "\n"), 1) << shown;
  reader.signal(SIGTERM);
  EXPECT_EQ(reader.readErrorToTheEnd(), "");
}

TEST_F(LoggedThrice, WhileItIsFollowedAServerThatIsStartedLaterIsReadAndARefusalIsFinal) {
  log({"log info first"});
  EXPECT_EQ(server_.query("CREATE ROLE clerk LOGIN PASSWORD 'r1ght'"), "");
  server_.stop();
  FollowingReader reader({"-f", server_.address()});
  EXPECT_THAT(reader.readErrorUntil("cannot be reached"), HasSubstr("No such file or directory"));
  server_.start();
  EXPECT_THAT(reader.readUntil("first"), HasSubstr("  first\n"));
  FollowingReader refused({"-f", server_.address("clerk:wr0ng"), logs_});
  refused.readErrorUntil("password");
  refused.readUntil("first");
}

TEST_F(LoggedThrice, WhileItIsFollowedNumbersThatBeginAgainAreNoticed) {
  log({"log info first", "log info second", "log info third"});
  Client client(server_);
  FollowingReader reader({"-f", server_.address()});
  reader.readUntil("third");
  client.run("BEGIN; TRUNCATE norvik_log RESTART IDENTITY");
  client.insert("fourth");
  client.run("COMMIT");
  EXPECT_EQ(countOf(reader.readUntil("fourth"), "\n"), 1);
  client.insert("fifth");
  client.insert("sixth");
  reader.readUntil("sixth");
  // The last entry is deleted, and the others stay.
  client.run("BEGIN; DELETE FROM norvik_log WHERE text = 'sixth'");
  client.insert("seventh");
  client.run("COMMIT; DELETE FROM norvik_log WHERE text = 'seventh'");
  client.insert("eighth");
  const std::string shown = reader.readUntil("eighth");
  EXPECT_EQ(countOf(shown, "fifth"), 0) << shown;
}

/// A server that accepts connections and statements but never answers a statement.
class SilentServer {
 public:
  SilentServer() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(listener_, reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size), 0);
    EXPECT_EQ(::listen(listener_, 1), 0);
    place_ = "postgresql://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/payroll";
    thread_ = std::thread([this] { serve(); });
  }
  SilentServer(const SilentServer&) = delete;
  SilentServer& operator=(const SilentServer&) = delete;
  ~SilentServer() {
    ::shutdown(listener_, SHUT_RDWR);
    thread_.join();
    ::close(listener_);
  }

  [[nodiscard]] const std::string& place() const { return place_; }
  [[nodiscard]] std::string address() const { return place_ + "?sslmode=disable&gssencmode=disable"; }
  /// Returns when a client has sent its first statement.
  void awaitStatement() { asked_.get_future().wait(); }

 private:
  void serve() {
    const int client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    char bytes[4096];
    if (client < 0 || ::read(client, bytes, sizeof bytes) <= 0) return;
    const std::string ready("R\0\0\0\x08\0\0\0\0Z\0\0\0\x05I", 15);
    EXPECT_EQ(::write(client, ready.data(), ready.size()), static_cast<ssize_t>(ready.size()));
    if (::read(client, bytes, sizeof bytes) > 0) asked_.set_value();
    while (::read(client, bytes, sizeof bytes) > 0) {
    }
    ::close(client);
  }

  const int listener_;
  std::string place_;
  std::promise<void> asked_;
  std::thread thread_;
};

TEST(SilentServer, IsGivenUpWhenItHasNotAnsweredForTheTimeGiven) {
  const TemporaryFolder folder;
  SilentServer server;
  const Result result = runReader({"--patience", "1", server.address(), folder.write("a.log", errorLine)});
  EXPECT_EQ(result.err, "norvik-log: " + server.place() + ": cannot be read: the server has not answered for 1 s\n");
  EXPECT_EQ(result.out, errorLine);
  EXPECT_EQ(result.status, 2);
}

TEST(SilentServer, HoldsUpNoOtherSourceThatIsFollowed) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", errorLine);
  SilentServer server;
  FollowingReader reader({"-f", server.address(), log});
  EXPECT_EQ(reader.readUntil("first"), errorLine);
  const std::string second = "2021-05-10T13:00:01.000Z ERROR   [main:7] a.cpp:1  second\n";
  std::ofstream(log, std::ios::app) << second << std::flush;
  EXPECT_EQ(reader.readUntil("second"), second);
  reader.closeOut();
  EXPECT_EQ(reader.waitForEnd(), 0);
}

TEST(SilentServer, IsNotWaitedForAfterASignal) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"-f"}}) {
    SilentServer server;
    std::vector<std::string> arguments = options;
    arguments.push_back(server.address());
    FollowingReader reader(arguments);
    server.awaitStatement();
    reader.signal(SIGTERM);
    EXPECT_EQ(reader.waitForSignal(), SIGTERM);
  }
}

TEST_F(LoggedThrice, ATableThatIsLockedIsGivenUpAndReadWhenItIsFreeWhileItIsFollowed) {
  log({"log info first"});
  Client client(server_);
  client.run("BEGIN; LOCK norvik_log");
  const Result result = runReader({"--patience", "4", server_.address()});
  EXPECT_THAT(result.err, StartsWith("norvik-log: postgresql:///postgres: cannot be read: "));
  // The server cancels the statement slightly earlier, unless the machine is busy.
  EXPECT_THAT(result.err, testing::AnyOf(HasSubstr("canceling statement due to lock timeout"),
                                         HasSubstr("has not answered for 4 s")));
  EXPECT_EQ(result.status, 2);
  FollowingReader reader({"-f", server_.address(), logs_});
  EXPECT_THAT(reader.readUntil("first"), HasSubstr("  first\n"));  // from the folder
  client.run("COMMIT");
  EXPECT_THAT(reader.readUntil("first"), HasSubstr("  first\n"));
}

TEST_F(LoggedThrice, WhileItIsFollowedAServerThatStandsStillIsReadOnWhenItGoesOn) {
  log({"log info first"});
  FollowingReader reader({"-f", "--patience", "1", server_.address()});
  reader.readUntil("first");
  server_.suspend();
  EXPECT_EQ(reader.readErrorUntil("norvik-log"),
            "norvik-log: postgresql:///postgres: cannot be read: the server has not answered for 1 s\n");
  server_.resume();
  Client(server_).insert("second");
  const std::string shown = reader.readUntil("second");
  EXPECT_EQ(countOf(shown, "\n"), 1) << shown;
}

TEST_F(LoggedThrice, LargeTextsTakeLittleMemory) {
  log({"log info first"});
  EXPECT_EQ(
      server_.query("INSERT INTO norvik_log(time, machine, program, process, level, context, thread, queue, line, "
                    "text) SELECT now(), 'm', 'p', 1, 4, 0, 7, 'q', 1, repeat('x', 1000000) || n FROM "
                    "generate_series(1, 100) n"),
      "");
  const Result result = measureReader({"-t", "x100", server_.address()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(countOf(result.out, "\n"), 1);
#ifndef NK_TEST_ADDRESS_SANITIZER
  EXPECT_LT(result.peakKibibytes, 64 << 10);
#endif
}

}  // namespace
}  // namespace norvik_log_test

// Programs that end while they log to a server over TLS.
#include "tests/support/ChildProgram.h"
#include "tests/support/PostgresServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace norvik {
namespace {

using test::ChildProgram;
using test::PostgresServer;

TEST(DDPostgreSQLLoggerEnd, TheLastEntriesReachTheServerByTlsHoweverTheProgramUsesOpenSSL) {
  PostgresServer server;
  server.useTls();
  server.start();
  ASSERT_EQ(server.query("CREATE ROLE clerk LOGIN SUPERUSER PASSWORD 'right'"), "");
  const struct {
    const char* way;
    const char* entries;
  } rows[] = {
      {"return", "last|"},
      {"exit", "last|"},
      {"connected return", "connected|last|"},
      {"connected exit", "connected|last|"},
      {"openssl-first return", "last|"},
      {"openssl-first connected exit", "connected|last|"},
      {"openssl-between return", "last|"},
      {"openssl-after return", "last|"},
      {"openssl-after connected exit", "connected|last|"},
      {"connected restarted return", "connected|last|"},
      {"openssl-first connected restarted exit", "connected|last|"},
      {"static return", "last|from a static object|"},
      {"static connected exit", "connected|last|from a static object|"},
      {"static openssl-first return", "last|from a static object|"},
      {"static openssl-first connected restarted exit", "connected|last|from a static object|"},
  };
  const std::string connections[] = {
      server.tlsConnection(),
      server.tlsConnection("clerk") + " password=right",
      server.connection("clerk") + " password=right",
  };
  for (const auto& row : rows) {
    for (const std::string& connection : connections) {
      const std::string why = std::string(row.way) + ", " + connection;
      server.query("TRUNCATE norvik_log");
      ChildProgram program({NORVIK_END_PROGRAM, row.way, connection});
      if (std::string(row.way).find("restarted") != std::string::npos) {
        EXPECT_EQ(program.readLine(), "restart") << why;
        server.stop();
        server.start();
        program.write("\n");
      }
      EXPECT_EQ(program.readAll(), "") << why;
      EXPECT_EQ(program.wait(), 0) << why;
      EXPECT_EQ(server.query("SELECT text || '|' FROM norvik_log ORDER BY id"), row.entries) << why;
    }
  }
}

TEST(DDPostgreSQLLoggerEnd, AProgramThatUsedOpenSSLBeforeItLoadedTheLibraryLogsByTlsUntilItExits) {
  PostgresServer server;
  server.useTls();
  server.start();
  ASSERT_EQ(server.query("CREATE ROLE clerk LOGIN SUPERUSER PASSWORD 'right'"), "");
  for (const std::string& connection : {server.tlsConnection(), server.connection("clerk") + " password=right"}) {
    server.query("TRUNCATE norvik_log");
    ChildProgram program({NORVIK_END_HOST, NORVIK_END_PLUGIN, connection});
    EXPECT_EQ(program.readAll(), "") << connection;
    EXPECT_EQ(program.wait(), 0) << connection;
    EXPECT_EQ(server.query("SELECT text || '|' FROM norvik_log"), "last|") << connection;
  }
}

TEST(DDPostgreSQLLoggerEnd, AfterTheProgramHasCleanedUpOpenSSLOnlyAPlainConnectionIsUsed) {
  PostgresServer server;
  server.useTls();
  server.start();
  const std::string refusal =
      ": the libraries that libpq needs were shut down; they are kept until they can be saved\n";
  const struct {
    const char* why;
    const char* way;
    std::string connection, said;
    const char* entries;
  } rows[] = {
      {"open, plain", "connected cleaned-up return", server.connection(), "", "connected|last|"},
      {"open, TLS", "connected cleaned-up exit", server.tlsConnection(), refusal, "connected|"},
      {"to be opened", "cleaned-up return", server.tlsConnection(), refusal, ""},
  };
  server.query("CREATE TABLE norvik_log()");
  for (const auto& row : rows) {
    server.query("DROP TABLE norvik_log");
    ChildProgram program({NORVIK_END_PROGRAM, row.way, row.connection});
    const std::string said = program.readAll();
    EXPECT_TRUE(said.ends_with(row.said)) << row.why << ": " << said;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), row.said.empty() ? 0 : 1) << row.why << ": " << said;
    EXPECT_EQ(program.wait(), 0) << row.why;
    const std::string entries = server.query("SELECT text || '|' FROM norvik_log ORDER BY id");
    if (*row.entries != '\0') {
      EXPECT_EQ(entries, row.entries) << row.why;
    } else {
      EXPECT_THAT(entries, ::testing::HasSubstr("does not exist")) << row.why;
    }
  }
}

}  // namespace
}  // namespace norvik

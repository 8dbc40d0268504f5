// benchmarks/postgresql/DDPostgreSQLLogger_benchmark.cpp - entries per second into a PostgreSQL server of this machine
// through the logger with its default settings, from the log call to the commit. The peer is one COPY of the same rows
// into the same tables, with its bytes prepared. The server waits for the disk at each commit.
//
// Every entry is counted on the server before anything is reported.
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/postgresql/DDPostgreSQLLogger.h"
#include "tests/support/PostgresServer.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

namespace {

using namespace norvik;
using Clock = std::chrono::steady_clock;
using test::PostgresServer;

constexpr int entries = 300'000;

void expectEntries(const PostgresServer& server, const char* who) {
  const std::string found = server.query("SELECT count(*) || ' ' || count(DISTINCT text) FROM norvik_log");
  const std::string expected = std::to_string(entries) + " " + std::to_string(entries);
  if (found == expected) return;
  std::fprintf(stderr, "%s: %s entries, not %s\n", who, found.c_str(), expected.c_str());
  std::exit(1);
}

double secondsSince(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

double ours(const PostgresServer& server) {
  const auto logger = DDPostgreSQLLogger::initWithConnectionString(NSString(server.connection()));
  DDLog::addLogger(logger);
  DDLog::flushLog();
  server.query("TRUNCATE norvik_log");
  const auto begin = Clock::now();
  for (int i = 0; i < entries; ++i) {
    DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0, "/src/payroll/PayRun.cpp", "runForMonth:", 42, Value(),
               "payslip %d of department engineering has a net pay of %d", i, 1739);
  }
  DDLog::flushLog();
  const double seconds = secondsSince(begin);
  DDLog::removeAllLoggers();
  DDLog::flushLog();
  expectEntries(server, "ours");
  return seconds;
}

double copy(const PostgresServer& server) {
  server.query("TRUNCATE norvik_log");
  std::string rows;
  for (int i = 0; i < entries; ++i) {
    rows +=
        "2026-11-22 12:00:00.123456+00\tdesk\tpayroll\t4711\t4\t0\t4711\tcom.norvik.main-thread\t"
        "/src/payroll/PayRun.cpp\trunForMonth:\t42\tpayslip " +
        std::to_string(i) + " of department engineering has a net pay of 1739\n";
  }
  PGconn* const client = PQconnectdb(server.connection().c_str());
  const auto begin = Clock::now();
  PQclear(PQexec(client,
                 "COPY norvik_log(time, machine, program, process, level, context, thread, queue, file, function, "
                 "line, text) FROM STDIN"));
  PQputCopyData(client, rows.data(), static_cast<int>(rows.size()));
  PQputCopyEnd(client, nullptr);
  while (PGresult* const result = PQgetResult(client)) PQclear(result);
  const double seconds = secondsSince(begin);
  PQfinish(client);
  expectEntries(server, "the copy");
  return seconds;
}

}  // namespace

int main(int argc, char** argv) {
  PostgresServer server;
  server.start(true);
  {
    const auto logger = DDPostgreSQLLogger::initWithConnectionString(NSString(server.connection()));
    DDLog::addLogger(logger);
    DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0, "f", "g", 1, Value(), "makes the tables");
    DDLog::flushLog();
    DDLog::removeAllLoggers();
    DDLog::flushLog();
  }
  const std::string subject = std::to_string(entries) + " entries into PostgreSQL";
  for (const auto& [peer, run] : {std::pair{"/ours", &ours}, std::pair{"/copy", &copy}}) {
    const auto measure = [&server, run = run](benchmark::State& state) {
      for (auto _ : state) state.SetIterationTime(run(server));
      state.counters["entries/s"] =
          benchmark::Counter(static_cast<double>(state.iterations()) * entries, benchmark::Counter::kIsRate);
    };
    benchmark::RegisterBenchmark((subject + peer).c_str(), measure)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->Repetitions(5);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}

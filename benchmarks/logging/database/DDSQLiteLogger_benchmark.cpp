// benchmarks/logging/database/DDSQLiteLogger_benchmark.cpp - entries per second into SQLite through the logger with its
// default settings, from the log call to the committed row. The peer is a loop of one prepared INSERT of the same rows
// into the same tables, in one transaction, with its texts prepared.
//
// Every entry is counted in the database before anything is reported.
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/database/DDSQLiteLogger.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace norvik;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr int entries = 300'000;

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "%s\n", what.c_str());
  std::exit(1);
}

class Folder {
 public:
  Folder() {
    std::string name = (fs::temp_directory_path() / "norvik-benchmark-XXXXXX").string();
    if (!mkdtemp(name.data())) fail("no temporary folder");
    path_ = name;
  }
  ~Folder() { fs::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  [[nodiscard]] std::string database() const { return path_ + "/log.db"; }

 private:
  std::string path_;
};

class Database {
 public:
  explicit Database(const std::string& path) {
    if (sqlite3_open(path.c_str(), &database_) != SQLITE_OK) fail("cannot open " + path);
  }
  ~Database() { sqlite3_close(database_); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  void run(const std::string& sql) {
    if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail(sqlite3_errmsg(database_));
  }
  sqlite3_stmt* prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database_, sql, -1, &statement, nullptr) != SQLITE_OK) fail(sqlite3_errmsg(database_));
    return statement;
  }
  void expectEntries(const char* who) {
    sqlite3_stmt* const count = prepare("SELECT count(*), count(DISTINCT text) FROM entry");
    sqlite3_step(count);
    if (sqlite3_column_int(count, 0) != entries || sqlite3_column_int(count, 1) != entries) {
      fail(std::string(who) + ": " + std::to_string(sqlite3_column_int(count, 0)) + " entries");
    }
    sqlite3_finalize(count);
  }

 private:
  sqlite3* database_ = nullptr;
};

std::string textOf(int i) {
  return "payslip " + std::to_string(i) + " of department engineering has a net pay of 1739";
}

void log(int from, int to) {
  for (int i = from; i < to; ++i) {
    DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0, "/src/payroll/PayRun.cpp", "runForMonth:", 42, Value(),
               "payslip %d of department engineering has a net pay of %d", i, 1739);
  }
}

/// Returns when the logger has closed its file.
void remove(const Ref<DDSQLiteLogger>& logger) {
  DDLog::removeAllLoggers();
  dispatch_sync(DDLog::loggingQueue(), [] {});
  dispatch_sync(logger->loggerQueue(), [] {});
}

double ours() {
  const Folder folder;
  const auto logger = DDSQLiteLogger::initWithPath(NSString(folder.database()));
  DDLog::addLogger(logger);
  DDLog::flushLog();
  const auto begin = Clock::now();
  log(0, entries);
  DDLog::flushLog();
  const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  remove(logger);
  Database(folder.database()).expectEntries("ours");
  return seconds;
}

/// Inserts into the tables of a log that the logger has created.
double loop() {
  const Folder folder;
  {
    const auto logger = DDSQLiteLogger::initWithPath(NSString(folder.database()));
    DDLog::addLogger(logger);
    log(0, 1);
    remove(logger);
  }
  Database database(folder.database());
  database.run("DELETE FROM entry; PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
  std::vector<std::string> texts;
  for (int i = 0; i < entries; ++i) texts.push_back(textOf(i));
  sqlite3_stmt* const insert = database.prepare(
      "INSERT INTO entry(time, level, context, thread, queue, file, function, line, text) "
      "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)");
  const auto begin = Clock::now();
  database.run("BEGIN");
  for (int i = 0; i < entries; ++i) {
    sqlite3_bind_double(insert, 1, 1.7e9 + i * 1e-6);
    sqlite3_bind_int(insert, 2, LOG_FLAG_INFO);
    sqlite3_bind_int(insert, 3, 0);
    sqlite3_bind_int64(insert, 4, 4711);
    sqlite3_bind_text(insert, 5, "com.norvik.main-thread", -1, SQLITE_STATIC);
    sqlite3_bind_text(insert, 6, "/src/payroll/PayRun.cpp", -1, SQLITE_STATIC);
    sqlite3_bind_text(insert, 7, "runForMonth:", -1, SQLITE_STATIC);
    sqlite3_bind_int(insert, 8, 42);
    const std::string& text = texts[static_cast<std::size_t>(i)];
    sqlite3_bind_text(insert, 9, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    if (sqlite3_step(insert) != SQLITE_DONE) fail("an entry was refused");
    sqlite3_reset(insert);
  }
  database.run("COMMIT");
  const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  sqlite3_finalize(insert);
  database.expectEntries("the loop");
  return seconds;
}

void measure(benchmark::State& state, double (*run)()) {
  for (auto _ : state) state.SetIterationTime(run());
  state.counters["entries/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * entries, benchmark::Counter::kIsRate);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string subject = std::to_string(entries) + " entries into SQLite";
  for (const auto& [peer, run] : {std::pair{"/ours", &ours}, std::pair{"/loop", &loop}}) {
    benchmark::RegisterBenchmark((subject + peer).c_str(), measure, run)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->Repetitions(5)
        ->ReportAggregatesOnly(false);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}

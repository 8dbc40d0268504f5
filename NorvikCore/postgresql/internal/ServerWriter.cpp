#include "NorvikCore/postgresql/internal/ServerWriter.h"

#include "NorvikCore/platform/foundation/NSUUID.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/HostInfo.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

namespace norvik::detail {
namespace {

/// The lock serialises processes that find no tables. A role that may not create tables can use existing ones.
constexpr const char* tablesExist =
    "SELECT to_regclass('norvik_log') IS NOT NULL AND to_regclass('norvik_log_run') IS NOT NULL";
constexpr const char* makesTables =
    "BEGIN; SELECT pg_advisory_xact_lock(1315654759);"
    "CREATE TABLE IF NOT EXISTS norvik_log(id bigserial PRIMARY KEY, time timestamptz NOT NULL, machine text NOT NULL,"
    " program text NOT NULL, process integer NOT NULL, level integer NOT NULL, context integer NOT NULL,"
    " thread bigint NOT NULL, queue text NOT NULL, file text, function text, line integer NOT NULL, text text NOT "
    "NULL);"
    "CREATE INDEX IF NOT EXISTS norvik_log_time ON norvik_log(time);"
    "CREATE INDEX IF NOT EXISTS norvik_log_level ON norvik_log(level, time);"
    "CREATE TABLE IF NOT EXISTS norvik_log_run(run uuid PRIMARY KEY, batch bigint NOT NULL,"
    " time timestamptz NOT NULL DEFAULT now());"
    "COMMIT";
constexpr int deletedAtOnce = 10'000;

/// True if the server refuses the data at every attempt: it cannot store them, or not data of that size.
bool isRefusal(const ServerFailure& failure) {
  return failure.state.starts_with("22") || failure.state.starts_with("54");
}

std::string hostName() {
  std::string name;
  if (kernel::readFile("/proc/sys/kernel/hostname", name) != 0) return "unknown";
  while (!name.empty() && (name.back() == '\n' || name.back() == ' ')) name.pop_back();
  return name;
}

std::string text(std::string_view bytes) { return NSString(bytes).utf8(); }

// The binary form of COPY: numbers with the most significant byte first.

template <class Number>
void put(std::string& data, Number number) {
  char bytes[sizeof number];
  auto bits = static_cast<std::uint64_t>(number);
  for (std::size_t i = sizeof number; i-- > 0; bits >>= 8) bytes[i] = static_cast<char>(bits & 0xFF);
  data.append(bytes, sizeof bytes);
}

template <class Number>
void putField(std::string& data, Number number) {
  put<std::int32_t>(data, sizeof number);
  put(data, number);
}

/// Replaces zero bytes, because the server allows none in texts.
void putField(std::string& data, std::string_view text) {
  if (text.data() == nullptr) return put<std::int32_t>(data, -1);
  const std::size_t start = data.size();
  put<std::int32_t>(data, static_cast<std::int32_t>(text.size()));
  if (std::memchr(text.data(), '\0', text.size()) == nullptr) {
    data += text;
    return;
  }
  for (const char byte : text) {
    if (byte == '\0') {
      data += "\uFFFD";
    } else {
      data += byte;
    }
  }
  std::string size;
  put(size, static_cast<std::int32_t>(data.size() - start - sizeof(std::int32_t)));
  data.replace(start, size.size(), size);
}

/// Microseconds since 2000-01-01 UTC.
std::int64_t serverTime(double secondsSince1970) {
  constexpr double from1970To2000 = 946'684'800;
  return std::llround((secondsSince1970 - from1970To2000) * 1e6);
}

}  // namespace

ServerWriter::ServerWriter(std::string parameters)
    : connection_(std::move(parameters)),
      run_(NSUUID::UUID()->UUIDString().utf8()),
      machine_(text(hostName())),
      program_(text(kernel::processName())),
      process_(kernel::processId()) {}

bool ServerWriter::open(std::int64_t deadline, ServerFailure& failure) {
  if (connection_.isOpen()) return true;
  if (!connection_.open(deadline, failure)) return false;
  if (makeTables(deadline, failure)) return true;
  connection_.close();
  return false;
}

bool ServerWriter::makeTables(std::int64_t deadline, ServerFailure& failure) {
  std::string answer;
  if (!connection_.run(tablesExist, {}, deadline, failure, &answer)) return false;
  if (answer != "t" && !connection_.run(makesTables, {}, deadline, failure)) return false;
  return connection_.run("INSERT INTO norvik_log_run(run, batch) VALUES($1::uuid, 0) ON CONFLICT DO NOTHING", {run_},
                         deadline, failure);
}

/// Waits for a transaction of the previous connection that is still being committed.
bool ServerWriter::isCommitted(std::int64_t deadline, ServerFailure& failure, bool& answer) {
  std::string batch;
  if (!connection_.run("SELECT batch FROM norvik_log_run WHERE run = $1::uuid FOR UPDATE", {run_}, deadline, failure,
                       &batch)) {
    return false;
  }
  answer = batch == std::to_string(batch_);
  return true;
}

bool ServerWriter::write(const EntryBuffer& entries, std::int64_t deadline, std::size_t& written,
                         std::uint64_t& refused, std::string& failure) {
  std::vector<StoredEntry> rows;
  rows.reserve(entries.count());
  entries.forEach([&](const StoredEntry& entry) {
    rows.push_back(entry);
    return true;
  });
  ServerFailure problem;
  bool mayBeStale = connection_.isOpen();
  // If the server has closed the connection since the last batch, the first use fails.
  const auto goesOn = [&] {
    if (std::exchange(mayBeStale, false) && !connection_.isOpen()) return true;
    failure = problem.text;
    return false;
  };
  for (std::size_t atOnce = rows.size(); written < rows.size();) {
    if (!open(deadline, problem)) {
      failure = problem.text;
      return false;
    }
    if (uncertainEnd_ != 0) {
      bool isThere = false;
      if (!isCommitted(deadline, problem, isThere)) {
        if (goesOn()) continue;
        return false;
      }
      const std::size_t end = std::exchange(uncertainEnd_, 0);
      if (isThere) written = end;
      continue;
    }
    const std::size_t end = std::min(rows.size(), written + atOnce);
    switch (writeRows(rows, written, end, deadline, problem)) {
      case Outcome::written:
        written = end;
        break;
      case Outcome::refused:
        if (end - written > 1) {
          atOnce = (end - written) / 2;
          break;
        }
        ++refused;
        ++written;
        failure = problem.text;
        break;
      case Outcome::failed:
        if (goesOn()) break;
        return false;
    }
  }
  return true;
}

ServerWriter::Outcome ServerWriter::writeRows(const std::vector<StoredEntry>& rows, std::size_t from, std::size_t to,
                                              std::int64_t deadline, ServerFailure& failure) {
  encode(rows, from, to);
  ++batch_;
  const std::string sql =
      "BEGIN; COPY norvik_log(time, machine, program, process, level, context, thread, queue, file, function, line, "
      "text) FROM STDIN (FORMAT binary); INSERT INTO norvik_log_run(run, batch) VALUES('" +
      run_ + "', " + std::to_string(batch_) +
      ") ON CONFLICT (run) DO UPDATE SET batch = excluded.batch, time = now(); COMMIT";
  bool isUncertain = false;
  const bool isWritten = connection_.copy(sql, data_, deadline, failure, isUncertain);
  constexpr std::size_t usualSize = 4 << 20;
  if (data_.capacity() > usualSize) data_ = {};
  if (isWritten) return Outcome::written;
  if (isUncertain) uncertainEnd_ = to;
  if (connection_.isOpen()) {
    ServerFailure ignored;
    if (!connection_.run("ROLLBACK", {}, deadline, ignored)) connection_.close();
  }
  return isRefusal(failure) ? Outcome::refused : Outcome::failed;
}

void ServerWriter::encode(const std::vector<StoredEntry>& rows, std::size_t from, std::size_t to) {
  constexpr std::string_view signature("PGCOPY\n\377\r\n\0", 11);
  constexpr std::int16_t fields = 12, end = -1;
  data_.assign(signature);
  put<std::int32_t>(data_, 0);  // flags
  put<std::int32_t>(data_, 0);  // no extension
  for (std::size_t i = from; i < to; ++i) {
    const StoredEntry& row = rows[i];
    put(data_, fields);
    putField(data_, serverTime(row.time));
    putField(data_, std::string_view(machine_));
    putField(data_, std::string_view(program_));
    putField(data_, process_);
    putField(data_, row.level);
    putField(data_, row.context);
    putField(data_, static_cast<std::int64_t>(row.thread));
    putField(data_, row.queue);
    putField(data_, row.file);
    putField(data_, row.function);
    putField(data_, row.line);
    putField(data_, row.text);
  }
  put(data_, end);
}

bool ServerWriter::deleteOlder(double seconds, std::int64_t deadline, bool& isFinished, std::string& failure) {
  ServerFailure problem;
  std::string deleted;
  constexpr double oldest = 1e9;  // seconds, about 30 years: what an interval of the server holds in any case
  const bool isDone =
      open(deadline, problem) &&
      connection_.run(
          "WITH gone AS (DELETE FROM norvik_log WHERE id IN (SELECT id FROM norvik_log WHERE machine = $1"
          " AND time < now() - make_interval(secs => $2::float8) ORDER BY time LIMIT $3::integer) RETURNING 1)"
          " SELECT count(*) FROM gone",
          {machine_, std::to_string(std::min(seconds, oldest)), std::to_string(deletedAtOnce)}, deadline, problem,
          &deleted) &&
      connection_.run("DELETE FROM norvik_log_run WHERE run <> $1::uuid AND time < now() - interval '30 days'", {run_},
                      deadline, problem);
  failure = problem.text;
  isFinished = deleted != std::to_string(deletedAtOnce);
  return isDone;
}

}  // namespace norvik::detail

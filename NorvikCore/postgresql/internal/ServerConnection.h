// NorvikCore/postgresql/internal/ServerConnection.h - a connection to a PostgreSQL server. Each operation waits for the
// server until a deadline at most.
//
//   ServerConnection connection("host=db.office dbname=payroll");
//   ServerFailure failure;
//   if (!connection.open(deadline, failure)) return failure.text;
//   connection.run("SELECT 1", {}, deadline, failure, &answer);
//
// Failures name hosts, databases and users as the server and libpq do. They never contain the connection string, or a
// part of it that could be a password.
//
// Confined. The library's locks are not held while it waits for the server. When the process ends, or shuts down what
// libpq needs (LibpqVisit.h), every operation fails, and the connection is not closed properly.
#pragma once

#include "NorvikCore/postgresql/internal/LibpqVisit.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

struct pg_conn;
struct pg_result;

namespace norvik::kernel {
enum class Readiness : std::uint8_t;
}

namespace norvik::detail {

struct ServerFailure {
  std::string text;
  std::string state;  // the five characters of the server's SQLSTATE; empty if the failure is not the server's
};

class ServerConnection {
 public:
  /// `parameters` is a connection string or a connection URI, as libpq reads it.
  explicit ServerConnection(std::string parameters);
  ServerConnection(const ServerConnection&) = delete;
  ServerConnection& operator=(const ServerConnection&) = delete;
  ~ServerConnection();

  /// The host and the database, for messages.
  [[nodiscard]] static std::string nameOf(const std::string& parameters);

  [[nodiscard]] bool open(std::int64_t deadline, ServerFailure& failure);
  [[nodiscard]] bool isOpen() const noexcept { return connection_ != nullptr; }
  void close() noexcept;
  /// In a child made by fork(): leaves the connection to the parent.
  void abandon() noexcept;

  /// Runs one or several statements, or one with arguments ($1 and so on). `answer` is the first column of the first
  /// row of the last statement that returns rows.
  [[nodiscard]] bool run(const char* sql, std::initializer_list<std::string> arguments, std::int64_t deadline,
                         ServerFailure& failure, std::string* answer = nullptr);
  /// Runs statements of which one is a COPY FROM STDIN, which receives `data`. `isUncertain` is true if the connection
  /// was lost after everything was sent: the statements may or may not have been executed.
  [[nodiscard]] bool copy(const std::string& sql, std::string_view data, std::int64_t deadline, ServerFailure& failure,
                          bool& isUncertain);

 private:
  [[nodiscard]] bool connect(std::int64_t deadline, ServerFailure& failure);
  [[nodiscard]] bool perform(const char* sql, std::initializer_list<std::string> arguments, std::int64_t deadline,
                             ServerFailure& failure, std::string* answer);
  [[nodiscard]] bool performCopy(const std::string& sql, std::string_view data, std::int64_t deadline,
                                 ServerFailure& failure, bool& isUncertain);
  /// Calls `work()` in a visit to libpq.
  template <class Work>
  [[nodiscard]] bool visit(ServerFailure& failure, Work work);
  [[nodiscard]] bool start(std::int64_t deadline, ServerFailure& failure);
  [[nodiscard]] bool flush(std::int64_t deadline, ServerFailure& failure);
  [[nodiscard]] bool awaitResult(std::int64_t deadline, ServerFailure& failure, pg_result*& result);
  [[nodiscard]] bool put(std::string_view data, std::int64_t deadline, ServerFailure& failure);
  [[nodiscard]] bool beginVisit() { return visit_.isOn() || visit_.begin(use_); }
  [[nodiscard]] bool wait(kernel::Readiness wanted, std::int64_t deadline, ServerFailure& failure);
  bool lost(ServerFailure& failure);
  bool timedOut(ServerFailure& failure);
  bool tooLate(ServerFailure& failure);

  const std::string parameters_;
  pg_conn* connection_ = nullptr;
  LibpqVisit visit_;
  LibpqVisit::Use use_ = LibpqVisit::Use::ofOpenSSL;  // of the connection
};

}  // namespace norvik::detail

// NorvikCore/platform/kernel/SyslogClient.h - a connection to the system's log service, on which no call ever waits.
//
//   kernel::SyslogClient client("payrun");
//   client.log({.level = 4, .text = "no bank account for Zoë Smith", .file = "PayRun.cpp", .line = 42});
//   if (client.hasWaiting()) ...                    // later: client.sendWaiting()
//
// If the journal listens, its native protocol is used: each part of an entry is a field, and texts of any bytes and
// size are unchanged. Otherwise lines of RFC 3164 are sent to "/dev/log", a datagram or a stream socket. Control
// characters and line feeds are then written as "#012", as log daemons do, so that one entry is one line. A line longer
// than 64 KiB is cut and ends with "[cut]".
//
// No call waits. If the service is missing or refuses an entry, the entry is lost and counted. If the service is full,
// entries wait in memory: at most 1000 entries or a megabyte, and for five seconds without one being accepted; beyond
// that they are lost. After a restart of the service the client connects again, with at most ten attempts a second.
//
// Before each entry the client checks whether the program has closed the descriptor and perhaps reused its number; such
// a descriptor is left alone. A forked child continues with the connection, or with a stream of its own; the waiting
// entries belong to the parent.
//
// Threads: confined.
// Errors:  only the constructor may raise, std::bad_alloc. An entry for which there is no memory is lost and counted
//          (ENOMEM).
#pragma once  // include time: <deque> and <string> are members

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace norvik::kernel {

class ClockSource;

/// Empty texts and zeros are not sent, except the level and the text.
struct SyslogEntry {
  int level = 5;  ///< 0 emergency to 7 debug
  std::string_view text;
  std::string_view file = {}, function = {};
  int line = 0;
  std::uint32_t threadId = 0;
  std::string_view threadName = {}, queueLabel = {};
  std::int64_t localSeconds = 0;  ///< the time, for lines: seconds since 1970-01-01 00:00:00 of the local clock
};

class NK_EXPORT SyslogClient {
 public:
  enum class Service : std::uint8_t { none, journal, datagrams, stream };

  /// Connects if a service listens. The identity names the source of the entries.
  explicit SyslogClient(std::string identity);
  /// The clock must outlive the client; for tests.
  SyslogClient(std::string identity, const ClockSource& clock);
  ~SyslogClient();
  SyslogClient(const SyslogClient&) = delete;
  SyslogClient& operator=(const SyslogClient&) = delete;

  void log(const SyslogEntry& entry);
  /// Counts a lost entry that the caller could not form because it had no memory.
  void loseUnformed() noexcept;
  /// Attempts again to send the waiting entries.
  void sendWaiting();
  [[nodiscard]] bool hasWaiting() const noexcept { return !waiting_.empty(); }

  /// The service that is connected now.
  [[nodiscard]] Service service() const noexcept { return socket_ < 0 ? Service::none : service_; }
  [[nodiscard]] std::uint64_t taken() const noexcept { return taken_; }
  [[nodiscard]] std::uint64_t lost() const noexcept { return lost_; }
  /// The reason why the last lost entry was lost: an error number.
  [[nodiscard]] int lastError() const noexcept { return lastError_; }

 private:
  void transmitOrKeep(const SyslogEntry& entry);
  void follow();
  [[nodiscard]] int connect();
  [[nodiscard]] int connectTo(const std::string& path, int type, Service service);
  [[nodiscard]] bool ownsSocket() const noexcept;
  void disconnect() noexcept;
  void encode(const SyslogEntry& entry);
  /// 0, EAGAIN if the service is full, or another error. Sending starts at `sent`, which then counts the bytes sent.
  [[nodiscard]] int transmit(std::string_view bytes, std::size_t& sent);
  [[nodiscard]] int transmitFile(std::string_view bytes) noexcept;
  /// False while the service is full.
  [[nodiscard]] bool drain();
  [[nodiscard]] bool mayWait(std::size_t size) const noexcept;
  void keep(std::string_view bytes, std::size_t sent);
  void lose(int error, std::uint64_t entries = 1) noexcept;
  void loseWaiting(int error) noexcept;

  const std::string identity_;
  const ClockSource& clock_;
  Service service_ = Service::none;  // the last service that was connected
  int socket_ = -1;
  std::uint64_t device_ = 0, inode_ = 0;  // of the socket
  std::uint32_t generation_ = 0;          // the process that connected (kernel::forkGeneration)
  std::uint32_t revision_ = 0;            // of the places
  std::int64_t attemptsSince_ = 0;        // the second in which attempts are counted
  int attempts_ = 0;
  std::string entry_;                // encoded; kept for its memory
  std::deque<std::string> waiting_;  // encoded for service_
  std::size_t waitingBytes_ = 0, sentOfFirst_ = 0;
  std::int64_t waitingSince_ = 0;  // when the last entry was accepted, or the first began to wait
  std::uint64_t taken_ = 0, lost_ = 0;
  int lastError_ = 0;
};

/// For tests: the sockets of the services while an object of this class lives. Entries that wait for a service
/// elsewhere are lost. Synchronised; nested objects must end in reverse order.
class NK_EXPORT SyslogPlaces {
 public:
  SyslogPlaces(std::string journal, std::string lines);
  ~SyslogPlaces();
  SyslogPlaces(const SyslogPlaces&) = delete;
  SyslogPlaces& operator=(const SyslogPlaces&) = delete;

 private:
  std::string journalBefore_, linesBefore_;
};

}  // namespace norvik::kernel

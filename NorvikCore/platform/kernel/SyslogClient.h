// NorvikCore/platform/kernel/SyslogClient.h - a connection to the system's log service, which is never waited for.
//
//   kernel::SyslogClient client("payrun");
//   client.log({.level = 4, .text = "no bank account for Zoë Smith", .file = "PayRun.cpp", .line = 42});
//   if (client.hasWaiting()) ...                    // some time later: client.sendWaiting()
//
// The journal's native protocol where the journal listens: each part of an entry is a field, texts of any bytes and
// size stay as they are. Else lines of RFC 3164 to "/dev/log", a datagram or a stream socket: control characters and
// line feeds are written as "#012", as log daemons do, so that one entry is one line; what is then longer than 64
// KiB is cut, and ends with "[cut]".
//
// No call waits. Where the service is missing or refuses an entry, that is lost and counted. Where it is full, entries
// wait in memory, 1000 or a megabyte of them, and five seconds without one being taken; beyond that they are lost. A
// service that was restarted is connected to again, by ten attempts a second at most.
//
// A descriptor that the program has closed, and may use for something else by now, is noticed before each entry and
// left alone. A forked child goes on with the connection, or a stream of its own; the waiting entries are the parent's.
//
// Threads: confined. Nothing is raised but by the constructor, which may raise std::bad_alloc. An entry that there is
// no memory for is lost and counted (ENOMEM).
#pragma once  // include time: <deque> and <string> are members

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace norvik::kernel {

class ClockSource;

/// Empty texts and zeros are not told to the service, except for the level and the text.
struct SyslogEntry {
  int level = 5;  ///< 0 emergency to 7 debug
  std::string_view text;
  std::string_view file = {}, function = {};
  int line = 0;
  std::uint32_t threadId = 0;
  std::string_view threadName = {}, queueLabel = {};
  std::int64_t localSeconds = 0;  ///< when, for lines: seconds since 1970-01-01 00:00:00 of the local clock
};

class NK_EXPORT SyslogClient {
 public:
  enum class Service : std::uint8_t { none, journal, datagrams, stream };

  /// Connects where a service listens. The identity names the source of the entries.
  explicit SyslogClient(std::string identity);
  /// The clock lives longer; for tests.
  SyslogClient(std::string identity, const ClockSource& clock);
  ~SyslogClient();
  SyslogClient(const SyslogClient&) = delete;
  SyslogClient& operator=(const SyslogClient&) = delete;

  void log(const SyslogEntry& entry);
  /// Counts an entry that the caller had no memory for.
  void loseUnformed() noexcept;
  /// Attempts once more to send the waiting entries.
  void sendWaiting();
  [[nodiscard]] bool hasWaiting() const noexcept { return !waiting_.empty(); }

  /// What is connected now.
  [[nodiscard]] Service service() const noexcept { return socket_ < 0 ? Service::none : service_; }
  [[nodiscard]] std::uint64_t taken() const noexcept { return taken_; }
  [[nodiscard]] std::uint64_t lost() const noexcept { return lost_; }
  /// Why the last lost entry was lost: an error number.
  [[nodiscard]] int lastError() const noexcept { return lastError_; }

 private:
  void transmitOrKeep(const SyslogEntry& entry);
  void follow();
  [[nodiscard]] int connect();
  [[nodiscard]] int connectTo(const std::string& path, int type, Service service);
  [[nodiscard]] bool ownsSocket() const noexcept;
  void disconnect() noexcept;
  void encode(const SyslogEntry& entry);
  /// 0, EAGAIN where the service is full, or another error. `sent` goes on from what was sent before.
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
  Service service_ = Service::none;  // what was connected last
  int socket_ = -1;
  std::uint64_t device_ = 0, inode_ = 0;  // of the socket
  std::uint32_t generation_ = 0;          // the process that connected (kernel::forkGeneration)
  std::uint32_t revision_ = 0;            // of the places
  std::int64_t attemptsSince_ = 0;        // the second in which attempts are counted
  int attempts_ = 0;
  std::string entry_;                // encoded; kept for its memory
  std::deque<std::string> waiting_;  // encoded for service_
  std::size_t waitingBytes_ = 0, sentOfFirst_ = 0;
  std::int64_t waitingSince_ = 0;  // the last one was taken, or the first began to wait
  std::uint64_t taken_ = 0, lost_ = 0;
  int lastError_ = 0;
};

/// For tests: where the services listen while it lives. Entries that wait for a service elsewhere are lost.
/// Synchronised; nested ones end in reverse order.
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

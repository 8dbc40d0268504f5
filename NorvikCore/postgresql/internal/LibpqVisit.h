// NorvikCore/postgresql/internal/LibpqVisit.h - calls of libpq while the process ends.
//
//   LibpqVisit visit;
//   if (!visit.begin(LibpqVisit::Use::ofOpenSSL)) return leaveConnectionAsItIs();
//   PQconnectPoll(connection);
//   visit.end();      // before waiting for the server
//
// The log is flushed last of all, after every function given to atexit(); and libpq then still needs OpenSSL, for TLS
// and for passwords, and Kerberos. Three things make them last so long:
//
// 1. When this library is loaded it tells OpenSSL not to clean up at exit, also where the program uses it first. The
//    kernel takes its memory back.
// 2. If the program used OpenSSL before it loaded this library (by dlopen), or calls OPENSSL_cleanup(), the clean-up
//    takes place. The log is flushed before the one at exit. After it no visit for OpenSSL begins.
// 3. When the loader finishes this library the log is flushed: libpq and what it uses are finished after this library,
//    but may be finished before the core. After that no visit begins.
//
// A clean-up waits for the visits that have begun, for a second at most.
//
// Confined.
#pragma once

#include "NorvikCore/platform/dispatch/Group.h"

#include <cstdint>
#include <optional>

namespace norvik::detail {

class LibpqVisit {
 public:
  enum class Use : std::uint8_t { ofLibpqAlone, ofOpenSSL };

  LibpqVisit() = default;
  LibpqVisit(const LibpqVisit&) = delete;
  LibpqVisit& operator=(const LibpqVisit&) = delete;
  ~LibpqVisit() { end(); }

  /// False where it is too late.
  [[nodiscard]] bool begin(Use use);
  void end() noexcept;
  [[nodiscard]] bool isOn() const noexcept { return calls_.has_value(); }

 private:
  std::optional<dispatch_group_t> calls_;
};

}  // namespace norvik::detail

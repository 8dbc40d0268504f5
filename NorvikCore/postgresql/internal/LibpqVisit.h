// NorvikCore/postgresql/internal/LibpqVisit.h - makes calls of libpq safe while the process ends.
//
//   LibpqVisit visit;
//   if (!visit.begin(LibpqVisit::Use::ofOpenSSL)) return leaveConnectionAsItIs();
//   PQconnectPoll(connection);
//   visit.end();      // before waiting for the server
//
// The log is flushed at the very end, after every function given to atexit(). libpq then still needs OpenSSL (for
// TLS and for passwords) and Kerberos. Three measures keep them usable for so long:
//
// 1. When this library is loaded it tells OpenSSL not to clean up at exit, also if the program itself is the
//    first to use OpenSSL after that. The kernel reclaims OpenSSL's memory.
// 2. If the program used OpenSSL before it loaded this library (by dlopen), or calls OPENSSL_cleanup(), the clean-up
//    takes place. The log is flushed before the clean-up at exit. After a clean-up no visit that uses OpenSSL begins.
// 3. When the loader finalises this library the log is flushed, because libpq and its dependencies are finalised after
//    this library, but possibly before the core. After that no visit begins.
//
// A clean-up waits, for at most a second, for the visits that have begun.
//
// Threads: confined.
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

  /// Returns false if it is too late.
  [[nodiscard]] bool begin(Use use);
  void end() noexcept;
  [[nodiscard]] bool isOn() const noexcept { return calls_.has_value(); }

 private:
  std::optional<dispatch_group_t> calls_;
};

}  // namespace norvik::detail

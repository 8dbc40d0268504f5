#include "NorvikCore/platform/kernel/internal/TickClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace norvik::kernel {
namespace {

constexpr std::int64_t microsecond = 1000;

struct Noted {
  std::int64_t before, after;
  std::uint64_t note;
};

Noted noteNow(const TickClock& clock) {
  Noted noted{};
  noted.before = wallNanoseconds();
  noted.note = clock.now();
  noted.after = wallNanoseconds();
  return noted;
}

void letPass(std::int64_t nanoseconds) {
  const std::int64_t until = monotonicNanoseconds() + nanoseconds;
  while (monotonicNanoseconds() < until) {
  }
}

/// The distance of the converted note from the interval in which it was made; not positive if inside.
std::int64_t error(const TickClock& clock, const Noted& noted) {
  const std::int64_t found = clock.wallNanoseconds(noted.note);
  return std::max(noted.before - found, found - noted.after);
}

TEST(TickClock, HeaderExample) {
  TickClock clock;
  const std::int64_t before = wallNanoseconds();
  const std::uint64_t note = clock.now();
  clock.read();
  EXPECT_GE(clock.wallNanoseconds(note), before - 1'000'000);
  EXPECT_LE(clock.wallNanoseconds(note), wallNanoseconds() + 1'000'000);
}

TEST(TickClock, ANoteComesOutAsTheTimeOfItsMakingToAMicrosecond) {
  TickClock clock;
  std::vector<std::int64_t> errors;
  for (const std::int64_t age : {0L, 1'000L, 100'000L, 1'000'000L, 10'000'000L}) {
    for (int i = 0; i < 20; ++i) {
      const Noted noted = noteNow(clock);
      letPass(age);
      clock.read();
      errors.push_back(error(clock, noted));
    }
  }
  // A few of them include pauses of a virtual machine.
  std::sort(errors.begin(), errors.end());
  EXPECT_LE(errors[errors.size() * 95 / 100], microsecond);
}

TEST(TickClock, ANoteMayBeOlderOrYoungerThanTheLastReading) {
  TickClock clock;
  letPass(5'000'000);
  const Noted older = noteNow(clock);
  letPass(1'000'000);
  clock.read();
  const Noted younger = noteNow(clock);
  EXPECT_LE(error(clock, older), 5 * microsecond);
  EXPECT_LE(error(clock, younger), 5 * microsecond);
  EXPECT_LT(clock.wallNanoseconds(older.note), clock.wallNanoseconds(younger.note));
}

TEST(TickClock, NotesKeepTheirOrderAndTheirDistance) {
  TickClock clock;
  letPass(1'000'000);
  const std::uint64_t first = clock.now();
  letPass(2'000'000);
  const std::uint64_t second = clock.now();
  clock.read();
  const std::int64_t distance = clock.wallNanoseconds(second) - clock.wallNanoseconds(first);
  EXPECT_GE(distance, 2'000'000 - microsecond);
  EXPECT_LE(distance, 200'000'000) << "unless the machine paused";
}

TEST(TickClock, ReadingsOverSecondsDoNotDrift) {
  TickClock clock;
  for (int i = 0; i < 25; ++i) {  // longer than the interval after which the rate is measured again
    letPass(100'000'000);
    clock.read();
    std::vector<std::int64_t> errors;
    for (int k = 0; k < 5; ++k) {
      const Noted noted = noteNow(clock);
      letPass(100'000);
      clock.read();
      errors.push_back(error(clock, noted));
    }
    std::sort(errors.begin(), errors.end());
    ASSERT_LE(errors[2], microsecond) << "in the tenth of a second number " << i;
  }
}

}  // namespace
}  // namespace norvik::kernel

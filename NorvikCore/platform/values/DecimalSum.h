// NorvikCore/platform/values/DecimalSum.h - the sum of many decimal numbers, several times as fast as repeated
// addition.
//
//   DecimalSum net;
//   for (const Payslip& slip : slips) net += slip.net;
//   Decimal total = net.value();
//
// The sum equals the result of plain additions in the same order, starting from 0: the digits, the exponent,
// not-a-number, and the exceptions. An addition that raises leaves the sum unchanged.
//
// A value; distinct sums are independent.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Decimal.h"

#include <cstddef>

namespace norvik {

class NK_EXPORT DecimalSum {
 public:
  DecimalSum() noexcept = default;

  DecimalSum& operator+=(const Decimal& number) {
    // One path for all exponents that are not smaller: a branch for the equal ones would be mispredicted.
    const int shift = number.exponent() - exponent_;
    if ((number.high_ | number.low_ >> 63) == 0 && static_cast<unsigned>(shift) <= 18u) [[likely]] {
      const detail::Int128 sum =
          total_ + static_cast<detail::Int128>(number.smallValue()) * detail::alignmentFactors[shift];
      if (fits(sum)) [[likely]] {
        total_ = sum;
        return *this;
      }
    }
    // No address of this object is passed on, here and in value(), so that a sum that is a local variable stays in
    // registers during a loop.
    const DecimalSum sum = sumOf(total_, wide_, exponent_, number);
    total_ = sum.total_;
    wide_ = sum.wide_;
    exponent_ = sum.exponent_;
    return *this;
  }

  /// Adds `count` consecutive numbers. If an addition raises, the numbers before it were added.
  void add(const Decimal* numbers, std::size_t count) {
    DecimalSum sum = *this;
    try {
      for (const Decimal* number = numbers; number != numbers + count; ++number) sum += *number;
    } catch (...) {
      *this = sum;
      throw;
    }
    *this = sum;
  }

  [[nodiscard]] Decimal value() const noexcept { return valueOf(total_, wide_, exponent_); }

 private:
  static constexpr int noExponent = 1000;  // no number has it, so every addition takes the wide path

  /// True if the magnitude is below 2^126, and so below 10^38.
  static bool fits(detail::Int128 sum) noexcept {
    return static_cast<std::uint64_t>(static_cast<detail::UInt128>(sum) >> 64) + (std::uint64_t{1} << 62) <
           std::uint64_t{1} << 63;
  }
  static DecimalSum sumOf(detail::Int128 total, Decimal wide, int exponent, const Decimal& number);
  static Decimal valueOf(detail::Int128 total, Decimal wide, int exponent) noexcept;
  void addWide(const Decimal& number);

  detail::Int128 total_ = 0;  // in units of 10^exponent_
  Decimal wide_;              // the sum if total_ cannot hold it
  int exponent_ = 0;
};

}  // namespace norvik

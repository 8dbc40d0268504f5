// NorvikCore/platform/values/NSNumber.h - a number of any kind: boolean, integer, double or decimal.
//
//   NSNumber pay = 1234.5;
//   pay.decimalValue();                 // the Decimal 1234.5
//   pay == NSNumber(Decimal(12345) / 10);   // true: equality goes by the number, not by its kind
//
// A double equals the decimal that Decimal(double) makes of it, so 0.1 equals the decimal 0.1; one that no decimal can
// be is compared as a double. Not-a-number equals itself and is less than every number. The order is total and goes
// with the hash.
//
// A value of 32 bytes at most: copied freely, safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSComparisonResult.h"
#include "NorvikCore/platform/values/NSString.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>

namespace norvik {

class NK_EXPORT NSNumber {
 public:
  enum class Kind : std::uint8_t { Boolean, Integer, Unsigned, Double, Decimal };

  /// The integer zero.
  constexpr NSNumber() noexcept : integer_(0), kind_(Kind::Integer) {}
  // Every number is an NSNumber, so these convert silently.
  constexpr NSNumber(std::same_as<bool> auto boolean) noexcept : integer_(boolean ? 1 : 0), kind_(Kind::Boolean) {}
  template <std::integral I>
  requires(!std::same_as<I, bool>) constexpr NSNumber(I integer) noexcept : integer_(0), kind_(Kind::Integer) {
    if constexpr (std::unsigned_integral<I> && sizeof(I) == 8) {
      unsigned_ = integer;
      kind_ = Kind::Unsigned;
    } else {
      integer_ = static_cast<std::int64_t>(integer);
    }
  }
  template <std::floating_point F>
  constexpr NSNumber(F real) noexcept : real_(static_cast<double>(real)), kind_(Kind::Double) {}
  constexpr NSNumber(const norvik::Decimal& decimal) noexcept : decimal_(decimal), kind_(Kind::Decimal) {}

  [[nodiscard]] constexpr Kind kind() const noexcept { return kind_; }
  [[nodiscard]] constexpr bool isBool() const noexcept { return kind_ == Kind::Boolean; }

  /// Zero and not-a-number are false.
  [[nodiscard]] bool boolValue() const noexcept;
  /// These cut a fraction off and give the nearest limit where the number is out of range; not-a-number gives 0.
  [[nodiscard]] int intValue() const noexcept;
  [[nodiscard]] std::int64_t integerValue() const noexcept { return longLongValue(); }
  [[nodiscard]] std::int64_t longLongValue() const noexcept;
  [[nodiscard]] std::uint64_t unsignedLongLongValue() const noexcept;
  [[nodiscard]] double doubleValue() const noexcept;
  /// Integers exactly, a double as Decimal(double) says.
  [[nodiscard]] norvik::Decimal decimalValue() const noexcept;
  /// The digits without grouping, "." before a fraction; a boolean gives "1" or "0", a double the fewest digits that
  /// read back as the same double.
  [[nodiscard]] NSString stringValue() const;

  [[nodiscard]] NSComparisonResult compare(const NSNumber& other) const noexcept {
    return comparisonResult(*this <=> other);
  }
  [[nodiscard]] bool isEqualToNumber(const NSNumber& other) const noexcept { return *this == other; }
  [[nodiscard]] std::size_t hash() const noexcept;

  friend bool operator==(const NSNumber& a, const NSNumber& b) noexcept { return (a <=> b) == 0; }
  friend std::weak_ordering operator<=>(const NSNumber& a, const NSNumber& b) noexcept { return a.order(b); }

 private:
  [[nodiscard]] std::weak_ordering order(const NSNumber& other) const noexcept;

  union {
    std::int64_t integer_;
    std::uint64_t unsigned_;
    double real_;
    norvik::Decimal decimal_;
  };
  Kind kind_;
};

static_assert(sizeof(NSNumber) <= 32);

/// Writes stringValue().
NK_EXPORT std::ostream& operator<<(std::ostream& out, const NSNumber& number);

}  // namespace norvik

template <>
struct std::hash<norvik::NSNumber> {
  std::size_t operator()(const norvik::NSNumber& number) const noexcept { return number.hash(); }
};

// NorvikCore/platform/values/NSNumber.h - a number of any kind: a boolean, an integer, a double or a decimal.
//
//   NSNumber hours = 37.5, rate = 12.21_dec, staff = 40;
//   hours.kind();                                    // NSNumber::Kind::Double
//   hours.decimalValue() * rate.decimalValue();      // 457.875
//   NSNumber(5) == NSNumber(5.00_dec);               // true, and their hashes are equal
//
// An NSNumber stores the number in its original kind. Equality, order and hash depend only on the numeric value
// (NumberOrder.h), so `true` equals 1. A conversion to a kind that cannot hold the number returns the nearest value: a
// fraction is discarded, a number out of range becomes the end of the range, and not-a-number becomes 0 if that kind
// has no not-a-number.
//
// Values of 32 bytes: no allocation, constant time, safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSInteger.h"
#include "NorvikCore/platform/values/NSString.h"
#include "NorvikCore/platform/values/NumberOrder.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>

namespace norvik {

class NK_EXPORT NSNumber {
 public:
  enum class Kind : std::uint8_t { Boolean, Integer, Unsigned, Double, Decimal };

  /// The integer 0.
  constexpr NSNumber() noexcept : integer_(0), kind_(Kind::Integer) {}
  constexpr NSNumber(std::same_as<bool> auto value) noexcept  // NOLINT(google-explicit-constructor): as all below
      : boolean_(value), kind_(Kind::Boolean) {}
  /// An integer of any type has the kind Integer if it fits 64 bits with a sign, else the kind Unsigned.
  template <detail::WholeNumber Integer>
  constexpr NSNumber(Integer value) noexcept
      : integer_(static_cast<std::int64_t>(value)),
        kind_(static_cast<std::uint64_t>(value) > INT64_MAX && value > 0 ? Kind::Unsigned : Kind::Integer) {}
  /// The number of a character; the conversion must be explicit.
  template <std::integral Character>
  requires detail::isCharacter<Character>
  explicit constexpr NSNumber(Character value) noexcept : NSNumber(static_cast<std::int64_t>(value)) {}
  template <std::floating_point Float>
  requires(sizeof(Float) <= sizeof(double)) constexpr NSNumber(Float value) noexcept
      : double_(static_cast<double>(value)), kind_(Kind::Double) {}
  constexpr NSNumber(const Decimal& value) noexcept : decimal_(value), kind_(Kind::Decimal) {}

  [[nodiscard]] constexpr Kind kind() const noexcept { return kind_; }
  [[nodiscard]] constexpr bool isBool() const noexcept { return kind_ == Kind::Boolean; }
  [[nodiscard]] bool isNaN() const noexcept;

  /// True for every number except 0; false for not-a-number.
  [[nodiscard]] bool boolValue() const noexcept;
  [[nodiscard]] int intValue() const noexcept;
  [[nodiscard]] NSInteger integerValue() const noexcept { return longLongValue(); }
  [[nodiscard]] NSUInteger unsignedIntegerValue() const noexcept { return unsignedLongLongValue(); }
  [[nodiscard]] std::int64_t longLongValue() const noexcept;
  [[nodiscard]] std::uint64_t unsignedLongLongValue() const noexcept;
  /// The nearest double.
  [[nodiscard]] double doubleValue() const noexcept;
  /// Exact for booleans, integers and decimals. A double converts as in Decimal(double): 0.1 is 0.1, infinity
  /// not-a-number.
  [[nodiscard]] Decimal decimalValue() const noexcept;

  /// The digits: "1" or "0" for a boolean; for a double the shortest digits that read back as the same double ("0.1",
  /// "1e+21", "inf", "nan"); for a decimal its own digits.
  [[nodiscard]] NSString stringValue() const;

  [[nodiscard]] NSComparisonResult compare(const NSNumber& other) const noexcept {
    return comparisonResult(*this <=> other);
  }
  [[nodiscard]] bool isEqualToNumber(const NSNumber& other) const noexcept { return *this == other; }
  friend std::weak_ordering operator<=>(const NSNumber& a, const NSNumber& b) noexcept { return a.order(b); }
  friend bool operator==(const NSNumber& a, const NSNumber& b) noexcept { return a.order(b) == 0; }
  [[nodiscard]] std::size_t hash() const noexcept;

  /// Writes stringValue().
  NK_EXPORT friend std::ostream& operator<<(std::ostream& out, const NSNumber& number);

 private:
  [[nodiscard]] std::weak_ordering order(const NSNumber& other) const noexcept;
  template <class Function>
  auto visit(Function function) const;

  union {
    bool boolean_;
    std::int64_t integer_;  // also the bits of an Unsigned
    double double_;
    Decimal decimal_;
  };
  Kind kind_;
};

static_assert(sizeof(NSNumber) == 32);

}  // namespace norvik

template <>
struct std::hash<norvik::NSNumber> {
  [[nodiscard]] std::size_t operator()(const norvik::NSNumber& number) const noexcept { return number.hash(); }
};

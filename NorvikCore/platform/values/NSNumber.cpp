#include "NorvikCore/platform/values/NSNumber.h"

#include "NorvikCore/platform/values/NumberHash.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <ostream>

namespace norvik {
namespace {

template <class Integer>
Integer saturated(double real, double belowLeast, double aboveGreatest) noexcept {
  using Limits = std::numeric_limits<Integer>;
  if (real != real) return 0;
  if (real <= belowLeast) return Limits::min();
  if (real >= aboveGreatest) return Limits::max();
  return static_cast<Integer>(real);
}

/// The order of doubles, with not-a-number equal to itself and below all.
std::weak_ordering orderOfDoubles(double a, double b) noexcept {
  if (a < b) return std::weak_ordering::less;
  if (a > b) return std::weak_ordering::greater;
  return (b != b) <=> (a != a);
}

}  // namespace

bool NSNumber::boolValue() const noexcept {
  switch (kind_) {
    case Kind::Double:
      return real_ != 0 && real_ == real_;
    case Kind::Decimal:
      return decimal_.boolValue();
    default:
      return integer_ != 0;
  }
}

std::int64_t NSNumber::longLongValue() const noexcept {
  switch (kind_) {
    case Kind::Unsigned:
      return static_cast<std::int64_t>(std::min(unsigned_, static_cast<std::uint64_t>(INT64_MAX)));
    case Kind::Double:
      return saturated<std::int64_t>(real_, -0x1p63, 0x1p63);
    case Kind::Decimal:
      return decimal_.longLongValue();
    default:
      return integer_;
  }
}

int NSNumber::intValue() const noexcept {
  using Limits = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<std::int64_t>(longLongValue(), Limits::min(), Limits::max()));
}

std::uint64_t NSNumber::unsignedLongLongValue() const noexcept {
  switch (kind_) {
    case Kind::Unsigned:
      return unsigned_;
    case Kind::Double:
      return saturated<std::uint64_t>(real_, 0, 0x1p64);
    case Kind::Decimal:
      return decimal_.unsignedLongLongValue();
    default:
      return static_cast<std::uint64_t>(std::max<std::int64_t>(integer_, 0));
  }
}

double NSNumber::doubleValue() const noexcept {
  switch (kind_) {
    case Kind::Unsigned:
      return static_cast<double>(unsigned_);
    case Kind::Double:
      return real_;
    case Kind::Decimal:
      return decimal_.doubleValue();
    default:
      return static_cast<double>(integer_);
  }
}

Decimal NSNumber::decimalValue() const noexcept {
  switch (kind_) {
    case Kind::Unsigned:
      return unsigned_;
    case Kind::Double:
      return norvik::Decimal(real_);
    case Kind::Decimal:
      return decimal_;
    default:
      return integer_;
  }
}

NSString NSNumber::stringValue() const {
  if (kind_ != Kind::Double) return decimalValue().stringValue();
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), real_).ptr;
  return std::string_view(digits.data(), end);
}

std::size_t NSNumber::hash() const noexcept {
  return kind_ == Kind::Double ? numberHash(real_) : numberHash(decimalValue());
}

std::weak_ordering NSNumber::order(const NSNumber& other) const noexcept {
  const bool bothIntegers = kind_ <= Kind::Integer && other.kind_ <= Kind::Integer;
  if (bothIntegers) return integer_ <=> other.integer_;
  const norvik::Decimal a = decimalValue(), b = other.decimalValue();
  if (!a.isNaN() && !b.isNaN()) return a <=> b;
  return orderOfDoubles(doubleValue(), other.doubleValue());
}

std::ostream& operator<<(std::ostream& out, const NSNumber& number) { return out << number.stringValue(); }

}  // namespace norvik

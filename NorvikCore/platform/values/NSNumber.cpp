#include "NorvikCore/platform/values/NSNumber.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <ostream>

namespace norvik {
namespace {

/// `limit` is the power of two just above the range of Integer.
template <class Integer>
Integer nearest(double value, double limit) noexcept {
  using Limits = std::numeric_limits<Integer>;
  if (value != value) return 0;
  if (value >= limit) return Limits::max();
  return value <= static_cast<double>(Limits::min()) ? Limits::min() : static_cast<Integer>(value);
}

}  // namespace

/// Calls the function with the number in its original type.
template <class Function>
auto NSNumber::visit(Function function) const {
  switch (kind_) {
    case Kind::Boolean:
      return function(boolean_);
    case Kind::Integer:
      return function(integer_);
    case Kind::Unsigned:
      return function(static_cast<std::uint64_t>(integer_));
    case Kind::Double:
      return function(double_);
    case Kind::Decimal:
      break;
  }
  return function(decimal_);
}

bool NSNumber::isNaN() const noexcept {
  return kind_ == Kind::Double ? double_ != double_ : kind_ == Kind::Decimal && decimal_.isNaN();
}

bool NSNumber::boolValue() const noexcept {
  if (kind_ == Kind::Decimal) return decimal_.boolValue();
  if (kind_ == Kind::Double) return double_ < 0 || double_ > 0;
  return kind_ == Kind::Boolean ? boolean_ : integer_ != 0;
}

int NSNumber::intValue() const noexcept {
  constexpr std::int64_t least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(longLongValue(), least, most));
}

std::int64_t NSNumber::longLongValue() const noexcept {
  switch (kind_) {
    case Kind::Boolean:
      return boolean_ ? 1 : 0;
    case Kind::Integer:
      return integer_;
    case Kind::Unsigned:
      return std::numeric_limits<std::int64_t>::max();
    case Kind::Double:
      return nearest<std::int64_t>(double_, 0x1p63);
    case Kind::Decimal:
      break;
  }
  return decimal_.longLongValue();
}

std::uint64_t NSNumber::unsignedLongLongValue() const noexcept {
  switch (kind_) {
    case Kind::Boolean:
      return boolean_ ? 1 : 0;
    case Kind::Integer:
      return integer_ < 0 ? 0 : static_cast<std::uint64_t>(integer_);
    case Kind::Unsigned:
      return static_cast<std::uint64_t>(integer_);
    case Kind::Double:
      return nearest<std::uint64_t>(double_, 0x1p64);
    case Kind::Decimal:
      break;
  }
  return decimal_.unsignedLongLongValue();
}

double NSNumber::doubleValue() const noexcept {
  if (kind_ == Kind::Decimal) return decimal_.doubleValue();
  if (kind_ == Kind::Double) return double_;
  return kind_ == Kind::Unsigned ? static_cast<double>(unsignedLongLongValue()) : static_cast<double>(longLongValue());
}

Decimal NSNumber::decimalValue() const noexcept {
  return visit([](const auto& value) { return Decimal(value); });
}

NSString NSNumber::stringValue() const {
  if (kind_ == Kind::Decimal) return decimal_.stringValue();
  char digits[32];
  char* const end = digits + sizeof digits;
  const std::to_chars_result result = kind_ == Kind::Double     ? std::to_chars(digits, end, double_)
                                      : kind_ == Kind::Unsigned ? std::to_chars(digits, end, unsignedLongLongValue())
                                                                : std::to_chars(digits, end, longLongValue());
  return std::string_view(digits, static_cast<std::size_t>(result.ptr - digits));
}

std::weak_ordering NSNumber::order(const NSNumber& other) const noexcept {
  return visit([&other](const auto& a) { return other.visit([&a](const auto& b) { return numberCompare(a, b); }); });
}

std::size_t NSNumber::hash() const noexcept {
  return visit([](const auto& value) { return numberHash(value); });
}

std::ostream& operator<<(std::ostream& out, const NSNumber& number) { return out << number.stringValue(); }

}  // namespace norvik

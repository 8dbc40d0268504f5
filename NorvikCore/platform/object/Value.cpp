#include "NorvikCore/platform/object/Value.h"

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/internal/NumberMixing.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>
#include <ostream>

namespace norvik {
namespace detail {
namespace {

enum ValueClass { NullClass, StringClass, DateClass, NumberClass, DecimalClass };
constexpr const char* valueClassNames[] = {"NSNull", "NSString", "NSDate", "NSNumber", "NSDecimalNumber"};

template <ValueClass each>
const Class& valueClass() {
  static constinit ClassRecord record{[]() -> const Class& {
    const Class& superclass = each == DecimalClass ? valueClass<NumberClass>() : NSObject::staticClass();
    return defineClass({.name = valueClassNames[each], .superclass = &superclass});
  }};
  return record.theClass();
}

// The classes of values are in the list of all classes, as those of objects are.
LoadedStatement loadedClasses[] = {LoadedStatement(&valueClass<NullClass>), LoadedStatement(&valueClass<StringClass>),
                                   LoadedStatement(&valueClass<DateClass>), LoadedStatement(&valueClass<NumberClass>),
                                   LoadedStatement(&valueClass<DecimalClass>)};

[[noreturn]] void raiseRange(const Value& value) {
  NSException::raise(NSInvalidArgumentException,
                     value.description().utf8() + " is outside the range of the integer type");
}

}  // namespace

void raiseConversion(const Value& value, const char* wanted) {
  NSException::raise(NSInvalidArgumentException, (value.isAbsent() ? std::string("an absent value")
                                                                   : "\"" + value.description().utf8() + "\" (" +
                                                                         value.classObject().name().str() + ")") +
                                                     " is not " + wanted);
}

bool booleanFrom(const Value& value) {
  if (!value.isNumber()) raiseConversion(value, "a boolean");
  return value.number().boolValue();
}

std::int64_t integerFrom(const Value& value, std::int64_t least, std::int64_t greatest) {
  if (!value.isNumber()) raiseConversion(value, "a number");
  std::int64_t integer = 0;
  if (value.kind() == Value::Kind::Double) {
    const double real = value.number().doubleValue();
    if (!(real > -0x1p63 - 1 && real < 0x1p63)) raiseRange(value);
    integer = static_cast<std::int64_t>(real);
  } else if (const Decimal* decimal = value.decimal()) {
    if (decimal->isNaN() || *decimal <= Decimal(least) - 1 || *decimal >= Decimal(greatest) + 1) raiseRange(value);
    integer = decimal->longLongValue();
  } else {
    integer = value.number().longLongValue();
  }
  if (integer < least || integer > greatest) raiseRange(value);
  return integer;
}

std::uint64_t unsignedFrom(const Value& value) {
  if (const Decimal* decimal = value.decimal()) {
    if (decimal->isNaN() || *decimal <= -1 || *decimal >= Decimal(std::numeric_limits<std::uint64_t>::max()) + 1) {
      raiseRange(value);
    }
    return decimal->unsignedLongLongValue();
  }
  if (value.kind() == Value::Kind::Double) {
    const double real = value.number().doubleValue();
    if (!(real > -1 && real < 0x1p64)) raiseRange(value);
    return static_cast<std::uint64_t>(real);
  }
  return static_cast<std::uint64_t>(integerFrom(value, 0, std::numeric_limits<std::int64_t>::max()));
}

double doubleFrom(const Value& value) {
  if (!value.isNumber()) raiseConversion(value, "a number");
  return value.number().doubleValue();
}

Decimal decimalFrom(const Value& value) {
  if (const Decimal* decimal = value.decimal()) return *decimal;
  if (!value.isNumber()) raiseConversion(value, "a number");
  return value.number().decimalValue();
}

Date dateFrom(const Value& value) {
  if (!value.isDate()) raiseConversion(value, "a date");
  return *value.date();
}

NSString stringFrom(const Value& value) {
  if (!value.isString()) raiseConversion(value, "a text");
  return *value.string();
}

NSString textOfRange(NSRange range) {
  return NSString("{" + std::to_string(range.location) + ", " + std::to_string(range.length) + "}");
}

NSRange rangeFrom(const Value& value) {
  NSRange range;
  if (const NSString* text = value.string()) {
    const std::string_view digits = text->view();
    const char *at = digits.data(), *const end = at + digits.size();
    if (at != end && *at++ == '{') at = std::from_chars(at, end, range.location).ptr;
    if (end - at > 2 && at[0] == ',' && at[1] == ' ') at = std::from_chars(at + 2, end, range.length).ptr;
    if (textOfRange(range) == *text) return range;
  }
  raiseConversion(value, "a range");
}

Ref<NSObject> objectFrom(const Value& value, const char* wanted) {
  if (value.isAbsent() || value.isNull()) return nullptr;
  if (!value.isObject()) raiseConversion(value, wanted);
  return ref(*value.object());
}

}  // namespace detail

namespace {

// Not inlined into their callers, which would otherwise reserve stack space for numbers for every kind of value.
[[gnu::noinline]] bool areSameNumber(const Value& a, const Value& b) { return a.number() == b.number(); }
[[gnu::noinline]] std::size_t hashOfNumber(const Value& value) { return value.number().hash(); }

}  // namespace

void Value::destroyShared() noexcept {
  if (kind_ == Kind::String) {
    std::destroy_at(std::addressof(storage_.string));
  } else {
    std::destroy_at(std::addressof(storage_.object));
  }
}

Value::Value(const NSNumber& number) noexcept : kind_(Kind::Absent) {
  switch (number.kind()) {
    case NSNumber::Kind::Boolean:
      emplace(Kind::Boolean, storage_.boolean, number.boolValue());
      break;
    case NSNumber::Kind::Integer:
      emplace(Kind::Integer, storage_.integer, number.longLongValue());
      break;
    case NSNumber::Kind::Unsigned:
      *this = Value(number.unsignedLongLongValue());
      break;
    case NSNumber::Kind::Double:
      emplace(Kind::Double, storage_.real, number.doubleValue());
      break;
    case NSNumber::Kind::Decimal:
      emplace(Kind::Decimal, storage_.decimal, number.decimalValue());
      break;
  }
}

NSNumber Value::number() const {
  switch (kind_) {
    case Kind::Boolean:
      return storage_.boolean;
    case Kind::Integer:
      return storage_.integer;
    case Kind::Double:
      return storage_.real;
    case Kind::Decimal:
      return storage_.decimal;
    default:
      detail::raiseConversion(*this, "a number");
  }
}

bool Value::operator==(const Value& other) const {
  if (kind_ != other.kind_) return isNumber() && other.isNumber() && areSameNumber(*this, other);
  switch (kind_) {
    case Kind::Absent:
    case Kind::Null:
      return true;
    case Kind::Boolean:
      return storage_.boolean == other.storage_.boolean;
    case Kind::Integer:
      return storage_.integer == other.storage_.integer;
    case Kind::Double:
      return areSameNumber(*this, other);
    case Kind::Decimal:
      return storage_.decimal == other.storage_.decimal;
    case Kind::Date:
      return storage_.date == other.storage_.date;
    case Kind::String:
      return storage_.string == other.storage_.string;
    case Kind::Object:
      return storage_.object == other.storage_.object || storage_.object->isEqual(*other.storage_.object);
  }
  return false;
}

std::size_t Value::hash() const {
  switch (kind_) {
    case Kind::Absent:
      return 0;
    case Kind::Null:
      return 1;
    case Kind::Date:
      return std::hash<norvik::Date>()(storage_.date);
    case Kind::String:
      return std::hash<NSString>()(storage_.string);
    case Kind::Object:
      return storage_.object->hash();
    case Kind::Integer:
      return detail::hashInteger(storage_.integer);
    case Kind::Decimal:
      return storage_.decimal.hash();
    default:
      return hashOfNumber(*this);
  }
}

NSComparisonResult Value::compare(const Value& other) const {
  if (isNumber() && other.isNumber()) return number().compare(other.number());
  if (isDate() && other.isDate()) return storage_.date.compare(other.storage_.date);
  if (isString() && other.isString()) return storage_.string.compare(other.storage_.string);
  if (isObject() && storage_.object->respondsToSelector("compare:")) {
    return storage_.object->performSelector("compare:", other).as<NSComparisonResult>();
  }
  detail::raiseConversion(other, ("comparable with " + description().utf8()).c_str());
}

bool Value::isIdenticalTo(const Value& other) const noexcept {
  if (kind_ != other.kind_) return false;
  switch (kind_) {
    case Kind::Absent:
    case Kind::Null:
      return true;
    case Kind::Boolean:
      return storage_.boolean == other.storage_.boolean;
    case Kind::Integer:
      return storage_.integer == other.storage_.integer;
    case Kind::Double:
      return std::bit_cast<std::uint64_t>(storage_.real) == std::bit_cast<std::uint64_t>(other.storage_.real);
    case Kind::Decimal:
      return storage_.decimal == other.storage_.decimal &&
             storage_.decimal.exponent() == other.storage_.decimal.exponent();
    case Kind::Date:
      return storage_.date == other.storage_.date;
    case Kind::String:
      return storage_.string.isIdenticalTo(other.storage_.string);
    case Kind::Object:
      return storage_.object == other.storage_.object;
  }
  return false;
}

const Class& Value::classObject() const {
  switch (kind_) {
    case Kind::Null:
      return detail::valueClass<detail::NullClass>();
    case Kind::Boolean:
    case Kind::Integer:
    case Kind::Double:
      return detail::valueClass<detail::NumberClass>();
    case Kind::Decimal:
      return detail::valueClass<detail::DecimalClass>();
    case Kind::Date:
      return detail::valueClass<detail::DateClass>();
    case Kind::String:
      return detail::valueClass<detail::StringClass>();
    case Kind::Object:
      return storage_.object->classObject();
    case Kind::Absent:
      break;
  }
  NSException::raise(NSInvalidArgumentException, "an absent value has no class");
}

NSString Value::description() const {
  switch (kind_) {
    case Kind::Absent:
      return "(null)";
    case Kind::Null:
      return "<null>";
    case Kind::Date:
      return storage_.date.description();
    case Kind::String:
      return storage_.string;
    case Kind::Object:
      return storage_.object->description();
    default:
      return number().stringValue();
  }
}

std::ostream& Value::writeTo(std::ostream& out) const { return out << description(); }

}  // namespace norvik

// NorvikCore/platform/object/ValueConversion.h - how a C++ type converts to a Value and back; the types that a property
// may have.
//
// Convertible are booleans, integers, doubles, enumerations, Decimal, Date, NSString, NSNumber, NSRange (as the text
// "{location, length}"), SEL (as the text of its name), Value itself, and Ref, Block and std::optional of these. A
// character as a property or in as<char>() converts as its number.
//
// For a type of your own, specialise the template. Then the type can be a property that is read and set by its key:
//
//   template <>
//   struct norvik::ValueConversion<Postcode> {
//     static Value toValue(const Postcode& postcode) { return postcode.text; }
//     static Postcode fromValue(const Value& value) { return {value.as<NSString>()}; }
//   };
#pragma once

#include "NorvikCore/platform/object/SEL.h"
#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/values/NSRange.h"

#include <type_traits>
#include <utility>

namespace norvik {

template <class T>
struct ValueConversion;

/// A type that converts to a Value and back.
template <class T>
concept ValueConvertible = requires(const T& content, const Value& value) {
  { ValueConversion<T>::toValue(content) } -> std::convertible_to<Value>;
  { ValueConversion<T>::fromValue(value) } -> std::convertible_to<T>;
};

namespace detail {

template <class T>
concept GivenByValue = requires(const Value& value) {
  ValueConversion<T>::fromValue(value);
};

[[noreturn]] NK_EXPORT void raiseConversion(const Value& value, const char* wanted);
NK_EXPORT bool booleanFrom(const Value& value);
NK_EXPORT std::int64_t integerFrom(const Value& value, std::int64_t least, std::int64_t greatest);
NK_EXPORT std::uint64_t unsignedFrom(const Value& value);
NK_EXPORT double doubleFrom(const Value& value);
NK_EXPORT Decimal decimalFrom(const Value& value);
NK_EXPORT Date dateFrom(const Value& value);
NK_EXPORT NSString stringFrom(const Value& value);
NK_EXPORT NSString textOfRange(NSRange range);
NK_EXPORT NSRange rangeFrom(const Value& value);
/// The object, or an empty Ref for an absent or null value; raises for every other kind.
NK_EXPORT Ref<NSObject> objectFrom(const Value& value, const char* wanted);

}  // namespace detail

template <>
struct ValueConversion<Value> {
  static const Value& toValue(const Value& value) { return value; }
  static const Value& fromValue(const Value& value) { return value; }
};
template <>
struct ValueConversion<bool> {
  static Value toValue(bool content) { return content; }
  static bool fromValue(const Value& value) { return detail::booleanFrom(value); }
};
template <class T>
requires std::integral<T> &&(!std::same_as<T, bool>)struct ValueConversion<T> {
  static Value toValue(T content) {
    if constexpr (detail::WholeNumber<T>)
      return content;
    else
      return NSNumber(content);
  }
  static T fromValue(const Value& value) {
    if constexpr (std::unsigned_integral<T> && sizeof(T) == 8)
      return static_cast<T>(detail::unsignedFrom(value));
    else
      return static_cast<T>(detail::integerFrom(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
  }
};
template <std::floating_point T>
requires(sizeof(T) <= sizeof(double)) struct ValueConversion<T> {
  static Value toValue(T content) { return content; }
  static T fromValue(const Value& value) { return static_cast<T>(detail::doubleFrom(value)); }
};
template <class T>
requires std::is_enum_v<T>
struct ValueConversion<T> {
  using Number = std::underlying_type_t<T>;
  static Value toValue(T content) { return ValueConversion<Number>::toValue(static_cast<Number>(content)); }
  static T fromValue(const Value& value) { return static_cast<T>(ValueConversion<Number>::fromValue(value)); }
};
template <>
struct ValueConversion<Decimal> {
  static Value toValue(const Decimal& content) { return content; }
  static Decimal fromValue(const Value& value) { return detail::decimalFrom(value); }
};
template <>
struct ValueConversion<Date> {
  static Value toValue(Date content) { return content; }
  static Date fromValue(const Value& value) { return detail::dateFrom(value); }
};
template <>
struct ValueConversion<NSString> {
  static Value toValue(const NSString& content) { return content; }
  static NSString fromValue(const Value& value) { return detail::stringFrom(value); }
};
/// An empty selector converts to the absent value.
template <>
struct ValueConversion<SEL> {
  static Value toValue(SEL content) { return content ? Value(content.name()) : Value(); }
  static SEL fromValue(const Value& value) {
    return value.isAbsent() || value.isNull() ? SEL() : SEL(detail::stringFrom(value));
  }
};
template <>
struct ValueConversion<NSNumber> {
  static Value toValue(const NSNumber& content) { return content; }
  static NSNumber fromValue(const Value& value) { return value.number(); }
};
template <>
struct ValueConversion<NSRange> {
  static Value toValue(NSRange content) { return detail::textOfRange(content); }
  static NSRange fromValue(const Value& value) { return detail::rangeFrom(value); }
};
template <ValueConvertible T>
struct ValueConversion<std::optional<T>> {
  static Value toValue(const std::optional<T>& content) {
    return content ? Value(ValueConversion<T>::toValue(*content)) : Value();
  }
  static std::optional<T> fromValue(const Value& value) {
    if (value.isAbsent() || value.isNull()) return std::nullopt;
    return ValueConversion<T>::fromValue(value);
  }
};
template <class T>
struct ValueConversion<Ref<T>> {
  static Value toValue(const Ref<T>& content) { return content; }
  static Ref<T> fromValue(const Value& value) {
    Ref<NSObject> object = detail::objectFrom(value, "an object");
    if (!object) return nullptr;
    if constexpr (std::same_as<T, NSObject>) {
      return object;
    } else {
      auto* wanted = dynamic_cast<T*>(object.get());
      if (!wanted) detail::raiseConversion(value, "an object of another class");
      return Ref<T>(wanted);
    }
  }
};

template <class T>
T Value::as() const {
  if constexpr (detail::GivenByValue<T>) {
    return ValueConversion<T>::fromValue(*this);
  } else {
    constexpr bool isText = std::is_convertible_v<const T&, std::string_view>;
    constexpr bool isObject =
        std::is_convertible_v<std::remove_pointer_t<std::remove_reference_t<T>>*, const volatile NSObject*>;
    static_assert(!isText, "a Value gives text as NSString: as<NSString>().str() is a std::string");
    static_assert(!isObject, "a Value gives an object by its Ref: as<Ref<T>>(), or object<T>() for a pointer");
    static_assert(isText || isObject,
                  "a Value cannot be converted to this type: specialise norvik::ValueConversion for it");
    __builtin_unreachable();
  }
}

}  // namespace norvik

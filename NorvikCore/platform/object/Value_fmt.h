// NorvikCore/platform/object/Value_fmt.h - Values, objects and collections in {fmt} format strings. The user must have
// {fmt}.
//
//   fmt::format("{}", Value(1234.50_dec));                      // "1234.50"
//   fmt::format("{}, {:>8}", slip, Ref<Payslip>());             // "<Payslip: 0x5581...>,   (null)"
//   fmt::format("{}", NSArray::arrayWithObjects("BR", 5));      // "(\n    BR,\n    5\n)"
//
// A Value, a Ref, an object itself, a Block, a Class and a SEL show the text of `%@` and of `<<`: the description. An
// empty Ref or Block and an absent Value show as "(null)", Value::null() as "<null>". A collection that contains itself
// shows "<NSArray: ...>" in that place. Width, fill and precision are those of any text; to round a number, format
// `value.as<Decimal>()`. An exception that a description throws passes to the caller.
#pragma once  // include time: <fmt/format.h> is the purpose of this header

#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/SEL.h"
#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/values/NSString_fmt.h"

#include <fmt/format.h>

#include <concepts>

// Collections are ranges. <fmt/ranges.h> must not format them, because they have a description.
FMT_BEGIN_NAMESPACE
template <typename T, typename Char>
struct is_range;
FMT_END_NAMESPACE
template <std::derived_from<norvik::NSObject> T>
struct fmt::is_range<T, char> {
  static constexpr bool value = false;
};

namespace norvik::detail {

/// A description is not quoted within a range, as texts are.
struct DescriptionFormatter : fmt::formatter<NSString> {
  constexpr void set_debug_format(bool /*isQuoted*/ = true) noexcept {}
};

}  // namespace norvik::detail

template <>
struct fmt::formatter<norvik::Value> : norvik::detail::DescriptionFormatter {
  template <class Context>
  auto format(const norvik::Value& value, Context& context) const {
    return DescriptionFormatter::format(value.description(), context);
  }
};

template <std::derived_from<norvik::NSObject> T>
struct fmt::formatter<T, char> : norvik::detail::DescriptionFormatter {
  template <class Context>
  auto format(const norvik::NSObject& object, Context& context) const {
    return DescriptionFormatter::format(object.description(), context);
  }
};

template <class T>
struct fmt::formatter<norvik::Ref<T>, char> : fmt::formatter<norvik::Value> {};

template <class Signature>
struct fmt::formatter<norvik::Block<Signature>, char> : fmt::formatter<norvik::Value> {};

template <>
struct fmt::formatter<norvik::SEL> : norvik::detail::DescriptionFormatter {
  template <class Context>
  auto format(norvik::SEL selector, Context& context) const {
    return DescriptionFormatter::format(selector.name(), context);
  }
};

template <>
struct fmt::formatter<norvik::Class> : norvik::detail::DescriptionFormatter {
  template <class Context>
  auto format(const norvik::Class& classObject, Context& context) const {
    return DescriptionFormatter::format(classObject.name(), context);
  }
};

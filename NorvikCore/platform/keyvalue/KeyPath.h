// NorvikCore/platform/keyvalue/KeyPath.h - key paths that the compiler checks.
//
//   keyPath<&Payslip::grossPay>()                          // "grossPay"
//   keyPath<&Payslip::employee, &Employee::name>()         // "employee.name"
//
// A path is written as the accessors of its properties. It does not compile if an accessor does not exist, or belongs
// to a class that the preceding accessor does not lead to. If accessors of one name are overloaded, write the path as
// text instead.
//
// The result is an NSString that also knows, at compile time, the class that the path starts from and the type of the
// value that it leads to. Observing and binding with a closure check the closure with it.
//
// No cost at run time: the compiler forms the text, and the NSString borrows it.
#pragma once

#include "NorvikCore/platform/object/Ref.h"
#include "NorvikCore/platform/values/NSString.h"

#include <array>
#include <optional>
#include <string_view>
#include <type_traits>

namespace norvik {

class Value;
template <class Signature>
class Block;

/// The text of a path from an object of class `Root` to a value of type `T`. A path through another object may end
/// early, at an absent one. Then T is the type that can be absent: the property's own type if it is a Ref, a Block, a
/// Value or a std::optional, or else a std::optional of it.
template <class Root, class T>
class KeyPath : public NSString {
 public:
  explicit constexpr KeyPath(std::string_view text) : NSString(text) {}
};

namespace detail {

/// True for types that represent an absent value themselves.
template <class T>
inline constexpr bool isAbsentable = std::is_same_v<T, Value>;
template <class T>
inline constexpr bool isAbsentable<std::optional<T>> = true;
template <class T>
inline constexpr bool isAbsentable<Ref<T>> = true;
template <class Signature>
inline constexpr bool isAbsentable<Block<Signature>> = true;

template <class Accessor>
struct AccessorTypes;
template <class C, class R>
struct AccessorTypes<R (C::*)() const> {
  using Owner = C;
  using Result = std::remove_cvref_t<R>;
};
template <class C, class R>
struct AccessorTypes<R (C::*)() const noexcept> : AccessorTypes<R (C::*)() const> {};
template <class C, class R>
struct AccessorTypes<R (C::*)()> : AccessorTypes<R (C::*)() const> {};
template <class C, class R>
struct AccessorTypes<R (C::*)() noexcept> : AccessorTypes<R (C::*)() const> {};

/// True for an accessor that returns a Ref to an object of class Next or of a subclass.
template <class Result, class Next>
inline constexpr bool leadsTo = false;
template <class T, class Next>
inline constexpr bool leadsTo<Ref<T>, Next> = std::is_base_of_v<Next, T>;

constexpr bool isNameCharacter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

/// The name of the member function, from the compiler's text for this function: the last name before the end of the
/// template arguments.
template <auto accessor>
constexpr std::string_view accessorName() noexcept {
  std::string_view text = __PRETTY_FUNCTION__;
  text = text.substr(0, text.rfind(']'));
  // g++ adds the definition of std::string_view after a semicolon.
  text = text.substr(0, text.rfind(';') == std::string_view::npos ? text.size() : text.rfind(';'));
  while (!text.empty() && !isNameCharacter(text.back())) text.remove_suffix(1);
  std::size_t start = text.size();
  while (start > 0 && isNameCharacter(text[start - 1])) --start;
  return text.substr(start);
}

template <auto... accessors>
constexpr auto joinAccessorNames() noexcept {
  constexpr std::size_t size = (accessorName<accessors>().size() + ...) + sizeof...(accessors) - 1;
  std::array<char, size> text{};
  std::size_t at = 0;
  const auto append = [&](std::string_view name) {
    if (at > 0) text[at++] = '.';
    for (const char c : name) text[at++] = c;
  };
  (append(accessorName<accessors>()), ...);
  return text;
}

template <auto... accessors>
inline constexpr auto keyPathText = joinAccessorNames<accessors...>();

template <auto accessor>
constexpr bool isConnected() {
  return true;
}
template <auto first, auto second, auto... rest>
constexpr bool isConnected() {
  return leadsTo<typename AccessorTypes<decltype(first)>::Result, typename AccessorTypes<decltype(second)>::Owner> &&
         isConnected<second, rest...>();
}

/// The KeyPath of these accessors; NSString for one member that is not an accessor.
template <auto first, auto... rest>
constexpr auto keyPathType() {
  using First = AccessorTypes<decltype(first)>;
  if constexpr (sizeof...(rest) > 0) {
    using Last = typename decltype((std::type_identity<AccessorTypes<decltype(rest)>>(), ...))::type::Result;
    using T = std::conditional_t<isAbsentable<Last>, Last, std::optional<Last>>;
    return std::type_identity<KeyPath<typename First::Owner, T>>();
  } else if constexpr (requires { typename First::Owner; }) {
    return std::type_identity<KeyPath<typename First::Owner, typename First::Result>>();
  } else {
    return std::type_identity<NSString>();
  }
}

}  // namespace detail

template <auto... accessors>
[[nodiscard]] inline auto keyPath() noexcept {
  static_assert(sizeof...(accessors) > 0, "a key path names at least one accessor");
  if constexpr (sizeof...(accessors) > 0) {
    constexpr bool isConnected = detail::isConnected<accessors...>();
    static_assert(isConnected, "each accessor of a key path belongs to the class that the one before it leads to");
    static constexpr auto& text = detail::keyPathText<accessors...>;
    static constexpr
        typename decltype(detail::keyPathType<accessors...>())::type path{std::string_view(text.data(), text.size())};
    return path;
  }
}

}  // namespace norvik

// NorvikCore/platform/object/Statement.h - one statement of a class, as data. A statement is a use of a macro of
// ObjectMacros.h, such as NK_PROPERTY. Users need not read it.
//
// A class's statements are one constant table (StatementTable.h), which is read when the class is registered.
#pragma once

#include "NorvikCore/platform/export.h"  // rejects language versions below C++20 with one error
#include "NorvikCore/platform/object/StatementPlace.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace norvik {

class Class;
class NSObject;
class Value;

namespace detail {

enum class StatementKind : std::uint8_t { Property, Method, ClassMethod, Dependency, ClassName };

/// A member that a kind does not use keeps its default. All texts are literals.
struct Statement {
  StatementKind kind = StatementKind::Property;
  const char* name = nullptr;  ///< the key, the operation's function, the affected key, or the class's name
  const char* text = nullptr;  ///< the property's type, the selector text (null: from the name), or the affecting key
  const char* setterName = nullptr;  ///< null if the property is read-only
  bool isComputed = false, isWeak = false, isAtomic = false;
  std::size_t argumentCount = 0;
  const Class& (*objectClass)() = nullptr;
  Value (*get)(const NSObject& object) = nullptr;
  void (*set)(NSObject& object, const Value& value) = nullptr;
  Value (*invoke)(NSObject* target, std::span<const Value> arguments) = nullptr;
};

/// Marks a way to find a member for which the compiler itself words the error.
template <class Find>
struct RefusedByCompiler : Find {};
template <class Find>
RefusedByCompiler(Find) -> RefusedByCompiler<Find>;
template <class Find>
inline constexpr bool isRefusedByCompiler = false;
template <class Find>
inline constexpr bool isRefusedByCompiler<RefusedByCompiler<Find>> = true;

/// Rejects, with a one-sentence error, a member of T whose address `Find` does not return.
template <class T, class Find>
constexpr bool findsMember() {
  constexpr bool finds = [] {
    if constexpr (std::is_invocable_v<Find, std::type_identity<T>>) {
      return !std::is_void_v<std::invoke_result_t<Find, std::type_identity<T>>>;
    } else {
      return false;
    }
  }();
  static_assert(finds || isRefusedByCompiler<Find> || std::is_same_v<T, NoOwner>,
                "an operation or accessor that a class states is missing, or is overloaded");
  return finds;
}

}  // namespace detail
}  // namespace norvik

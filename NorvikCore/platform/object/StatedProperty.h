// NorvikCore/platform/object/StatedProperty.h - how a declared property of any type is read and written by its key. The
// statement macros use it; users need not read it.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/StatementTable.h"
#include "NorvikCore/platform/object/Weak.h"

#include <concepts>
#include <type_traits>

namespace norvik::detail {

[[noreturn]] NK_EXPORT void raiseNotCodable(const char* key);

template <class T>
Value propertyValue(const T& value, const char* key) {
  if constexpr (ValueConvertible<T>) {
    return ValueConversion<T>::toValue(value);
  } else {
    raiseNotCodable(key);
  }
}

template <class T, auto getter>
Value getProperty(const NSObject& object, const char* key) {
  using Result = std::remove_cvref_t<std::invoke_result_t<decltype(getter), const T&>>;
  return propertyValue<Result>((static_cast<const T&>(object).*getter)(), key);
}

/// Its body is compiled where O is complete, so a property may refer to a class that is defined below it.
template <class O>
const Class& referredClass() {
  return O::staticClass();
}

template <class Result>
constexpr auto objectClassOfType() -> const Class& (*)() {
  if constexpr (requires { []<class O>(std::type_identity<Ref<O>>) {}(std::type_identity<Result>()); }) {
    return &referredClass<typename Result::element_type>;
  } else {
    return nullptr;
  }
}

/// A type that cannot represent an absent value.
template <class T>
concept NeverAbsent = std::is_arithmetic_v<T> || std::is_enum_v<T> || std::same_as<T, Decimal> ||
    std::same_as<T, Date> || std::same_as<T, NSString> || std::same_as<T, NSNumber>;

/// Calls `store` with the value as an Argument. If the value is absent and Argument cannot be, calls
/// setNilValueForKey().
template <class Argument, class Store>
void setPropertyValue(NSObject& object, const Value& value, const char* key, Store&& store) {
  if constexpr (NeverAbsent<Argument>) {
    if (value.isAbsent() || value.isNull()) return object.setNilValueForKey(NSString(key));
  }
  if constexpr (ValueConvertible<Argument>) {
    store(ValueConversion<Argument>::fromValue(value));
  } else {
    raiseNotCodable(key);
  }
}

template <class T, class P>
constexpr Statement propertyStatement() {
  Statement stated = P::nk_stated();
  stated.objectClass = objectClassOfType<std::remove_cv_t<typename P::nk_Argument>>();
  stated.get = &P::template nk_get<T>;
  if constexpr (P::nk_stated().setterName != nullptr) stated.set = &P::template nk_set<T>;
  return stated;
}

/// True if the accessor is `Type name() const`; rejects any other with a one-sentence error.
template <class T, class Type, class Find>
constexpr bool findsGetter() {
  if constexpr (findsMember<T, Find>()) {
    using Getter = std::invoke_result_t<Find, std::type_identity<T>>;
    constexpr bool reads = [] {
      if constexpr (std::is_member_function_pointer_v<Getter> && std::is_invocable_v<Getter, const T&>) {
        return std::same_as<std::remove_cvref_t<std::invoke_result_t<Getter, const T&>>, Type>;
      } else {
        return false;
      }
    }();
    static_assert(reads || std::same_as<Type, UnknownType>,
                  "the accessor of a computed property is not `Type name() const` with the type that is declared");
    return reads;
  } else {
    return false;
  }
}

/// True if the setter is `void setName(Type)`; rejects any other with a one-sentence error.
template <class T, class Type, class Find>
constexpr bool findsSetter() {
  if constexpr (findsMember<T, Find>()) {
    using Setter = std::invoke_result_t<Find, std::type_identity<T>>;
    constexpr bool writes = std::is_member_function_pointer_v<Setter> && std::is_invocable_v<Setter, T&, const Type&>;
    static_assert(writes || std::same_as<Type, UnknownType>,
                  "the setter of a computed property is not `void setName(Type)` with the type that is declared");
    return writes;
  } else {
    return false;
  }
}

/// A property with an accessor that the class writes itself: `find` returns its address, `key` the property's name.
template <class T, class Type, class Find, class Key>
constexpr Statement computedStatement(const char* typeName, Find, Key key) {
  Statement stated{.name = key(), .text = typeName, .isComputed = true, .objectClass = objectClassOfType<Type>()};
  if constexpr (findsGetter<T, Type, Find>()) {
    stated.get = [](const NSObject& object) {
      return getProperty<T, Find{}(std::type_identity<T>())>(object, Key{}());
    };
  }
  return stated;
}

/// The same with a setter.
template <class T, class Type, class Find, class FindSetter, class Key>
constexpr Statement computedStatement(const char* typeName, Find find, Key key, const char* setterName, FindSetter) {
  Statement stated = computedStatement<T, Type>(typeName, find, key);
  stated.setterName = setterName;
  if constexpr (findsSetter<T, Type, FindSetter>()) {
    stated.set = [](NSObject& object, const Value& value) {
      setPropertyValue<Type>(object, value, Key{}(), [&](auto&& a) {
        (static_cast<T&>(object).*FindSetter{}(std::type_identity<T>()))(std::forward<decltype(a)>(a));
      });
    };
  }
  return stated;
}

/// The class that a weak property refers to.
template <class T>
struct ReferredClass {
  using Type = T;
};
template <>
struct ReferredClass<UnknownType> {
  using Type = NSObject;
};
template <class T>
using WeakRef = Ref<typename ReferredClass<T>::Type>;
template <class T>
using WeakStorage = Weak<typename ReferredClass<T>::Type>;

template <class T>
const Class& extendedClass() {
  if constexpr (isStated<T>) {
    return T::staticClass();
  } else {
    static_assert(std::same_as<T, UnknownType>, "a category's property is of a class without NK_OBJECT");
    return NSObject::staticClass();
  }
}

/// A property that a category adds to T: `get` and `set` call its functions, and cannot be called if there are none.
template <class T, class Type, class Get, class Key>
constexpr Statement categoryStatement(const char* typeName, Get, Key key) {
  Statement stated{.name = key(), .text = typeName, .isComputed = true, .objectClass = objectClassOfType<Type>()};
  if constexpr (isStated<T> && !std::same_as<Type, UnknownType>) {
    static_assert(!statesKey<T>(Key{}(), false),
                  "a category's property has the name of a property that its class declares");
    if constexpr (std::is_invocable_v<Get, const T&>) {
      constexpr bool reads = std::same_as<std::remove_cvref_t<std::invoke_result_t<Get, const T&>>, Type>;
      static_assert(reads, "the accessor of a category's property returns another type than is declared");
      if constexpr (reads) {
        stated.get = [](const NSObject& object) {
          return propertyValue<Type>(Get{}(static_cast<const T&>(object)), Key{}());
        };
      }
    } else {
      static_assert(std::is_invocable_v<Get, const T&>,
                    "a category's property has no accessor `Type name(const Class&)` above its declaration");
    }
  }
  return stated;
}

template <class T, class Type, class Get, class Set, class Key>
constexpr Statement categoryStatement(const char* typeName, Get get, Key key, const char* setterName, Set) {
  Statement stated = categoryStatement<T, Type>(typeName, get, key);
  stated.setterName = setterName;
  if constexpr (isStated<T> && !std::same_as<Type, UnknownType>) {
    constexpr bool writes = std::is_invocable_v<Set, T&, const Type&>;
    static_assert(writes, "a category's property has no setter `void setName(Class&, Type)` above its declaration");
    if constexpr (writes) {
      stated.set = [](NSObject& object, const Value& value) {
        setPropertyValue<Type>(object, value, Key{}(), [&](const Type& a) { Set{}(static_cast<T&>(object), a); });
      };
    }
  }
  return stated;
}

}  // namespace norvik::detail

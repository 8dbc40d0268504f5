// NorvikCore/platform/object/ClassDefinition.h - how a class is registered with its statements, or rejected.
// NK_OBJECT uses it; users need not read it.
#pragma once

#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/StatementTable.h"

#include <concepts>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace norvik::detail {

struct ClassDefinition {
  const char* name = nullptr;
  const std::type_info* type = nullptr;  ///< null for the classes of values
  std::size_t objectSize = 0;
  const Class* superclass = nullptr;
  Ref<NSObject> (*makeObject)() = nullptr;
  bool answersKeysItself = false;
  StatementList statements{};  ///< a constant of the class's shared object
};

/// The class of that type; its first definition registers it.
NK_EXPORT const Class& defineClass(const ClassDefinition& definition);

/// A class or a category's property of a shared object, announced when that is loaded. `enter` registers it, at the
/// next look-up of any class: until then loading takes no memory and hardly any time. The announced statements are
/// registered in the order in which they were loaded.
class NK_EXPORT LoadedStatement {
 public:
  explicit LoadedStatement(const Class& (*enter)()) noexcept;
  LoadedStatement(const LoadedStatement&) = delete;
  LoadedStatement& operator=(const LoadedStatement&) = delete;

 private:
  friend class LoadedStatements;
  const Class& (*enter_)();
  LoadedStatement* next_ = nullptr;
};

/// A class as one shared object states it. A constant until the class is first asked for, so it can be used before the
/// initialisers of its shared object have run. `define` registers the class. Synchronised.
class ClassRecord {
 public:
  constexpr explicit ClassRecord(const Class& (*define)()) noexcept : define_(define) {}

  const Class& theClass() {
    const Class* known = known_.loadAcquire();
    return known ? *known : registered();
  }

 private:
  NK_EXPORT const Class& registered();

  const Class& (*define_)();
  AtomicWord<const Class*> known_;
};

/// Adds a property to a class that is declared elsewhere. If the class already has a property of that name, it keeps
/// that one, and a line on the system console reports it.
struct NK_EXPORT CategoryProperty {
  CategoryProperty(const Class& extended, const Statement& statement);
};

template <class T>
Ref<NSObject> makeDefault() {
  return make<T>();
}

/// True if neither T nor a class between it and NSObject overrides how keys are read.
template <class T>
inline constexpr bool readsKeysAsNSObject = requires {
  requires std::same_as<decltype(&T::valueForKey), decltype(&NSObject::valueForKey)>;
  requires std::same_as<decltype(&T::valueForKeyPath), decltype(&NSObject::valueForKeyPath)>;
  requires std::same_as<decltype(&T::valueForUndefinedKey), decltype(&NSObject::valueForUndefinedKey)>;
};

/// The names in NK_OBJECT that the compiler does not know resolve to these.
struct UnknownObject {
  using nk_Class = UnknownType;
  using nk_Superclass = UnknownType;
};

template <class This, class Named>
inline constexpr bool isNamed = std::same_as<This, const Named*> || std::same_as<Named, UnknownType>;

template <class T, class Superclass>
requires(std::same_as<T, UnknownType> || std::same_as<Superclass, UnknownType>) const Class& defineClass() {
  return NSObject::staticClass();
}

template <class T, class Superclass>
const Class& defineClass() {
  constexpr StatementList statements = statementsOf<T>;
  static_assert(!statesTwice(StatementKind::Property, statementsOf<T>), "a class declares a property twice");
  static_assert(!statesTwice(StatementKind::Method, statementsOf<T>), "a class declares an operation twice");
  static_assert(!statesTwice(StatementKind::ClassMethod, statementsOf<T>), "a class declares a class operation twice");
  if constexpr (states(StatementKind::Dependency, statementsOf<T>)) {
    static_assert(!statesTwice(StatementKind::Dependency, statementsOf<T>), "a class declares NK_AFFECTED_BY twice");
    static_assert(!readsKeysAsNSObject<T> || statesKeysOfDependencies<T>(),
                  "NK_AFFECTED_BY names a key that neither the class nor a superclass declares");
  }
  static_assert(hasOneName(statements), "a class declares NK_CLASS_NAME twice");
  static_assert(statedName(statements)[0] != '\0', "NK_CLASS_NAME needs a name that is not empty");
  Ref<NSObject> (*makeObject)() = nullptr;
  if constexpr (std::is_default_constructible_v<T> && !std::is_abstract_v<T>) makeObject = &makeDefault<T>;
  return defineClass({.name = statedName(statements),
                      .type = &typeid(T),
                      .objectSize = sizeof(T),
                      .superclass = &Superclass::staticClass(),
                      .makeObject = makeObject,
                      .answersKeysItself = !readsKeysAsNSObject<T>,
                      .statements = statements});
}

}  // namespace norvik::detail

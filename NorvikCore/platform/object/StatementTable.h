// NorvikCore/platform/object/StatementTable.h - the statements of a class as one constant table, and the checks on it.
// NK_OBJECT uses it; users need not read it.
#pragma once

#include "NorvikCore/platform/object/Statement.h"

#include <concepts>
#include <cstddef>
#include <utility>

namespace norvik::detail {

/// The statement of a stored property of T, described by P. StatedProperty.h defines it.
template <class T, class P>
constexpr Statement propertyStatement();

/// Reads a class's statements, whether they are public or not.
struct StatementAccess {
  template <class T>
  static constexpr int count = decltype(T::nk_state_(LastPlaceInBlock<decltype(T::nk_state_(lastBlock))>()))::value;
  template <class T, int number>
  static constexpr Statement at() {
    using Stated = decltype(T::nk_state_(static_cast<const Place<number>*>(nullptr)));
    if constexpr (requires { typename Stated::nk_Argument; }) {
      return propertyStatement<T, Stated>();
    } else {
      return T::nk_state_(static_cast<const Place<number>*>(nullptr));
    }
  }
};

template <class T, class Numbers = std::make_integer_sequence<int, StatementAccess::count<T> + 1>>
inline constexpr Statement statementsOf[1] = {};
template <class T, int... number>
inline constexpr Statement statementsOf<T, std::integer_sequence<int, number...>>[sizeof...(number)] = {
    StatementAccess::at<T, number>()...};

/// A class's statements. Not a std::span, because a conversion of an array to a span takes long to compile.
class StatementList {
 public:
  constexpr StatementList() noexcept = default;
  template <std::size_t count>
  constexpr StatementList(const Statement (&statements)[count]) noexcept  // NOLINT(google-explicit-constructor): a view
      : first_(statements), count_(count) {}

  [[nodiscard]] constexpr const Statement* begin() const noexcept { return first_; }
  [[nodiscard]] constexpr const Statement* end() const noexcept { return first_ + count_; }
  [[nodiscard]] constexpr std::size_t count() const noexcept { return count_; }

 private:
  const Statement* first_ = nullptr;
  std::size_t count_ = 0;
};

constexpr bool isSameKey(const char* a, const char* b) {
  while (*a && *a == *b) ++a, ++b;
  return *a == *b;
}

/// The part that must differ among statements of one kind: a property's name, a selector, or a pair of keys.
constexpr unsigned long long identityOf(const Statement& statement) {
  unsigned long long key =
      statementKey(statement.kind == StatementKind::Property || !statement.text ? statement.name : statement.text);
  if (statement.kind == StatementKind::Dependency) return key + 31 * statementKey(statement.name);
  if (statement.text || statement.kind == StatementKind::Property) return key;
  for (std::size_t i = 0; i < statement.argumentCount; ++i) key = statementKey(":", key);
  return key;
}

/// Takes linear time, because compilers limit the steps of a constant's evaluation. Two stored properties of one name
/// are rejected by the compiler itself.
template <std::size_t count>
constexpr bool statesTwice(StatementKind kind, const Statement (&statements)[count]) {
  constexpr std::size_t size = 2 * count;
  unsigned long long seen[size] = {};
  for (const Statement& statement : statements) {
    if (statement.kind != kind) continue;
    const bool isStored = kind == StatementKind::Property && !statement.isComputed;
    const unsigned long long key = (identityOf(statement) | 3) - (isStored ? 2 : 0);
    std::size_t i = (key >> 7) % size;
    for (; seen[i] != 0; i = (i + 1) % size) {
      if ((seen[i] | 2) == (key | 2) && !(isStored && seen[i] == key)) return true;
    }
    seen[i] = key;
  }
  return false;
}

constexpr bool states(StatementKind kind, StatementList statements) {
  for (const Statement& statement : statements) {
    if (statement.kind == kind) return true;
  }
  return false;
}

/// True for a class with its own NK_OBJECT, not for one that only derives from such a class.
template <class T>
inline constexpr bool isStated = std::same_as<T, NSObject>;
template <class T>
requires requires { typename T::Self; }
inline constexpr bool isStated<T> = std::same_as<T, typename T::Self>;

/// True if T or a superclass declares a property of that name, or with `orOperation` an operation without arguments.
template <class T>
constexpr bool statesKey(const char* key, bool orOperation) {
  if constexpr (std::same_as<T, NSObject>) {
    return false;
  } else {
    for (const Statement& statement : statementsOf<typename T::Self>) {
      const bool counts = statement.kind == StatementKind::Property ||
                          (orOperation && statement.kind == StatementKind::Method && statement.argumentCount == 0);
      if (counts && isSameKey(statement.name, key)) return true;
    }
    return statesKey<typename T::Super>(key, orOperation);
  }
}

template <class T>
constexpr bool statesKeysOfDependencies() {
  for (const Statement& statement : statementsOf<T>) {
    if (statement.kind != StatementKind::Dependency) continue;
    if (!statesKey<T>(statement.name, true) || !statesKey<T>(statement.text, true)) return false;
  }
  return true;
}

/// The last name that is declared: NK_OBJECT declares the name of the C++ class, NK_CLASS_NAME a different one.
constexpr const char* statedName(StatementList statements) {
  const char* name = nullptr;
  for (const Statement& statement : statements) {
    if (statement.kind == StatementKind::ClassName) name = statement.name;
  }
  return name;
}

constexpr bool hasOneName(StatementList statements) {
  int count = 0;
  for (const Statement& statement : statements) count += statement.kind == StatementKind::ClassName ? 1 : 0;
  return count <= 2;
}

}  // namespace norvik::detail

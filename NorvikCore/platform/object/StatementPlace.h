// NorvikCore/platform/object/StatementPlace.h - how the statements of a class are numbered, in the order in which they
// are written.
//
// Each statement is one more overload of the class's nk_state_, whose parameter is its place. A call with a place that
// derives from all earlier ones chooses the last statement, whose type gives the next number: it depends on nothing but
// the class, which has the same tokens in every file. Such a call is settled where it stands: the language lets a
// compiler object to later overloads, which g++ and clang do not. Places derive from each other in blocks, because
// compilers walk along the bases: the first call finds the last block, the second one the last statement in it.
#pragma once

namespace norvik::detail {

struct Statement;

inline constexpr int statementBlock = 24;
/// The statements of one class, at most; its superclasses have their own.
inline constexpr int statementLimit = statementBlock * statementBlock - 1;

/// Place 0 is NK_OBJECT's.
template <int number>
struct Place : Place<number % statementBlock == 0 ? number - statementBlock : number - 1> {};
template <>
struct Place<0> {};

inline constexpr const Place<statementBlock* statementBlock>* lastBlock = nullptr;

/// What a statement at that place is declared to return.
template <class Data, int number>
struct StatementNumber : Data {
  static_assert(number <= statementLimit, "a class can have 575 statements at most: state some in a superclass");
  static constexpr int value = number;
  using LastInBlock = const Place<number - number % statementBlock + statementBlock - 1>*;
  using Next = const Place<number + 1>*;
};

template <class Last>
using LastPlaceInBlock = typename Last::LastInBlock;

/// `key` tells the statements of a class template apart as long as the template's numbers are not known.
template <class Last, unsigned long long key>
struct PlaceAfter {
  using Type = typename Last::Next;
};
template <class Last, unsigned long long key>
using NextPlace = typename PlaceAfter<Last, key>::Type;

/// Of a statement's own words.
constexpr unsigned long long statementKey(const char* words, unsigned long long key = 14695981039346656037U) {
  for (; *words; ++words) key = (key ^ static_cast<unsigned char>(*words)) * 1099511628211U;
  return key;
}

template <class Place>
struct StatementOfPlace;
template <int number>
struct StatementOfPlace<const Place<number>*> {
  using Type = StatementNumber<Statement, number>;
};
template <class Place>
using StatementAt = typename StatementOfPlace<Place>::Type;

/// Only NK_OBJECT declares an overload that takes it. A statement in a class without NK_OBJECT calls the overloads of
/// its own class alone, and the compiler's complaint names this type.
struct ThisClassHasNoNK_OBJECT {};

/// What a class finds that has no NK_OBJECT, and none above it.
template <class... Object>
struct StatementWithoutObject {
  static_assert(sizeof...(Object) > 0, "a statement stands in a class without NK_OBJECT");
  using LastInBlock = const Place<0>*;
  using Next = const Place<0>*;
};
StatementWithoutObject<> nk_state_(const Place<0>*);

}  // namespace norvik::detail

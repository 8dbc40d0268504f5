// NorvikCore/platform/object/StatementPlace.h - how the statements of a class are numbered, in the order in which they
// are written.
//
// Each statement is one more overload of the class's nk_state_, whose parameter is its place. A call with a place that
// derives from all earlier ones chooses the last statement, whose type gives the next number: it depends on nothing but
// the class, which has the same tokens in every file. Such a call is settled where it stands: the language lets a
// compiler object to later overloads, which g++ and clang do not. Places derive from each other in blocks, because
// compilers walk along the bases: the first call finds the last block, the second one the last statement in it.
//
// A mistake is one error: what a statement declares is well formed whatever the class is. A statement knows that it has
// an NK_OBJECT above it because the class that nk_owner_ names is not complete yet: that of a superclass is.
#pragma once

namespace norvik {
class NSObject;
}

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

/// A type that the compiler does not know, once it has said so.
struct UnknownType {};

/// The number of a statement in its class, and what those after it ask for.
template <class Place>
struct StatementNumber;
template <int number>
struct StatementNumber<const Place<number>*> {
  static_assert(number <= statementLimit, "a class can have 575 statements at most: state some in a superclass");
  static constexpr int value = number;
  using nk_Place = const Place<number>*;
  using LastInBlock = const Place<number - number % statementBlock + statementBlock - 1>*;
  using Next = const Place<number + 1>*;
  using NextWithoutObject = const Place<statementBlock>* const;
  using nk_Type = UnknownType;
};

/// That of a statement without an NK_OBJECT above it. They are numbered too, so that only the first one is an error:
/// from the second block on, because an NK_OBJECT further down is place 0.
template <int number>
struct StatementNumber<const Place<number>* const> {
  static constexpr int value = 0;
  using nk_Place = const Place<number>* const;
  using LastInBlock = typename StatementNumber<const Place<number>*>::LastInBlock;
  using Next = const Place<number + 1>* const;
  using NextWithoutObject = Next;
  using nk_Type = UnknownType;
};

template <class Last>
using LastPlaceInBlock = typename Last::LastInBlock;

/// The argument of what a statement asks its class: nk_owner_, nk_scope_ and nk_object_, which NK_OBJECT and NSObject
/// declare. Outside of objects the functions at the end of this file are found. A stored property asks as OfProperty.
struct OfClass {};
struct OfProperty : OfClass {};

/// The class that a statement is of.
template <class T>
struct Owner {
  using Class = T;
};

/// Of a class whose NK_OBJECT names another one; never defined.
template <class Key>
struct WrongOwner;

/// `Key` is a type of the class that states NK_OBJECT(T), so that each class asks anew whether T is complete.
template <class T, class Key, class = void>
struct OwnerNamed {
  using Type = Owner<T>;
};
template <class T, class Key>
struct OwnerNamed<T, Key, decltype(void(sizeof(T)))> {
  using Type = Owner<WrongOwner<Key>>;
};

/// Instantiated once for all statements of such classes below T, so that they are one error.
template <class T>
constexpr bool isWithoutObject() {
  static_assert(sizeof(T) == 0, "a statement stands in a class without NK_OBJECT, or above it");
  return true;
}
template <class Last, bool>
struct PlaceWithoutObject {
  using Type = typename Last::NextWithoutObject;
};

/// `key` tells the statements of a class template apart as long as the template's numbers are not known.
template <class Last, unsigned long long key, class Owner, class = void>
struct PlaceAfter {
  using Type = typename Last::Next;
};
/// T is a superclass. The numbers of its own statements are lower, so that no answer of theirs is found here.
template <class Last, unsigned long long key, class T>
struct PlaceAfter<Last, key, Owner<T>, decltype(void(sizeof(T)))> : PlaceWithoutObject<Last, isWithoutObject<T>()> {};
template <class Last, unsigned long long key, class Owner>
using NextPlace = typename PlaceAfter<Last, key, Owner>::Type;

/// Of a statement's own words.
constexpr unsigned long long statementKey(const char* words, unsigned long long key = 14695981039346656037U) {
  for (; *words; ++words) key = (key ^ static_cast<unsigned char>(*words)) * 1099511628211U;
  return key;
}

/// What a statement that is not a stored property's is declared to return.
template <class Data, class Place>
struct StatementAt : Data, StatementNumber<Place> {};

/// The class whose members a statement names: NoOwner unless a right NK_OBJECT stands above the statement.
struct NoOwner {};
template <class Place, class Owner>
struct OwnerAtPlace {
  using Type = NoOwner;
};
template <int number, class T>
struct OwnerAtPlace<const Place<number>*, Owner<T>> {
  using Type = T;
};
template <int number, class Key>
struct OwnerAtPlace<const Place<number>*, Owner<WrongOwner<Key>>> {
  using Type = NoOwner;
};

/// What a category's or a computed property is of, and its type, where the compiler does not know one of them.
struct UnknownProperty {
  using nk_Class = UnknownType;
  using nk_Type = UnknownType;
};

/// The scope that a stored property stands in: that of a class of objects.
struct InClass {
  template <class T>
  using nk_Here = T;
};
/// Any other scope. g++ names it when it finds no nk_Here in it, and gives up the declaration; clang would go on, but
/// stops at a call of nk_owner_ (NK_STOP_AT_MISTAKES).
struct AStatementStandsInAClassWithoutNK_OBJECT {};

/// False for what has a comma outside of all brackets, as several arguments of a statement have.
constexpr bool isOneType(const char* text) {
  int angles = 0, others = 0;
  for (; *text; ++text) {
    if (*text == '(' || *text == '[' || *text == '{') ++others;
    if (*text == ')' || *text == ']' || *text == '}') --others;
    if (others == 0 && *text == '<') ++angles;
    if (others == 0 && *text == '>') --angles;
    if (others == 0 && angles == 0 && *text == ',') return false;
  }
  return true;
}

/// What a type with commas is looked up in.
template <bool isOneType>
struct APropertyIsStatedWithItsTypeItsNameAndUnlessItIsReadOnlyItsSetter {
  template <class T>
  using nk_Is = T;
};
template <>
#ifdef __clang__
struct [[deprecated("a property is stated with its type, its name and, unless it is read-only, its setter")]]
#else
struct
#endif
APropertyIsStatedWithItsTypeItsNameAndUnlessItIsReadOnlyItsSetter<false> {};

#ifdef __clang__
[[deprecated("a statement stands in a class without NK_OBJECT")]]
#endif
Owner<WrongOwner<OfProperty>>
    nk_owner_(OfProperty);
Owner<NoOwner> nk_owner_(OfClass);
AStatementStandsInAClassWithoutNK_OBJECT nk_scope_(OfClass);
StatementNumber<const Place<statementBlock - 1>* const> nk_state_(const void*);
NSObject& nk_object_(OfClass);

}  // namespace norvik::detail

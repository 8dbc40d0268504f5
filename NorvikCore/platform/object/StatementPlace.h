// NorvikCore/platform/object/StatementPlace.h - how the statements of a class are numbered, in the order of the source.
//
// Each statement is one more overload of the class's nk_state_, whose parameter is its place. A call with a place that
// derives from all earlier places chooses the last statement, whose type gives the next number. The number depends only
// on the class, which has the same tokens in every file. Such a call is resolved at its position in the class. The
// language permits a compiler to object because of later overloads; g++ and clang do not. Places derive from each other
// in blocks, because compilers walk along the bases: the first call finds the last block, the second one the last
// statement in it.
//
// One mistake causes one error, because the declarations of a statement are well formed for any class. A statement
// detects an NK_OBJECT above it by the class that nk_owner_ names: that class is still incomplete, whereas a superclass
// is complete.
#pragma once

namespace norvik {
class NSObject;
}

namespace norvik::detail {

struct Statement;

inline constexpr int statementBlock = 24;
/// The most statements of one class; its superclasses are counted separately.
inline constexpr int statementLimit = statementBlock * statementBlock - 1;

/// Place 0 is NK_OBJECT's.
template <int number>
struct Place : Place<number % statementBlock == 0 ? number - statementBlock : number - 1> {};
template <>
struct Place<0> {};

inline constexpr const Place<statementBlock* statementBlock>* lastBlock = nullptr;

/// Replaces a type that the compiler does not know, after the compiler has reported it.
struct UnknownType {};

/// The number of a statement in its class, and the types that later statements ask for.
template <class Place>
struct StatementNumber;
template <int number>
struct StatementNumber<const Place<number>*> {
  static_assert(number <= statementLimit, "a class can have 575 declarations at most: put some in a superclass");
  static constexpr int value = number;
  using nk_Place = const Place<number>*;
  using LastInBlock = const Place<number - number % statementBlock + statementBlock - 1>*;
  using Next = const Place<number + 1>*;
  using NextWithoutObject = const Place<statementBlock>* const;
  using nk_Type = UnknownType;
};

/// The number of a statement without an NK_OBJECT above it. Such statements are numbered so that only the first is an
/// error. They begin at the second block, because an NK_OBJECT further down is place 0.
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

/// The argument of the functions with which a statement queries its class: nk_owner_, nk_scope_ and nk_object_, which
/// NK_OBJECT and NSObject declare. Outside of classes of objects the functions at the end of this file are found. A
/// stored property queries with OfProperty.
struct OfClass {};
struct OfProperty : OfClass {};

/// The class to which a statement belongs.
template <class T>
struct Owner {
  using Class = T;
};

/// The owner for a class whose NK_OBJECT names another class; never defined.
template <class Key>
struct WrongOwner;

/// `Key` is a type of the class that declares NK_OBJECT(T), so that each class checks separately whether T is complete.
template <class T, class Key, class = void>
struct OwnerNamed {
  using Type = Owner<T>;
};
template <class T, class Key>
struct OwnerNamed<T, Key, decltype(void(sizeof(T)))> {
  using Type = Owner<WrongOwner<Key>>;
};

/// Instantiated once for all statements without NK_OBJECT in classes below T, so that they are one error.
template <class T>
constexpr bool isWithoutObject() {
  static_assert(sizeof(T) == 0, "a declaration is in a class without NK_OBJECT, or above it");
  return true;
}
template <class Last, bool>
struct PlaceWithoutObject {
  using Type = typename Last::NextWithoutObject;
};

/// `key` distinguishes the statements of a class template as long as the template's numbers are not known.
template <class Last, unsigned long long key, class Owner, class = void>
struct PlaceAfter {
  using Type = typename Last::Next;
};
/// T is a superclass. Its own statements have lower numbers, so that a result cached for them is not found here.
template <class Last, unsigned long long key, class T>
struct PlaceAfter<Last, key, Owner<T>, decltype(void(sizeof(T)))> : PlaceWithoutObject<Last, isWithoutObject<T>()> {};
template <class Last, unsigned long long key, class Owner>
using NextPlace = typename PlaceAfter<Last, key, Owner>::Type;

/// A hash of a statement's own words.
constexpr unsigned long long statementKey(const char* words, unsigned long long key = 14695981039346656037U) {
  for (; *words; ++words) key = (key ^ static_cast<unsigned char>(*words)) * 1099511628211U;
  return key;
}

/// The declared return type of a statement that is not a stored property.
template <class Data, class Place>
struct StatementAt : Data, StatementNumber<Place> {};

/// The class whose members a statement names: NoOwner unless a correct NK_OBJECT precedes the statement.
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

/// The class and the type of a category's or a computed property, for a name that the compiler does not know.
struct UnknownProperty {
  using nk_Class = UnknownType;
  using nk_Type = UnknownType;
};

/// The scope of a stored property in a class of objects.
struct InClass {
  template <class T>
  using nk_Here = T;
};
/// Any other scope. g++ finds no nk_Here in it, names it in its error, and drops the declaration. clang would continue,
/// but stops at a call of nk_owner_ (NK_STOP_AT_MISTAKES).
struct ADeclarationIsInAClassWithoutNK_OBJECT {};

/// False for a text with a comma outside of all brackets, as several arguments of a statement have.
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

/// The scope in which a type with commas is looked up.
template <bool isOneType>
struct APropertyIsDeclaredWithItsTypeItsNameAndUnlessItIsReadOnlyItsSetter {
  template <class T>
  using nk_Is = T;
};
template <>
#ifdef __clang__
struct [[deprecated("a property is declared with its type, its name and, unless it is read-only, its setter")]]
#else
struct
#endif
APropertyIsDeclaredWithItsTypeItsNameAndUnlessItIsReadOnlyItsSetter<false> {};

#ifdef __clang__
[[deprecated("a declaration is in a class without NK_OBJECT")]]
#endif
Owner<WrongOwner<OfProperty>>
    nk_owner_(OfProperty);
Owner<NoOwner> nk_owner_(OfClass);
ADeclarationIsInAClassWithoutNK_OBJECT nk_scope_(OfClass);
StatementNumber<const Place<statementBlock - 1>* const> nk_state_(const void*);
NSObject& nk_object_(OfClass);

}  // namespace norvik::detail

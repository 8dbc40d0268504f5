// NorvikCore/platform/object/ObjectMacros.h - how a class declares itself, once, for reflection, key paths and
// observing.
//
//   class Payslip : public NSObject {
//     NK_OBJECT(Payslip, NSObject)                     // first; opens `public:`
//     NK_PROPERTY(Decimal, grossPay, setGrossPay)      // accessors, "grossPay" for key paths, change notification
//     NK_PROPERTY(Date, paymentDate, setPaymentDate)
//     NK_COMPUTED_PROPERTY(Decimal, netPay)            // you write `Decimal netPay() const`
//     NK_AFFECTED_BY(netPay, grossPay)                 // observers of netPay are notified of changes of grossPay
//    public:
//     void recalculate();
//     NK_METHOD(recalculate)                           // can be performed by name
//   };
//
// Each use of such a macro is a declaration; the compiler's messages and the headers that implement it call it a
// statement. NK_OBJECT makes the members after it public; no other declaration changes the access. Declarations take no
// semicolon. A type may contain six commas at most. The storage of property `x` is the member `x_`, which only the
// class itself can read (`*x_`) and write (`x_ = value`, which notifies no observer).
//
// A class can have at most 575 declarations. A class that is local to a function cannot have any. A property may refer
// to a class that is only forward-declared (`Ref<Department>`) if it is defined further down in the same file.
//
// A selector text is the operation's name with one colon per argument; NK_METHOD_AS and NK_CLASS_METHOD_AS take another
// text.
#pragma once

#include "NorvikCore/platform/object/AnnouncedChange.h"
#include "NorvikCore/platform/object/ClassDefinition.h"
#include "NorvikCore/platform/object/StatedOperation.h"
#include "NorvikCore/platform/object/StatedProperty.h"
#include "NorvikCore/platform/object/StatedSuperclass.h"
#include "NorvikCore/platform/object/StoredProperty.h"
#include "NorvikCore/platform/object/Weak.h"

/// NK_OBJECT(Name, Superclass): declares a class and the nearest class above it that has an NK_OBJECT.
#define NK_OBJECT(Name, ...)                                                                                           \
 public:                                                                                                               \
  struct nk_Object_ : ::norvik::detail::UnknownObject {                                                                \
    using nk_Class = Name;                                                                                             \
    using nk_Superclass = __VA_ARGS__;                                                                                 \
  };                                                                                                                   \
  using Self = typename nk_Object_::nk_Class;                                                                          \
  using Super = typename nk_Object_::nk_Superclass;                                                                    \
  static const ::norvik::Class& staticClass() {                                                                        \
    static const ::norvik::Class& stated = ::norvik::detail::defineClass<Self, Super>();                               \
    static_cast<void>(&nk_atLoad_);                                                                                    \
    return stated;                                                                                                     \
  }                                                                                                                    \
  const ::norvik::Class& classObject() const override {                                                                \
    static_assert(::norvik::detail::isNamed<decltype(this), Self>, "NK_OBJECT names another class than its own");      \
    static_assert(::norvik::detail::isNearestStated<Self, Super>,                                                      \
                  "NK_OBJECT names a class that is not the superclass");                                               \
    return staticClass();                                                                                              \
  }                                                                                                                    \
  static typename ::norvik::detail::OwnerNamed<Self, nk_Object_>::Type nk_owner_(::norvik::detail::OfClass);           \
  static ::norvik::detail::InClass nk_scope_(::norvik::detail::OfClass);                                               \
  ::norvik::NSObject& nk_object_(::norvik::detail::OfClass) noexcept { return *this; }                                 \
  using nk_Owner_ = typename decltype(nk_owner_(::norvik::detail::OfClass()))::Class;                                  \
  [[maybe_unused]] friend ::norvik::detail::StatedClass<nk_Owner_> nk_stated_(const nk_Owner_*,                        \
                                                                              ::norvik::detail::NotAbove<nk_Owner_>) { \
    return {};                                                                                                         \
  }                                                                                                                    \
  friend struct ::norvik::detail::StatementAccess;                                                                     \
  static constexpr auto nk_state_([[maybe_unused]] const ::norvik::detail::Place<0>* nk_place)                         \
      ->::norvik::detail::StatementAt<::norvik::detail::Statement, decltype(nk_place)> {                               \
    return {::norvik::detail::Statement{.kind = ::norvik::detail::StatementKind::ClassName, .name = #Name}, {}};       \
  }                                                                                                                    \
  inline static const ::norvik::detail::ClassAtLoad nk_atLoad_{&staticClass};

/// NK_CLASS_NAME("pay.Row"): the name under which the class is looked up, archived and described. Without it, that is
/// the name of the C++ class without its namespaces. Subclasses do not inherit it.
#define NK_CLASS_NAME(name_) \
  NK_STATEMENT("", ::norvik::detail::Statement{.kind = ::norvik::detail::StatementKind::ClassName, .name = name_})

/// NK_PROPERTY(Type, name, setName): stored, read by name(), written by setName(value).
#define NK_PROPERTY(...) NK_WITH_TYPE_LAST(NK_STATE_PROPERTY, __VA_ARGS__)
/// NK_ATOMIC_PROPERTY(Type, name, setName): the same, for several threads at once.
#define NK_ATOMIC_PROPERTY(...) NK_WITH_TYPE_LAST(NK_STATE_ATOMIC_PROPERTY, __VA_ARGS__)
/// NK_WEAK_PROPERTY(Class, name, setName): a reference that does not retain its object; the accessors use Ref<Class>.
#define NK_WEAK_PROPERTY(...) NK_WITH_TYPE_LAST(NK_STATE_WEAK_PROPERTY, __VA_ARGS__)
/// NK_COMPUTED_PROPERTY_WITH_SETTER(Type, name, setName): you write both accessors; the setter itself must announce its
/// change.
#define NK_COMPUTED_PROPERTY_WITH_SETTER(...) NK_WITH_TYPE_LAST(NK_STATE_COMPUTED_WITH_SETTER, __VA_ARGS__)
/// NK_READONLY_PROPERTY(Type, name): stored, read by name(), written only by the class through its storage name_.
#define NK_READONLY_PROPERTY(...) NK_WITH_TYPE_LAST2(NK_STATE_READONLY_PROPERTY, __VA_ARGS__)
/// NK_COMPUTED_PROPERTY(Type, name): you write `Type name() const`.
#define NK_COMPUTED_PROPERTY(...) NK_WITH_TYPE_LAST2(NK_STATE_COMPUTED_PROPERTY, __VA_ARGS__)

/// NK_AFFECTED_BY(key, other): a change of the property `other` is also a change of `key`.
#define NK_AFFECTED_BY(key, other) \
  NK_STATEMENT(                    \
      #key "<" #other,             \
      ::norvik::detail::Statement{.kind = ::norvik::detail::StatementKind::Dependency, .name = #key, .text = #other})

/// An operation of the object, or of the class (a static member function), that can be found and performed by name. An
/// overloaded operation is rejected: declare a function of another name that calls the intended one. With NK_METHOD_AS
/// it may be an instance of a template: NK_METHOD_AS(add<Decimal>, "add:").
#define NK_METHOD(name) \
  NK_STATEMENT(#name, ::norvik::detail::methodStatement<nk_Self>(#name, nullptr, NK_ADDRESS_OF(name)))
#define NK_METHOD_AS(name, selector) \
  NK_STATEMENT(#name " " selector,   \
               ::norvik::detail::methodStatement<nk_Self>(#name, selector, NK_ADDRESS_OF_THIS(name)))
#define NK_CLASS_METHOD(name) \
  NK_STATEMENT("+" #name, ::norvik::detail::classMethodStatement<nk_Self>(#name, nullptr, NK_ADDRESS_OF(name)))
#define NK_CLASS_METHOD_AS(name, selector) \
  NK_STATEMENT("+" #name " " selector,     \
               ::norvik::detail::classMethodStatement<nk_Self>(#name, selector, NK_ADDRESS_OF_THIS(name)))

/// NK_CATEGORY_PROPERTY(Class, Type, name, setName), beside the definitions of a category: makes the free functions
/// `Type name(const Class&)` and `void setName(Class&, Type)` a property of the class, from when this shared object is
/// loaded. The setter itself must announce its change. NK_CATEGORY_READONLY_PROPERTY(Class, Type, name) has only the
/// first function. Name the class without its namespace. If the class or another category has a property of that name,
/// the first one is kept, and a line on the system console reports it. Load a shared object with such declarations
/// before threads use the class.
#define NK_CATEGORY_PROPERTY(...) NK_WITH_TYPE_LAST(NK_STATE_CATEGORY_PROPERTY, __VA_ARGS__)
#define NK_CATEGORY_READONLY_PROPERTY(...) NK_WITH_TYPE_LAST2(NK_STATE_CATEGORY_READONLY_PROPERTY, __VA_ARGS__)

// StatementPlace.h explains how a statement gets its place. `words` are the statement's own words, as a literal. In a
// class with mistakes nk_Self has no members that a statement could name.
#define NK_STATEMENT_OF(words)                                                                                      \
  [[maybe_unused]] static constexpr auto nk_state_([[maybe_unused]] NK_NEXT_PLACE(words, ::norvik::detail::OfClass) \
                                                       nk_place)                                                    \
      ->::norvik::detail::StatementAt<::norvik::detail::Statement, decltype(nk_place)>

#define NK_NEXT_PLACE(words, of)                                                                                   \
  ::norvik::detail::NextPlace<                                                                                     \
      decltype(nk_state_(::norvik::detail::LastPlaceInBlock<decltype(nk_state_(::norvik::detail::lastBlock))>())), \
      ::norvik::detail::statementKey(words), decltype(nk_owner_(of()))>

#define NK_STATEMENT(words, ...) \
  NK_STATEMENT_OF(words) {       \
    NK_USING_SELF                \
    return {__VA_ARGS__, {}};    \
  }

#define NK_USING_SELF                                             \
  using nk_Self [[maybe_unused]] =                                \
      typename ::norvik::detail::OwnerAtPlace<decltype(nk_place), \
                                              decltype(nk_owner_(::norvik::detail::OfClass()))>::Type;

// A function that returns the address of a member of a class, and that cannot be called if the class has no such member
// or several. The second form also accepts instances of member templates; the compiler words its error.
#define NK_ADDRESS_OF(name)                                          \
  [](auto owner) requires requires { &decltype(owner)::type::name; } \
  { return &decltype(owner)::type::name; }
#define NK_ADDRESS_OF_THIS(name)        \
  ::norvik::detail::RefusedByCompiler { \
    [](auto) { return &Self::name; }    \
  }

// A clang warning between these two is a fatal error, so it is the last message. g++ needs neither: it drops a
// declaration whose type it does not know, whereas clang assumes another type and continues.
#ifdef __clang__
#define NK_STOP_AT_MISTAKES                                                                        \
  _Pragma("clang diagnostic push") _Pragma("clang diagnostic fatal \"-Wdeprecated-declarations\"") \
      _Pragma("clang diagnostic fatal \"-Wredeclared-class-member\"")
#define NK_GO_ON _Pragma("clang diagnostic pop")
#else
#define NK_STOP_AT_MISTAKES
#define NK_GO_ON
#endif

// The type of a statement is compiled only here, so that an unknown type is one error; the nk_Type of the struct's base
// is used instead. A type with commas may be several arguments by mistake.
#define NK_USING_TYPE(first, ...)                      \
  __VA_OPT__(NK_USING_PARSED(#first "," #__VA_ARGS__)) \
  using nk_Type [[maybe_unused]] = __VA_OPT__(nk_Parsed::nk_Is <) first __VA_OPT__(, __VA_ARGS__ >);

#define NK_USING_PARSED(text)                                                                                          \
  NK_STOP_AT_MISTAKES                                                                                                  \
  using nk_Parsed [[maybe_unused]] =                                                                                   \
      ::norvik::detail::APropertyIsStatedWithItsTypeItsNameAndUnlessItIsReadOnlyItsSetter<::norvik::detail::isOneType( \
          text)>;                                                                                                      \
  NK_GO_ON

// The struct of a stored property. If the property is stated twice, clang stops at the second declaration. g++
// continues, so a second struct of the same name would be one more error.
#ifdef __clang__
#define NK_STRUCT_OF(name) nk_property_##name
#define NK_DECLARE_STRUCT_OF(name) struct nk_property_##name;
#define NK_HERE(...) __VA_ARGS__
#else
#define NK_STRUCT_OF(name) NK_STRUCT_AT(name, __LINE__)
#define NK_STRUCT_AT(name, line) NK_STRUCT_AT_(name, line)
#define NK_STRUCT_AT_(name, line) nk_property_##name##_##line
#define NK_DECLARE_STRUCT_OF(name)
#define NK_HERE(...) decltype(nk_scope_(::norvik::detail::OfClass()))::nk_Here<__VA_ARGS__>
#endif
#define NK_TYPE_OF(name) typename NK_STRUCT_OF(name)::nk_Type

// A stored property as data: its type, its words, and how it is read and written by its key. The class is a template
// argument, because the struct is compiled even in classes with mistakes. `argument` is the type that the setter takes.
#define NK_STORED_PROPERTY(name_, setter_, text_, weak, atomic, argument, set, ...)                      \
  NK_STOP_AT_MISTAKES                                                                                    \
  NK_DECLARE_STRUCT_OF(name_)                                                                            \
  struct NK_STRUCT_OF(name_)                                                                             \
      : ::norvik::detail::StatementNumber<NK_NEXT_PLACE(#name_, ::norvik::detail::OfProperty)> {         \
    NK_GO_ON                                                                                             \
    NK_USING_TYPE(__VA_ARGS__)                                                                           \
    using nk_Argument = argument;                                                                        \
    static constexpr ::norvik::detail::Statement nk_stated() {                                           \
      return {.name = #name_, .text = text_, .setterName = setter_, .isWeak = weak, .isAtomic = atomic}; \
    }                                                                                                    \
    template <class nk_Owner>                                                                            \
    static ::norvik::Value nk_get(const ::norvik::NSObject& nk_object) {                                 \
      return ::norvik::detail::propertyValue(static_cast<const nk_Owner&>(nk_object).name_(), #name_);   \
    }                                                                                                    \
    set                                                                                                  \
  };                                                                                                     \
  [[maybe_unused]] static auto nk_state_(typename NK_STRUCT_OF(name_)::nk_Place)->NK_STRUCT_OF(name_) { return {}; }

// The value of NK_STORED_PROPERTY's `set` if the property has a setter.
#define NK_SET_BY_KEY(name_, setter)                                                                    \
  template <class nk_Owner>                                                                             \
  static void nk_set(::norvik::NSObject& nk_object, const ::norvik::Value& nk_value) {                  \
    ::norvik::detail::setPropertyValue<nk_Argument>(nk_object, nk_value, #name_, [&](auto&& nk_given) { \
      static_cast<nk_Owner&>(nk_object).setter(::std::forward<decltype(nk_given)>(nk_given));           \
    });                                                                                                 \
  }

#define NK_STORAGE(storage, type) ::norvik::detail::storage<decltype(nk_owner_(::norvik::detail::OfClass())), type>

// A setter checks for observers before it uses its argument. So for a number in a register only that check and the
// store remain.

#define NK_STATE_PROPERTY(name, setter, ...)                                                                         \
  NK_STORED_PROPERTY(name, #setter, #__VA_ARGS__, false, false, nk_Type, NK_SET_BY_KEY(name, setter), __VA_ARGS__)   \
  NK_STORAGE(Stored, NK_TYPE_OF(name)) name##_;                                                                      \
  const NK_HERE(NK_TYPE_OF(name)) & name() const { return ::norvik::detail::StoredAccess::read(name##_); }           \
  void setter(NK_TYPE_OF(name) value) {                                                                              \
    if (!nk_object_(::norvik::detail::OfClass()).isObserved()) [[likely]] {                                          \
      ::norvik::detail::StoredAccess::write(name##_, ::std::move(value));                                            \
    } else {                                                                                                         \
      ::norvik::detail::changeObservedProperty(nk_object_(::norvik::detail::OfClass()), #name,                       \
                                               [&, given = ::std::move(value)]() mutable {                           \
                                                 ::norvik::detail::StoredAccess::write(name##_, ::std::move(given)); \
                                               });                                                                   \
    }                                                                                                                \
  }

#define NK_STATE_ATOMIC_PROPERTY(name, setter, ...)                                                                  \
  NK_STORED_PROPERTY(name, #setter, #__VA_ARGS__, false, true, nk_Type, NK_SET_BY_KEY(name, setter), __VA_ARGS__)    \
  NK_STORAGE(AtomicStored, NK_TYPE_OF(name)) name##_;                                                                \
  NK_HERE(NK_TYPE_OF(name)) name() const { return ::norvik::detail::StoredAccess::load(name##_); }                   \
  void setter(NK_TYPE_OF(name) value) {                                                                              \
    if (!nk_object_(::norvik::detail::OfClass()).isObserved()) [[likely]] {                                          \
      ::norvik::detail::StoredAccess::store(name##_, ::std::move(value));                                            \
    } else {                                                                                                         \
      ::norvik::detail::changeObservedProperty(nk_object_(::norvik::detail::OfClass()), #name,                       \
                                               [&, given = ::std::move(value)]() mutable {                           \
                                                 ::norvik::detail::StoredAccess::store(name##_, ::std::move(given)); \
                                               });                                                                   \
    }                                                                                                                \
  }

#define NK_STATE_WEAK_PROPERTY(name, setter, ...)                                                             \
  NK_STORED_PROPERTY(name, #setter, #__VA_ARGS__, true, false, ::norvik::detail::WeakRef<nk_Type>,            \
                     NK_SET_BY_KEY(name, setter), __VA_ARGS__)                                                \
  NK_STORAGE(Stored, ::norvik::detail::WeakStorage<NK_TYPE_OF(name)>) name##_;                                \
  NK_HERE(typename NK_STRUCT_OF(name)::nk_Argument) name() const {                                            \
    return ::norvik::detail::StoredAccess::read(name##_).lock();                                              \
  }                                                                                                           \
  void setter(const typename NK_STRUCT_OF(name)::nk_Argument& value) {                                        \
    ::norvik::detail::changeProperty(nk_object_(::norvik::detail::OfClass()), #name, [&] {                    \
      ::norvik::detail::StoredAccess::write(name##_, ::norvik::detail::WeakStorage<NK_TYPE_OF(name)>(value)); \
    });                                                                                                       \
  }

#define NK_STATE_READONLY_PROPERTY(name, ...)                                           \
  NK_STORED_PROPERTY(name, nullptr, #__VA_ARGS__, false, false, nk_Type, , __VA_ARGS__) \
  NK_STORAGE(Stored, NK_TYPE_OF(name)) name##_;                                         \
  const NK_HERE(NK_TYPE_OF(name)) & name() const { return ::norvik::detail::StoredAccess::read(name##_); }

#define NK_STATE_COMPUTED_WITH_SETTER(name, setter, ...)                                                  \
  NK_STATEMENT_OF(#name) {                                                                                \
    NK_USING_SELF                                                                                         \
    struct nk_Property : ::norvik::detail::UnknownProperty {                                              \
      NK_USING_TYPE(__VA_ARGS__)                                                                          \
    };                                                                                                    \
    return {::norvik::detail::computedStatement<nk_Self, typename nk_Property::nk_Type>(                  \
                #__VA_ARGS__, NK_ADDRESS_OF(name), [] { return #name; }, #setter, NK_ADDRESS_OF(setter)), \
            {}};                                                                                          \
  }

#define NK_STATE_COMPUTED_PROPERTY(name, ...)                                            \
  NK_STATEMENT_OF(#name) {                                                               \
    NK_USING_SELF                                                                        \
    struct nk_Property : ::norvik::detail::UnknownProperty {                             \
      NK_USING_TYPE(__VA_ARGS__)                                                         \
    };                                                                                   \
    return {::norvik::detail::computedStatement<nk_Self, typename nk_Property::nk_Type>( \
                #__VA_ARGS__, NK_ADDRESS_OF(name), [] { return #name; }),                \
            {}};                                                                         \
  }

#define NK_STATE_CATEGORY_PROPERTY(name, setter, Class, ...)                                             \
  NK_CATEGORY_PROPERTY_OF(nk_CategoryProperty_##Class##_##name, Class, __VA_ARGS__)                      \
  [[maybe_unused]] static const ::norvik::detail::CategoryProperty nk_categoryProperty_##Class##_##name{ \
      ::norvik::detail::extendedClass<nk_CategoryProperty_##Class##_##name::nk_Class>(),                 \
      ::norvik::detail::categoryStatement<nk_CategoryProperty_##Class##_##name::nk_Class,                \
                                          nk_CategoryProperty_##Class##_##name::nk_Type>(                \
          #__VA_ARGS__, NK_CALL_OF(name), [] { return #name; }, #setter,                                 \
          [](auto& nk_object, const auto& nk_value) requires requires { setter(nk_object, nk_value); } { \
            setter(nk_object, nk_value);                                                                 \
          })};

#define NK_STATE_CATEGORY_READONLY_PROPERTY(name, Class, ...)                                            \
  NK_CATEGORY_PROPERTY_OF(nk_CategoryProperty_##Class##_##name, Class, __VA_ARGS__)                      \
  [[maybe_unused]] static const ::norvik::detail::CategoryProperty nk_categoryProperty_##Class##_##name{ \
      ::norvik::detail::extendedClass<nk_CategoryProperty_##Class##_##name::nk_Class>(),                 \
      ::norvik::detail::categoryStatement<nk_CategoryProperty_##Class##_##name::nk_Class,                \
                                          nk_CategoryProperty_##Class##_##name::nk_Type>(                \
          #__VA_ARGS__, NK_CALL_OF(name), [] { return #name; })};

#define NK_CATEGORY_PROPERTY_OF(struct_, Class, ...)   \
  struct struct_ : ::norvik::detail::UnknownProperty { \
    using nk_Class = Class;                            \
    NK_USING_TYPE(__VA_ARGS__)                         \
  };

// A function that calls the free function of that name, and that cannot be called if there is none.
#define NK_CALL_OF(name)                                           \
  [](const auto& nk_object) requires requires { name(nk_object); } \
  { return name(nk_object); }

// A type with commas arrives in pieces. These move the names to the front, so that the type is the rest of the
// arguments.
#define NK_WITH_TYPE_LAST(statement, ...)                                                                  \
  NK_PICK24(__VA_ARGS__, NK_MANY_14, NK_TYPE_OF_7, NK_TYPE_OF_6, NK_TYPE_OF_5, NK_TYPE_OF_4, NK_TYPE_OF_3, \
            NK_TYPE_OF_2, NK_TYPE_OF_1, NK_TOO_FEW, NK_TOO_FEW, )                                          \
  (statement, __VA_ARGS__)
#define NK_WITH_TYPE_LAST2(statement, ...)                                                                    \
  NK_PICK24(__VA_ARGS__, NK_MANY_14, NK_TOO_MANY, NK_TYPE2_OF_7, NK_TYPE2_OF_6, NK_TYPE2_OF_5, NK_TYPE2_OF_4, \
            NK_TYPE2_OF_3, NK_TYPE2_OF_2, NK_TYPE2_OF_1, NK_TOO_FEW, )                                        \
  (statement, __VA_ARGS__)
#define NK_PICK24(...) NK_PICK24_(__VA_ARGS__)
#define NK_PICK24_(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, picked, ...) picked
#define NK_MANY_14                                                                                                     \
  NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY, \
      NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY, NK_TOO_MANY
#define NK_TOO_FEW(...) \
  static_assert(false, "a property is stated with its type, its name and, unless it is read-only, its setter");
#define NK_TOO_MANY(...) \
  static_assert(false, "the type of a property has more than six commas: state another name for it");
#define NK_TYPE_OF_1(statement, a, name, setter) statement(name, setter, a)
#define NK_TYPE_OF_2(statement, a, b, name, setter) statement(name, setter, a, b)
#define NK_TYPE_OF_3(statement, a, b, c, name, setter) statement(name, setter, a, b, c)
#define NK_TYPE_OF_4(statement, a, b, c, d, name, setter) statement(name, setter, a, b, c, d)
#define NK_TYPE_OF_5(statement, a, b, c, d, e, name, setter) statement(name, setter, a, b, c, d, e)
#define NK_TYPE_OF_6(statement, a, b, c, d, e, f, name, setter) statement(name, setter, a, b, c, d, e, f)
#define NK_TYPE_OF_7(statement, a, b, c, d, e, f, g, name, setter) statement(name, setter, a, b, c, d, e, f, g)
#define NK_TYPE2_OF_1(statement, a, name) statement(name, a)
#define NK_TYPE2_OF_2(statement, a, b, name) statement(name, a, b)
#define NK_TYPE2_OF_3(statement, a, b, c, name) statement(name, a, b, c)
#define NK_TYPE2_OF_4(statement, a, b, c, d, name) statement(name, a, b, c, d)
#define NK_TYPE2_OF_5(statement, a, b, c, d, e, name) statement(name, a, b, c, d, e)
#define NK_TYPE2_OF_6(statement, a, b, c, d, e, f, name) statement(name, a, b, c, d, e, f)
#define NK_TYPE2_OF_7(statement, a, b, c, d, e, f, g, name) statement(name, a, b, c, d, e, f, g)

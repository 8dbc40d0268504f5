// NorvikCore/platform/object/ObjectMacros.h - how a class states itself, once, for reflection, key paths and
// observing.
//
//   class Payslip : public NSObject {
//     NK_OBJECT(Payslip, NSObject)                     // first; opens `public:`
//     NK_PROPERTY(Decimal, grossPay, setGrossPay)      // accessors, "grossPay" for key paths, change notification
//     NK_PROPERTY(Date, paymentDate, setPaymentDate)
//     NK_COMPUTED_PROPERTY(Decimal, netPay)            // you write `Decimal netPay() const`
//     NK_AFFECTED_BY(netPay, grossPay)                 // who observes netPay hears of changes of grossPay
//    public:
//     void recalculate();
//     NK_METHOD(recalculate)                           // can be performed by name
//   };
//
// NK_OBJECT makes what follows public, as a class that states itself is there to be used; no other statement changes
// the access in force. Statements take no semicolon. A type may hold six commas. The storage of property `x` is the
// member `x_`, which only the class itself can read (`*x_`) and write (`x_ = value`, which announces nothing).
//
// A class makes 575 statements at most. A class that is local to a function cannot make any. A property may refer to a
// class that is only declared so far (`Ref<Department>`), if it is defined further down in the same file.
//
// A selector text is the operation's name with one colon an argument; NK_METHOD_AS and NK_CLASS_METHOD_AS take another
// text.
#pragma once

#include "NorvikCore/platform/object/AnnouncedChange.h"
#include "NorvikCore/platform/object/ClassDefinition.h"
#include "NorvikCore/platform/object/StatedOperation.h"
#include "NorvikCore/platform/object/StatedProperty.h"
#include "NorvikCore/platform/object/StatedSuperclass.h"
#include "NorvikCore/platform/object/StoredProperty.h"
#include "NorvikCore/platform/object/Weak.h"

/// NK_OBJECT(Name, Superclass): states a class and the nearest class above it that is stated.
#define NK_OBJECT(Name, ...)                                                                                 \
 public:                                                                                                     \
  using Self = Name;                                                                                         \
  using Super = __VA_ARGS__;                                                                                 \
  static const ::norvik::Class& staticClass() {                                                              \
    static const ::norvik::Class& stated = ::norvik::detail::defineClass<Name, Super>();                     \
    static_cast<void>(&nk_atLoad_);                                                                          \
    return stated;                                                                                           \
  }                                                                                                          \
  const ::norvik::Class& classObject() const override {                                                      \
    static_assert(__is_same(decltype(this), const Name*), "NK_OBJECT names another class than its own");     \
    static_assert(::norvik::detail::isNearestStated<Name, Super>,                                            \
                  "NK_OBJECT names a class that is not the superclass");                                     \
    return staticClass();                                                                                    \
  }                                                                                                          \
  [[maybe_unused]] friend ::norvik::detail::StatedClass<Name> nk_stated_(const Name*,                        \
                                                                         ::norvik::detail::NotAbove<Name>) { \
    return {};                                                                                               \
  }                                                                                                          \
  friend struct ::norvik::detail::StatementAccess;                                                           \
  static void nk_state_(::norvik::detail::ThisClassHasNoNK_OBJECT);                                          \
  static constexpr auto nk_state_([[maybe_unused]] const ::norvik::detail::Place<0>* nk_place)               \
      ->::norvik::detail::StatementAt<decltype(nk_place)> {                                                  \
    return {::norvik::detail::Statement{.kind = ::norvik::detail::StatementKind::ClassName, .name = #Name}}; \
  }                                                                                                          \
  inline static const ::norvik::detail::ClassAtLoad nk_atLoad_{&staticClass};

/// NK_CLASS_NAME("pay.Row"): the name under which the class is looked up, archived and described, in place of the name
/// of the C++ class without its namespaces. Subclasses do not inherit it.
#define NK_CLASS_NAME(name_) \
  NK_STATEMENT("", ::norvik::detail::Statement{.kind = ::norvik::detail::StatementKind::ClassName, .name = name_})

/// NK_PROPERTY(Type, name, setName): stored, read by name(), written by setName(value).
#define NK_PROPERTY(...) NK_WITH_TYPE_LAST(NK_STATE_PROPERTY, __VA_ARGS__)
/// NK_ATOMIC_PROPERTY(Type, name, setName): the same, for several threads at once.
#define NK_ATOMIC_PROPERTY(...) NK_WITH_TYPE_LAST(NK_STATE_ATOMIC_PROPERTY, __VA_ARGS__)
/// NK_WEAK_PROPERTY(Class, name, setName): a reference that does not keep its object; the accessors deal in Ref<Class>.
#define NK_WEAK_PROPERTY(...) NK_WITH_TYPE_LAST(NK_STATE_WEAK_PROPERTY, __VA_ARGS__)
/// NK_COMPUTED_PROPERTY_WITH_SETTER(Type, name, setName): you write both accessors; the setter announces its change
/// itself.
#define NK_COMPUTED_PROPERTY_WITH_SETTER(...) NK_WITH_TYPE_LAST(NK_STATE_COMPUTED_WITH_SETTER, __VA_ARGS__)
/// NK_READONLY_PROPERTY(Type, name): stored, read by name(), written only by the class through its storage name_.
#define NK_READONLY_PROPERTY(...) NK_WITH_TYPE_LAST2(NK_STATE_READONLY_PROPERTY, __VA_ARGS__)
/// NK_COMPUTED_PROPERTY(Type, name): you write `Type name() const`.
#define NK_COMPUTED_PROPERTY(...) NK_WITH_TYPE_LAST2(NK_STATE_COMPUTED_PROPERTY, __VA_ARGS__)

/// NK_AFFECTED_BY(key, other): a change of the property `other` is a change of `key` too.
#define NK_AFFECTED_BY(key, other) \
  NK_STATEMENT(                    \
      #key "<" #other,             \
      ::norvik::detail::Statement{.kind = ::norvik::detail::StatementKind::Dependency, .name = #key, .text = #other})

/// An operation of the object, or of the class (a static member function), that can be found and performed by name. An
/// overloaded one is refused: state a function of another name that calls the one that is meant. With NK_METHOD_AS it
/// may be an instance of a template: NK_METHOD_AS(add<Decimal>, "add:").
#define NK_METHOD(name) \
  NK_STATEMENT(#name, ::norvik::detail::methodStatement<Self>(#name, nullptr, NK_ADDRESS_OF(name)))
#define NK_METHOD_AS(name, selector) \
  NK_STATEMENT(#name " " selector, ::norvik::detail::methodStatement<Self>(#name, selector, NK_ADDRESS_OF_THIS(name)))
#define NK_CLASS_METHOD(name) \
  NK_STATEMENT("+" #name, ::norvik::detail::classMethodStatement<Self>(#name, nullptr, NK_ADDRESS_OF(name)))
#define NK_CLASS_METHOD_AS(name, selector) \
  NK_STATEMENT("+" #name " " selector,     \
               ::norvik::detail::classMethodStatement<Self>(#name, selector, NK_ADDRESS_OF_THIS(name)))

/// NK_CATEGORY_PROPERTY(Class, Type, name, setName), beside the definitions of a category: makes the free functions
/// `Type name(const Class&)` and `void setName(Class&, Type)` a property of the class, from when this shared object is
/// loaded. The setter announces its change itself. NK_CATEGORY_READONLY_PROPERTY(Class, Type, name) has the first one
/// only. The class is named without its namespace. If the class or another category has a property of that name, the
/// first one is kept, and the system console says so. A shared object with such statements is loaded before threads use
/// the class.
#define NK_CATEGORY_PROPERTY(...) NK_WITH_TYPE_LAST(NK_STATE_CATEGORY_PROPERTY, __VA_ARGS__)
#define NK_CATEGORY_READONLY_PROPERTY(...) NK_WITH_TYPE_LAST2(NK_STATE_CATEGORY_READONLY_PROPERTY, __VA_ARGS__)

// StatementPlace.h tells how a statement gets its place. `words` are its own, as a literal.
#define NK_STATEMENT(words, ...)                                                                                       \
  static constexpr auto nk_state_(                                                                                     \
      [[maybe_unused]] ::norvik::detail::NextPlace<                                                                    \
          decltype(nk_state_(::norvik::detail::LastPlaceInBlock<decltype(nk_state_(::norvik::detail::lastBlock))>())), \
          ::norvik::detail::statementKey(words)>                                                                       \
          nk_place)                                                                                                    \
      ->::norvik::detail::StatementAt<decltype(nk_place)> {                                                            \
    using HasNK_OBJECT [[maybe_unused]] = decltype(nk_state_(::norvik::detail::ThisClassHasNoNK_OBJECT()));            \
    return {__VA_ARGS__};                                                                                              \
  }

// A function that gives the address of a member of a class, and that cannot be called where the class has no such
// member, or several. The second form is for instances of member templates too, and the compiler words its refusal.
#define NK_ADDRESS_OF(name)                                          \
  [](auto owner) requires requires { &decltype(owner)::type::name; } \
  { return &decltype(owner)::type::name; }
#define NK_ADDRESS_OF_THIS(name) [](auto) { return &Self::name; }

// A setter looks whether anybody observes before it makes anything of its argument: of a number that stays in a
// register, nothing else is left than that look and the store.

#define NK_STATE_PROPERTY(name, setter, ...)                                                             \
  NK_STATEMENT(#name, NK_PROPERTY_RECORD(name, setter, #__VA_ARGS__, false, false, false))               \
  const ::std::type_identity_t<__VA_ARGS__>& name() const { return *name##_; }                           \
  void setter(::std::type_identity_t<__VA_ARGS__> value) {                                               \
    if (!::norvik::NSObject::isObserved()) [[likely]] {                                                  \
      name##_ = ::std::move(value);                                                                      \
    } else {                                                                                             \
      ::norvik::detail::changeObservedProperty(                                                          \
          *this, #name, [this, given = ::std::move(value)]() mutable { name##_ = ::std::move(given); }); \
    }                                                                                                    \
  }                                                                                                      \
  ::norvik::detail::Stored<Self, __VA_ARGS__> name##_;

#define NK_STATE_ATOMIC_PROPERTY(name, setter, ...)                                                           \
  NK_STATEMENT(#name, NK_PROPERTY_RECORD(name, setter, #__VA_ARGS__, false, false, true))                     \
  ::std::type_identity_t<__VA_ARGS__> name() const { return name##_.load(); }                                 \
  void setter(::std::type_identity_t<__VA_ARGS__> value) {                                                    \
    if (!::norvik::NSObject::isObserved()) [[likely]] {                                                       \
      name##_.store(::std::move(value));                                                                      \
    } else {                                                                                                  \
      ::norvik::detail::changeObservedProperty(                                                               \
          *this, #name, [this, given = ::std::move(value)]() mutable { name##_.store(::std::move(given)); }); \
    }                                                                                                         \
  }                                                                                                           \
  ::norvik::detail::AtomicStored<Self, __VA_ARGS__> name##_;

#define NK_STATE_WEAK_PROPERTY(name, setter, ...)                                                          \
  NK_STATEMENT(#name, NK_PROPERTY_RECORD(name, setter, #__VA_ARGS__, false, true, false))                  \
  ::norvik::Ref<__VA_ARGS__> name() const { return (*name##_).lock(); }                                    \
  void setter(const ::norvik::Ref<__VA_ARGS__>& value) {                                                   \
    ::norvik::detail::changeProperty(*this, #name, [&] { name##_ = ::norvik::Weak<__VA_ARGS__>(value); }); \
  }                                                                                                        \
  ::norvik::detail::Stored<Self, ::norvik::Weak<__VA_ARGS__>> name##_;

#define NK_STATE_COMPUTED_WITH_SETTER(name, setter, ...)                      \
  NK_STATEMENT(#name, ::norvik::detail::computedStatement<Self, __VA_ARGS__>( \
                          #__VA_ARGS__, NK_ADDRESS_OF(name), [] { return #name; }, #setter, NK_ADDRESS_OF(setter)))

#define NK_STATE_READONLY_PROPERTY(name, ...)                                  \
  NK_STATEMENT(#name, NK_READONLY_RECORD(name, #__VA_ARGS__))                  \
  const ::std::type_identity_t<__VA_ARGS__>& name() const { return *name##_; } \
  ::norvik::detail::Stored<Self, __VA_ARGS__> name##_;

#define NK_STATE_COMPUTED_PROPERTY(name, ...)                                                                   \
  NK_STATEMENT(#name, ::norvik::detail::computedStatement<Self, __VA_ARGS__>(#__VA_ARGS__, NK_ADDRESS_OF(name), \
                                                                             [] { return #name; }))

#define NK_PROPERTY_RECORD(name_, setter, type, computed, weak, atomic)                                              \
  ::norvik::detail::Statement {                                                                                      \
    .name = #name_, .text = type, .setterName = #setter, .isComputed = computed, .isWeak = weak, .isAtomic = atomic, \
    .objectClass = ::norvik::detail::objectClassOf<Self, &Self::name_>(),                                            \
    .get = [](const ::norvik::NSObject& o) { return ::norvik::detail::getProperty<Self, &Self::name_>(o, #name_); }, \
    .set = [](::norvik::NSObject& o, const ::norvik::Value& v) {                                                     \
      ::norvik::detail::setProperty<Self, &Self::setter>(o, v, #name_);                                              \
    }                                                                                                                \
  }

#define NK_READONLY_RECORD(name_, type)                                                                             \
  ::norvik::detail::Statement {                                                                                     \
    .name = #name_, .text = type, .objectClass = ::norvik::detail::objectClassOf<Self, &Self::name_>(),             \
    .get = [](const ::norvik::NSObject& o) { return ::norvik::detail::getProperty<Self, &Self::name_>(o, #name_); } \
  }

#define NK_STATE_CATEGORY_PROPERTY(name, setter, Class, ...)                                             \
  [[maybe_unused]] static const ::norvik::detail::CategoryProperty nk_categoryProperty_##Class##_##name{ \
      Class::staticClass(), ::norvik::detail::categoryStatement<Class, __VA_ARGS__>(                     \
                                #__VA_ARGS__, NK_CALL_OF(name), [] { return #name; }, #setter,           \
                                [](auto& nk_object, const auto& nk_value) requires requires {            \
                                  setter(nk_object, nk_value);                                           \
                                } { setter(nk_object, nk_value); })};

#define NK_STATE_CATEGORY_READONLY_PROPERTY(name, Class, ...)                                            \
  [[maybe_unused]] static const ::norvik::detail::CategoryProperty nk_categoryProperty_##Class##_##name{ \
      Class::staticClass(),                                                                              \
      ::norvik::detail::categoryStatement<Class, __VA_ARGS__>(#__VA_ARGS__, NK_CALL_OF(name), [] { return #name; })};

// A function that calls the free function of that name, and that cannot be called where there is none.
#define NK_CALL_OF(name)                                           \
  [](const auto& nk_object) requires requires { name(nk_object); } \
  { return name(nk_object); }

// A type with commas arrives in pieces: these move the names in front, so that the type is the rest of the arguments.
#define NK_WITH_TYPE_LAST(statement, ...)                                                                   \
  NK_PICK9(__VA_ARGS__, NK_TYPE_OF_7, NK_TYPE_OF_6, NK_TYPE_OF_5, NK_TYPE_OF_4, NK_TYPE_OF_3, NK_TYPE_OF_2, \
           NK_TYPE_OF_1, NK_TOO_FEW, NK_TOO_FEW, )                                                          \
  (statement, __VA_ARGS__)
#define NK_WITH_TYPE_LAST2(statement, ...)                                                                          \
  NK_PICK9(__VA_ARGS__, , NK_TYPE2_OF_7, NK_TYPE2_OF_6, NK_TYPE2_OF_5, NK_TYPE2_OF_4, NK_TYPE2_OF_3, NK_TYPE2_OF_2, \
           NK_TYPE2_OF_1, NK_TOO_FEW, )                                                                             \
  (statement, __VA_ARGS__)
#define NK_TOO_FEW(...) \
  static_assert(false, "a property is stated with its type, its name and, unless it is read-only, its setter");
#define NK_PICK9(a, b, c, d, e, f, g, h, i, picked, ...) picked
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

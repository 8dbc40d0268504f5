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
// the access in force. Statements take no semicolon. A type may hold commas. The storage of property `x` is the member
// `x_`, which only the class itself can read (`*x_`) and write (`x_ = value`, which announces nothing).
//
// A selector text is the operation's name with one colon an argument; NK_METHOD_AS and NK_CLASS_METHOD_AS take another
// text.
#pragma once

#include "NorvikCore/platform/object/Stated.h"

/// States a class and its superclass.
#define NK_OBJECT(Name, Superclass)                                                                \
 public:                                                                                           \
  using Self = Name;                                                                               \
  using Super = Superclass;                                                                        \
  static const ::norvik::Class& staticClass() {                                                    \
    static const ::norvik::Class& stated = ::norvik::detail::defineClass<Name, Superclass>(#Name); \
    return stated;                                                                                 \
  }                                                                                                \
  const ::norvik::Class& classObject() const override { return staticClass(); }                    \
  [[maybe_unused]] static constexpr int nk_statements_ = __COUNTER__;                              \
  static void nk_state_(::norvik::detail::Slot<-1>, ::norvik::detail::ClassBuilder&) {}            \
  inline static const ::norvik::detail::ClassAtLoad nk_atLoad_{&Name::staticClass};

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
#define NK_AFFECTED_BY(key, other) NK_STATEMENT(builder.dependency(#key, #other);)

/// An operation of the object, or of the class (a static member function), that can be found and performed by name.
#define NK_METHOD(name) NK_STATEMENT((::norvik::detail::stateMethod<Self, &Self::name>(builder, #name, nullptr));)
#define NK_METHOD_AS(name, selector) \
  NK_STATEMENT((::norvik::detail::stateMethod<Self, &Self::name>(builder, #name, selector));)
#define NK_CLASS_METHOD(name) NK_STATEMENT((::norvik::detail::stateClassMethod<&Self::name>(builder, #name, nullptr));)
#define NK_CLASS_METHOD_AS(name, selector) \
  NK_STATEMENT((::norvik::detail::stateClassMethod<&Self::name>(builder, #name, selector));)

#define NK_STATEMENT(...)                                                         \
  static void nk_state_(::norvik::detail::Slot<__COUNTER__ - nk_statements_ - 1>, \
                        ::norvik::detail::ClassBuilder& builder) {                \
    __VA_ARGS__                                                                   \
  }

// A setter looks whether anybody observes before it makes anything of its argument: of a number that stays in a
// register, nothing else is left than that look and the store.

#define NK_STATE_PROPERTY(name, setter, ...)                                                             \
  const ::std::type_identity_t<__VA_ARGS__>& name() const { return *name##_; }                           \
  void setter(::std::type_identity_t<__VA_ARGS__> value) {                                               \
    if (!::norvik::NSObject::isObserved()) [[likely]] {                                                  \
      name##_ = ::std::move(value);                                                                      \
    } else {                                                                                             \
      ::norvik::detail::changeObservedProperty(                                                          \
          *this, #name, [this, given = ::std::move(value)]() mutable { name##_ = ::std::move(given); }); \
    }                                                                                                    \
  }                                                                                                      \
  NK_STATEMENT(NK_PROPERTY_RECORD(name, setter, #__VA_ARGS__, false, false, false))                      \
  ::norvik::detail::Stored<Self, __VA_ARGS__> name##_;

#define NK_STATE_ATOMIC_PROPERTY(name, setter, ...)                                                           \
  ::std::type_identity_t<__VA_ARGS__> name() const { return name##_.load(); }                                 \
  void setter(::std::type_identity_t<__VA_ARGS__> value) {                                                    \
    if (!::norvik::NSObject::isObserved()) [[likely]] {                                                       \
      name##_.store(::std::move(value));                                                                      \
    } else {                                                                                                  \
      ::norvik::detail::changeObservedProperty(                                                               \
          *this, #name, [this, given = ::std::move(value)]() mutable { name##_.store(::std::move(given)); }); \
    }                                                                                                         \
  }                                                                                                           \
  NK_STATEMENT(NK_PROPERTY_RECORD(name, setter, #__VA_ARGS__, false, false, true))                            \
  ::norvik::detail::AtomicStored<Self, __VA_ARGS__> name##_;

#define NK_STATE_WEAK_PROPERTY(name, setter, ...)                                                          \
  ::norvik::Ref<__VA_ARGS__> name() const { return (*name##_).lock(); }                                    \
  void setter(const ::norvik::Ref<__VA_ARGS__>& value) {                                                   \
    ::norvik::detail::changeProperty(*this, #name, [&] { name##_ = ::norvik::Weak<__VA_ARGS__>(value); }); \
  }                                                                                                        \
  NK_STATEMENT(NK_PROPERTY_RECORD(name, setter, #__VA_ARGS__, false, true, false))                         \
  ::norvik::detail::Stored<Self, ::norvik::Weak<__VA_ARGS__>> name##_;

#define NK_STATE_COMPUTED_WITH_SETTER(name, setter, ...) \
  NK_STATEMENT(NK_PROPERTY_RECORD(name, setter, #__VA_ARGS__, true, false, false))

#define NK_STATE_READONLY_PROPERTY(name, ...)                                  \
  const ::std::type_identity_t<__VA_ARGS__>& name() const { return *name##_; } \
  NK_STATEMENT(NK_READONLY_RECORD(name, #__VA_ARGS__, false))                  \
  ::norvik::detail::Stored<Self, __VA_ARGS__> name##_;

#define NK_STATE_COMPUTED_PROPERTY(name, ...) NK_STATEMENT(NK_READONLY_RECORD(name, #__VA_ARGS__, true))

#define NK_PROPERTY_RECORD(name_, setter, type, computed, weak, atomic)                                              \
  builder.property(                                                                                                  \
      {.name = #name_,                                                                                               \
       .typeName = type,                                                                                             \
       .setterName = #setter,                                                                                        \
       .isComputed = computed,                                                                                       \
       .isWeak = weak,                                                                                               \
       .isAtomic = atomic,                                                                                           \
       .objectClass = ::norvik::detail::objectClassOf<Self, &Self::name_>(),                                         \
       .get =                                                                                                        \
           [](const ::norvik::NSObject& o) { return ::norvik::detail::getProperty<Self, &Self::name_>(o, #name_); }, \
       .set = [](::norvik::NSObject& o,                                                                              \
                 const ::norvik::Value& v) { ::norvik::detail::setProperty<Self, &Self::setter>(o, v, #name_); }});

#define NK_READONLY_RECORD(name_, type, computed)                                          \
  builder.property({.name = #name_,                                                        \
                    .typeName = type,                                                      \
                    .isReadOnly = true,                                                    \
                    .isComputed = computed,                                                \
                    .objectClass = ::norvik::detail::objectClassOf<Self, &Self::name_>(),  \
                    .get = [](const ::norvik::NSObject& o) {                               \
                      return ::norvik::detail::getProperty<Self, &Self::name_>(o, #name_); \
                    }});

// A type with commas arrives in pieces: these move the names in front, so that the type is the rest of the arguments.
#define NK_WITH_TYPE_LAST(statement, ...)                                                                   \
  NK_PICK9(__VA_ARGS__, NK_TYPE_OF_7, NK_TYPE_OF_6, NK_TYPE_OF_5, NK_TYPE_OF_4, NK_TYPE_OF_3, NK_TYPE_OF_2, \
           NK_TYPE_OF_1, , )                                                                                \
  (statement, __VA_ARGS__)
#define NK_WITH_TYPE_LAST2(statement, ...)                                                                          \
  NK_PICK9(__VA_ARGS__, , NK_TYPE2_OF_7, NK_TYPE2_OF_6, NK_TYPE2_OF_5, NK_TYPE2_OF_4, NK_TYPE2_OF_3, NK_TYPE2_OF_2, \
           NK_TYPE2_OF_1, )                                                                                         \
  (statement, __VA_ARGS__)
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

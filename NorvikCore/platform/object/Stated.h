// NorvikCore/platform/object/Stated.h - what the statement macros of ObjectMacros.h expand to. Users need not read it.
#pragma once

#include "NorvikCore/platform/kernel/BusyWord.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Weak.h"

#include <concepts>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace norvik::detail {

/// Numbers a class's statements in the order in which they are written.
template <int number>
struct Slot {};

class NK_EXPORT ClassBuilder {
 public:
  explicit ClassBuilder(Class& made) : class_(made) {}
  void property(Property property);
  /// The selector text is `selector`, or the name with one colon an argument where that is null.
  using Invoke = Value (*)(NSObject* target, std::span<const Value> arguments);
  void method(const char* name, const char* selector, std::size_t argumentCount, Invoke invoke);
  void classMethod(const char* name, const char* selector, std::size_t argumentCount, Invoke invoke);
  void dependency(const char* key, const char* affectedBy);

 private:
  Class& class_;
};

struct ClassStatement {
  const char* name;
  const std::type_info* type;
  const Class* superclass;
  Ref<NSObject> (*makeObject)();
  void (*describe)(ClassBuilder&);
  bool answersKeysItself = false;
};

/// The class of that name; the first statement of a name defines it.
NK_EXPORT const Class& defineClass(const ClassStatement& statement);

/// Makes the class known when its shared object is loaded, used or not.
struct ClassAtLoad {
  explicit ClassAtLoad(const Class& (*theClass)()) { theClass(); }
};

/// Other users of the compiler's counter inside a class leave gaps between its statements; so many are stepped over.
inline constexpr int greatestGap = 8;

/// Adds a property to a class that stands elsewhere, when its shared object is loaded: what a category's accessor pair
/// is for key paths and observers.
struct NK_EXPORT CategoryProperty {
  CategoryProperty(const Class& extended, Property property);
};

template <class T, int number = 0, int gap = 0>
void describe(ClassBuilder& builder) {
  if constexpr (requires { T::nk_state_(Slot<number>{}, builder); }) {
    T::nk_state_(Slot<number>{}, builder);
    describe<T, number + 1, 0>(builder);
  } else if constexpr (gap < greatestGap) {
    describe<T, number + 1, gap + 1>(builder);
  }
}

template <class T>
Ref<NSObject> makeDefault() {
  return make<T>();
}

/// Neither T nor a class between it and NSObject has its own way of answering keys.
template <class T>
inline constexpr bool readsKeysAsNSObject = requires {
  requires std::same_as<decltype(&T::valueForKey), decltype(&NSObject::valueForKey)>;
  requires std::same_as<decltype(&T::valueForUndefinedKey), decltype(&NSObject::valueForUndefinedKey)>;
};

template <class T, class Superclass>
const Class& defineClass(const char* name) {
  Ref<NSObject> (*makeObject)() = nullptr;
  if constexpr (std::is_default_constructible_v<T> && !std::is_abstract_v<T>) makeObject = &makeDefault<T>;
  return defineClass({name, &typeid(T), &Superclass::staticClass(), makeObject, [](ClassBuilder& b) { describe<T>(b); },
                      !readsKeysAsNSObject<T>});
}

/// The storage of a property: readable and writable by its class as `*field_` and `field_ = value`, closed to everyone
/// else.
template <class Owner, class T>
class Stored {
 public:
  Stored() = default;

 private:
  friend Owner;
  Stored& operator=(T value) {
    value_ = std::move(value);
    return *this;
  }
  T& operator*() { return value_; }
  const T& operator*() const { return value_; }
  T* operator->() { return &value_; }
  const T* operator->() const { return &value_; }

  T value_{};
};

/// Storage that several threads may read and write; a reader gets the whole of one value that was written.
template <class Owner, class T>
class AtomicStored {
 public:
  AtomicStored() = default;

 private:
  friend Owner;
  [[nodiscard]] T load() const {
    Guard guard(busy_);
    return value_;
  }
  void store(T value) {
    Guard guard(busy_);
    std::swap(value_, value);
  }
  struct Guard {
    explicit Guard(BusyWord& word) noexcept : busy(word) {
      kernel::holdForks();
      if (busy.exchangeAcquire(1) != 0) waitForBusy(busy);
    }
    ~Guard() {
      if (busy.exchangeRelease(0) != 1) wakeForBusy(busy);
      kernel::releaseForks();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    BusyWord& busy;
  };

  T value_{};
  mutable BusyWord busy_;
};

/// A change of one key, from its announcement to prior observers until all observers were told. The object lives as
/// long as its change. One that goes without being completed told nobody that anything was changed.
class NK_EXPORT AnnouncedChange {
 public:
  /// `key` stays valid until the change is complete.
  AnnouncedChange(NSObject& object, std::string_view key);
  ~AnnouncedChange();
  AnnouncedChange(const AnnouncedChange&) = delete;
  AnnouncedChange& operator=(const AnnouncedChange&) = delete;

  void complete();

 private:
  [[nodiscard]] const Value& oldValue(std::size_t index) const;

  const Ref<NSObject> object_;
  const std::string_view key_;
  const Ref<const NSObject> observers_;  ///< those of the moment of the announcement
  std::size_t oldValueCount_ = 0;        ///< of the observers that asked for it
  Value firstOldValue_;
  std::vector<Value> furtherOldValues_;
};

template <class Store>
[[gnu::noinline]] void changeObservedProperty(NSObject& object, std::string_view key, Store&& store) {
  AnnouncedChange change(object, key);
  store();
  change.complete();
}

/// Calls `store`, and announces the change of that key around it to whoever observes the object. The object must not
/// be used afterwards: an observer may have let go of it.
template <class Store>
inline void changeProperty(NSObject& object, std::string_view key, Store&& store) {
  if (!object.isObserved()) [[likely]] {
    store();
  } else {
    changeObservedProperty(object, key, store);
  }
}

[[noreturn]] NK_EXPORT void raiseNotCodable(const char* key);
NK_EXPORT void checkArgumentCount(std::size_t wanted, std::size_t given);

template <class T, auto getter>
Value getProperty(const NSObject& object, const char* key) {
  using Result = std::remove_cvref_t<std::invoke_result_t<decltype(getter), const T&>>;
  if constexpr (ValueConvertible<Result>) {
    return ValueConversion<Result>::toValue((static_cast<const T&>(object).*getter)());
  } else {
    raiseNotCodable(key);
  }
}

/// The class of the objects that a property refers to, where its type is a Ref.
template <class T, auto getter>
constexpr auto objectClassOf() -> const Class& (*)() {
  using Result = std::remove_cvref_t<std::invoke_result_t<decltype(getter), const T&>>;
  if constexpr (requires { []<class O>(std::type_identity<Ref<O>>) {}(std::type_identity<Result>()); }) {
    return &Result::element_type::staticClass;
  } else {
    return nullptr;
  }
}

/// A type without a form for nothing at all.
template <class T>
concept NeverAbsent = std::is_arithmetic_v<T> || std::is_enum_v<T> || std::same_as<T, Decimal> ||
    std::same_as<T, Date> || std::same_as<T, NSString> || std::same_as<T, NSNumber>;

template <class T, auto setter>
void setProperty(NSObject& object, const Value& value, const char* key) {
  using Argument = std::remove_cvref_t<typename decltype(
      []<class C, class R, class A>(R (C::*)(A)) { return std::type_identity<A>(); }(setter))::type>;
  if constexpr (NeverAbsent<Argument>) {
    if (value.isAbsent() || value.isNull()) return object.setNilValueForKey(NSString(key));
  }
  if constexpr (ValueConvertible<Argument>) {
    (static_cast<T&>(object).*setter)(ValueConversion<Argument>::fromValue(value));
  } else {
    raiseNotCodable(key);
  }
}

template <class Signature>
struct Operation;

template <class R, class C, class... A>
struct OperationOf {
  static constexpr std::size_t argumentCount = sizeof...(A);

  template <class Call>
  static Value invoke(std::span<const Value> arguments, Call&& call) {
    checkArgumentCount(sizeof...(A), arguments.size());
    return [&]<std::size_t... i>(std::index_sequence<i...>) {
      if constexpr (std::is_void_v<R>) {
        call(ValueConversion<std::remove_cvref_t<A>>::fromValue(arguments[i])...);
        return Value();
      } else {
        return Value(ValueConversion<std::remove_cvref_t<R>>::toValue(
            call(ValueConversion<std::remove_cvref_t<A>>::fromValue(arguments[i])...)));
      }
    }
    (std::index_sequence_for<A...>());
  }
};
template <class R, class C, class... A>
struct Operation<R (C::*)(A...)> : OperationOf<R, C, A...> {};
template <class R, class C, class... A>
struct Operation<R (C::*)(A...) const> : OperationOf<R, C, A...> {};
template <class R, class C, class... A>
struct Operation<R (C::*)(A...) noexcept> : OperationOf<R, C, A...> {};
template <class R, class C, class... A>
struct Operation<R (C::*)(A...) const noexcept> : OperationOf<R, C, A...> {};
template <class R, class... A>
struct Operation<R (*)(A...)> : OperationOf<R, void, A...> {};
template <class R, class... A>
struct Operation<R (*)(A...) noexcept> : OperationOf<R, void, A...> {};

template <class T, auto operation>
void stateMethod(ClassBuilder& builder, const char* name, const char* selector) {
  using Stated = Operation<decltype(operation)>;
  builder.method(name, selector, Stated::argumentCount, [](NSObject* target, std::span<const Value> arguments) {
    return Stated::invoke(arguments, [&](auto&&... a) -> decltype(auto) {
      return (static_cast<T&>(*target).*operation)(std::forward<decltype(a)>(a)...);
    });
  });
}

template <auto operation>
void stateClassMethod(ClassBuilder& builder, const char* name, const char* selector) {
  using Stated = Operation<decltype(operation)>;
  builder.classMethod(name, selector, Stated::argumentCount, [](NSObject*, std::span<const Value> arguments) {
    return Stated::invoke(arguments,
                          [&](auto&&... a) -> decltype(auto) { return operation(std::forward<decltype(a)>(a)...); });
  });
}

}  // namespace norvik::detail

// NorvikCore/observation/ObservingClosure.h - how a controller calls a closure that takes the observed types. Users
// need not read it: FBKVOController.h describes the closures.
#pragma once

#include "NorvikCore/platform/keyvalue/KeyPath.h"
#include "NorvikCore/platform/keyvalue/KeyPathValue.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/ClosureParameters.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace norvik::detail {

/// Called with the observer, the object, its change and the key path.
using ChangeBlock = Block<void(NSObject&, NSObject&, const KeyValueChange&, const NSString&)>;

/// The observer that a closure takes: `accepts` is null if it takes none or any.
struct WantedObserver {
  bool (*accepts)(NSObject& observer) = nullptr;
  const Class& (*wanted)() = nullptr;
};

/// What a controller stores of a closure.
struct ObservingBlock {
  ChangeBlock block;
  NSKeyValueObservingOptions options{};  ///< for the values that the closure takes
  bool needsOldValue = false;            ///< its old value cannot be absent, as it is in the initial call
  WantedObserver observer{};
};

/// While an NSException is handled, because the value of a key path does not convert to the closure's parameter: raises
/// NSInvalidArgumentException with the key path. Rethrows any other exception.
[[noreturn]] NK_EXPORT void raiseObservedValue(const NSString& keyPath, const char* which);

/// The class of an argument that is a reference to an object or a Ref to it.
template <class Object>
struct ClassOf {
  using Type = Object;
};
template <class T>
struct ClassOf<Ref<T>> {
  using Type = T;
};
template <class Argument>
using ClassOfArgument = typename ClassOf<std::remove_cvref_t<Argument>>::Type;

template <class P>
inline constexpr bool isObjectParameter =
    std::is_lvalue_reference_v<P>&& std::is_base_of_v<NSObject, std::remove_cvref_t<P>>;

/// The number of objects with which the parameters begin.
template <class... P>
consteval std::size_t objectCount(Parameters<P...>) {
  std::size_t count = 0;
  bool isLeading = true;
  ((isLeading = isLeading && isObjectParameter<P>, count += isLeading ? 1u : 0u), ...);
  return count;
}

template <std::size_t index, class All>
struct ParameterAt;
template <class First, class... Rest>
struct ParameterAt<0, Parameters<First, Rest...>> {
  using Type = First;
};
template <std::size_t index, class First, class... Rest>
struct ParameterAt<index, Parameters<First, Rest...>> : ParameterAt<index - 1, Parameters<Rest...>> {};

/// The value of a change as the parameter P, if the path leads to a T. `which` is "new" or "old".
template <class P, class T>
decltype(auto) observedValue(const Value& value, const NSString& keyPath, const char* which) {
  using Taken = std::remove_cvref_t<P>;
  try {
    if constexpr (std::is_same_v<Taken, T> || std::is_same_v<T, Value> || isAbsentable<Taken>) {
      return argumentFrom<P>(value);
    } else {
      return Taken{argumentFrom<T>(value)};
    }
  } catch (...) {
    raiseObservedValue(keyPath, which);
  }
}

/// A closure that observes a value of type T of an `Object`.
template <class F, class Object, class T>
class ObservingClosure {
  using All = typename ParametersOf<std::decay_t<F>>::Type;

 public:
  /// Refuses a closure that cannot be called, each mistake with one sentence.
  static consteval bool isCallable() {
    if constexpr (!std::is_base_of_v<NSObject, Object>) {
      static_assert(std::is_base_of_v<NSObject, Object>, "what is observed is an object or a Ref to it");
    } else if constexpr (std::is_void_v<All>) {
      static_assert(!std::is_void_v<All>,
                    "name the types of the closure's parameters: `auto` and overloads do not tell what it observes");
    } else {
      constexpr std::size_t objects = objectCount(All()), values = All::count - objects;
      constexpr bool isInOrder = objects <= 2 && values <= 2;
      static_assert(isInOrder,
                    "a closure takes the observer, the object, the new value and the old value, in this order");
      if constexpr (isInOrder) return takesObject<objects>() && takesValues<objects, values>();
    }
    return false;
  }
  /// True if the closure takes no observer, or takes it as a class that the Observer is.
  template <class Observer>
  static consteval bool takesObserver() {
    if constexpr (std::is_void_v<All>)
      return true;
    else if constexpr (objectCount(All()) == 0)
      return true;
    else
      return std::is_base_of_v<std::remove_cvref_t<At<0>>, Observer>;
  }

  static ObservingBlock block(F&& closure) {
    constexpr std::size_t objects = objectCount(All()), values = All::count - objects;
    ObservingBlock made;
    if (isNothing(closure)) return made;
    made.block = [closure = std::decay_t<F>(std::forward<F>(closure))](NSObject& observer, NSObject& object,
                                                                       const KeyValueChange& change,
                                                                       const NSString& keyPath) mutable {
      const Call call{observer, object, change, keyPath};
      [&]<std::size_t... index>(std::index_sequence<index...>) {
        static_cast<void>(callClosure(closure, call.template argument<index>()...));
      }
      (std::make_index_sequence<All::count>());
    };
    if constexpr (values >= 1) made.options = NSKeyValueObservingOptionNew;
    if constexpr (values == 2) {
      made.options = NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld;
      made.needsOldValue = !isAbsentable<std::remove_cvref_t<At<All::count - 1>>>;
    }
    if constexpr (objects >= 1) {
      using Observer = std::remove_cvref_t<At<0>>;
      if constexpr (!std::is_same_v<Observer, NSObject>) {
        made.observer.accepts = [](NSObject& observer) { return dynamic_cast<Observer*>(&observer) != nullptr; };
        made.observer.wanted = []() -> const Class& { return Observer::staticClass(); };
      }
    }
    return made;
  }

 private:
  template <std::size_t index>
  using At = typename ParameterAt<index, All>::Type;

  struct Call {
    NSObject& observer;
    NSObject& object;
    const KeyValueChange& change;
    const NSString& keyPath;

    template <std::size_t index>
    decltype(auto) argument() const {
      using P = At<index>;
      constexpr std::size_t objects = objectCount(All());
      if constexpr (index < objects)
        return static_cast<std::remove_reference_t<P>&>(index == 0 ? observer : object);
      else if constexpr (index == objects)
        return observedValue<P, T>(change.newValue(), keyPath, "new");
      else
        return observedValue<P, T>(change.oldValue(), keyPath, "old");
    }
  };

  template <std::size_t objects>
  static consteval bool takesObject() {
    if constexpr (objects == 2) {
      constexpr bool isItsClass = std::is_base_of_v<std::remove_cvref_t<At<1>>, Object>;
      static_assert(isItsClass, "the closure takes the observed object as a class that it is not");
      return isItsClass;
    }
    return true;
  }
  template <std::size_t objects, std::size_t values>
  static consteval bool takesValues() {
    if constexpr (values == 2)
      return isValueParameter<At<objects>, T>() && isValueParameter<At<objects + 1>, T>();
    else if constexpr (values == 1)
      return isValueParameter<At<objects>, T>();
    return true;
  }
};

}  // namespace norvik::detail

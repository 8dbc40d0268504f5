// NorvikCore/observation/NSObject+FBKVOController.h - gives every object a controller for observing other objects,
// created on first use.
//
//   nk_observe(*window, slip, keyPath<&Payslip::netPay>(),
//              [](Window& window, const Decimal& net) { window.show(net); });
//   KVOController(*window)->unobserve(slip, "netPay");
//
// The object is the controller's observer and retains the controller; when the object is destroyed, its observations
// end. The controller retains what it observes. So an object that is observed through its own KVOController, or that
// retains the observer, would never be destroyed; use KVOControllerNonRetaining for such objects. An object that is
// being destroyed has no controller; each call then returns a new one that is not stored.
//
// Synchronised: threads that call for the first time at once get the same controller.
#pragma once

#include "NorvikCore/observation/FBKVOController.h"

namespace norvik {

/// Retains the objects it observes.
[[nodiscard]] NK_EXPORT Ref<FBKVOController> KVOController(NSObject& observer);
/// An empty Ref releases the present controller, which ends its observations.
NK_EXPORT void setKVOController(NSObject& observer, const Ref<FBKVOController>& controller);

/// Does not retain the objects it observes.
[[nodiscard]] NK_EXPORT Ref<FBKVOController> KVOControllerNonRetaining(NSObject& observer);
NK_EXPORT void setKVOControllerNonRetaining(NSObject& observer, const Ref<FBKVOController>& controller);

/// KVOController(observer)->observe(object, keyPath, closure); the compiler also checks that the observer is of the
/// class that the closure takes.
template <class Observer, class Object, class Path, class F>
void nk_observe(Observer& observer, Object&& object, const Path& keyPath, NSKeyValueObservingOptions options,
                F&& closure) {
  using Closure = detail::ObservingClosure<F, detail::ClassOfArgument<Object>, Value>;
  constexpr bool takesObserver = Closure::template takesObserver<Observer>();
  static_assert(takesObserver, "the closure takes the observer as a class that it is not");
  if constexpr (takesObserver) KVOController(observer)->observe(object, keyPath, options, std::forward<F>(closure));
}
template <class Observer, class Object, class Path, class F>
void nk_observe(Observer& observer, Object&& object, const Path& keyPath, F&& closure) {
  nk_observe(observer, object, keyPath, NSKeyValueObservingOptions{}, std::forward<F>(closure));
}

}  // namespace norvik

// NorvikCore/observation/FBKVOController.h - observes key paths of other objects for one observer. All its observations
// end when the controller is destroyed.
//
//   auto controller = FBKVOController::controllerWithObserver(*window);
//   controller->observe(slip, keyPath<&Payslip::netPay>(),
//                       [](Window& window, const Decimal& net) { window.show(net); });
//   slip->setNetPay(1234.50_dec);          // the window shows it
//   controller = nullptr;                  // all its observations end
//
// A closure takes what it needs of the observer, the object, the new value and the old value, in this order and with
// their own types. The other handlers are for code that does not know the types. A block receives a change as the
// observer, the object and a dictionary. The dictionary holds the key path under FBKVONotificationKeyPathKey and the
// entries of KeyValueObserving.h. It does not change during the call; store `change.copy()` to keep it. An action is an
// operation of the observer; it receives that dictionary, without the key path, and the object. A context is passed to
// the observer's observeValueForKeyPath.
//
// One controller observes a key path of an object once: a second observation is ignored, whatever its handler, until
// the first is removed. An empty object, path, block or selector observes nothing. A misspelt path raises
// NSUndefinedKeyException with the class and the key, and registers nothing.
//
// Ownership: the observer is not retained; after it is destroyed, changes are ignored. Observed objects are retained,
//            unless the controller was created not to retain them: then destroying an object ends its observations. A
//            block is retained, with what it captured, until its observation ends; it must not hold a Ref to the
//            controller.
// Threads:   synchronised. Handlers run on the thread that makes the change, with no lock held. A handler may observe,
//            unobserve, dispose, change what it observes, and release the observer, the object and the controller.
//            After unobserve returns, no new call begins; a call that already runs on another thread may finish, and
//            retains its observer, object and handler until then.
// Errors:    an exception of a handler passes to the code that makes the change. An action that the observer does not
//            have raises NSInvalidArgumentException at the change. observe() describes the errors of its closure.
// Cost:      observing and unobserving take constant time on average, whatever the numbers of controllers, objects and
//            observations, and are linear in the key paths that one controller observes of one object. A change
//            costs little more than the calls of its handlers.
#pragma once

#include "NorvikCore/observation/ObservingClosure.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/keyvalue/KeyPath.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/SEL.h"
#include "NorvikCore/platform/object/Weak.h"

namespace norvik {

class _FBKVOInfo;  // NOLINT(bugprone-reserved-identifier): a given name
namespace detail {

class ObservedObjects;

/// An object that may be absent, as an argument: a reference to it, any Ref, or nullptr.
class ObjectArgument {
 public:
  ObjectArgument(std::nullptr_t) noexcept {}                       // NOLINT(google-explicit-constructor)
  ObjectArgument(NSObject& object) noexcept : object_(&object) {}  // NOLINT(google-explicit-constructor)
  template <class T>
  ObjectArgument(const Ref<T>& object) noexcept : object_(object.get()) {}  // NOLINT(google-explicit-constructor)

  explicit operator bool() const noexcept { return object_ != nullptr; }
  NSObject& operator*() const noexcept { return *object_; }

 private:
  NSObject* object_ = nullptr;
};

}  // namespace detail

/// The key under which a block finds the key path in its change dictionary.
NK_EXPORT extern const NSString FBKVONotificationKeyPathKey;

using FBKVONotificationBlock = Block<void(NSObject& observer, NSObject& object, const NSDictionary& change)>;

class NK_EXPORT FBKVOController : public NSObject {
  NK_OBJECT(FBKVOController, NSObject)

  explicit FBKVOController(NSObject& observer, bool retainObserved = true);
  ~FBKVOController() override;
  /// Retains the objects it observes.
  [[nodiscard]] static Ref<FBKVOController> controllerWithObserver(NSObject& observer);
  [[nodiscard]] static Ref<FBKVOController> initWithObserver(NSObject& observer);
  [[nodiscard]] static Ref<FBKVOController> initWithObserver(NSObject& observer, bool retainObserved);

  /// Observes a key path with a closure whose parameters have the types of the objects and of the value:
  ///
  ///   observe(slip, keyPath<&Payslip::netPay>(), [](Window& window, Payslip& slip, const Decimal& net) { ... });
  ///   observe(slip, keyPath<&Payslip::netPay>(), [](const Decimal& net, const Decimal& before) { ... });
  ///   observe(slip, keyPath<&Payslip::netPay>(), &Window::showNetPay);     // void showNetPay(const Decimal& net)
  ///
  /// References to one or two objects come first: the observer, then the observed object. Then come one or two values:
  /// the new one, then the old one. The closure may leave out any of them, but takes the object only after the
  /// observer. The change carries the values that the closure takes, so `options` is 0 or
  /// NSKeyValueObservingOptionInitial.
  ///
  /// With keyPath<...>() the compiler checks the object and the values. A value is taken as the property's own type, as
  /// a type to which that converts without loss, or as a Value. Behind another object it is a std::optional (a Ref or a
  /// Value stays as it is), because the path may end there. A key path that is a text is not checked: a value converts
  /// as by Value::as(), and one that does not convert, or is absent, raises NSInvalidArgumentException with the key
  /// path in the code that makes the change.
  ///
  /// NSInvalidArgumentException is raised, and nothing is registered, if the observer is not of the class that the
  /// closure takes; for the prior option; and for the initial option if the closure takes an old value that cannot be
  /// absent. All else is as with the operations below. Calling a closure costs less than calling a block, because no
  /// dictionary is needed.
  template <class Object, class Root, class T, class F>
  void observe(Object&& object, const KeyPath<Root, T>& keyPath, NSKeyValueObservingOptions options, F&& closure) {
    if constexpr (detail::startsHere<detail::ClassOfArgument<Object>, Root>()) {
      observeAs<T>(object, keyPath, options, std::forward<F>(closure));
    }
  }
  template <class Object, class Root, class T, class F>
  void observe(Object&& object, const KeyPath<Root, T>& keyPath, F&& closure) {
    observe(object, keyPath, NSKeyValueObservingOptions{}, std::forward<F>(closure));
  }
  template <class Object, class F>
  void observe(Object&& object, const NSString& keyPath, NSKeyValueObservingOptions options, F&& closure) {
    observeAs<Value>(object, keyPath, options, std::forward<F>(closure));
  }
  template <class Object, class F>
  void observe(Object&& object, const NSString& keyPath, F&& closure) {
    observe(object, keyPath, NSKeyValueObservingOptions{}, std::forward<F>(closure));
  }

  // The object is given as a Ref or as a reference.
  void observe_keyPath_options_block(detail::ObjectArgument object, const NSString& keyPath,
                                     NSKeyValueObservingOptions options, FBKVONotificationBlock block);
  void observe_keyPath_options_action(detail::ObjectArgument object, const NSString& keyPath,
                                      NSKeyValueObservingOptions options, SEL action);
  void observe_keyPath_options_context(detail::ObjectArgument object, const NSString& keyPath,
                                       NSKeyValueObservingOptions options, void* context);
  /// The same for each of the key paths, in order. If one raises, the paths before it stay observed and those after it
  /// are not observed.
  void observe_keyPaths_options_block(detail::ObjectArgument object, const NSArray& keyPaths,
                                      NSKeyValueObservingOptions options, const FBKVONotificationBlock& block);
  void observe_keyPaths_options_action(detail::ObjectArgument object, const NSArray& keyPaths,
                                       NSKeyValueObservingOptions options, SEL action);
  void observe_keyPaths_options_context(detail::ObjectArgument object, const NSArray& keyPaths,
                                        NSKeyValueObservingOptions options, void* context);

  /// Does nothing if there is no such observation.
  void unobserve(detail::ObjectArgument object, const NSString& keyPath);
  void unobserve(detail::ObjectArgument object);
  void unobserveAll();

  /// Empty after the observer is destroyed.
  [[nodiscard]] Ref<NSObject> observer() const { return _observer.lock(); }
  NK_COMPUTED_PROPERTY(Ref<NSObject>, observer)
  /// The observer and its observations.
  [[nodiscard]] NSString debugDescription() const;

 private:
  friend class _FBKVOInfo;
  friend class _FBKVOSharedController;

  template <class T, class Object, class F>
  void observeAs(Object& object, const NSString& keyPath, NSKeyValueObservingOptions options, F&& closure) {
    using Closure = detail::ObservingClosure<F, detail::ClassOfArgument<Object>, T>;
    if constexpr (Closure::isCallable()) {
      observeBlock(object, keyPath, options, Closure::block(std::forward<F>(closure)));
    }
  }
  void observeBlock(detail::ObjectArgument object, const NSString& keyPath, NSKeyValueObservingOptions options,
                    detail::ObservingBlock block);
  void _observe(NSObject& object, Ref<_FBKVOInfo> info);
  void _unobserve(NSObject& object, const NSString& keyPath);
  void _unobserve(NSObject& object);
  void _unobserveAll();
  /// Appends the observations that are not ended.
  void addInfosTo(std::vector<Ref<_FBKVOInfo>>& infos) const;

  const detail::Hidden<detail::ObservedObjects> _objectInfosMap;
  // The list of all controllers, guarded by the mutex of the shared controller.
  FBKVOController* previous_ = nullptr;
  const Weak<NSObject> _observer;
  FBKVOController* next_ = nullptr;
};

}  // namespace norvik

// NorvikCore/observation/FBKVOController.h - observes key paths of other objects for one observer, and stops by itself.
//
//   auto controller = FBKVOController::controllerWithObserver(*window);
//   controller->observe_keyPath_options_block(
//       slip, keyPath<&Payslip::employee, &Employee::name>(), NSKeyValueObservingOptionNew,
//       [](NSObject& observer, NSObject& object, const NSDictionary& change) {
//         static_cast<Window&>(observer).show(change[NSKeyValueChangeNewKey]);
//       });
//   slip->employee()->setName("Sian");     // the window shows it
//   controller = nullptr;                  // all its observations end
//
// A block receives a change as the observer, the object and a dictionary. The dictionary holds the key path under
// FBKVONotificationKeyPathKey and the entries of KeyValueObserving.h. It does not change during the call; store
// `change.copy()` to keep it. An action is an operation of the observer; it receives that dictionary, without the key
// path, and the object. A context is passed to the observer's observeValueForKeyPath.
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
//            retains its observer, controller and object until then.
// Errors:    an exception of a handler passes to the code that makes the change. An action that the observer does not
//            have raises NSInvalidArgumentException at the change.
// Cost:      observing and unobserving take constant time on average, whatever the numbers of controllers, objects and
//            observations, and are linear in the key paths that one controller observes of one object.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/kernel/Mutex.h"
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
  void _observe(NSObject& object, Ref<_FBKVOInfo> info);
  void _unobserve(NSObject& object, const NSString& keyPath);
  void _unobserve(NSObject& object);
  void _unobserveAll();

  const detail::Hidden<detail::ObservedObjects> _objectInfosMap NK_GUARDED_BY(_lock);
  mutable Mutex _lock;
  const Weak<NSObject> _observer;
};

}  // namespace norvik

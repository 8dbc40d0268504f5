// NorvikCore/observation/FBKVOController.h - watches key paths of other objects for one observer, and stops by itself.
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
// A change reaches a block with the observer, the object and a dictionary: the key path under
// FBKVONotificationKeyPathKey and the entries of KeyValueObserving.h. The dictionary does not change; `change.copy()`
// keeps it. An action is an operation of the observer that takes that dictionary, without the key path, and the object.
// A context is given back to the observer's observeValueForKeyPath.
//
// One controller observes a key path of an object once: a second observation is ignored, whatever its handler, until
// the first is removed. An empty object, path, block or selector observes nothing. A misspelt path raises
// NSUndefinedKeyException with the class and the key, and leaves nothing behind.
//
// Ownership: the observer is not kept; once it is gone, changes are ignored. Observed objects are kept, unless the
//            controller was made not to: then an object that goes ends its observations. A block is kept, with what it
//            captured, until its observation ends; let it not hold a Ref to the controller.
// Threads:   synchronised. Handlers run on the thread that makes the change, with no lock held, and may do anything:
//            observe, unobserve, dispose, change what they observe, and let go of the observer, the object and the
//            controller. After unobserve returns, no call begins; one that already runs on another thread may finish,
//            and its observer, controller and object live as long as it.
// Errors:    what a handler raises passes to who makes the change. An action that the observer does not have raises
//            NSInvalidArgumentException then.
// Cost:      observing and unobserving take constant time on average whatever the numbers of controllers, objects and
//            observations; linear in the key paths that one controller observes of one object.
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
  /// Keeps the objects it observes.
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
  /// The same for each of the key paths, in order. One that raises ends it; those before it stay observed.
  void observe_keyPaths_options_block(detail::ObjectArgument object, const NSArray& keyPaths,
                                      NSKeyValueObservingOptions options, const FBKVONotificationBlock& block);
  void observe_keyPaths_options_action(detail::ObjectArgument object, const NSArray& keyPaths,
                                       NSKeyValueObservingOptions options, SEL action);
  void observe_keyPaths_options_context(detail::ObjectArgument object, const NSArray& keyPaths,
                                        NSKeyValueObservingOptions options, void* context);

  /// Nothing happens where there is no such observation.
  void unobserve(detail::ObjectArgument object, const NSString& keyPath);
  void unobserve(detail::ObjectArgument object);
  void unobserveAll();

  /// Empty once it is gone.
  [[nodiscard]] Ref<NSObject> observer() const { return _observer.lock(); }
  NK_COMPUTED_PROPERTY(Ref<NSObject>, observer)
  /// The observer, and what is observed.
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

// NorvikCore/Categories/NSObject+Norvik_Observing.h - observing several key paths at once, and removing an observer
// that may not be registered.
//
//   const auto paths = NSArray::arrayWithObjects("grossPay", "employee.name");
//   nk_addObserver(*slip, *watcher, *paths, NSKeyValueObservingOptionNew, this);
//   nk_safelyRemoveObserver(*slip, *watcher, *paths, this);       // warns if it was not registered, raises nothing
//
// KeyValueObserving.h describes which objects an observation keeps alive and which threads callbacks run on. Any
// thread, with one exception: safe removal flushes the log, so it must not be called on the logging queue or on a
// logger's queue.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

namespace norvik {

/// Observes each key path in order. If an unknown path raises, the paths before it stay observed.
NK_EXPORT void nk_addObserver(NSObject& receiver, NSObject& observer, const NSArray& keyPaths,
                              NSKeyValueObservingOptions options, void* context);

/// Removes the observer registered with that context. If there is none, the exception becomes a warning with the
/// exception, the context and the receiver's observers. In either case the log is then flushed, so that the warning is
/// written before a likely crash elsewhere. Exceptions that are not NSException pass.
NK_EXPORT void nk_safelyRemoveObserver(NSObject& receiver, NSObject& observer, const NSString& keyPath, void* context);
/// The same for each key path in order.
NK_EXPORT void nk_safelyRemoveObserver(NSObject& receiver, NSObject& observer, const NSArray& keyPaths, void* context);
/// Removes the observer registered without a context, that is with a null one, and advises on the system console to use
/// the function with a context.
NK_EXPORT void nk_safelyRemoveObserver(NSObject& receiver, NSObject& observer, const NSString& keyPath);

// Announces a manual change of the last key of the path on the object that owns that key. The owner must be the same in
// both calls. Does nothing if there is no owner.
NK_EXPORT void nk_willChangeValueForKeyPath(NSObject& receiver, const NSString& keyPath);
NK_EXPORT void nk_didChangeValueForKeyPath(NSObject& receiver, const NSString& keyPath);

/// The object that owns the last key of the path; that key is stored in `key` if given. Empty if the path breaks off or
/// if the value there is not an object. For a path of one key it is the receiver itself. All components equal to the
/// last key are left out of the path to the owner: the owner of "a.b.a" is the object at "b". For "a.a" no path is left
/// to read, which raises NSUndefinedKeyException.
[[nodiscard]] NK_EXPORT Ref<NSObject> nk_receiverForKeyPath(NSObject& receiver, const NSString& keyPath,
                                                            NSString* key = nullptr);

}  // namespace norvik

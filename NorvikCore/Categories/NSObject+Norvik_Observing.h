// NorvikCore/Categories/NSObject+Norvik_Observing.h - observing several key paths at once, and ending an observation
// that may not be there.
//
//   const auto paths = NSArray::arrayWithObjects("grossPay", "employee.name");
//   nk_addObserver(*slip, *watcher, *paths, NSKeyValueObservingOptionNew, this);
//   nk_safelyRemoveObserver(*slip, *watcher, *paths, this);       // warns where it was not registered, raises nothing
//
// KeyValueObserving.h tells who is kept and which threads callbacks run on. Any thread, except that removing safely
// flushes the log: it must not be called on the logging queue or on a logger's queue.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

namespace norvik {

/// Observes each key path in order. What an unknown path raises leaves the ones before it observed.
NK_EXPORT void nk_addObserver(NSObject& receiver, NSObject& observer, const NSArray& keyPaths,
                              NSKeyValueObservingOptions options, void* context);

/// Removes what was registered with that context. Where nothing is, the exception becomes a warning with exception,
/// context and the receiver's observers. In either case the log is then flushed, so that the warning is written before
/// a likely crash elsewhere. Exceptions that are not NSException pass.
NK_EXPORT void nk_safelyRemoveObserver(NSObject& receiver, NSObject& observer, const NSString& keyPath, void* context);
/// The same for each key path in order.
NK_EXPORT void nk_safelyRemoveObserver(NSObject& receiver, NSObject& observer, const NSArray& keyPaths, void* context);
/// Removes what was registered without a context, that is with a null one, and advises on the system console to use
/// the form with a context.
NK_EXPORT void nk_safelyRemoveObserver(NSObject& receiver, NSObject& observer, const NSString& keyPath);

// A change by hand of the last key of the path, announced on the object that owns it, which must be the same one both
// times. Nothing where there is none.
NK_EXPORT void nk_willChangeValueForKeyPath(NSObject& receiver, const NSString& keyPath);
NK_EXPORT void nk_didChangeValueForKeyPath(NSObject& receiver, const NSString& keyPath);

/// The object that owns the last key of the path, and through `key`, where given, that key; empty where the path breaks
/// off or a plain value stands there. Of a path of one key that is the receiver itself. Components equal to the last
/// key are left out wherever they stand: of "a.b.a" the owner is the object at "b", and "a.a" leaves no path to read,
/// which raises NSUndefinedKeyException.
[[nodiscard]] NK_EXPORT Ref<NSObject> nk_receiverForKeyPath(NSObject& receiver, const NSString& keyPath,
                                                            NSString* key = nullptr);

}  // namespace norvik

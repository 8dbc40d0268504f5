#include "NorvikCore/Categories/NSObject+Norvik_Observing.h"

#include "NorvikCore/logging/internal/LibraryWarning.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/values/NSException.h"

#include <vector>

namespace norvik {
namespace {

/// The line number that the log gives for a failed removal.
constexpr int lineOfRemoval = 140;

void warnOfFailedRemoval(const NSObject& receiver, const NSException& exception, const void* context) {
  if (!detail::libraryWarnings()) return;
  const Ref<NSDictionary> info = exception.userInfo();
  detail::libraryWarning("Categories/NSObject+Norvik", "nk_safelyRemoveObserver:forKeyPath:context:", lineOfRemoval,
                         "%@ - %@ : %@\ncontext : %p\nobservationInfo : %@", exception.name(), exception.reason(),
                         info ? Value(info) : Value(""), context, receiver.observationInfo());
}

}  // namespace

void nk_addObserver(NSObject& receiver, NSObject& observer, const NSArray& keyPaths, NSKeyValueObservingOptions options,
                    void* context) {
  for (const Value& keyPath : keyPaths) receiver.addObserver(observer, keyPath.as<NSString>(), options, context);
}

void nk_safelyRemoveObserver(NSObject& receiver, NSObject& observer, const NSString& keyPath, void* context) {
  try {
    receiver.removeObserver(observer, keyPath, context);
  } catch (const NSException& exception) {
    warnOfFailedRemoval(receiver, exception, context);
  }
  DDLog::flushLog();
}

void nk_safelyRemoveObserver(NSObject& receiver, NSObject& observer, const NSArray& keyPaths, void* context) {
  for (const Value& keyPath : keyPaths) nk_safelyRemoveObserver(receiver, observer, keyPath.as<NSString>(), context);
}

void nk_safelyRemoveObserver(NSObject& receiver, NSObject& observer, const NSString& keyPath) {
  nk_safelyRemoveObserver(receiver, observer, keyPath, nullptr);
  NSLog(
      "%@ %@ %@: This method is valid but you should use the alternate that also specifies the context. Failure to use "
      "the context can lead to crashes.",
      receiver.classObject().name(), NSString("nk_safelyRemoveObserver:forKeyPath:"), keyPath);
}

void nk_willChangeValueForKeyPath(NSObject& receiver, const NSString& keyPath) {
  NSString key;
  if (const auto owner = nk_receiverForKeyPath(receiver, keyPath, &key)) owner->willChangeValueForKey(key);
}

void nk_didChangeValueForKeyPath(NSObject& receiver, const NSString& keyPath) {
  NSString key;
  if (const auto owner = nk_receiverForKeyPath(receiver, keyPath, &key)) owner->didChangeValueForKey(key);
}

Ref<NSObject> nk_receiverForKeyPath(NSObject& receiver, const NSString& keyPath, NSString* key) {
  std::vector<NSString> components = keyPath.componentsSeparatedBy(".");
  const NSString last = components.back();
  if (key) *key = last;
  if (components.size() == 1) return ref(receiver);
  std::erase(components, last);
  const NSString ownersPath = NSArray::arrayFrom(components)->componentsJoinedByString(".");
  return Ref<NSObject>(receiver.valueForKeyPath(ownersPath).object());
}

}  // namespace norvik

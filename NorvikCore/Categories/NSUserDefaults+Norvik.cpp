#include "NorvikCore/Categories/NSUserDefaults+Norvik.h"

#include "NorvikCore/platform/archives/NSArchiver.h"
#include "NorvikCore/platform/archives/NSUnarchiver.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"
#include "NorvikCore/platform/foundation/NSPathUtilities.h"
#include "NorvikCore/platform/foundation/NSSearchPath.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {
namespace {

constexpr NSString navLastRootDirectoryKey = "NSNavLastRootDirectory";

template <class T>
void store(NSUserDefaults& defaults, const T& object, const NSString& key) {
  // NSArchiver takes the object as a Value, which cannot hold a const object. The archiver does not change it.
  defaults.setObject(NSArchiver::archivedDataWithRootObject(ref(const_cast<T&>(object))), key);
}

template <class T>
Ref<T> read(const NSUserDefaults& defaults, const NSString& key) {
  const Ref<NSData> data = defaults.dataForKey(key);
  if (!data) return nullptr;
  const Value value = NSUnarchiver::unarchiveObjectWithData(*data);
  T* object = value.object<T>();
  if (!object) {
    NSException::raise(NSInvalidUnarchiveOperationException,
                       "the preference \"" + key + "\" holds no " + T::staticClass().name());
  }
  return ref(*object);
}

bool isFolder(const NSString& path) {
  bool isDirectory = false;
  return NSFileManager::defaultManager().fileExistsAtPath(path, &isDirectory) && isDirectory;
}

}  // namespace

void setColor(NSUserDefaults& defaults, const NSColor& color, const NSString& forKey) {
  store(defaults, color, forKey);
}

Ref<NSColor> colorForKey(const NSUserDefaults& defaults, const NSString& key) { return read<NSColor>(defaults, key); }

void setFont(NSUserDefaults& defaults, const NSFont& font, const NSString& forKey) { store(defaults, font, forKey); }

Ref<NSFont> fontForKey(const NSUserDefaults& defaults, const NSString& key) { return read<NSFont>(defaults, key); }

NSString navLastRootDirectory() {
  if (const auto stored = NSUserDefaults::standardUserDefaults().stringForKey(navLastRootDirectoryKey)) {
    NSString path = stringByExpandingTildeInPath(*stored);
    if (isFolder(path)) return path;
  }
  return NSHomeDirectory();
}

Ref<NSURL> navLastRootURL() { return NSURL::fileURLWithPath(navLastRootDirectory(), true); }

void setNavLastRootDirectory(const NSString& path) {
  const NSString expanded = stringByExpandingTildeInPath(path);
  if (!isFolder(expanded)) return;
  NSUserDefaults::standardUserDefaults().setObject(stringByAbbreviatingWithTildeInPath(expanded),
                                                   navLastRootDirectoryKey);
}

void setNavLastRootDirectoryIfMatches(const NSString& path, const NSString& newPath) {
  if (navLastRootDirectory() != stringByExpandingTildeInPath(path)) return;
  setNavLastRootDirectory(stringByAbbreviatingWithTildeInPath(newPath));
}

}  // namespace norvik

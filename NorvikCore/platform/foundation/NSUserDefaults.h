// NorvikCore/platform/foundation/NSUserDefaults.h - the user's preferences: values that outlive the process, by keys.
//
//   NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
//   defaults.registerDefaults(*NSDictionary::dictionaryWith({{NKMaxAutoSnapshotCount, 20}}));
//   defaults.integerForKey(NKMaxAutoSnapshotCount);          // 20, as long as the user has set nothing
//   defaults.setObject(0.135_dec, "EmployerRate");           // on the disk when it returns
//   defaults.objectForKey("EmployerRate").as<Decimal>();     // 0.135, in every later process too
//
// Values are booleans, integers, doubles, decimals, dates, texts, data, and arrays and dictionaries of those, the keys
// of dictionaries being texts. Each comes back as the kind that it was, with every digit, unit and bit; of collections
// and data a copy is kept that does not change. Anything else, the null marker too, raises NSInvalidArgumentException.
//
// A read finds the value that was set, else the registered one. It is answered from memory.
//
// Where: <configuration folder>/<application>/defaults.sqlite, from its first moment readable by this user only. The
// configuration folder is
//        that of kernel/Paths.h (XDG_CONFIG_HOME), or NORVIK_DEFAULTS_FOLDER where that variable holds a path that
//        begins with '/'; the application is the main bundle's identifier, or else the process's name, when the
//        standard defaults are first asked for. docs/preferences.md tells more.
// Other processes see a change that set... made, at once, when they look at the database: before a read or a write that
//        comes a quarter of a second or more after their last look, and in synchronize().
// Errors: what cannot be written or read is told on the system console, once until it works again. A value that could
//        not be written counts in this process. It is tried again with the next one, by reads a quarter of a second
//        later, in synchronize(), before a fork and at the end of the process. Only a
//        regular file is opened, and never what another user has put into a shared folder.
// Told:  observers of a key (its value, or none before or after) and those of NSUserDefaultsDidChangeNotification, on
//        the thread that makes the change. Of changes that another process made they hear in synchronize(), or else on
//        the main queue after a read has found them. No lock is held; an observer may read, set, add and remove.
// Threads: synchronised. After a fork parent and child both go on.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSURL.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <atomic>
#include <concepts>
#include <cstdint>
#include <optional>

namespace norvik {

namespace detail {
class KeyedStore;
}

/// The object of the notification is the user defaults; posted after each set..., remove... and finding of others'
/// changes, equal values included.
NK_EXPORT extern const NSString NSUserDefaultsDidChangeNotification;

class NK_EXPORT NSUserDefaults : public NSObject {
  NK_OBJECT(NSUserDefaults, NSObject)

  /// On the database at that path, which begins with '/' and holds no NUL, or NSInvalidArgumentException is raised.
  /// Nothing is made there before something is set.
  explicit NSUserDefaults(const NSString& databasePath);
  ~NSUserDefaults() override;

  /// Those of the application. Raises NSInvalidArgumentException where its name cannot name a folder.
  [[nodiscard]] static NSUserDefaults& standardUserDefaults();
  /// Makes another object the standard one, for tests; an empty Ref brings back the usual. Objects that once were the
  /// standard one are kept until the process ends.
  static void setStandardUserDefaults(const Ref<NSUserDefaults>& defaults);
  /// Those of an application or a part of one, by the name of its folder: one that is empty, ".", ".." or holds '/' or
  /// NUL raises NSInvalidArgumentException. Objects of one name share the database and nothing else.
  [[nodiscard]] static Ref<NSUserDefaults> initWithSuiteName(const NSString& suiteName);
  /// Where initWithSuiteName() has its database; for the standard ones the suite's name is the application's.
  [[nodiscard]] static NSString databasePathOfSuite(const NSString& suiteName);

  /// Absent where nothing is set or registered.
  [[nodiscard]] Value objectForKey(const NSString& key) const;
  /// A text, or the digits of a number; absent for anything else.
  [[nodiscard]] std::optional<NSString> stringForKey(const NSString& key) const;
  /// A number that is not 0; a text that begins as NSString::boolValue() wants it ("YES", "true", "1"). Else false.
  [[nodiscard]] bool boolForKey(const NSString& key) const;
  /// A number without its fraction, the nearest where it is out of range; the number that a text begins with. Else 0.
  [[nodiscard]] std::int64_t integerForKey(const NSString& key) const;
  /// A number, or the one that a text begins with. Else 0.
  [[nodiscard]] double doubleForKey(const NSString& key) const;
  // Empty where something else is under the key.
  [[nodiscard]] Ref<NSArray> arrayForKey(const NSString& key) const;
  /// Empty also where one of the elements is no text.
  [[nodiscard]] Ref<NSArray> stringArrayForKey(const NSString& key) const;
  [[nodiscard]] Ref<NSDictionary> dictionaryForKey(const NSString& key) const;
  [[nodiscard]] Ref<NSData> dataForKey(const NSString& key) const;
  /// What setURL() was given. Of another text: the address that it is, where it begins with a scheme, else that of the
  /// path that it is, "~" being expanded.
  [[nodiscard]] Ref<NSURL> URLForKey(const NSString& key) const;

  /// An absent value removes.
  void setObject(const Value& value, const NSString& key);
  void setBool(std::same_as<bool> auto value, const NSString& key) { setObject(value, key); }
  void setInteger(std::int64_t value, const NSString& key) { setObject(value, key); }
  void setDouble(double value, const NSString& key) { setObject(value, key); }
  /// A file's as its path, the home folder as "~", so that it moves with the user; any other as its text. One without a
  /// scheme raises NSInvalidArgumentException; an empty Ref removes.
  void setURL(const Ref<NSURL>& url, const NSString& key);
  /// What is registered under the key shows again.
  void removeObjectForKey(const NSString& key);

  /// Values for keys under which nothing is set: of this object, in memory only, added to those of earlier calls. All
  /// keys are texts, or NSInvalidArgumentException is raised and nothing is registered.
  void registerDefaults(const NSDictionary& defaults);

  /// Everything set or registered, in the order of the keys.
  [[nodiscard]] Ref<NSDictionary> dictionaryRepresentation() const;

  /// Writes what could not be written before, takes in what other processes have changed, and tells observers of it.
  /// False where something could not be written or read. Seldom needed.
  bool synchronize();

  NK_METHOD(objectForKey)
  NK_METHOD_AS(setObject, "setObject:forKey:")
  NK_METHOD(removeObjectForKey)
  NK_METHOD(dictionaryRepresentation)
  NK_METHOD(synchronize)

  /// Any key; a key path goes on into a dictionary. Keys with a full stop in them cannot be observed.
  [[nodiscard]] Value valueForKey(const NSString& key) const override;
  void setValue_forKey(const Value& value, const NSString& key) override;

 private:
  [[nodiscard]] Value registered(const NSString& key) const;
  template <class Change>
  void changing(const NSString& key, Change change);
  void listenForOthers() const;
  void tellOfOthers();
  void postChange();

  detail::Hidden<detail::KeyedStore> store_;
  mutable Mutex mutex_;
  Ref<NSDictionary> registered_ NK_GUARDED_BY(mutex_);     ///< replaced, never changed
  mutable std::atomic<std::uint32_t> awaitsMainQueue_{0};  ///< 1 + the fork generation in which a block waits there
};

}  // namespace norvik

// NorvikCore/platform/foundation/NSUserDefaults.h - the user's preferences: values by keys that outlive the process.
//
//   NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
//   defaults.registerDefaults(*NSDictionary::dictionaryWith({{NKMaxAutoSnapshotCount, 20}}));
//   defaults.integerForKey(NKMaxAutoSnapshotCount);          // 20, until the user sets a value
//   defaults.setObject(0.135_dec, "EmployerRate");           // in the database when the call returns
//   defaults.objectForKey("EmployerRate").as<Decimal>();     // 0.135, in every later process too
//
// Values are booleans, integers, doubles, decimals, dates, texts, data, and arrays and dictionaries of those; keys of
// dictionaries must be texts. Each value is read back as the same kind, with every digit, unit and bit. Collections and
// data are stored as immutable copies. Any other value, including the null marker, raises NSInvalidArgumentException.
//
// A read returns the value that was set, else the registered one. It reads from memory.
//
// Where:     <configuration folder>/<application>/defaults.sqlite; the file is created readable by this user only. The
//            configuration folder is that of kernel/Paths.h (XDG_CONFIG_HOME), or NORVIK_DEFAULTS_FOLDER if that
//            variable holds a path that begins with '/'. The application is the main bundle's identifier, or else the
//            process's name, when the standard defaults are first requested. More is in docs/preferences.md.
// Processes: a change is in the database when set... returns. Another process sees it when it next checks the database:
//            before a read or write that comes a quarter of a second or more after its last check, and in
//            synchronize().
// Errors:    a failed read or write is reported on the system console, once until it succeeds again. A value that could
//            not be written is used in this process. Writing is repeated with the next value, by reads a quarter of a
//            second later, in synchronize(), before a fork and at the end of the process. Only a regular file is
//            opened, and never a file that another user has put into a shared folder.
// Callbacks: observers of a key (its value, or none before or after) and of NSUserDefaultsDidChangeNotification are
//            notified on the thread that makes the change. Changes of other processes are notified in synchronize(), or
//            on the main queue after a read has found them. No lock is held; an observer may read, set, add and remove.
// Threads:   synchronised. After a fork, parent and child can both go on using it.
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

/// The object of the notification is the user defaults. Posted after each set... and remove..., also if the value is
/// equal, and after changes of other processes were found.
NK_EXPORT extern const NSString NSUserDefaultsDidChangeNotification;

class NK_EXPORT NSUserDefaults : public NSObject {
  NK_OBJECT(NSUserDefaults, NSObject)

  /// Uses the database at that path. Raises NSInvalidArgumentException unless the path begins with '/' and holds no
  /// NUL. The file is created when the first value is set.
  explicit NSUserDefaults(const NSString& databasePath);
  ~NSUserDefaults() override;

  /// The defaults of the application. Raises NSInvalidArgumentException if the application's name cannot name a folder.
  [[nodiscard]] static NSUserDefaults& standardUserDefaults();
  /// Makes another object the standard one, for tests; an empty Ref restores the usual one. Objects that were the
  /// standard one are retained until the process ends.
  static void setStandardUserDefaults(const Ref<NSUserDefaults>& defaults);
  /// The defaults of an application or of a part of one, by the name of its folder. Raises NSInvalidArgumentException
  /// if the name is empty, "." or "..", or holds '/' or NUL. Objects of one name share only the database.
  [[nodiscard]] static Ref<NSUserDefaults> initWithSuiteName(const NSString& suiteName);
  /// The path of the database of initWithSuiteName(); the suite name of the standard defaults is the application.
  [[nodiscard]] static NSString databasePathOfSuite(const NSString& suiteName);

  /// Absent if nothing is set or registered.
  [[nodiscard]] Value objectForKey(const NSString& key) const;
  /// A text, or the digits of a number; absent for anything else.
  [[nodiscard]] std::optional<NSString> stringForKey(const NSString& key) const;
  /// True for a number other than 0 and for a text for which NSString::boolValue() is true ("YES", "true", "1").
  [[nodiscard]] bool boolForKey(const NSString& key) const;
  /// A number without its fraction, or the nearest limit if it is out of range; the number that a text begins with;
  /// else 0.
  [[nodiscard]] std::int64_t integerForKey(const NSString& key) const;
  /// A number, or the one that a text begins with; else 0.
  [[nodiscard]] double doubleForKey(const NSString& key) const;
  // An empty Ref if the value is of another kind.
  [[nodiscard]] Ref<NSArray> arrayForKey(const NSString& key) const;
  /// An empty Ref also if one of the elements is not a text.
  [[nodiscard]] Ref<NSArray> stringArrayForKey(const NSString& key) const;
  [[nodiscard]] Ref<NSDictionary> dictionaryForKey(const NSString& key) const;
  [[nodiscard]] Ref<NSData> dataForKey(const NSString& key) const;
  /// The URL that setURL() stored. Any other text is read as a URL if it begins with a scheme, else as a path with "~"
  /// expanded.
  [[nodiscard]] Ref<NSURL> URLForKey(const NSString& key) const;

  /// An absent value removes the key.
  void setObject(const Value& value, const NSString& key);
  void setBool(std::same_as<bool> auto value, const NSString& key) { setObject(value, key); }
  void setInteger(std::int64_t value, const NSString& key) { setObject(value, key); }
  void setDouble(double value, const NSString& key) { setObject(value, key); }
  /// The URL of a file is stored as its path, with "~" for the home folder so that it moves with the user; any other
  /// URL as its text. A URL without a scheme raises NSInvalidArgumentException; an empty Ref removes the key.
  void setURL(const Ref<NSURL>& url, const NSString& key);
  /// Later reads return the registered value.
  void removeObjectForKey(const NSString& key);

  /// Values for keys that are not set: for this object, in memory only, in addition to those of earlier calls. If a key
  /// is not a text, NSInvalidArgumentException is raised and nothing is registered.
  void registerDefaults(const NSDictionary& defaults);

  /// All values that are set or registered, in the order of the keys.
  [[nodiscard]] Ref<NSDictionary> dictionaryRepresentation() const;

  /// Writes what could not be written before, reads the changes of other processes and notifies observers of them.
  /// False if something could not be written or read. Seldom needed.
  bool synchronize();

  NK_METHOD(objectForKey)
  NK_METHOD_AS(setObject, "setObject:forKey:")
  NK_METHOD(removeObjectForKey)
  NK_METHOD(dictionaryRepresentation)
  NK_METHOD(synchronize)

  /// Any key; a key path continues into a dictionary. A key with a full stop in it cannot be observed.
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
  mutable std::atomic<std::uint32_t> awaitsMainQueue_{0};  ///< 1 + the fork generation in which a block is enqueued
};

}  // namespace norvik

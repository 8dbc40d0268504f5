// NorvikCore/platform/foundation/NSBundle.h - an application's description of itself: its identifier, names and
// version.
//
//   NSBundle& bundle = NSBundle::mainBundle();
//   bundle.setObject_forInfoDictionaryKey("uk.co.norvik.payroll", "CFBundleIdentifier");   // first thing in main()
//   bundle.bundleIdentifier();                                                            // uk.co.norvik.payroll
//   bundle.objectForInfoDictionaryKey("CFBundleExecutable");                              // payroll
//
// The identifier is in reverse domain order, as in the name of a .desktop file. It names the application's preferences
// and its queues. The value of a key comes from the first of these sources that has one:
//   1. the value that the program set;
//   2. for CFBundleIdentifier of the main bundle, the environment variable NORVIK_BUNDLE_IDENTIFIER, unless it is
//      empty; with it, one run of a program can have an identity, and thus preferences, of its own;
//   3. the information file: NAME.info in the folder of the executable NAME or, if there is none,
//      ../share/NAME/NAME.info relative to that folder;
//   4. for CFBundleExecutable and CFBundleName, the name of the executable's file.
// An application has an identifier only if one of the first three sources has one.
//
// An information file is UTF-8 text with one key per line; `#` begins a comment:
//   CFBundleIdentifier = uk.co.norvik.payroll
//   CFBundleShortVersionString = 4.2
//   NKBundleExecutablePreviousVersion = payroll-3
// It is read once. A line without `=`, and an existing file that cannot be read, are reported on the system console. A
// file is refused if it is not a regular file, if it is larger than a megabyte, or if its path leads through a folder
// in which every user may write and the file, or a link to it, belongs to another user. An executable whose path does
// not begin with '/' has no information file.
//
// Threads: synchronised, as long as no thread changes the environment.
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <optional>

namespace norvik {

class NK_EXPORT NSBundle : public NSObject {
  NK_OBJECT(NSBundle, NSObject)

  /// The bundle of the executable at that path. The executable need not exist.
  explicit NSBundle(const NSString& executablePath);
  ~NSBundle() override;

  /// The bundle of the running program.
  [[nodiscard]] static NSBundle& mainBundle();
  /// The bundle of another program.
  [[nodiscard]] static Ref<NSBundle> bundleWithExecutablePath(const NSString& path);

  /// The text under CFBundleIdentifier; nothing if there is none or it is empty.
  [[nodiscard]] std::optional<NSString> bundleIdentifier() const;
  [[nodiscard]] NSString executablePath() const { return executablePath_; }
  /// The folder of the executable.
  [[nodiscard]] NSString bundlePath() const;

  /// Absent if the key has no value. Values from the file are texts.
  [[nodiscard]] Value objectForInfoDictionaryKey(const NSString& key) const;
  /// An absent value removes the value that the program set.
  void setObject_forInfoDictionaryKey(const Value& value, const NSString& key);
  /// All keys with their present values.
  [[nodiscard]] Ref<NSDictionary> infoDictionary() const;

  NK_METHOD(bundleIdentifier)
  NK_METHOD(executablePath)
  NK_METHOD(bundlePath)
  NK_METHOD(objectForInfoDictionaryKey)
  NK_METHOD(infoDictionary)

 private:
  bool isMain() const noexcept;

  const NSString executablePath_;
  const Ref<NSDictionary> read_;  // from the file, plus the executable's name
  mutable Mutex mutex_;
  Ref<NSMutableDictionary> set_ NK_GUARDED_BY(mutex_);
};

}  // namespace norvik

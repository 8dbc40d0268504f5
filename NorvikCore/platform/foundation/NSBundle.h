// NorvikCore/platform/foundation/NSBundle.h - what an application says about itself: its identifier, its names, its
// version.
//
//   NSBundle& bundle = NSBundle::mainBundle();
//   bundle.setObject_forInfoDictionaryKey("uk.co.norvik.payroll", "CFBundleIdentifier");   // first thing in main()
//   bundle.bundleIdentifier();                                                            // uk.co.norvik.payroll
//   bundle.objectForInfoDictionaryKey("CFBundleExecutable");                              // payroll
//
// The identifier, in reverse domain order as in the name of a .desktop file, names the application's preferences and
// its queues. A key's value comes from the first of these that has it:
//   1. what the program set itself;
//   2. for CFBundleIdentifier of the main bundle, the environment variable NORVIK_BUNDLE_IDENTIFIER, unless it is
//      empty: it gives one run of a program an identity, and thus preferences, of its own;
//   3. the information file: NAME.info in the folder of the executable NAME or, where there is none,
//      ../share/NAME/NAME.info seen from that folder;
//   4. for CFBundleExecutable and CFBundleName, the name of the executable's file.
// So an application without any of them has no identifier.
//
// An information file is UTF-8 text, a key a line, `#` before a remark:
//   CFBundleIdentifier = uk.co.norvik.payroll
//   CFBundleShortVersionString = 4.2
//   NKBundleExecutablePreviousVersion = payroll-3
// It is read once. A line without `=`, and an existing file that cannot be read, are reported on the system console. A
// file is refused if it is no regular file, if it is larger than a megabyte, or if its path leads through a folder in
// which everybody may write and it, or a link to it, belongs to another user. An executable whose path does not begin
// with '/' has no information file.
//
// Threads: synchronised, while nobody changes the environment.
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <optional>

namespace norvik {

class NK_EXPORT NSBundle : public NSObject {
  NK_OBJECT(NSBundle, NSObject)

  /// The bundle of the executable at that path, which need not be there.
  explicit NSBundle(const NSString& executablePath);
  ~NSBundle() override;

  /// The running program's.
  [[nodiscard]] static NSBundle& mainBundle();
  /// Of another program.
  [[nodiscard]] static Ref<NSBundle> bundleWithExecutablePath(const NSString& path);

  /// The text under CFBundleIdentifier; nothing where there is none or it is empty.
  [[nodiscard]] std::optional<NSString> bundleIdentifier() const;
  [[nodiscard]] NSString executablePath() const { return executablePath_; }
  /// The folder of the executable.
  [[nodiscard]] NSString bundlePath() const;

  /// Absent where the key has no value. Values from the file are texts.
  [[nodiscard]] Value objectForInfoDictionaryKey(const NSString& key) const;
  /// An absent value takes back what the program set.
  void setObject_forInfoDictionaryKey(const Value& value, const NSString& key);
  /// All keys as they are now.
  [[nodiscard]] Ref<NSDictionary> infoDictionary() const;

  NK_METHOD(bundleIdentifier)
  NK_METHOD(executablePath)
  NK_METHOD(bundlePath)
  NK_METHOD(objectForInfoDictionaryKey)
  NK_METHOD(infoDictionary)

 private:
  bool isMain() const noexcept;

  const NSString executablePath_;
  const Ref<NSDictionary> read_;  // from the file, and the executable's name
  mutable Mutex mutex_;
  Ref<NSMutableDictionary> set_ NK_GUARDED_BY(mutex_);
};

}  // namespace norvik

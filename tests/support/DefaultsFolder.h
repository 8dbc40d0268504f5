// tests/support/DefaultsFolder.h - user defaults on a database in a fresh folder.
#pragma once

#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik::test {

class DefaultsFolder {
 public:
  /// Other user defaults on the same database, as another process would create them.
  [[nodiscard]] Ref<NSUserDefaults> open() const { return make<NSUserDefaults>(NSString(path())); }
  [[nodiscard]] std::string path() const { return folder_.path("pay/defaults.sqlite"); }
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
};

/// While it exists, the standard user defaults are on a database in a fresh folder.
class StandardDefaults {
 public:
  StandardDefaults() { NSUserDefaults::setStandardUserDefaults(folder_.open()); }
  StandardDefaults(const StandardDefaults&) = delete;
  StandardDefaults& operator=(const StandardDefaults&) = delete;
  ~StandardDefaults() { NSUserDefaults::setStandardUserDefaults(nullptr); }

 private:
  DefaultsFolder folder_;
};

}  // namespace norvik::test

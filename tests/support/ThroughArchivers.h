// tests/support/ThroughArchivers.h - archives a value and unarchives it again.
#pragma once

#include "NorvikCore/platform/archives/NSArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/archives/NSUnarchiver.h"

namespace norvik::test {

inline norvik::Value throughArchiver(const norvik::Value& value) {
  return norvik::NSUnarchiver::unarchiveObjectWithData(*norvik::NSArchiver::archivedDataWithRootObject(value));
}

inline norvik::Value throughKeyedArchiver(const norvik::Value& value) {
  return norvik::NSKeyedUnarchiver::unarchiveObjectWithData(
      *norvik::NSKeyedArchiver::archivedDataWithRootObject(value));
}

/// `for (const auto archived : throughBothArchivers) EXPECT_EQ(archived(value), value);`
inline constexpr norvik::Value (*throughBothArchivers[])(const norvik::Value&) = {&throughArchiver,
                                                                                  &throughKeyedArchiver};

}  // namespace norvik::test

#include "NorvikCore/platform/values/NSString.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

TEST(NSStringPaths, PathsComeApart) {
  const struct {
    NSString path, last, extension, withoutLast, withoutExtension;
  } rows[] = {
      {"", "", "", "", ""},
      {"/", "/", "", "/", "/"},
      {"///", "/", "", "/", "/"},
      {"/tmp", "tmp", "", "/", "/tmp"},
      {"/tmp/", "tmp", "", "/", "/tmp"},
      {"pay.csv", "pay.csv", "csv", "", "pay"},
      {"/tmp/pay.csv", "pay.csv", "csv", "/tmp", "/tmp/pay"},
      {"/tmp//pay.csv", "pay.csv", "csv", "/tmp", "/tmp//pay"},
      {"/tmp/pay..csv", "pay..csv", "csv", "/tmp", "/tmp/pay."},
      {"/tmp.d/pay", "pay", "", "/tmp.d", "/tmp.d/pay"},
      {"/tmp/.profile", ".profile", "", "/tmp", "/tmp/.profile"},
      {".profile.old", ".profile.old", "old", "", ".profile"},
      {"..", "..", "", "", ".."},
      {"/tmp/..", "..", "", "/tmp", "/tmp/.."},
      {"/tmp/../", "..", "", "/tmp", "/tmp/.."},
      {"/tmp/.", ".", "", "/tmp", "/tmp/."},
      {"...", "...", "", "", "..."},
      {"..pay.csv", "..pay.csv", "csv", "", "..pay"},
      {"pay.", "pay.", "", "", "pay"},
      {"folder.bundle///", "folder.bundle", "bundle", "", "folder"},
      {"/tmp/zo\u00EB.\u00E9", "zo\u00EB.\u00E9", "\u00E9", "/tmp", "/tmp/zo\u00EB"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.path.lastPathComponent(), row.last) << row.path;
    EXPECT_EQ(row.path.pathExtension(), row.extension) << row.path;
    EXPECT_EQ(row.path.stringByDeletingLastPathComponent(), row.withoutLast) << row.path;
    EXPECT_EQ(row.path.stringByDeletingPathExtension(), row.withoutExtension) << row.path;
  }
}

TEST(NSStringPaths, ComponentsAreJoinedByOneSlash) {
  const struct {
    NSString path, component, expected;
  } rows[] = {
      {"/tmp", "pay.csv", "/tmp/pay.csv"},
      {"/tmp/", "pay.csv", "/tmp/pay.csv"},
      {"/", "pay.csv", "/pay.csv"},
      {"", "pay.csv", "pay.csv"},
      {"/tmp//", "//pay/", "/tmp/pay"},
      {"/tmp", "", "/tmp"},
      {"/tmp/", "/", "/tmp"},
      {"", "/pay/", "/pay"},
      {"", "", ""},
      {"/", "", "/"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.path.stringByAppendingPathComponent(row.component), row.expected) << row.path;
}

TEST(NSStringPaths, ExtensionsAreAddedAfterTheName) {
  EXPECT_EQ(NSString("/tmp/pay.old").stringByAppendingPathExtension("csv"), "/tmp/pay.old.csv");
  EXPECT_EQ(NSString("/tmp/").stringByAppendingPathExtension("csv"), "/tmp.csv");
  EXPECT_EQ(NSString("/").stringByAppendingPathExtension("csv"), "/");
  EXPECT_EQ(NSString("").stringByAppendingPathExtension("csv"), "");
}

TEST(NSStringPaths, NamesThatAreNotUtf8ComeBackAsTheirBytes) {
  const NSString path = NSString::fromBytes("/tmp/caf\xE9.csv");
  EXPECT_EQ(path.stringByDeletingLastPathComponent()
                .stringByAppendingPathComponent(path.lastPathComponent())
                .fileSystemRepresentation(),
            "/tmp/caf\xE9.csv");
}

}  // namespace
}  // namespace norvik

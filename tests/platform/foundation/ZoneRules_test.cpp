#include "NorvikCore/platform/foundation/internal/ZoneRules.h"

#include <gtest/gtest.h>

#include <string>

#include "NorvikCore/platform/values/CivilDate.h"

namespace norvik::detail {
namespace {

std::int64_t instantOf(const char* text) { return wholeSeconds(*Date::dateWithString(text)); }

std::string bigEndian(std::uint64_t value, int size) {
  std::string bytes;
  for (int shift = (size - 1) * 8; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

/// A hand-made zone file: GMT, BST between two instants, then the rule.
struct ZoneFile {
  char version = '2';
  std::uint32_t utIndicators = 0, standardIndicators = 0, leapSeconds = 0, changes = 2, types = 2, characters = 8;
  std::vector<std::int64_t> times = {1'000'000'000, 1'010'000'000};
  std::string typeOfChange{"\1\0", 2};
  std::uint32_t offset = 3600;
  std::uint8_t isDaylight = 1, abbreviation = 4;
  std::string names{"GMT\0BST\0", 8};
  std::string footer = "\nGMT0BST,M3.5.0/1,M10.5.0\n";

  [[nodiscard]] std::string header(bool isEmpty) const {
    std::string bytes = "TZif";
    bytes += version;
    bytes += std::string(15, '\0');
    for (const std::uint32_t count : {utIndicators, standardIndicators, leapSeconds, changes, types, characters})
      bytes += bigEndian(isEmpty ? 0 : count, 4);
    return bytes;
  }

  [[nodiscard]] std::string block(int timeSize) const {
    std::string bytes = header(false);
    for (const std::int64_t time : times) bytes += bigEndian(static_cast<std::uint64_t>(time), timeSize);
    bytes += typeOfChange;
    bytes += bigEndian(0, 6);
    bytes += bigEndian(offset, 4);
    bytes += static_cast<char>(isDaylight);
    bytes += static_cast<char>(abbreviation);
    return bytes + names;
  }

  [[nodiscard]] std::string bytes() const { return version == '\0' ? block(4) : header(true) + block(8) + footer; }
};

TEST(ZoneRules, ReadsTheTableAndGoesOnWithTheRule) {
  const auto rules = ZoneRules::fromTzif(ZoneFile().bytes());
  ASSERT_TRUE(rules);
  const ZoneType winter{0, false, "GMT"}, summer{3600, true, "BST"};
  EXPECT_EQ(rules->typeAt(instantOf("1900-01-01")), winter);
  EXPECT_EQ(rules->typeAt(instantOf("2001-09-09 01:46:39")), winter);
  EXPECT_EQ(rules->typeAt(instantOf("2001-09-09 01:46:40")), summer);
  EXPECT_EQ(rules->typeAt(instantOf("2002-01-02 19:33:19")), summer);
  EXPECT_EQ(rules->typeAt(instantOf("2002-01-02 19:33:20")), winter);
  EXPECT_EQ(rules->typeAt(instantOf("2002-03-31 01:00:00")), summer);
  EXPECT_EQ(rules->typeAt(instantOf("2099-07-01")), summer);
}

TEST(ZoneRules, ReadsTheFirstVersionWithoutARule) {
  ZoneFile file;
  file.version = '\0';
  const auto rules = ZoneRules::fromTzif(file.bytes());
  ASSERT_TRUE(rules);
  EXPECT_EQ(rules->typeAt(instantOf("2001-12-01")).abbreviation, "BST");
  EXPECT_EQ(rules->typeAt(instantOf("2099-07-01")).abbreviation, "GMT");
}

TEST(ZoneRules, AnEmptyRuleLetsTheLastTypeHold) {
  ZoneFile file;
  file.footer = "\n\n";
  const auto rules = ZoneRules::fromTzif(file.bytes());
  ASSERT_TRUE(rules);
  EXPECT_EQ(rules->typeAt(instantOf("2099-07-01")).abbreviation, "GMT");
  EXPECT_EQ(rules->nextChangeAfter(instantOf("2003-01-01")), std::nullopt);
}

TEST(ZoneRules, RefusesEveryFileThatEndsEarly) {
  const std::string bytes = ZoneFile().bytes();
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_FALSE(ZoneRules::fromTzif(std::string_view(bytes).substr(0, size))) << size;
}

TEST(ZoneRules, RefusesDamagedFiles) {
  const struct {
    const char* why;
    void (*damage)(ZoneFile&);
  } rows[] = {
      {"no type", [](ZoneFile& file) { file.types = 0; }},
      {"more types than an index can name", [](ZoneFile& file) { file.types = 257; }},
      {"more changes than bytes", [](ZoneFile& file) { file.changes = 0xFFFFFFFF; }},
      {"leap seconds", [](ZoneFile& file) { file.leapSeconds = 1; }},
      {"an indicator for one type only", [](ZoneFile& file) { file.utIndicators = 1; }},
      {"no abbreviations", [](ZoneFile& file) { file.characters = 0; }},
      {"changes out of order",
       [](ZoneFile& file) {
         file.times = {1'010'000'000, 1'000'000'000};
       }},
      {"a change twice",
       [](ZoneFile& file) {
         file.times = {1'000'000'000, 1'000'000'000};
       }},
      {"a type that is not there", [](ZoneFile& file) { file.typeOfChange[0] = 2; }},
      {"a daylight flag of 2", [](ZoneFile& file) { file.isDaylight = 2; }},
      {"an offset of 26 hours", [](ZoneFile& file) { file.offset = 26 * 3600; }},
      {"an abbreviation beyond the text", [](ZoneFile& file) { file.abbreviation = 8; }},
      {"an abbreviation without end", [](ZoneFile& file) { file.names = std::string("GMT\0BSTX", 8); }},
      {"no footer", [](ZoneFile& file) { file.footer.clear(); }},
      {"a footer that is no rule", [](ZoneFile& file) { file.footer = "\nGMT\n"; }},
      {"a footer without its last line end", [](ZoneFile& file) { file.footer = "\nGMT0"; }},
  };
  for (const auto& row : rows) {
    ZoneFile file;
    row.damage(file);
    EXPECT_FALSE(ZoneRules::fromTzif(file.bytes())) << row.why;
  }
  std::string wrongName = ZoneFile().bytes();
  wrongName[0] = 't';
  EXPECT_FALSE(ZoneRules::fromTzif(wrongName));
}

TEST(ZoneRules, LocalTimesThatAreSkippedMoveForwardAndThoseThatOccurTwiceAreTheFirst) {
  const auto rules = ZoneRules::fromPosix("GMT0BST,M3.5.0/1,M10.5.0");
  ASSERT_TRUE(rules);
  const struct {
    const char *local, *expected;
  } rows[] = {
      {"2021-03-28 00:59:59", "2021-03-28 00:59:59"}, {"2021-03-28 01:00:00", "2021-03-28 01:00:00"},
      {"2021-03-28 01:30:00", "2021-03-28 01:30:00"}, {"2021-03-28 02:00:00", "2021-03-28 01:00:00"},
      {"2021-07-01 12:00:00", "2021-07-01 11:00:00"}, {"2021-10-31 00:59:59", "2021-10-30 23:59:59"},
      {"2021-10-31 01:00:00", "2021-10-31 00:00:00"}, {"2021-10-31 01:59:59", "2021-10-31 00:59:59"},
      {"2021-10-31 02:00:00", "2021-10-31 02:00:00"}, {"2021-12-31 23:59:59", "2021-12-31 23:59:59"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(rules->instantOfLocal(instantOf(row.local)), instantOf(row.expected)) << row.local;
}

TEST(ZoneRules, ALocalTimeThatAChangeSoonAfterAGapBringsBackIsNotSkipped) {
  constexpr std::int64_t hour = 3600;
  const ZoneRules rules = ZoneRules::fromChanges(
      {{-11 * 3600, false, "west"}, {14 * 3600, false, "east"}, {-10 * 3600, false, "back"}}, {{0, 1}, {12 * hour, 2}});
  EXPECT_EQ(rules.instantOfLocal(-11 * hour - 1), -1);
  EXPECT_EQ(rules.instantOfLocal(-11 * hour), 0) << "skipped";
  EXPECT_EQ(rules.instantOfLocal(2 * hour - 1), 13 * hour - 1) << "skipped";
  EXPECT_EQ(rules.instantOfLocal(2 * hour), 12 * hour) << "the clocks show it after the second change";
  EXPECT_EQ(rules.instantOfLocal(14 * hour - 1), 24 * hour - 1);
  EXPECT_EQ(rules.instantOfLocal(14 * hour), 0) << "twice: the first";
}

TEST(ZoneRules, AFixedZoneNeverChanges) {
  const ZoneRules rules = ZoneRules::fixed({-18000, false, "EST"});
  EXPECT_EQ(rules.typeAt(0).offset, -18000);
  EXPECT_EQ(rules.nextChangeAfter(0), std::nullopt);
  EXPECT_EQ(rules.instantOfLocal(0), 18000);
}

TEST(ZoneRules, InstantsBeyondTheCalendarAreDefined) {
  const auto rules = ZoneRules::fromTzif(ZoneFile().bytes());
  ASSERT_TRUE(rules);
  EXPECT_EQ(rules->typeAt(INT64_MIN).abbreviation, "GMT");
  EXPECT_LE(rules->spanAt(INT64_MAX).from, INT64_MAX);
  EXPECT_EQ(rules->spanAt(INT64_MIN).from, INT64_MIN);
  EXPECT_EQ(rules->nextChangeAfter(INT64_MAX), std::nullopt);
  EXPECT_LT(rules->instantOfLocal(INT64_MIN), 0);
  EXPECT_GT(rules->instantOfLocal(INT64_MAX), 0);
}

}  // namespace
}  // namespace norvik::detail

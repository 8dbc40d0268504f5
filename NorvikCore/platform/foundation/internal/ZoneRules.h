// NorvikCore/platform/foundation/internal/ZoneRules.h - what the clocks of a place have shown and will show.
//
// A table of changes from a zone file, and the yearly rule that holds after its last one. Instants are seconds since
// the reference date, local times the same count of what the clock shows.
//
// A value, immutable: safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/internal/PosixZoneRule.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace norvik::detail {

class NK_EXPORT ZoneRules {
 public:
  /// Reads a zone file (RFC 8536, versions 1 to 4). Damaged data, and files that count leap seconds, give nothing.
  [[nodiscard]] static std::optional<ZoneRules> fromTzif(std::string_view bytes);
  /// Reads a rule such as "GMT0BST,M3.5.0/1,M10.5.0".
  [[nodiscard]] static std::optional<ZoneRules> fromPosix(std::string_view text);
  [[nodiscard]] static ZoneRules fixed(ZoneType type);
  /// Of changes in ascending order, each to an index of `types`; the first type holds before the first change.
  struct Change {
    std::int64_t instant;
    std::uint8_t type;
  };
  [[nodiscard]] static ZoneRules fromChanges(std::vector<ZoneType> types, const std::vector<Change>& changes);

  [[nodiscard]] const ZoneType& typeAt(std::int64_t instant) const noexcept;
  /// The time around the instant during which the same entry of the table holds.
  [[nodiscard]] ZoneSpan spanAt(std::int64_t instant) const noexcept;
  /// The next instant at which offset, daylight flag or abbreviation changes.
  [[nodiscard]] std::optional<std::int64_t> nextChangeAfter(std::int64_t instant) const noexcept;

  /// The instant at which clocks show `local`. A local time that occurs twice is the first; one that is skipped moves
  /// forward by what is skipped: 01:30 on the night that London moves to summer time is 02:30.
  [[nodiscard]] std::int64_t instantOfLocal(std::int64_t local) const noexcept;
  /// The first instant at which clocks show the day that begins at `local`. Of a day that is skipped as a whole,
  /// instantOfLocal(local).
  [[nodiscard]] std::int64_t startOfLocalDay(std::int64_t local) const noexcept;

  [[nodiscard]] const std::vector<std::int64_t>& instants() const noexcept { return instants_; }

 private:
  ZoneRules() = default;

  std::vector<std::int64_t> instants_;
  std::vector<std::uint8_t> typeFrom_;  // as long as instants_
  std::vector<ZoneType> types_;         // the first holds before the first change
  std::optional<PosixZoneRule> rule_;   // after the last change
};

}  // namespace norvik::detail

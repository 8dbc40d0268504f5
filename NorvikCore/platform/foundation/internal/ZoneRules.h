// NorvikCore/platform/foundation/internal/ZoneRules.h - the past and future local time of a place.
//
// Consists of a table of changes from a zone file and the yearly rule that is in force after the last change. Instants
// are seconds since the reference date; local times are the same count for the time that clocks show.
//
// Immutable value: safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/internal/PosixZoneRule.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace norvik::detail {

class NK_EXPORT_FOR_TESTS ZoneRules {
 public:
  /// Reads a zone file (RFC 8536, versions 1 to 4). Nothing for damaged data and for files that count leap seconds.
  [[nodiscard]] static std::optional<ZoneRules> fromTzif(std::string_view bytes);
  /// Reads a rule such as "GMT0BST,M3.5.0/1,M10.5.0".
  [[nodiscard]] static std::optional<ZoneRules> fromPosix(std::string_view text);
  [[nodiscard]] static ZoneRules fixed(ZoneType type);
  /// From changes in ascending order, each with an index of `types`; the first type is in force before the first
  /// change.
  struct Change {
    std::int64_t instant;
    std::uint8_t type;
  };
  [[nodiscard]] static ZoneRules fromChanges(std::vector<ZoneType> types, const std::vector<Change>& changes);

  [[nodiscard]] const ZoneType& typeAt(std::int64_t instant) const noexcept;
  /// The period around the instant in which one entry of the table is in force.
  [[nodiscard]] ZoneSpan spanAt(std::int64_t instant) const noexcept;
  /// The next instant at which offset, daylight flag or abbreviation changes.
  [[nodiscard]] std::optional<std::int64_t> nextChangeAfter(std::int64_t instant) const noexcept;

  /// The instant at which clocks show `local`. If a local time occurs twice, it is the first; if it is skipped, it
  /// moves forward by the skipped amount: 01:30 on the night when London changes to summer time is 02:30.
  [[nodiscard]] std::int64_t instantOfLocal(std::int64_t local) const noexcept;
  /// The first instant at which clocks show the day that begins at `local`; instantOfLocal(local) if the whole day is
  /// skipped.
  [[nodiscard]] std::int64_t startOfLocalDay(std::int64_t local) const noexcept;

  [[nodiscard]] const std::vector<std::int64_t>& instants() const noexcept { return instants_; }

 private:
  ZoneRules() = default;

  std::vector<std::int64_t> instants_;
  std::vector<std::uint8_t> typeFrom_;  // as long as instants_
  std::vector<ZoneType> types_;         // the first is in force before the first change
  std::optional<PosixZoneRule> rule_;   // in force after the last change
};

}  // namespace norvik::detail

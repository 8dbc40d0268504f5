// NorvikCore/platform/foundation/internal/ZoneDatabase.h - time zones by name, from the system's zone files or, if
// there are none, from ICU's data.
//
// Rules that were found are kept until the process ends. Any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/internal/ZoneRules.h"

#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

/// The rules of the zone called "Europe/London"; nullptr if there is none. "UTC" and "GMT" always exist.
[[nodiscard]] NK_EXPORT_FOR_TESTS const ZoneRules* zoneNamed(std::string_view name);

/// The rules of ICU's data: the second source, of the same format. Not cached: every call creates new ones.
[[nodiscard]] NK_EXPORT_FOR_TESTS std::optional<ZoneRules> zoneFromIcu(std::string_view name);

struct NamedZone {
  std::string name;
  const ZoneRules* rules = nullptr;
};

/// The zone that a value of the TZ environment variable means: a name, a path of a zone file, or a rule. A leading
/// colon is ignored, and the empty text is UTC. No rules if the value is none of these.
[[nodiscard]] NK_EXPORT_FOR_TESTS NamedZone zoneFromEnvironmentValue(std::string_view value);

/// The machine's zone: the first of TZ, /etc/localtime, /etc/timezone and UTC that means a zone.
[[nodiscard]] NK_EXPORT_FOR_TESTS NamedZone systemZone();

}  // namespace norvik::detail

// NorvikCore/platform/foundation/internal/ZoneDatabase.h - time zones by name: the system's zone files, or ICU's data
// where there are none.
//
// What is found is kept for the life of the process. Any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/internal/ZoneRules.h"

#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

/// The rules of the zone called "Europe/London"; nullptr where there is none. "UTC" and "GMT" are always there.
[[nodiscard]] NK_EXPORT const ZoneRules* zoneNamed(std::string_view name);

/// The rules as ICU's data has them: the second source, of the same format. Not kept: every call makes new ones.
[[nodiscard]] NK_EXPORT std::optional<ZoneRules> zoneFromIcu(std::string_view name);

struct NamedZone {
  std::string name;
  const ZoneRules* rules = nullptr;
};

/// The zone that a value of the TZ environment variable means: a name, a path of a zone file, or a rule; a leading
/// colon is ignored, and the empty text is UTC. No rules where it means nothing.
[[nodiscard]] NK_EXPORT NamedZone zoneFromEnvironmentValue(std::string_view value);

/// The machine's zone: TZ, /etc/localtime, /etc/timezone, UTC; the first that means a zone.
[[nodiscard]] NK_EXPORT NamedZone systemZone();

}  // namespace norvik::detail

#include "NorvikCore/platform/foundation/internal/ZoneDatabase.h"

#include "NorvikCore/platform/foundation/internal/IcuText.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/values/CivilDate.h"

#include <unicode/basictz.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>

namespace norvik::detail {
namespace {

constexpr std::string_view zoneFolder = "/usr/share/zoneinfo/";

/// Names consist of letters, digits, "_", "+" and "-", with "/" between parts, so that no name leads out of the folder.
bool isZoneName(std::string_view name) {
  const auto isNameCharacter = [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '+' ||
           c == '-' || c == '/';
  };
  return !name.empty() && name.size() < 100 && name.front() != '/' && name.back() != '/' &&
         std::all_of(name.begin(), name.end(), isNameCharacter);
}

std::optional<ZoneRules> readZoneFile(const std::string& path) {
  std::error_code failure;
  if (!std::filesystem::is_regular_file(path, failure)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  std::string bytes(1 << 20, '\0');  // the largest zone files have only a few kilobytes
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (file.bad() || !file.eof()) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return ZoneRules::fromTzif(bytes);
}

struct ZoneCache {
  Mutex mutex;
  std::map<std::string, std::unique_ptr<const ZoneRules>, std::less<>> zones NK_GUARDED_BY(mutex);

  static ZoneCache& shared() {
    return kernel::madeOnce([] { return new ZoneCache; });
  }

  /// The cached rules of the key, or those that `load` finds. A failed search is repeated by the next call.
  template <class Load>
  const ZoneRules* rules(std::string_view key, Load load) NK_EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto known = zones.find(key);
    if (known != zones.end()) return known->second.get();
    std::optional<ZoneRules> found = load();
    if (!found) return nullptr;
    auto kept = std::make_unique<const ZoneRules>(std::move(*found));
    return zones.emplace(std::string(key), std::move(kept)).first->second.get();
  }
};

std::string trimmed(std::string text) {
  const char* const spaces = " \t\r\n";
  text.erase(text.find_last_not_of(spaces) + 1);
  text.erase(0, text.find_first_not_of(spaces));
  return text;
}

/// The name of a zone file by its location: the part of the path after "zoneinfo/".
std::string nameOfZoneFile(const std::filesystem::path& path) {
  constexpr std::string_view folder = "zoneinfo/";
  const std::string text = path.string();
  const std::size_t found = text.rfind(folder);
  return found == std::string::npos ? std::string() : text.substr(found + folder.size());
}

NamedZone zoneInFile(const std::string& path) {
  std::error_code failure;
  const std::filesystem::path real = std::filesystem::canonical(path, failure);
  if (failure) return {};
  const std::string name = nameOfZoneFile(real);
  if (const ZoneRules* rules = zoneNamed(name)) return {name, rules};
  return {path, ZoneCache::shared().rules(path, [&] { return readZoneFile(real.string()); })};
}

NamedZone zoneInTextFile(const char* path) {
  std::ifstream file(path);
  std::string name;
  std::getline(file, name);
  name = trimmed(std::move(name));
  return {name, zoneNamed(name)};
}

}  // namespace

const ZoneRules* zoneNamed(std::string_view name) {
  if (!isZoneName(name)) return nullptr;
  return ZoneCache::shared().rules(name, [&]() -> std::optional<ZoneRules> {
    if (name == "UTC" || name == "GMT") return ZoneRules::fixed({0, false, std::string(name)});
    if (auto rules = readZoneFile(std::string(zoneFolder).append(name))) return rules;
    return zoneFromIcu(name);
  });
}

std::optional<ZoneRules> zoneFromIcu(std::string_view name) {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(icuString(name)));
  const auto* basic = dynamic_cast<const icu::BasicTimeZone*>(zone.get());
  if (!basic || *zone == icu::TimeZone::getUnknown()) return std::nullopt;

  std::vector<ZoneType> types;
  const auto typeIndex = [&](double milliseconds) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t raw = 0, saving = 0;
    zone->getOffset(milliseconds, false, raw, saving, status);
    icu::UnicodeString text;
    zone->getDisplayName(saving != 0, icu::TimeZone::SHORT, icu::Locale::getUK(), text);
    ZoneType type{(raw + saving) / 1000, saving != 0, utf8FromIcu(text)};
    const auto known = std::find(types.begin(), types.end(), type);
    if (known != types.end()) return static_cast<std::size_t>(known - types.begin());
    types.push_back(std::move(type));
    return types.size() - 1;
  };

  constexpr double start = -5.4e12, end = 1.7e13;  // 1798, before any zone; 2508, because ICU gives no rule for later
  typeIndex(start);
  std::vector<ZoneRules::Change> changes;
  icu::TimeZoneTransition transition;
  for (double at = start; basic->getNextTransition(at, false, transition) && transition.getTime() < end;) {
    at = transition.getTime();
    const std::size_t type = typeIndex(at);
    if (type > 255) return std::nullopt;
    const auto instant = static_cast<std::int64_t>(std::floor(at / 1000)) - kernel::referenceDateInUnixSeconds;
    changes.push_back({instant, static_cast<std::uint8_t>(type)});
  }
  return ZoneRules::fromChanges(std::move(types), changes);
}

NamedZone zoneFromEnvironmentValue(std::string_view value) {
  if (!value.empty() && value.front() == ':') value.remove_prefix(1);
  if (value.empty()) return {"UTC", zoneNamed("UTC")};
  if (value.front() == '/') return zoneInFile(std::string(value));
  if (const ZoneRules* rules = zoneNamed(value)) return {std::string(value), rules};
  return {std::string(value),
          ZoneCache::shared().rules("TZ=" + std::string(value), [&] { return ZoneRules::fromPosix(value); })};
}

NamedZone systemZone() {
  if (const char* value = std::getenv("TZ")) {
    NamedZone zone = zoneFromEnvironmentValue(value);
    if (zone.rules) return zone;
  }
  if (NamedZone zone = zoneInFile("/etc/localtime"); zone.rules) return zone;
  if (NamedZone zone = zoneInTextFile("/etc/timezone"); zone.rules) return zone;
  return {"UTC", zoneNamed("UTC")};
}

}  // namespace norvik::detail

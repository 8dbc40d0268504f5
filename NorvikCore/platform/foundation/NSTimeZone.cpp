#include "NorvikCore/platform/foundation/NSTimeZone.h"

#include "NorvikCore/platform/foundation/internal/ZoneDatabase.h"
#include "NorvikCore/platform/foundation/internal/ZoneRules.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"

#include <cstdlib>
#include <map>
#include <utility>

namespace norvik {
namespace {

struct SharedZones {
  Mutex mutex;
  Ref<NSTimeZone> system NK_GUARDED_BY(mutex);
  Ref<NSTimeZone> application NK_GUARDED_BY(mutex);
  std::map<NSInteger, const detail::ZoneRules*> fixed NK_GUARDED_BY(mutex);

  static SharedZones& shared() {
    return kernel::madeOnce([] { return new SharedZones; });
  }
};

}  // namespace

NSTimeZone::NSTimeZone(NSString name, const detail::ZoneRules& rules) : name_(std::move(name)), rules_(rules) {}
NSTimeZone::~NSTimeZone() = default;

Ref<NSTimeZone> NSTimeZone::timeZoneWithName(const NSString& name) {
  const detail::ZoneRules* rules = detail::zoneNamed(name.view());
  return rules ? make<NSTimeZone>(name, *rules) : nullptr;
}

Ref<NSTimeZone> NSTimeZone::timeZoneForSecondsFromGMT(NSInteger seconds) {
  if (seconds > 18 * 3600 || seconds < -18 * 3600) return nullptr;
  const NSInteger minutes = (seconds + (seconds < 0 ? -30 : 30)) / 60;
  const NSInteger size = std::abs(minutes);
  const NSString name =
      minutes == 0 ? NSString("GMT") : stringWithFormat("GMT%@%02d%02d", minutes < 0 ? "-" : "+", size / 60, size % 60);
  auto& shared = SharedZones::shared();
  MutexLock lock(shared.mutex);
  const detail::ZoneRules*& rules = shared.fixed[minutes];
  if (!rules) {
    const detail::ZoneType type{static_cast<std::int32_t>(minutes * 60), false, name.str()};
    rules = new detail::ZoneRules(detail::ZoneRules::fixed(type));  // kept until the process ends
  }
  return make<NSTimeZone>(name, *rules);
}

Ref<NSTimeZone> NSTimeZone::systemTimeZone() {
  auto& shared = SharedZones::shared();
  MutexLock lock(shared.mutex);
  if (!shared.system) {
    const detail::NamedZone zone = detail::systemZone();
    shared.system = make<NSTimeZone>(zone.name, *zone.rules);
  }
  return shared.system;
}

void NSTimeZone::resetSystemTimeZone() {
  auto& shared = SharedZones::shared();
  MutexLock lock(shared.mutex);
  shared.system = nullptr;
}

Ref<NSTimeZone> NSTimeZone::defaultTimeZone() {
  auto& shared = SharedZones::shared();
  {
    MutexLock lock(shared.mutex);
    if (shared.application) return shared.application;
  }
  return systemTimeZone();
}

void NSTimeZone::setDefaultTimeZone(const Ref<NSTimeZone>& zone) {
  auto& shared = SharedZones::shared();
  MutexLock lock(shared.mutex);
  shared.application = zone;
}

NSInteger NSTimeZone::secondsFromGMTForDate(Date date) const noexcept {
  return rules_.typeAt(detail::wholeSeconds(date)).offset;
}

NSString NSTimeZone::abbreviationForDate(Date date) const {
  return rules_.typeAt(detail::wholeSeconds(date)).abbreviation;
}

bool NSTimeZone::isDaylightSavingTimeForDate(Date date) const noexcept {
  return rules_.typeAt(detail::wholeSeconds(date)).isDaylight;
}

std::optional<Date> NSTimeZone::nextDaylightSavingTimeTransitionAfterDate(Date date) const noexcept {
  const auto change = rules_.nextChangeAfter(detail::wholeSeconds(date));
  if (!change) return std::nullopt;
  return Date::fromReferenceSeconds(static_cast<double>(*change));
}

NSString NSTimeZone::description() const {
  const detail::ZoneType& now = rules_.typeAt(detail::wholeSeconds(Date::systemDate()));
  return stringWithFormat("%@ (%@) offset %d%@", name_, now.abbreviation, now.offset,
                          now.isDaylight ? " (Daylight)" : "");
}

bool NSTimeZone::isEqual(const NSObject& other) const {
  const auto* zone = dynamic_cast<const NSTimeZone*>(&other);
  return zone && (zone == this || zone->name_ == name_);
}

std::size_t NSTimeZone::hash() const { return std::hash<NSString>()(name_); }

void NSTimeZone::encodeWithCoder(NSCoder& coder) const { coder.encodeValue(name_); }

Ref<NSTimeZone> NSTimeZone::timeZoneWithCoder(NSCoder& coder) {
  const auto name = coder.decodeValue<NSString>();
  if (Ref<NSTimeZone> zone = timeZoneWithName(name)) return zone;
  // The value of TZ may be a rule or a path of a file. Neither is read from an archive.
  if (Ref<NSTimeZone> zone = systemTimeZone(); zone->name() == name) return zone;
  NSException::raise(NSInvalidUnarchiveOperationException, "there is no time zone \"" + name.utf8() + "\" here");
}

}  // namespace norvik

// NorvikCore/platform/foundation/NSTimeZone.h - the local time of a place: now, in the past, and in the future by
// today's rules.
//
//   Ref<NSTimeZone> london = NSTimeZone::timeZoneWithName("Europe/London");
//   london->secondsFromGMTForDate("2021-07-01"_date);                         // 3600
//   london->abbreviationForDate("2021-07-01"_date);                           // "BST"
//   london->nextDaylightSavingTimeTransitionAfterDate("2021-07-01"_date);     // 2021-10-31 01:00:00 +0000
//
// The rules come from the system's zone files, or from ICU's data if there are none. They are kept until the process
// ends.
//
// Threads: immutable; the class operations are synchronised.
// Cost:    the first use of a name reads a file; an offset takes some tens of nanoseconds.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "NorvikCore/platform/values/NSInteger.h"

#include <optional>

namespace norvik {

namespace detail {
class ZoneRules;
}

class NK_EXPORT NSTimeZone : public NSObject, public NSCoding {
  NK_OBJECT(NSTimeZone, NSObject)
  NK_DECODED_BY(timeZoneWithCoder)

  /// The zone "Europe/London", "UTC", "GMT" ...; an empty Ref if there is none of that name.
  [[nodiscard]] static Ref<NSTimeZone> timeZoneWithName(const NSString& name);
  /// A zone with a constant offset, "GMT+0130"; an empty Ref beyond 18 hours. Seconds are rounded to whole minutes.
  [[nodiscard]] static Ref<NSTimeZone> timeZoneForSecondsFromGMT(NSInteger seconds);

  /// The machine's zone: that of the environment variable TZ, else of /etc/localtime, else UTC. Determined once per
  /// process; resetSystemTimeZone() makes the next call determine it again.
  [[nodiscard]] static Ref<NSTimeZone> systemTimeZone();
  static void resetSystemTimeZone();
  /// The application's zone: the machine's unless it was set. An empty Ref restores the machine's.
  [[nodiscard]] static Ref<NSTimeZone> defaultTimeZone();
  static void setDefaultTimeZone(const Ref<NSTimeZone>& zone);
  /// The same as defaultTimeZone().
  [[nodiscard]] static Ref<NSTimeZone> localTimeZone() { return defaultTimeZone(); }

  [[nodiscard]] const NSString& name() const noexcept { return name_; }
  /// Seconds to add to UTC, at the date or now; negative in the west.
  [[nodiscard]] NSInteger secondsFromGMTForDate(Date date) const noexcept;
  [[nodiscard]] NSInteger secondsFromGMT() const noexcept { return secondsFromGMTForDate(Date::systemDate()); }
  /// "GMT", "BST"; for a zone without letters its offset, "+0545".
  [[nodiscard]] NSString abbreviationForDate(Date date) const;
  [[nodiscard]] bool isDaylightSavingTimeForDate(Date date) const noexcept;
  /// The next date after this one at which the offset, the abbreviation or the daylight flag changes; absent if there
  /// is none.
  [[nodiscard]] std::optional<Date> nextDaylightSavingTimeTransitionAfterDate(Date date) const noexcept;

  /// "Europe/London (BST) offset 3600 (Daylight)", as of now.
  [[nodiscard]] NSString description() const override;
  /// Zones with the same name are equal.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  [[nodiscard]] bool isEqualToTimeZone(const NSTimeZone& other) const { return isEqual(other); }

  /// Archives the name only: the rules are looked up where it is decoded. An unknown name raises
  /// NSInvalidUnarchiveOperationException. The name of the machine's own zone is always known on that machine, even if
  /// it is a rule or a path.
  void encodeWithCoder(NSCoder& coder) const override;
  [[nodiscard]] static Ref<NSTimeZone> timeZoneWithCoder(NSCoder& coder);

  /// Called by the operations above. `rules` lives until the process ends.
  NSTimeZone(NSString name, const detail::ZoneRules& rules);
  ~NSTimeZone() override;

  [[nodiscard]] const detail::ZoneRules& rules() const noexcept { return rules_; }

 private:
  const NSString name_;
  const detail::ZoneRules& rules_;
};

}  // namespace norvik

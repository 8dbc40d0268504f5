// NorvikCore/platform/foundation/NSTimeZone.h - what clocks show in a place, now, in the past and by today's rules in
// future.
//
//   Ref<NSTimeZone> london = NSTimeZone::timeZoneWithName("Europe/London");
//   london->secondsFromGMTForDate("2021-07-01"_date);                         // 3600
//   london->abbreviationForDate("2021-07-01"_date);                           // "BST"
//   london->nextDaylightSavingTimeTransitionAfterDate("2021-07-01"_date);     // 2021-10-31 01:00:00 +0000
//
// The rules come from the system's zone files, ICU's data where there are none, and are kept for the life of the
// process.
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

  /// The zone "Europe/London", "UTC", "GMT" ...; empty where there is none of that name.
  [[nodiscard]] static Ref<NSTimeZone> timeZoneWithName(const NSString& name);
  /// A zone of one offset, "GMT+0130"; empty beyond 18 hours. Seconds are rounded to whole minutes.
  [[nodiscard]] static Ref<NSTimeZone> timeZoneForSecondsFromGMT(NSInteger seconds);

  /// The machine's zone: what the environment variable TZ means, else /etc/localtime, else UTC. Asked once per process;
  /// resetSystemTimeZone() asks again.
  [[nodiscard]] static Ref<NSTimeZone> systemTimeZone();
  static void resetSystemTimeZone();
  /// The application's zone: the machine's unless it was set. An empty Ref takes the machine's again.
  [[nodiscard]] static Ref<NSTimeZone> defaultTimeZone();
  static void setDefaultTimeZone(const Ref<NSTimeZone>& zone);
  /// The same as defaultTimeZone().
  [[nodiscard]] static Ref<NSTimeZone> localTimeZone() { return defaultTimeZone(); }

  [[nodiscard]] const NSString& name() const noexcept { return name_; }
  /// Seconds to add to UTC, at the date or now; negative in the west.
  [[nodiscard]] NSInteger secondsFromGMTForDate(Date date) const noexcept;
  [[nodiscard]] NSInteger secondsFromGMT() const noexcept { return secondsFromGMTForDate(Date::systemDate()); }
  /// "GMT", "BST"; zones without letters have their offset, "+0545".
  [[nodiscard]] NSString abbreviationForDate(Date date) const;
  [[nodiscard]] bool isDaylightSavingTimeForDate(Date date) const noexcept;
  /// The next date after this one at which the offset, the abbreviation or the daylight flag changes; absent where none
  /// does.
  [[nodiscard]] std::optional<Date> nextDaylightSavingTimeTransitionAfterDate(Date date) const noexcept;

  /// "Europe/London (BST) offset 3600 (Daylight)", as of now.
  [[nodiscard]] NSString description() const override;
  /// Zones of one name are equal.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  [[nodiscard]] bool isEqualToTimeZone(const NSTimeZone& other) const { return isEqual(other); }

  /// Its name: the rules are looked up where it is decoded. A name that is not known there raises
  /// NSInvalidUnarchiveOperationException; that of the machine's own zone, whatever it is, is known on it.
  void encodeWithCoder(NSCoder& coder) const override;
  [[nodiscard]] static Ref<NSTimeZone> timeZoneWithCoder(NSCoder& coder);

  /// Made by the operations above. `rules` lives as long as the process.
  NSTimeZone(NSString name, const detail::ZoneRules& rules);
  ~NSTimeZone() override;

  [[nodiscard]] const detail::ZoneRules& rules() const noexcept { return rules_; }

 private:
  const NSString name_;
  const detail::ZoneRules& rules_;
};

}  // namespace norvik

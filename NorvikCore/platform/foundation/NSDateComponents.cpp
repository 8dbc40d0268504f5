#include "NorvikCore/platform/foundation/NSDateComponents.h"

#include "NorvikCore/platform/values/Format.h"

#include <string>

namespace norvik {
namespace {

constexpr struct {
  NSCalendarUnit unit;
  const char* name;
  const NSInteger& (NSDateComponents::*value)() const;
  void (NSDateComponents::*setValue)(NSInteger);
} fields[] = {
    {NSCalendarUnitEra, "era", &NSDateComponents::era, &NSDateComponents::setEra},
    {NSCalendarUnitYear, "year", &NSDateComponents::year, &NSDateComponents::setYear},
    {NSCalendarUnitMonth, "month", &NSDateComponents::month, &NSDateComponents::setMonth},
    {NSCalendarUnitDay, "day", &NSDateComponents::day, &NSDateComponents::setDay},
    {NSCalendarUnitHour, "hour", &NSDateComponents::hour, &NSDateComponents::setHour},
    {NSCalendarUnitMinute, "minute", &NSDateComponents::minute, &NSDateComponents::setMinute},
    {NSCalendarUnitSecond, "second", &NSDateComponents::second, &NSDateComponents::setSecond},
    {NSCalendarUnitNanosecond, "nanosecond", &NSDateComponents::nanosecond, &NSDateComponents::setNanosecond},
    {NSWeekCalendarUnit, "week", &NSDateComponents::week, &NSDateComponents::setWeek},
    {NSCalendarUnitWeekday, "weekday", &NSDateComponents::weekday, &NSDateComponents::setWeekday},
    {NSCalendarUnitWeekdayOrdinal, "weekdayOrdinal", &NSDateComponents::weekdayOrdinal,
     &NSDateComponents::setWeekdayOrdinal},
    {NSCalendarUnitQuarter, "quarter", &NSDateComponents::quarter, &NSDateComponents::setQuarter},
    {NSCalendarUnitWeekOfMonth, "weekOfMonth", &NSDateComponents::weekOfMonth, &NSDateComponents::setWeekOfMonth},
    {NSCalendarUnitWeekOfYear, "weekOfYear", &NSDateComponents::weekOfYear, &NSDateComponents::setWeekOfYear},
    {NSCalendarUnitYearForWeekOfYear, "yearForWeekOfYear", &NSDateComponents::yearForWeekOfYear,
     &NSDateComponents::setYearForWeekOfYear},
};

}  // namespace

NSDateComponents::NSDateComponents() {
  for (const auto& field : fields) (this->*field.setValue)(NSUndefinedDateComponent);
}

NSDateComponents::~NSDateComponents() = default;

NSInteger NSDateComponents::valueForComponent(NSCalendarUnit unit) const {
  for (const auto& field : fields) {
    if (field.unit == unit) return (this->*field.value)();
  }
  return NSUndefinedDateComponent;
}

void NSDateComponents::setValue_forComponent(NSInteger value, NSCalendarUnit unit) {
  for (const auto& field : fields) {
    if (field.unit == unit) (this->*field.setValue)(value);
  }
}

NSString NSDateComponents::description() const {
  std::string text = "<NSDateComponents:";
  const char* separator = " ";
  for (const auto& field : fields) {
    const NSInteger value = (this->*field.value)();
    if (value == NSUndefinedDateComponent) continue;
    text.append(separator).append(field.name).append(" ").append(std::to_string(value));
    separator = ", ";
  }
  return text + ">";
}

bool NSDateComponents::isEqual(const NSObject& other) const {
  const auto* components = dynamic_cast<const NSDateComponents*>(&other);
  if (!components) return false;
  for (const auto& field : fields) {
    if ((this->*field.value)() != (components->*field.value)()) return false;
  }
  const Ref<NSTimeZone>&zone = timeZone(), &otherZone = components->timeZone();
  return zone == otherZone || (zone && otherZone && zone->isEqual(*otherZone));
}

std::size_t NSDateComponents::hash() const {
  std::size_t hash = 0;
  for (const auto& field : fields) hash = hash * 31 + static_cast<std::size_t>((this->*field.value)());
  return hash;
}

void NSDateComponents::encodeWithCoder(NSCoder& coder) const {
  for (const auto& field : fields) {
    const NSInteger value = (this->*field.value)();
    if (value != NSUndefinedDateComponent) coder.encodeInteger(value, field.name);
  }
  coder.encodeObject(timeZone(), "timeZone");
}

bool NSDateComponents::initWithCoder(NSCoder& coder) {
  for (const auto& field : fields) {
    if (const auto value = coder.decode<std::optional<NSInteger>>(field.name)) (this->*field.setValue)(*value);
  }
  setTimeZone(coder.decode<Ref<NSTimeZone>>("timeZone"));
  return true;
}

}  // namespace norvik

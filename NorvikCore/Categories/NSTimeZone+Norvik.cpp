#include "NorvikCore/Categories/NSTimeZone+Norvik.h"

namespace norvik {

const Ref<NSTimeZone>& nk_defaultTimeZone() {
  static const auto& zone = *new Ref<NSTimeZone>(NSTimeZone::timeZoneWithName("UTC"));
  return zone;
}

const Ref<NSTimeZone>& nk_ukTimeZone() {
  static const auto& zone = *new Ref<NSTimeZone>(NSTimeZone::timeZoneWithName("Europe/London"));
  return zone;
}

}  // namespace norvik

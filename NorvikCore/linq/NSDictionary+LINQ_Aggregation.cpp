#include "NorvikCore/linq/NSDictionary+LINQ_Aggregation.h"

namespace norvik {

Value linq_sum(const NSDictionary& receiver) { return detail::aggregated(receiver, detail::Total()).sum(); }
Decimal linq_avg(const NSDictionary& receiver) { return detail::aggregated(receiver, detail::Total()).average(); }
Value linq_max(const NSDictionary& receiver) { return detail::aggregated(receiver, detail::Greatest()).result(); }
Value linq_min(const NSDictionary& receiver) { return detail::aggregated(receiver, detail::Least()).result(); }

Decimal linq_sumForKey(const NSDictionary& receiver, const NSString& key) {
  return receiver.valueForKeyPath("@sum." + key).as<Decimal>();
}
Decimal linq_avgForKey(const NSDictionary& receiver, const NSString& key) {
  return receiver.valueForKeyPath("@avg." + key).as<Decimal>();
}
Value linq_maxForKey(const NSDictionary& receiver, const NSString& key) {
  return receiver.valueForKeyPath("@max." + key);
}
Value linq_minForKey(const NSDictionary& receiver, const NSString& key) {
  return receiver.valueForKeyPath("@min." + key);
}

}  // namespace norvik

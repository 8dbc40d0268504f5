#include "NorvikCore/linq/NSArray+LINQ_Aggregation.h"

namespace norvik {

Value linq_sum(const NSArray& receiver) { return detail::aggregated(receiver, detail::Total()).sum(); }
Decimal linq_avg(const NSArray& receiver) { return detail::aggregated(receiver, detail::Total()).average(); }
Value linq_max(const NSArray& receiver) { return detail::aggregated(receiver, detail::Greatest()).result(); }
Value linq_min(const NSArray& receiver) { return detail::aggregated(receiver, detail::Least()).result(); }

Decimal linq_sumForKey(const NSArray& receiver, const NSString& key) {
  return receiver.valueForKeyPath("@sum." + key).as<Decimal>();
}
Decimal linq_avgForKey(const NSArray& receiver, const NSString& key) {
  return receiver.valueForKeyPath("@avg." + key).as<Decimal>();
}
Value linq_maxForKey(const NSArray& receiver, const NSString& key) { return receiver.valueForKeyPath("@max." + key); }
Value linq_minForKey(const NSArray& receiver, const NSString& key) { return receiver.valueForKeyPath("@min." + key); }

}  // namespace norvik

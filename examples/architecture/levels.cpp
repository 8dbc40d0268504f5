// examples/architecture/levels.cpp - docs/architecture.md: something of each level, from the bottom up.
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/linq/LINQ.h"
#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/dispatch/Apply.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "NorvikCore/platform/kernel/UUID.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"

#include <atomic>
#include <iostream>

using namespace norvik;

class Payslip : public NSObject {  // 4 object
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Decimal, netPay, setNetPay)
};

int main() {
  std::cout << kernel::makeUUID().text().size() << " characters of an identifier\n";  // 1 kernel
  const Decimal net = 2500.00_dec - 125.00_dec;                                       // 2 values

  std::atomic<int> rounds = 0;  // 3 dispatch
  dispatch_apply(100, dispatch_get_global_queue(), [&rounds](std::size_t) { ++rounds; });

  auto sian = make<Payslip>(), ann = make<Payslip>();
  sian->setNetPay(net);
  ann->setNetPay(1757.97_dec);
  const Ref<NSArray> slips = NSArray::arrayWithObjects(sian, ann);     // 5 collections
  std::cout << slips->valueForKeyPath("@sum.netPay") << " by name\n";  // 6 keyvalue

  const Ref<NSData> data = NSKeyedArchiver::archivedDataWithRootObject(net);  // 7 archives
  std::cout << NSKeyedUnarchiver::unarchiveObjectWithData(*data) << " read back\n";

  auto formatter = make<NSNumberFormatter>();  // 8 foundation
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  formatter->setFormat("#,##0.00");
  std::cout << formatter->stringFromNumber(net) << " by a formatter\n";

  const Value most = slips | linq_select(&Payslip::netPay) | linq_max();  // 10 linq
  std::cout << most << " at most\n";

  auto queue = TSKDispatchQueue::dispatchQueueWithLabel("report");  // 11 dispatch
  queue->dispatchSynchronously([&] { std::cout << rounds << " rounds\n"; });

  std::cout << nk_currencyStyleString(net) << " for people\n";  // 13 Categories
}

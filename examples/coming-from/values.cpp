// examples/coming-from/values.cpp - docs/coming-from-qt-or-boost.md: text, amounts, dates, formats, trees.
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/values/Format.h"

#include <iostream>

using namespace norvik;

int main() {
  const NSString name = NSString("Zo\u00EB") + " Smith";
  std::cout << name.substringToIndex(3) << ", " << name.componentsSeparatedBy(" ").size() << " parts\n";

  const std::string bytes = name.utf8();  // for other libraries
  std::cout << bytes.size() << " bytes\n";

  const Decimal net = 2500.00_dec - (2500.00_dec * 0.0765_dec).round(2);
  std::cout << stringWithFormat("%@ gets %@ for %d hours", name, net, 38) << "\n";

  auto german = make<NSNumberFormatter>();
  german->setLocale(NSLocale::localeWithLocaleIdentifier("de_DE"));
  german->setFormat("#,##0.00");
  std::cout << german->stringFromNumber(net) << "\n";

  std::cout << nk_addMonths(nk_dateWithYear(2024, 1, 31), 1) << "\n";

  auto tree = NSDictionary::dictionaryWith({{"employer", NSDictionary::dictionaryWith({{"name", "Acme"}})}});
  std::cout << tree->valueForKeyPath("employer.name") << "\n";
  const Ref<NSData> data = NSKeyedArchiver::archivedDataWithRootObject(tree);
  std::cout << std::boolalpha << (NSKeyedUnarchiver::unarchiveObjectWithData(*data) == Value(tree)) << "\n";
}

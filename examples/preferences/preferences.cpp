// examples/preferences/preferences.cpp - the code of docs/preferences.md. The first argument is the file to use.
#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "NorvikCore/platform/values/Decimal_literal.h"

#include <iostream>

using namespace norvik;

int main(int argc, char** argv) {
  // A program uses NSUserDefaults::standardUserDefaults(); this one has a database of its own.
  const auto defaults = argc > 1 ? make<NSUserDefaults>(argv[1]) : ref(NSUserDefaults::standardUserDefaults());

  defaults->registerDefaults(*NSDictionary::dictionaryWith({{"payDay", 28}, {"currency", "GBP"}}));
  std::cout << defaults->integerForKey("payDay") << " " << defaults->stringForKey("currency").value_or("none") << "\n";

  defaults->setInteger(31, "payDay");
  defaults->setObject(0.0765_dec, "rate");
  std::cout << defaults->integerForKey("payDay") << " " << defaults->objectForKey("rate").as<Decimal>() << "\n";

  defaults->removeObjectForKey("payDay");
  std::cout << defaults->integerForKey("payDay") << "\n";
}

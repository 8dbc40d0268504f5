// examples/text/text.cpp - the code of docs/text.md.
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSMutableString.h"
#include "NorvikCore/platform/values/NSString.h"
#include "NorvikCore/platform/values/NSString_fmt.h"

#include <iostream>
#include <string>

using namespace norvik;

int main() {
  NSString name = "Zo\u00EB";
  name += " Smith";
  std::cout << name << ": " << name.size() << " units, " << name.view().size() << " bytes\n";
  std::cout << name.substringFromIndex(4) << ", " << name.substringToIndex(3) << "\n";
  if (name.containsString("smith")) std::cout << "not printed: a search looks at case\n";
  std::cout << name.rangeOfString("smith", NSCaseInsensitiveSearch).location << "\n";

  int capitals = 0;
  for (const char32_t point : name.codePoints()) capitals += point >= 'A' && point <= 'Z' ? 1 : 0;
  std::cout << capitals << " capitals\n";

  NSMutableString line;
  for (const NSString& part : NSString("20;00;00").componentsSeparatedBy(";")) {
    if (!line.empty()) line.appendString("-");
    line.appendString(part);
  }
  std::cout << stringWithFormat("%@ has the sort code %@", name, line.string()) << "\n";

  const std::string forOtherCode = name.utf8();
  std::cout << forOtherCode.size() << "\n";

  // Text in UTF-16 converts; a view of the stored bytes is explicit and costs nothing.
  const NSString town = u"Leeds";
  std::cout << std::string_view(town).substr(0, 3) << fmt::format("|{:.>8}|{:<6}|", town, name.substringToIndex(3))
            << "\n";
}

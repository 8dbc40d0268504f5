// examples/decisions/units.cpp - docs/decisions/units.md: lengths, ranges and the key "length" count UTF-16 units.
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/values/NSString.h"

#include <algorithm>
#include <iostream>

using namespace norvik;

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
};

int main() {
  const NSString name = "Zo\u00EB \U0001F600";  // ë is one unit and two bytes; the face is two units and four bytes
  const auto points = name.codePoints();
  std::cout << name.size() << " units, " << name.view().size() << " bytes, "
            << std::distance(points.begin(), points.end()) << " characters\n";

  auto employee = make<Employee>();
  employee->setName(name);
  std::cout << employee->valueForKeyPath("name.length") << "\n";  // units too

  const NSRange face = name.rangeOfString("\U0001F600");
  std::cout << face.location << " " << face.length << "\n";
  std::cout << std::boolalpha << name.substringToIndex(5).isWellFormed() << "\n";  // half of the face
  std::cout << name.substringToIndex(face.location) << "\n";
}

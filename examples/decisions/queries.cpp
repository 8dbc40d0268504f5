// examples/decisions/queries.cpp - docs/decisions/queries.md: linq_take of all elements is empty, and so is a range
// from 2 to 2.
#include "NorvikCore/linq/LINQ.h"

#include <algorithm>
#include <iostream>

using namespace norvik;

int main() {
  const Ref<NSArray> names = NSArray::arrayWithObjects("Sian", "Ann", "Bob");
  std::cout << linq_take(*names, 2)->count() << " " << linq_take(*names, 3)->count() << " "
            << linq_take(*names, 4)->count() << "\n";
  std::cout << linq_from(1, 3)->count() << " " << linq_from(2, 2)->count() << "\n";
  std::cout << linq_intersect(*names, NSArray::array())->count() << "\n";

  // As many as there are, up to four.
  const std::size_t count = std::min<std::size_t>(4, names->count());
  std::cout << names->subarrayWithRange({0, count})->count() << "\n";
}

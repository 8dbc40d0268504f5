// examples/tutorial/step1.cpp - docs/tutorial.md: the first program.
#include "NorvikCore/platform/values/Decimal.h"

#include <iostream>

using namespace norvik;

int main() {
  const Decimal gross = 2500.00_dec;
  const Decimal pension = gross * 0.05_dec;
  std::cout << "gross " << gross << ", pension " << pension << ", net " << gross - pension << "\n";
}

// examples/version/version.cpp - docs/packages.md: the version of the headers and of the library.
#include "NorvikCore/version.h"

#include <iostream>

static_assert(NORVIKCORE_VERSION_AT_LEAST(0, 2, 0), "co_await of a queue is new in 0.2.0");

int main() {
  std::cout << "compiled with " << NORVIKCORE_VERSION_STRING << ", runs with " << norvik::libraryVersion() << "\n";
}

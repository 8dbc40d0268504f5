// A program outside the repository that includes all installed headers and calls the shared library.
#include <cstdio>

#include "every_header.h"

int main() {
  try {
    throw norvik::NSException("NSRangeException", "caught across the library's border");
  } catch (const std::exception& error) {
    std::printf("%s\n", error.what());
  }
  return 0;
}

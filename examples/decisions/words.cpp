// examples/decisions/words.cpp - docs/decisions/words.md: words for zero, and the domain of a URL.
#include "NorvikCore/Categories/NSString+Norvik.h"
#include "NorvikCore/Categories/NSURL+NorvikCore.h"
#include "NorvikCore/platform/values/Format.h"

#include <cstdint>
#include <iostream>

using namespace norvik;

int main() {
  for (const std::uint64_t count : {0U, 1U, 2U})
    std::cout << stringWithFormat("%u payslip%@ %@ ready\n", count, nk_pluralSuffix(count), nk_pluralIs(count));
  std::cout << nk_domain(*nk_URLWithString("https://www.example.co.uk/")).value_or("none") << "\n";
}

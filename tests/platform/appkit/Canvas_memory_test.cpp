// Drawing when memory runs out while the file is written. In a program of its own, because it replaces operator new.
#include "NorvikCore/platform/appkit/PDFDocument.h"

#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local bool isMemoryShort = false;

}  // namespace

// Not inlined, because the compiler would otherwise see free() applied to memory from operator new.
[[gnu::noinline]] void* operator new(std::size_t size) {
  constexpr std::size_t large = 2048;
  void* const memory = isMemoryShort && size > large ? nullptr : std::malloc(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

using namespace norvik;

TEST(PDFDocumentMemory, AFileThatCouldNotBeKeptRaisesEachTimeItIsAskedFor) {
  PDFDocument document;
  document.drawText(*NSAttributedString::attributedStringWithString("Net pay 1,234.50"), {56, 56});
  isMemoryShort = true;
  EXPECT_RAISES((void)document.data(), "NSGenericException");
  isMemoryShort = false;
  EXPECT_RAISES((void)document.data(), "NSGenericException");
}

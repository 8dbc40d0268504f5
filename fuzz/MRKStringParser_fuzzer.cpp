// fuzz/MRKStringParser_fuzzer.cpp - marked-up text of any units. Text, attributes, messages and the calls of closures
// equal those of a simple model of the language.
#include "tests/support/MarkupComparison.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

/// Most bytes stand for themselves; some become tags, spaces and surrogate halves, so that few bytes make deep markup.
std::u16string sourceOf(const std::uint8_t* data, std::size_t size) {
  static constexpr const char16_t* words[] = {u"<b>",  u"</b>",  u"<i>",      u"</I>",     u"<a x=", u"<a ",
                                              u"</a>", u"\x01<", u"='",       u"\"",       u"<?>",   u"</?>",
                                              u"\n",   u"\t",    u"<\u00C9>", u"</\u00E9>"};
  static constexpr char16_t units[] = {0xD83D, 0xDCB7, 0x00E9, 0x00A0, 0x2028, 0x0130, 0x03A3, 0x0001};
  std::u16string source;
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] < 0x80) {
      source += static_cast<char16_t>(data[i]);
    } else if (data[i] < 0xC0) {
      source += words[data[i] % 16];
    } else {
      source += units[data[i] % 8];
    }
  }
  return source;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 512) return 0;
  const std::string difference = norvik::test::differenceFromModel(sourceOf(data, size));
  if (!difference.empty()) {
    std::fprintf(stderr, "%s\n", difference.c_str());
    std::abort();
  }
  return 0;
}

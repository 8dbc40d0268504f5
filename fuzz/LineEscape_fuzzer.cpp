// fuzz/LineEscape_fuzzer.cpp - texts of a log line.
//
// - Any bytes are escaped as a text. The result is one printable line of UTF-8, from which the text can be read back.
// - Any bytes are read as an escaped text. The text that was read is escaped and read again, and is unchanged.
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/platform/values/Utf8.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

using namespace norvik;

void require(bool holds, const char* what, const NSString& text) {
  if (holds) return;
  std::fprintf(stderr, "%s: \"%s\"\n", what, text.utf8().c_str());
  std::abort();
}

bool isPrintable(char32_t point) {
  return point >= 0x20 && !(point >= 0x7f && point <= 0x9f) && point != 0x2028 && point != 0x2029 &&
         !(point >= 0x202a && point <= 0x202e) && !(point >= 0x2066 && point <= 0x2069);
}

void escapeAndBack(const NSString& text) {
  const NSString line = DDLogLineFormatter::escaped(text);
  require(line.isWellFormed(), "the line is not UTF-8", text);
  std::string_view rest = line.view();
  while (!rest.empty()) {
    const utf8::Character character = utf8::decode(rest.data());
    require(isPrintable(character.point), "a character breaks the line", text);
    rest.remove_prefix(character.size);
  }
  require(DDLogLineFormatter::unescaped(line) == text, "the text does not come back", text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const NSString text = NSString::fromBytes({reinterpret_cast<const char*>(data), size});
  escapeAndBack(text);
  if (const auto given = DDLogLineFormatter::unescaped(text)) escapeAndBack(*given);
  // Cut in the middle, so that surrogate halves may be alone.
  if (text.length() > 1) {
    escapeAndBack(text.substringToIndex(text.length() / 2));
    escapeAndBack(text.substringFromIndex(text.length() / 2));
  }
  return 0;
}

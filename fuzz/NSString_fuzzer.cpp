// fuzz/NSString_fuzzer.cpp - texts from any bytes, and any changes of them. A text gives back its bytes, and cutting,
// searching, ordering and editing give the same results as a std::u16string.
#include "NorvikCore/platform/values/NSMutableString.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace norvik;
using Units = std::u16string;

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

/// Removes numbers and bytes from the front of the input; returns zeros when the input is used up.
struct Input {
  std::string_view bytes;

  std::size_t upTo(std::size_t most) {
    std::size_t value = 0;
    for (int i = 0; i < 2 && !bytes.empty(); ++i, bytes.remove_prefix(1))
      value = value << 8 | utf8::byteAt(bytes.data());
    return value % (most + 1);
  }
  std::string_view take(std::size_t most) {
    const std::string_view taken = bytes.substr(0, upTo(most));
    bytes.remove_prefix(taken.size());
    return taken;
  }
  /// Any units, including lone surrogate halves.
  Units units(std::size_t most) {
    Units units;
    for (const std::string_view taken = take(2 * most); const char byte : taken) {
      const auto value = static_cast<char16_t>(utf8::byteAt(&byte));
      const bool joins = units.size() % 2 == 1 && value >= 0xC0;
      units += static_cast<char16_t>(value < 0x80 ? value : (joins ? 0xDC00 : 0xD800) + value);
    }
    return units;
  }
};

void bytesComeBack(std::string_view bytes) {
  const NSString text = NSString::fromBytes(bytes);
  require(text.bytes() == bytes, "bytes() is not what the text was made of");
  require(NSString::fromUtf8(bytes).has_value() == text.isWellFormed(), "strict and lenient reading differ");
  require(utf8::isValid(text.utf8()), "utf8() is no UTF-8");
  const Units model = text.toUtf16();
  require(model.size() == text.length(), "length() is not the number of units");
  require(NSString::fromUtf16(model) == text, "the units do not give the text back");
  for (std::size_t i = 0; i < model.size(); ++i) require(text.characterAtIndex(i) == model[i], "characterAtIndex()");
}

void sameAsTheModel(Input input) {
  const Units a = input.units(400), b = input.units(8);
  const NSString text = NSString::fromUtf16(a), other = NSString::fromUtf16(b);
  require(text.toUtf16() == a, "the units do not come back");
  require((text <=> other) == (a <=> b) && (text == other) == (a == b), "order");
  const std::size_t cut = input.upTo(a.size());
  require(text.substringToIndex(cut) + text.substringFromIndex(cut) == text, "the pieces do not join");
  require(text.substringFromIndex(cut).toUtf16() == a.substr(cut), "substringFromIndex()");
  if (b.empty()) return;
  const std::size_t first = a.find(b), last = a.rfind(b);
  const NSRange forwards = text.rangeOfString(other), backwards = text.rangeOfString(other, NSBackwardsSearch);
  require(forwards.location == (first == Units::npos ? NSNotFound : first), "the first occurrence");
  require(backwards.location == (last == Units::npos ? NSNotFound : last), "the last occurrence");
}

void editing(Input input) {
  Units model;
  NSMutableString text;
  while (!input.bytes.empty()) {
    const Units added = input.units(12);
    const std::size_t at = input.upTo(model.size()), length = input.upTo(model.size() - at);
    model.replace(at, length, added);
    text.replaceCharactersInRange({at, length}, NSString::fromUtf16(added));
    require(text.string().toUtf16() == model, "the builder differs from the model");
    require(text.string() == NSString::fromUtf16(model), "the same units in other bytes");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 4096) return 0;
  const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 3) {
    case 0:
      bytesComeBack(rest);
      break;
    case 1:
      sameAsTheModel({rest});
      break;
    default:
      editing({rest});
      break;
  }
  return 0;
}

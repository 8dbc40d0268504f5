#include "NorvikCore/markup/internal/MarkupScan.h"

#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/Utf8.h"

#include <algorithm>
#include <string>

namespace norvik::detail {
namespace {

constexpr char lowered(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

NSString shown(std::string_view name) { return name.data() ? textOfBytes(name) : NSString("(null)"_ns); }

}  // namespace

NSString textOfBytes(std::string_view bytes) {
  if (utf8::isValid(bytes)) return NSString(bytes);
  std::u16string units;
  for (std::size_t at = 0; at < bytes.size();) {
    const utf8::Character character = utf8::decode(bytes.data() + at);
    at += character.size;
    if (character.point < 0x10000) {
      units += static_cast<char16_t>(character.point);
    } else {
      units += {utf8::highHalf(character.point), utf8::lowHalf(character.point)};
    }
  }
  return NSString::fromUtf16(units);
}

bool isEndedBy(std::string_view name, std::string_view ending) {
  ending.remove_prefix(1);
  if (name == ending) return true;
  if (utf8::isAscii(name) && utf8::isAscii(ending)) {
    return std::ranges::equal(name, ending, {}, lowered, lowered);
  }
  return lowercaseString(textOfBytes(name)) == lowercaseString(textOfBytes(ending));
}

NSString wrongEnding(std::string_view ending, std::string_view expected) {
  return stringWithFormat("String had ending tag %@ when we expected ending tag %@ or new tag", shown(ending),
                          shown(expected));
}

NSString stillOpen(const std::vector<std::string_view>& names) {
  std::string list;
  for (const std::string_view& name : names) {
    if (&name != &names.front()) list += ", ";
    list += name.data() ? name : "(null)";
  }
  return stringWithFormat("Reached end of string with %lu tags remaining (%@)", names.size(), textOfBytes(list));
}

}  // namespace norvik::detail

#include "NorvikCore/platform/appkit/internal/TextStyle.h"

#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/foundation/NSCharacterClass.h"
#include "NorvikCore/platform/values/Utf8.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace norvik::detail {

namespace {

constexpr char32_t replacement = 0xFFFD;

Ref<NSColor> colorIn(const NSDictionary& attributes, const NSString& name) {
  const Value value = attributes.objectForKey(name);
  NSColor* const color = value.object<NSColor>();
  return color != nullptr && color->alphaComponent() > 0 ? ref(*color) : nullptr;
}

char lowered(char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool hasScheme(std::string_view address, std::string_view scheme) {
  return address.size() > scheme.size() && address[scheme.size()] == ':' &&
         std::equal(scheme.begin(), scheme.end(), address.begin(), [](char a, char b) { return a == lowered(b); });
}

/// Writes every byte except visible ASCII as '%' and two digits, so that the URL cannot end the text around it.
std::string encoded(std::string_view address) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string result;
  for (const char c : address) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > 0x20 && byte < 0x7F) {
      result += c;
    } else {
      result += {'%', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return result;
}

std::string addressIn(const NSDictionary& attributes) {
  const Value value = attributes.objectForKey(NSLinkAttributeName);
  if (!value.isString()) return {};
  const std::string address = value.string()->utf8();
  for (const char* scheme : {"http", "https", "mailto"}) {
    if (hasScheme(address, scheme)) return encoded(address);
  }
  return {};
}

}  // namespace

TextStyle styleOf(const NSDictionary& attributes) {
  TextStyle style;
  const Value font = attributes.objectForKey(NSFontAttributeName);
  if (auto* const found = font.object<NSFont>()) style.font = ref(*found);
  style.foreground = colorIn(attributes, NSForegroundColorAttributeName);
  style.background = colorIn(attributes, NSBackgroundColorAttributeName);
  const Value underline = attributes.objectForKey(NSUnderlineStyleAttributeName);
  style.isUnderlined = underline.isNumber() && underline.as<NSNumber>() != NSNumber(0);
  style.address = addressIn(attributes);
  return style;
}

int byteOf(double component) { return static_cast<int>(std::lround(component * 255)); }

LineBreaks::Kind LineBreaks::next(char32_t character) {
  const bool isRest = isBehindReturn_ && character == '\n';
  isBehindReturn_ = character == '\r';
  if (isRest) return Kind::Rest;
  return isLineBreak(character) ? Kind::Break : Kind::None;
}

void appendCharacter(std::string& result, char32_t character) {
  const utf8::Encoded bytes = utf8::encode(utf8::isHalf(character) ? replacement : character);
  result.append(bytes.bytes, bytes.size);
}

}  // namespace norvik::detail

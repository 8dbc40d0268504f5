#include "NorvikCore/Categories/NSString+Norvik.h"

#include "NorvikCore/Categories/internal/WordWrap.h"
#include "NorvikCore/platform/appkit/NSStringDrawing.h"
#include "NorvikCore/platform/foundation/NSCharacterClass.h"
#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/values/NSMutableString.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace norvik {
namespace {

NSString joined(const std::vector<NSString>& parts, const NSString& separator) {
  NSMutableString text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text.appendString(separator);
    text.appendString(parts[i]);
  }
  return text.string();
}

bool isBlankOrLineBreak(char32_t point) { return isWhitespace(point) || isLineBreak(point); }

std::vector<NSString> linesOf(const NSString& string, double maxWidth, const NSFont& font) {
  return detail::splitToWidth(string, maxWidth, widthInFont(" "_ns, font),
                              [&](const NSString& word) { return widthInFont(word, font); });
}

/// The text without one line break at its end; CR LF is one line break.
std::string_view withoutLineBreak(std::string_view text) {
  if (text.ends_with("\r\n")) return text.substr(0, text.size() - 2);
  std::size_t last = text.size();
  while (last > 0 && utf8::isContinuation(text[last - 1])) --last;
  return last > 0 && isLineBreak(utf8::decode(text.data() + last - 1).point) ? text.substr(0, last - 1) : text;
}

}  // namespace

bool isEmpty(const NSString& string) { return string.stringByTrimming().empty(); }

bool isNilOrEmpty(const std::optional<NSString>& string) { return !string || isEmpty(*string); }

NSString sqlLiteEscapeString(const NSString& string) {
  return "'" + string.stringByReplacingOccurrencesOfString("'"_ns, "''"_ns) + "'";
}

bool isValidActionSelectorName(const NSString& string) {
  const std::string_view text = string.view();
  if (text.size() < 2 || text.find(':') != text.size() - 1) return false;
  return std::ranges::none_of(string.codePoints(), isBlankOrLineBreak);
}

NSString nk_uppercaseFirstCharacter(const NSString& string) {
  return capitalizedString(string.substringToIndex(1)) + string.substringFromIndex(1);
}

NSString nk_lowercaseFirstCharacter(const NSString& string) {
  return lowercaseString(string.substringToIndex(1)) + string.substringFromIndex(1);
}

NSString nk_lowercaseFirstCharactersSeparatedByString(const NSString& string, const NSString& separator) {
  std::vector<NSString> parts = string.componentsSeparatedBy(separator);
  for (NSString& part : parts) part = nk_lowercaseFirstCharacter(part);
  return joined(parts, separator);
}

NSString nk_objCKeyPath(const NSString& string) { return nk_lowercaseFirstCharactersSeparatedByString(string, "."_ns); }

NSString nk_sanitizeFileNameString(const NSString& string, const NSString& replacement) {
  constexpr std::string_view refused = ".:/\\?%*|\"<>";
  const bool isPlain = string.view().find_first_of(refused) == std::string_view::npos;
  if (isPlain) return string.stringByTrimming();
  NSMutableString text;
  for (const char32_t point : string.codePoints()) {
    if (point < 0x80 && refused.find(static_cast<char>(point)) != std::string_view::npos) {
      text.appendString(replacement);
    } else {
      text.appendCodePoint(point);
    }
  }
  return text.string().stringByTrimming();
}

NSString nk_sanitizeFileNameExtString(const NSString& string, const NSString& replacement) {
  const NSString extension = nk_sanitizeFileNameString(string.pathExtension(), replacement);
  const NSString name = nk_sanitizeFileNameString(string.stringByDeletingPathExtension(), replacement);
  return extension.empty() ? name : name.stringByAppendingPathExtension(extension);
}

NSString nk_imageMimeTypeFromPathExtension(const NSString& path) {
  const NSString extension = lowercaseString(path.pathExtension());
  if (extension == "jpg" || extension == "jpeg") return "image/jpg"_ns;
  if (extension == "png") return "image/png"_ns;
  if (extension == "gif") return "image/gif"_ns;
  return "application/octet-stream"_ns;
}

NSString nk_pluralIs(std::uint64_t count) { return count < 2 ? "is"_ns : "are"_ns; }

NSString nk_pluralSuffix(std::uint64_t count) { return count < 2 ? ""_ns : "s"_ns; }

bool nk_isXml(const NSString& string) { return string.rangeOfString("<?xml"_ns, NSCaseInsensitiveSearch).length != 0; }

bool nk_isJson(const NSString& string) {
  if (!string.view().starts_with('{')) return false;
  std::string_view rest = string.view().substr(1);
  while (!rest.empty()) {
    const utf8::Character first = utf8::decode(rest.data());
    if (!isBlankOrLineBreak(first.point)) break;
    rest.remove_prefix(first.size);
  }
  if (!rest.starts_with('"')) return false;
  rest = withoutLineBreak(rest.substr(1));
  if (!rest.ends_with('}')) return false;
  for (std::size_t at = 0; at < rest.size();) {
    const utf8::Character character = utf8::decode(rest.data() + at);
    if (isLineBreak(character.point)) return false;
    at += character.size;
  }
  return true;
}

NSString nk_stringFromCamelCase(const NSString& string) {
  NSMutableString text;
  for (const char32_t point : string.codePoints()) {
    if (point < 0x10000 && isUppercaseLetter(point)) text.appendString(" ");
    text.appendCodePoint(point);
  }
  return text.string();
}

NSString nk_stringByReplacingFirstOccurrenceOfString(const NSString& string, const NSString& occurrence,
                                                     const NSString& withString) {
  const NSRange found = string.rangeOfString(occurrence);
  if (found.length == 0) return string;
  return string.substringToIndex(found.location) + withString + string.substringFromIndex(NSMaxRange(found));
}

Ref<NSArray> nk_splitStringMaxWidth(const NSString& string, double maxWidth, const NSFont& font) {
  const std::vector<NSString> lines = linesOf(string, maxWidth, font);
  return NSArray::arrayFrom(lines);
}

NSString nk_wrapStringMaxWidth(const NSString& string, double maxWidth, const NSFont& forFont) {
  return joined(linesOf(string, maxWidth, forFont), "\n"_ns);
}

Ref<NSAttributedString> nk_addAttributes(const NSString& string, const Ref<NSDictionary>& attributes) {
  return NSAttributedString::attributedStringWithString(string, attributes);
}

}  // namespace norvik

#include "NorvikCore/platform/appkit/AttributedStringHTML.h"

#include "NorvikCore/platform/appkit/internal/TextStyle.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace norvik {

namespace {

using detail::LineBreaks;
using detail::TextStyle;

void appendEscaped(std::string& result, char32_t character) {
  switch (character) {
    case '&':
      result += "&amp;";
      break;
    case '<':
      result += "&lt;";
      break;
    case '>':
      result += "&gt;";
      break;
    case '"':
      result += "&quot;";
      break;
    case '\'':
      result += "&#39;";
      break;
    default: {
      constexpr char32_t unknown = 0xFFFD;
      const bool isControl = (character < 0x20 && character != '\t') || (0x7F <= character && character < 0xA0);
      detail::appendCharacter(result, isControl ? unknown : character);
    }
  }
}

std::string escaped(std::string_view ascii) {
  std::string result;
  for (const char c : ascii) appendEscaped(result, static_cast<unsigned char>(c));
  return result;
}

void appendText(std::string& result, char32_t character, LineBreaks& lines) {
  switch (lines.next(character)) {
    case LineBreaks::Kind::Break:
      result += "<br>";
      break;
    case LineBreaks::Kind::Rest:
      break;
    case LineBreaks::Kind::None:
      appendEscaped(result, character);
  }
}

/// A family name as a CSS string, escaped for an HTML attribute. A character that could end the string is written as
/// its number.
std::string quotedFamily(const NSString& family) {
  std::string result = "&#39;";
  for (const char32_t character : family.codePoints()) {
    if (character < 0x20 || character == 0x7F || character == '\'' || character == '\\') {
      char number[8];
      const auto end = std::to_chars(number, std::end(number), static_cast<unsigned>(character), 16).ptr;
      result.append("\\").append(number, end).append(" ");
    } else {
      appendEscaped(result, character);
    }
  }
  return result + "&#39;";
}

/// With at most three decimal places.
std::string sizeText(double size) {
  constexpr double least = 0.001, greatest = 10000;
  char text[32];
  const auto end = std::to_chars(text, std::end(text), std::clamp(size, least, greatest), std::chars_format::fixed, 3);
  std::string result(text, end.ptr);
  result.erase(result.find_last_not_of('0') + 1);
  if (result.back() == '.') result.pop_back();
  return result;
}

/// CSS declarations, separated by semicolons and escaped for an attribute.
std::string cssOf(const TextStyle& style, const NSFont* surrounding) {
  std::string css;
  const auto add = [&](const char* property, const std::string& value) {
    if (!css.empty()) css += ';';
    css.append(property).append(":").append(value);
  };
  if (const NSFont* font = style.font.get()) {
    const bool isBold = surrounding != nullptr && surrounding->isBold();
    const bool isItalic = surrounding != nullptr && surrounding->isItalic();
    if (surrounding == nullptr || font->familyName() != surrounding->familyName()) {
      add("font-family", quotedFamily(font->familyName()));
    }
    if (surrounding == nullptr) {
      add("font-size", sizeText(font->pointSize()) + "pt");
    } else if (font->pointSize() != surrounding->pointSize()) {
      add("font-size", sizeText(font->pointSize() / surrounding->pointSize()) + "em");
    }
    if (font->isBold() != isBold) add("font-weight", font->isBold() ? "bold" : "normal");
    if (font->isItalic() != isItalic) add("font-style", font->isItalic() ? "italic" : "normal");
  }
  if (style.foreground) add("color", style.foreground->description().str());
  if (style.background) add("background-color", style.background->description().str());
  if (style.isUnderlined) add("text-decoration", "underline");
  return css;
}

/// The tags around a text of one style; both empty if it needs none.
struct Tags {
  std::string before, behind;
};

Tags tagsOf(const TextStyle& style, const NSFont* surrounding) {
  const std::string css = cssOf(style, surrounding);
  const std::string styled = css.empty() ? "" : " style=\"" + css + "\"";
  if (!style.address.empty()) return {"<a href=\"" + escaped(style.address) + "\"" + styled + ">", "</a>"};
  if (!css.empty()) return {"<span" + styled + ">", "</span>"};
  return {};
}

}  // namespace

std::string htmlText(const NSAttributedString& text, const NSFont* surroundingFont) {
  std::string result;
  Tags open;
  LineBreaks lines;
  const NSString string = text.string();
  for (const auto& [range, attributes] : text) {
    Tags wanted = tagsOf(detail::styleOf(*attributes), surroundingFont);
    if (wanted.before != open.before) {
      result += open.behind + wanted.before;
      open = std::move(wanted);
    }
    for (const char32_t character : string.substringWithRange(range).codePoints()) {
      appendText(result, character, lines);
    }
  }
  return result + open.behind;
}

std::string htmlText(const NSString& text) {
  std::string result;
  LineBreaks lines;
  for (const char32_t character : text.codePoints()) appendText(result, character, lines);
  return result;
}

}  // namespace norvik

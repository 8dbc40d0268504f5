#include "NorvikCore/platform/appkit/AttributedStringTerminal.h"

#include "NorvikCore/platform/appkit/internal/TextStyle.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <limits>

namespace norvik {

namespace {

using detail::LineBreaks;
using detail::TextStyle;

struct Rgb {
  int red, green, blue;
};

Rgb rgbOf(const NSColor& color) {
  return {detail::byteOf(color.redComponent()), detail::byteOf(color.greenComponent()),
          detail::byteOf(color.blueComponent())};
}

int distance(const Rgb& a, const Rgb& b) {
  const int red = a.red - b.red, green = a.green - b.green, blue = a.blue - b.blue;
  return red * red + green * green + blue * blue;
}

template <std::size_t n>
int nearest(const Rgb& wanted, const std::array<Rgb, n>& colors) {
  const auto closer = [&](const Rgb& a, const Rgb& b) { return distance(wanted, a) < distance(wanted, b); };
  return static_cast<int>(std::min_element(colors.begin(), colors.end(), closer) - colors.begin());
}

constexpr std::array<Rgb, 16> ansiColors = {{{0, 0, 0},
                                             {205, 0, 0},
                                             {0, 205, 0},
                                             {205, 205, 0},
                                             {0, 0, 238},
                                             {205, 0, 205},
                                             {0, 205, 205},
                                             {229, 229, 229},
                                             {127, 127, 127},
                                             {255, 0, 0},
                                             {0, 255, 0},
                                             {255, 255, 0},
                                             {92, 92, 255},
                                             {255, 0, 255},
                                             {0, 255, 255},
                                             {255, 255, 255}}};

constexpr int colorsBelowCube = 16;

/// The colours from 16 on: a cube of six steps for each component, then greys.
constexpr std::array<Rgb, 240> indexedColors() {
  std::array<Rgb, 240> colors{};
  constexpr int steps[] = {0, 95, 135, 175, 215, 255};
  std::size_t i = 0;
  for (const int red : steps) {
    for (const int green : steps) {
      for (const int blue : steps) colors[i++] = {red, green, blue};
    }
  }
  for (int grey = 8; i < colors.size(); grey += 10) colors[i++] = {grey, grey, grey};
  return colors;
}

/// The parameters that set a colour of the text or of its background.
std::string colorParameters(const NSColor& color, TerminalColors colors, bool isBackground) {
  static constexpr std::array<Rgb, 240> indexed = indexedColors();
  const Rgb rgb = rgbOf(color);
  const std::string extended = isBackground ? "48;" : "38;";
  if (colors == TerminalColors::Direct) {
    return extended + "2;" + std::to_string(rgb.red) + ";" + std::to_string(rgb.green) + ";" + std::to_string(rgb.blue);
  }
  if (colors == TerminalColors::Ansi256) {
    return extended + "5;" + std::to_string(colorsBelowCube + nearest(rgb, indexed));
  }
  constexpr int normal = 30, bright = 90, background = 10, brightFrom = 8;
  const int index = nearest(rgb, ansiColors);
  const int first = index < brightFrom ? normal : bright - brightFrom;
  return std::to_string(first + index + (isBackground ? background : 0));
}

/// The sequences before and after a text of one style; both empty if it needs none.
struct Sequences {
  std::string before, behind;
};

Sequences sequencesOf(const TextStyle& style, TerminalColors colors, TerminalLinks links) {
  Sequences result;
  if (colors == TerminalColors::Plain) return result;
  if (links == TerminalLinks::Written && !style.address.empty()) {
    result.before = "\033]8;;" + style.address + "\033\\";
    result.behind = "\033]8;;\033\\";
  }
  std::string parameters;
  const auto add = [&](const std::string& parameter) { parameters += (parameters.empty() ? "" : ";") + parameter; };
  if (style.font && style.font->isBold()) add("1");
  if (style.font && style.font->isItalic()) add("3");
  if (style.isUnderlined) add("4");
  if (colors != TerminalColors::Monochrome) {
    if (style.foreground) add(colorParameters(*style.foreground, colors, false));
    if (style.background) add(colorParameters(*style.background, colors, true));
  }
  if (!parameters.empty()) {
    result.before += "\033[" + parameters + "m";
    result.behind.insert(0, "\033[0m");
  }
  return result;
}

void appendVisible(std::string& result, char32_t character) {
  constexpr char32_t pictures = 0x2400, pictureOfDelete = 0x2421, unknown = 0xFFFD;
  if (character < 0x20 && character != '\t') {
    detail::appendCharacter(result, pictures + character);
  } else if (character == 0x7F) {
    detail::appendCharacter(result, pictureOfDelete);
  } else {
    detail::appendCharacter(result, 0x80 <= character && character < 0xA0 ? unknown : character);
  }
}

}  // namespace

std::string terminalText(const NSAttributedString& text, TerminalColors colors, TerminalLinks links) {
  std::string result;
  Sequences set;  // the sequences in effect
  const auto reset = [&] {
    result += set.behind;
    set = {};
  };
  LineBreaks lines;
  const NSString string = text.string();
  for (const auto& [range, attributes] : text) {
    const Sequences wanted = sequencesOf(detail::styleOf(*attributes), colors, links);
    for (const char32_t character : string.substringWithRange(range).codePoints()) {
      const LineBreaks::Kind lineBreak = lines.next(character);
      if (lineBreak == LineBreaks::Kind::Rest) continue;
      if (lineBreak == LineBreaks::Kind::Break) {
        reset();
        result += '\n';
        continue;
      }
      if (set.before != wanted.before) {
        reset();
        result += wanted.before;
        set = wanted;
      }
      appendVisible(result, character);
    }
  }
  reset();
  return result;
}

}  // namespace norvik

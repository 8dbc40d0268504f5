#include "DocumentHTML.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <numeric>
#include <vector>

#include "NorvikCore/platform/appkit/AttributedStringHTML.h"
#include "NorvikCore/platform/foundation/TerminalCells.h"

namespace payrun {

using namespace norvik;

namespace {

// The page forbids all scripts and all loading, whatever its content is.
constexpr const char* head = R"(<!DOCTYPE html>
<html lang="en-GB">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="referrer" content="no-referrer">
)";

constexpr const char* style = R"(<style>
:root { color-scheme: light; }
* { box-sizing: border-box; }
body { margin: 0; padding: 1.25rem; background: #fff; color: #1c1f24; line-height: 1.4;
  font-family: system-ui, "Noto Sans", "DejaVu Sans", sans-serif; font-size: 0.9375rem; }
main { max-width: 48rem; margin: 0 auto; }
p { margin: 0; overflow-wrap: anywhere; min-height: 0.7em; unicode-bidi: plaintext; text-align: left; }
.right { text-align: right; }
hr { border: 0; border-top: 1px solid #c9ced6; margin: 0.6em 0; }
.wide { overflow-x: auto; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
table.full { width: 100%; }
td, th { padding: 0.2em 0 0.2em 1em; vertical-align: top; text-align: left; font-weight: normal;
  unicode-bidi: plaintext; }
td.long, th.long { overflow-wrap: anywhere; }
td:first-child, th:first-child { padding-left: 0; }
td.right, th.right { text-align: right; }
tr.heading th { border-bottom: 1px solid #8a929e; padding-top: 0.7em; }
tr.rule td { border-top: 1px solid #c9ced6; }
@media (max-width: 30rem) {
  body { padding: 0.75rem; font-size: 0.875rem; }
  td, th { padding-left: 0.5em; }
}
@page { size: A4; margin: 12mm; }
@media print {
  body { padding: 0; font-size: var(--print-size); line-height: 1.25; }
  main { max-width: none; }
  td, th { padding-top: 0.12em; padding-bottom: 0.12em; }
  tr { break-inside: avoid; }
  .wide { overflow: visible; }
}
</style>
)";

/// The size of a text as a multiple of the document's font size; the largest if there are several sizes.
double sizeOf(const NSAttributedString& text, const NSFont& body) {
  double size = 1;
  for (const auto& [range, attributes] : text) {
    const Value value = (*attributes)[NSFontAttributeName];
    if (const auto* font = value.object<NSFont>()) size = std::max(size, font->pointSize() / body.pointSize());
  }
  return size;
}

/// Finds the font size for printing a document, from an estimate of its number of lines. It assumes that all letters
/// are as wide as digits, although most are narrower.
class Sheet {
 public:
  explicit Sheet(const Document& document) : document_(document) {}

  /// In steps of half a point: the largest size from 10 to 6 with which all lines fit on a sheet, or 6.
  [[nodiscard]] double printSize() const {
    constexpr double largest = 10, least = 6, step = 0.5;
    double size = largest;
    while (size > least && heightAt(size) > sheetHeight) size -= step;
    return size;
  }

 private:
  static constexpr double sheetWidth = (210 - 2 * 12) * 72 / 25.4,
                          sheetHeight = (297 - 2 * 12) * 72 / 25.4;  // in points
  static constexpr double lineHeight = 1.25, letterWidth = 0.6, emptyLine = 0.7, ruleLine = 1.2, rowGap = 0.24,
                          headingGap = 0.8, columnGap = 1.7;  // in em; columnGap in letters

  [[nodiscard]] double heightAt(double size) const {
    const double letters = sheetWidth / (size * letterWidth);
    double lines = 0;
    for (const Block& block : document_.blocks) {
      lines += std::visit([&](const auto& each) { return heightOf(each, letters); }, block);
    }
    return lines * size;
  }

  [[nodiscard]] double heightOf(const Rule&, double) const { return ruleLine; }
  [[nodiscard]] double heightOf(const Paragraph& paragraph, double letters) const {
    return paragraph.text->length() == 0 ? emptyLine : heightOf(*paragraph.text, letters);
  }
  [[nodiscard]] double heightOf(const DocumentTable& table, double letters) const {
    std::vector<double> widths;
    for (const Row& row : table.rows) {
      widths.resize(std::max(widths.size(), row.cells.size()));
      for (std::size_t i = 0; i < row.cells.size(); ++i) {
        widths[i] = std::max(widths[i], widthOf(*row.cells[i].text) + columnGap);
      }
    }
    const double share = std::min(1.0, letters / std::max(1.0, std::accumulate(widths.begin(), widths.end(), 0.0)));
    double lines = 0;
    for (const Row& row : table.rows) {
      double height = 1;
      for (std::size_t i = 0; i < row.cells.size(); ++i) {
        height = std::max(height, heightOf(*row.cells[i].text, std::max(1.0, widths[i] * share - columnGap)));
      }
      lines += height + (row.isHeading ? headingGap : rowGap);
    }
    return lines;
  }

  [[nodiscard]] double widthOf(const NSAttributedString& text) const {
    double width = 0;
    for (const NSString& line : text.string().componentsSeparatedBy("\n")) {
      width = std::max(width, static_cast<double>(terminalCells(line)));
    }
    return width * sizeOf(text, *font_);
  }
  [[nodiscard]] double heightOf(const NSAttributedString& text, double letters) const {
    const double size = sizeOf(text, *font_);
    double lines = 0;
    for (const NSString& line : text.string().componentsSeparatedBy("\n")) {
      lines += std::max(1.0, std::ceil(static_cast<double>(terminalCells(line)) * size / letters));
    }
    return lines * size * lineHeight;
  }

  const Document& document_;
  const Ref<NSFont> font_ = documentFont();
};

/// True if the text has a word that would make its column too wide for a phone. Other words are not broken.
bool hasLongWord(const NSString& text) {
  constexpr std::size_t longest = 12;
  std::size_t cells = 0;
  for (const char32_t character : text.codePoints()) {
    cells = character == ' ' || character == '\n' ? 0 : cells + terminalCells(character);
    if (cells > longest) return true;
  }
  return false;
}

class HtmlWriter {
 public:
  std::string write(const Document& document) {
    for (const Block& block : document.blocks) std::visit([this](const auto& each) { append(each); }, block);
    char size[16];
    const auto end = std::to_chars(size, std::end(size), Sheet(document).printSize()).ptr;
    return std::string(head) + "<title>" + htmlText(document.title) + "</title>\n" + style + "</head>\n<body style=\"" +
           "--print-size: " + std::string(size, end) + "pt\">\n<main>\n" + body_ + "</main>\n</body>\n</html>\n";
  }

 private:
  void append(const Paragraph& paragraph) {
    body_ += paragraph.side == Side::Right ? "<p class=\"right\">" : "<p>";
    body_ += htmlText(*paragraph.text, font_.get()) + "</p>\n";
  }

  void append(const Rule&) { body_ += "<hr>\n"; }

  void append(const DocumentTable& table) {
    std::size_t columns = 1;
    bool hasRight = false;
    for (const Row& row : table.rows) {
      columns = std::max(columns, row.cells.size());
      hasRight |= std::ranges::any_of(row.cells, [](const Cell& cell) { return cell.side == Side::Right; });
    }
    body_ += hasRight ? "<div class=\"wide\"><table class=\"full\">\n" : "<div class=\"wide\"><table>\n";
    for (const Row& row : table.rows) append(row, columns);
    body_ += "</table></div>\n";
  }

  void append(const Row& row, std::size_t columns) {
    body_ += row.isHeading ? "<tr class=\"heading\">" : row.hasRuleAbove ? "<tr class=\"rule\">" : "<tr>";
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      const Cell& cell = row.cells[i];
      const std::string name = row.isHeading ? "th" : "td";
      body_ += "<" + name;
      if (row.isHeading) body_ += " scope=\"col\"";
      const bool isRight = cell.side == Side::Right, isLong = !isRight && hasLongWord(cell.text->string());
      if (isRight || isLong) body_ += isRight ? " class=\"right\"" : " class=\"long\"";
      if (i + 1 == row.cells.size() && row.cells.size() < columns) {
        body_ += " colspan=\"" + std::to_string(columns - i) + "\"";
      }
      body_ += ">" + htmlText(*cell.text, font_.get()) + "</" + name + ">";
    }
    body_ += "</tr>\n";
  }

  const Ref<NSFont> font_ = documentFont();
  std::string body_;
};

}  // namespace

std::string htmlDocument(const Document& document) { return HtmlWriter().write(document); }

}  // namespace payrun

#include "DocumentPDF.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <utility>

#include "NorvikCore/platform/appkit/PDFDocument.h"

namespace payrun {

using namespace norvik;

namespace {

constexpr double columnGap = 12;
constexpr double paragraphGap = 2;
constexpr double ruleRoom = 10;
constexpr double narrowestColumn = 40;
constexpr double headingGap = 10;  // above headings within a table
constexpr double thickness = 0.6;
constexpr NSSize page = a4Paper;

/// The sizes of the printed parts, in points.
struct Print {
  double margin, rowGap;
  double scale;  // of the fonts
};

constexpr Print ordinary{56, 4, 1};
// A text of 10 points is hard to read at less than the last scale.
constexpr Print tighter[] = {{45, 3, 1}, {40, 2, 1}, {40, 2, 0.95}, {40, 2, 0.9}, {40, 2, 0.85}, {40, 2, 0.8}};

using Text = Ref<NSAttributedString>;

/// The same text with its fonts multiplied by the scale. Text without a font gets the document's font.
Text inFonts(const Text& text, double scale) {
  bool isComplete = scale == 1;
  for (const auto& run : *text) isComplete = isComplete && run.attributes->objectForKey(NSFontAttributeName).isObject();
  if (isComplete) return text;
  const auto complete = text->mutableCopy();
  for (const auto& run : *text) {
    const Value stated = run.attributes->objectForKey(NSFontAttributeName);
    const auto* const named = stated.object<NSFont>();
    const Ref<NSFont> font = documentFont();
    const NSFont& whole = named ? *named : *font;
    complete->addAttribute(
        NSFontAttributeName,
        make<NSFont>(whole.familyName(), whole.pointSize() * scale, whole.isBold(), whole.isItalic()), run.range);
  }
  return complete;
}

const Ref<NSColor>& lineColor() {
  static const Ref<NSColor> grey = NSColor::colorWithWhite(0.6, 1);
  return grey;
}

NSTextAlignment alignmentOf(Side side) { return side == Side::Right ? NSTextAlignmentRight : NSTextAlignmentLeft; }

double lineHeight(double scale) {
  const auto font = NSFont::fontWithName(documentFont()->familyName(), documentFont()->pointSize() * scale);
  return sizeWithAttributes("", NSDictionary::dictionaryWithObject(font, NSFontAttributeName)).height;
}

/// Removes a beginning of at most `height` from the text and returns it. It has at least one character, and ends after
/// a space if it contains one. The rest may be empty.
Text takeFitting(Text& text, double width, double height) {
  if (sizeOfText(*text, width).height <= height) return std::exchange(text, make<NSAttributedString>());
  const auto beginning = [&](NSUInteger length) { return text->attributedSubstringFromRange({0, length}); };
  NSUInteger fits = 1, tooMuch = text->length();
  while (tooMuch - fits > 1) {
    const NSUInteger middle = fits + (tooMuch - fits) / 2;
    (sizeOfText(*beginning(middle), width).height <= height ? fits : tooMuch) = middle;
  }
  const NSString string = text->string();
  NSUInteger end = fits;
  while (end > 0 && string.characterAtIndex(end - 1) != u' ' && string.characterAtIndex(end - 1) != u'\n') --end;
  if (end == 0) end = fits;
  const bool isWithinPair = (string.characterAtIndex(end - 1) & 0xFC00) == 0xD800;
  if (isWithinPair && end > 1) --end;
  const Text taken = beginning(end);
  text = text->attributedSubstringFromRange({end, text->length() - end});
  return taken;
}

struct PlacedText {
  std::size_t page;
  Text text;
  NSPoint at;
  double width;
  NSTextAlignment alignment;
};

struct PlacedLine {
  std::size_t page;
  double y;
};

/// Places blocks one below the other, on as many pages as needed.
class Pages {
 public:
  explicit Pages(const Print& print) : print_(print) {}

  [[nodiscard]] std::size_t count() const { return count_; }

  void add(const Paragraph& paragraph) {
    Text rest = inFonts(paragraph.text, print_.scale);
    do {
      const Text text = takeFitting(rest, width_, end_ - print_.margin);
      const double height = text->length() == 0 ? lineHeight(print_.scale) : sizeOfText(*text, width_).height;
      makeRoom(height);
      place(text, 0, width_, paragraph.side);
      y_ += height + paragraphGap;
    } while (rest->length() > 0);
  }

  void add(const Rule&) {
    makeRoom(ruleRoom);
    placeLine(y_ + ruleRoom / 2);
    y_ += ruleRoom;
  }

  void add(const DocumentTable& table) {
    std::vector<Row> rows = table.rows;
    for (Row& row : rows) {
      for (Cell& cell : row.cells) cell.text = inFonts(cell.text, print_.scale);
    }
    const std::vector<double> widths = columnWidths(rows);
    rows = withoutTallRows(std::move(rows), widths);
    std::vector<double> heights;
    for (const Row& row : rows) heights.push_back(rowHeight(row, widths));
    const Row* heading = nullptr;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const Row& row = rows[i];
      if (row.isHeading && i > 0) y_ += headingGap;
      if (makeRoom(heightTogether(rows, heights, i)) && heading && !row.isHeading) {
        addRow(*heading, widths, rowHeight(*heading, widths));
      }
      if (row.isHeading) heading = &row;
      addRow(row, widths, heights[i]);
    }
    y_ += print_.rowGap;
  }

  Ref<NSData> draw(const NSString& title) const {
    PDFDocument document(page, title);
    auto text = texts_.begin();
    auto line = lines_.begin();
    for (std::size_t number = 0; number < count_; ++number) {
      if (number > 0) document.beginPage();
      for (; text != texts_.end() && text->page == number; ++text) {
        document.drawText(*text->text, text->at, text->width, text->alignment);
      }
      for (; line != lines_.end() && line->page == number; ++line) {
        document.drawLine({print_.margin, line->y}, {print_.margin + width_, line->y}, thickness, *lineColor());
      }
      if (count_ > 1) drawNumber(document, number + 1);
    }
    return document.data();
  }

 private:
  /// Begins a new page if `height` does not fit on this one. Returns true if it did.
  bool makeRoom(double height) {
    if (y_ + height <= end_ || y_ == print_.margin) return false;
    ++count_;
    y_ = print_.margin;
    return true;
  }

  /// Splits a row that is higher than a page into several rows.
  std::vector<Row> withoutTallRows(std::vector<Row> rows, const std::vector<double>& widths) const {
    double headings = 0;
    for (const Row& row : rows) headings = row.isHeading ? std::max(headings, rowHeight(row, widths)) : headings;
    const double room = end_ - print_.margin - headings - print_.rowGap;
    std::vector<Row> result;
    for (Row& row : rows) {
      if (row.isHeading || rowHeight(row, widths) <= room) {
        result.push_back(std::move(row));
        continue;
      }
      const auto isLeft = [](const Cell& cell) { return cell.text->length() > 0; };
      while (std::any_of(row.cells.begin(), row.cells.end(), isLeft)) {
        Row piece = row;
        for (std::size_t i = 0; i < row.cells.size(); ++i) {
          piece.cells[i].text = takeFitting(row.cells[i].text, widths[i], room - print_.rowGap);
        }
        row.hasRuleAbove = false;
        result.push_back(std::move(piece));
      }
    }
    return result;
  }

  /// The height of a row and of the rows that must be on its page: a heading with its first row, and an item with its
  /// total.
  static double heightTogether(const std::vector<Row>& rows, const std::vector<double>& heights, std::size_t from) {
    double height = heights[from];
    for (std::size_t i = from; i + 1 < rows.size() && (rows[i].isHeading || rows[i + 1].hasRuleAbove); ++i) {
      height += heights[i + 1];
    }
    return height;
  }

  void place(const Text& text, double x, double width, Side side) {
    texts_.push_back({count_ - 1, text, {print_.margin + x, y_}, width, alignmentOf(side)});
  }

  void placeLine(double y) { lines_.push_back({count_ - 1, y}); }

  void addRow(const Row& row, const std::vector<double>& widths, double height) {
    if (row.hasRuleAbove) placeLine(y_ - print_.rowGap / 2);
    double x = 0;
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      place(row.cells[i].text, x, widths[i], row.cells[i].side);
      x += widths[i] + columnGap;
    }
    y_ += height;
    if (row.isHeading) placeLine(y_ - print_.rowGap / 2);
  }

  double rowHeight(const Row& row, const std::vector<double>& widths) const {
    double height = 0;
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      height = std::max(height, sizeOfText(*row.cells[i].text, widths[i]).height);
    }
    return height + print_.rowGap;
  }

  /// The columns have the width of their widest texts. If they are too wide together, the widest columns of
  /// left-aligned texts are narrowed first and their texts are wrapped. If there is room left, the widest of these
  /// columns gets it.
  std::vector<double> columnWidths(const std::vector<Row>& rows) const {
    std::vector<double> widths;
    std::vector<bool> isRight;
    for (const Row& row : rows) {
      if (row.cells.size() > widths.size()) {
        widths.resize(row.cells.size());
        isRight.resize(row.cells.size());
      }
      for (std::size_t i = 0; i < row.cells.size(); ++i) {
        constexpr double roundingRoom = 0.01;
        widths[i] = std::max(widths[i], sizeOfText(*row.cells[i].text).width + roundingRoom);
        if (row.cells[i].side == Side::Right) isRight[i] = true;
      }
    }
    const double room = width_ - columnGap * static_cast<double>(widths.size() - 1);
    for (;;) {
      const double excess = std::accumulate(widths.begin(), widths.end(), 0.0) - room;
      std::size_t widest = widths.size();
      for (const bool right : {false, true}) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
          const bool isBetter = widest == widths.size() || widths[i] > widths[widest];
          if (isRight[i] == right && widths[i] > narrowestColumn && isBetter) widest = i;
        }
        if (widest < widths.size()) break;
      }
      if (widest == widths.size()) return widths;  // more columns than fit on a page
      if (excess <= 0) {
        widths[widest] -= excess;
        return widths;
      }
      // Narrows to the width of the next widest column at most, so that columns of the same kind are narrowed equally.
      double next = narrowestColumn;
      for (std::size_t i = 0; i < widths.size(); ++i) {
        if (isRight[i] == isRight[widest] && widths[i] < widths[widest]) next = std::max(next, widths[i]);
      }
      widths[widest] = std::max(next, widths[widest] - excess) - 0.001;
    }
  }

  void drawNumber(PDFDocument& document, std::size_t number) const {
    const std::string text = "Page " + std::to_string(number) + " of " + std::to_string(count_);
    const auto footer = NSAttributedString::attributedStringWithString(
        text, NSDictionary::dictionaryWithObject(NSFont::fontWithName("Sans", 8), NSFontAttributeName));
    document.drawText(*footer, {print_.margin, end_ + print_.margin / 3}, width_, NSTextAlignmentCenter);
  }

  const Print print_;
  const double width_ = page.width - 2 * print_.margin;
  const double end_ = page.height - print_.margin;
  std::size_t count_ = 1;
  double y_ = print_.margin;
  std::vector<PlacedText> texts_;
  std::vector<PlacedLine> lines_;
};

Pages pagesOf(const Document& document, const Print& print) {
  Pages pages(print);
  for (const Block& block : document.blocks) std::visit([&](const auto& each) { pages.add(each); }, block);
  return pages;
}

}  // namespace

std::string pdfDocument(const Document& document) {
  const Pages pages = pagesOf(document, ordinary);
  if (pages.count() == 2) {
    for (const Print& print : tighter) {
      const Pages one = pagesOf(document, print);
      if (one.count() == 1) return std::string(one.draw(document.title)->text());
    }
  }
  return std::string(pages.draw(document.title)->text());
}

}  // namespace payrun

// examples/payrun/Document.h - a text in blocks, which can be shown on a terminal, in a browser or on paper.
//
// The style of a text is its attributes: NSFontAttributeName (size, bold, italic), the two colours,
// NSUnderlineStyleAttributeName and NSLinkAttributeName. Text without a font has documentFont(). Texts contain no tab
// and no control character except the line feed, which begins a new line.
#pragma once

#include <variant>
#include <vector>

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "Side.h"

namespace payrun {

/// The font of text without a font attribute: Sans, 10 points.
inline norvik::Ref<norvik::NSFont> documentFont() { return norvik::NSFont::fontWithName("Sans", 10); }

struct Paragraph {
  norvik::Ref<norvik::NSAttributedString> text;  // never null; empty for an empty line
  Side side = Side::Left;
};

struct Cell {
  norvik::Ref<norvik::NSAttributedString> text;  // never null
  Side side = Side::Left;
};

struct Row {
  std::vector<Cell> cells;  // one for each column; cells at the end may be missing
  bool isHeading = false;
  bool hasRuleAbove = false;
};

struct DocumentTable {
  std::vector<Row> rows;  // at least one row, and at least one row with a cell
};

/// A line across the page.
struct Rule {};

using Block = std::variant<Paragraph, DocumentTable, Rule>;

struct Document {
  norvik::NSString title;  // one line, not part of the text
  std::vector<Block> blocks;
};

}  // namespace payrun

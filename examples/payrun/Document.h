// examples/payrun/Document.h - a text in blocks, ready to be shown on a terminal, in a browser or on paper.
//
// The style of a text is its attributes: NSFontAttributeName (size, bold, italic), the two colours, NSUnderlineStyle-
// AttributeName and NSLinkAttributeName. A unit without a font has documentFont(). Texts have no tab and no control
// character but the line feed, which begins a new line.
#pragma once

#include <variant>
#include <vector>

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "Side.h"

namespace payrun {

/// The font of what names none: Sans, 10 points.
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
  std::vector<Cell> cells;  // one for each column; those at the end may be left out
  bool isHeading = false;
  bool hasRuleAbove = false;
};

struct DocumentTable {
  std::vector<Row> rows;  // at least one, and one with a cell
};

/// A line across the page.
struct Rule {};

using Block = std::variant<Paragraph, DocumentTable, Rule>;

struct Document {
  norvik::NSString title;  // one line, not part of the text
  std::vector<Block> blocks;
};

}  // namespace payrun

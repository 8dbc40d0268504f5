#include "DocumentTerminal.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "NorvikCore/platform/foundation/TerminalCells.h"

namespace payrun {

using namespace norvik;

namespace {

constexpr std::size_t gap = 2;

/// A line of a text.
struct TextLine {
  NSRange range;
  std::size_t cells = 0;
};

/// Breaks a text at its line feeds and into lines of at most `width` cells.
std::vector<TextLine> linesOf(const NSAttributedString& text, std::size_t width) {
  std::vector<TextLine> lines;
  TextLine line;        // the current line
  TextLine untilBlank;  // the current line up to its last space
  bool hasBlank = false;
  NSUInteger at = 0;
  const auto begin = [&](NSUInteger where) {
    line = {{where, 0}, 0};
    hasBlank = false;
  };
  for (const char32_t character : text.string().codePoints()) {
    const NSUInteger units = character > 0xFFFF ? 2 : 1;
    if (character == '\n') {
      lines.push_back(line);
      begin(at + units);
    } else {
      const std::size_t cells = terminalCells(character);
      if (line.cells + cells > width && line.range.length > 0) {
        if (character == ' ') {
          lines.push_back(line);
          begin(at + units);
          at += units;
          continue;
        }
        const TextLine whole = line;
        lines.push_back(hasBlank ? untilBlank : line);
        const NSUInteger next = hasBlank ? untilBlank.range.location + untilBlank.range.length + 1 : at;
        const std::size_t taken = hasBlank ? untilBlank.cells + 1 : whole.cells;
        begin(next);
        line.range.length = at - next;
        line.cells = whole.cells - taken;
      }
      if (character == ' ') {
        untilBlank = line;
        hasBlank = line.range.length > 0;
      }
      line.range.length += units;
      line.cells += cells;
    }
    at += units;
  }
  lines.push_back(line);
  return lines;
}

std::size_t naturalWidth(const NSAttributedString& text) {
  std::size_t width = 0;
  for (const TextLine& line : linesOf(text, static_cast<std::size_t>(-1))) width = std::max(width, line.cells);
  return width;
}

/// The columns of a table.
struct Columns {
  std::vector<std::size_t> widths;
  std::vector<bool> areRight;  // all texts of the column are aligned right

  [[nodiscard]] std::size_t total() const {
    return std::accumulate(widths.begin(), widths.end(), (widths.size() - 1) * gap);
  }
  [[nodiscard]] bool hasRight() const { return std::find(areRight.begin(), areRight.end(), true) != areRight.end(); }
};

Columns columnsOf(const DocumentTable& table) {
  Columns columns;
  for (const Row& row : table.rows) {
    columns.widths.resize(std::max(columns.widths.size(), row.cells.size()));
    columns.areRight.resize(columns.widths.size(), true);
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      const Cell& cell = row.cells[i];
      columns.widths[i] = std::max(columns.widths[i], naturalWidth(*cell.text));
      if (cell.side == Side::Left && cell.text->length() > 0) columns.areRight[i] = false;
    }
  }
  return columns;
}

/// Narrows the widest column until all columns fit; right-aligned columns are narrowed last.
void shrink(Columns& columns, std::size_t width) {
  constexpr std::size_t least = 4;
  for (const bool right : {false, true}) {
    while (columns.total() > width) {
      std::size_t widest = columns.widths.size();
      for (std::size_t i = 0; i < columns.widths.size(); ++i) {
        const bool may = (right || !columns.areRight[i]) && columns.widths[i] > least;
        if (may && (widest == columns.widths.size() || columns.widths[i] > columns.widths[widest])) widest = i;
      }
      if (widest == columns.widths.size()) break;
      --columns.widths[widest];
    }
  }
}

/// Widens the last column that is not right-aligned, so that the amounts of all tables end at the right edge of the
/// page.
void stretch(Columns& columns, std::size_t width) {
  const auto last = std::find(columns.areRight.rbegin(), columns.areRight.rend(), false);
  if (!columns.hasRight() || last == columns.areRight.rend() || columns.total() >= width) return;
  columns.widths[static_cast<std::size_t>(columns.areRight.rend() - last) - 1] += width - columns.total();
}

class TerminalWriter {
 public:
  TerminalWriter(std::size_t width, TerminalColors colors) : width_(width), colors_(colors) {}

  std::string write(const Document& document) {
    std::size_t widest = 0;
    for (const Block& block : document.blocks) {
      if (const auto* table = std::get_if<DocumentTable>(&block)) {
        Columns columns = columnsOf(*table);
        shrink(columns, width_);
        widest = std::max(widest, columns.total());
      } else if (const auto* paragraph = std::get_if<Paragraph>(&block)) {
        widest = std::max(widest, naturalWidth(*paragraph->text));
      }
    }
    page_ = std::min(widest, width_);
    for (const Block& block : document.blocks) std::visit([this](const auto& each) { append(each); }, block);
    return std::move(result_);
  }

 private:
  void append(const Paragraph& paragraph) {
    for (const TextLine& line : linesOf(*paragraph.text, page_)) {
      if (paragraph.side == Side::Right) appendTimes(page_ - std::min(line.cells, page_), ' ');
      appendText(*paragraph.text, line);
      result_ += '\n';
    }
  }

  void append(const Rule&) {
    appendTimes(page_, '-');
    result_ += '\n';
  }

  void append(const DocumentTable& table) {
    Columns columns = columnsOf(table);
    shrink(columns, width_);
    stretch(columns, page_);
    for (const Row& row : table.rows) {
      if (row.hasRuleAbove) {
        appendTimes(columns.total(), '-');
        result_ += '\n';
      }
      if (row.isHeading && &row != table.rows.data()) result_ += '\n';
      append(row, columns);
      if (row.isHeading) appendRules(columns);
    }
  }

  void append(const Row& row, const Columns& columns) {
    std::vector<std::vector<TextLine>> cells;
    std::size_t height = 0;
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      cells.push_back(linesOf(*row.cells[i].text, columns.widths[i]));
      height = std::max(height, cells.back().size());
    }
    for (std::size_t y = 0; y < height; ++y) {
      std::size_t blanks = 0;  // spaces before the next text, so that a line does not end with spaces
      for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i > 0) blanks += gap;
        const TextLine line = y < cells[i].size() ? cells[i][y] : TextLine{};
        const std::size_t padding = columns.widths[i] - std::min(line.cells, columns.widths[i]);
        if (row.cells[i].side == Side::Right) blanks += padding;
        if (line.range.length > 0) {
          appendTimes(std::exchange(blanks, 0), ' ');
          appendText(*row.cells[i].text, line);
        } else {
          blanks += line.cells;
        }
        if (row.cells[i].side == Side::Left) blanks += padding;
      }
      result_ += '\n';
    }
  }

  void appendRules(const Columns& columns) {
    for (std::size_t i = 0; i < columns.widths.size(); ++i) {
      if (i > 0) appendTimes(gap, ' ');
      appendTimes(columns.widths[i], '-');
    }
    result_ += '\n';
  }

  void appendText(const NSAttributedString& text, const TextLine& line) {
    result_ += terminalText(*text.attributedSubstringFromRange(line.range), colors_);
  }
  void appendTimes(std::size_t count, char c) { result_.append(count, c); }

  std::size_t width_, page_ = 0;
  TerminalColors colors_;
  std::string result_;
};

}  // namespace

std::string terminalDocument(const Document& document, std::size_t width, TerminalColors colors) {
  return TerminalWriter(std::max<std::size_t>(width, 1), colors).write(document);
}

}  // namespace payrun

// examples/payrun/Table.h - rows of texts under headings. A column is as wide as its widest text on a terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "Side.h"

namespace payrun {

class Table {
 public:
  struct Column {
    std::string heading;
    Side side = Side::Left;
  };

  explicit Table(std::vector<Column> columns);

  /// Adds the text of the next column, in UTF-8. After the last column, the next text begins a row.
  void add(std::string_view text);
  void add(std::initializer_list<std::string_view> texts);
  /// Adds a line across all columns, for example between rows and their total.
  void addRule();
  /// Appends headings, a rule and all rows to `result`, one line each. The last row must have all its texts.
  void appendTo(std::string& result) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::size_t> widths_;  // of the columns, in cells
  // The texts of all rows are in one string: a report may have a million rows, and a string for each text would take
  // three times the memory.
  std::string texts_;
  static constexpr std::uint32_t rule = 0xFFFFFFFF;
  std::vector<std::uint32_t> sizes_;  // of each text in bytes, or `rule` between two rows
  std::size_t column_ = 0;            // of the next text
};

}  // namespace payrun

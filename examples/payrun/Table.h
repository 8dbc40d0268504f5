// examples/payrun/Table.h - rows of texts under headings. A column is as wide as its widest text on a terminal.
#pragma once

#include <string>
#include <vector>

#include "Side.h"

namespace payrun {

class Table {
 public:
  struct Column {
    std::string heading;
    Side side = Side::Left;
  };

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// One text for each column, in UTF-8.
  void addRow(std::vector<std::string> texts) { rows_.push_back(std::move(texts)); }
  /// Adds a line across all columns, for example between rows and their total.
  void addRule() { rows_.emplace_back(); }
  /// Appends headings, a rule and all rows to `result`, one line each.
  void appendTo(std::string& result) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;  // a row without texts is a rule
};

}  // namespace payrun

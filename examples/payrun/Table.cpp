#include "Table.h"

#include <algorithm>
#include <string_view>

#include "Characters.h"

namespace payrun {

void Table::appendTo(std::string& result) const {
  std::vector<std::size_t> widths;
  for (const Column& column : columns_) widths.push_back(cellCount(column.heading));
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], cellCount(row[i]));
  }

  constexpr std::string_view gap = "  ";
  std::vector<std::string> headings, rule;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    headings.push_back(columns_[i].heading);
    rule.emplace_back(widths[i], '-');
  }
  const auto appendRow = [&](const std::vector<std::string>& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::size_t padding = widths[i] - cellCount(row[i]);
      if (i > 0) result += gap;
      if (columns_[i].side == Side::Right) result.append(padding, ' ');
      result += row[i];
      if (columns_[i].side == Side::Left && i + 1 < row.size()) result.append(padding, ' ');
    }
    result += '\n';
  };
  appendRow(headings);
  appendRow(rule);
  for (const auto& row : rows_) appendRow(row.empty() ? rule : row);
}

}  // namespace payrun

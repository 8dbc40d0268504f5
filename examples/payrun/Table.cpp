#include "Table.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "Characters.h"

namespace payrun {

namespace {

constexpr std::string_view gap = "  ";

/// Appends the lines of a table.
class TableWriter {
 public:
  TableWriter(const std::vector<Table::Column>& columns, const std::vector<std::size_t>& widths, std::string& result)
      : columns_(columns), widths_(widths), result_(result) {}

  void append(std::size_t column, std::string_view text) {
    const std::size_t padding = widths_[column] - cellCount(text);
    const bool isLast = column + 1 == columns_.size();
    if (column > 0) result_ += gap;
    if (columns_[column].side == Side::Right) result_.append(padding, ' ');
    result_ += text;
    if (columns_[column].side == Side::Left && !isLast) result_.append(padding, ' ');
    if (isLast) result_ += '\n';
  }
  void appendRule() {
    for (std::size_t i = 0; i < columns_.size(); ++i) append(i, std::string(widths_[i], '-'));
  }

 private:
  const std::vector<Table::Column>& columns_;
  const std::vector<std::size_t>& widths_;
  std::string& result_;
};

}  // namespace

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {
  for (const Column& column : columns_) widths_.push_back(cellCount(column.heading));
}

void Table::add(std::string_view text) {
  widths_[column_] = std::max(widths_[column_], cellCount(text));
  texts_ += text;
  sizes_.push_back(static_cast<std::uint32_t>(text.size()));
  column_ = (column_ + 1) % columns_.size();
}

void Table::add(std::initializer_list<std::string_view> texts) {
  for (const std::string_view text : texts) add(text);
}

void Table::addRule() { sizes_.push_back(rule); }

void Table::appendTo(std::string& result) const {
  // Enough for every line, so that the lines are not copied while the text grows.
  const std::size_t lineWidth = std::accumulate(widths_.begin(), widths_.end(), columns_.size() * gap.size());
  result.reserve(result.size() + texts_.size() + (2 + sizes_.size() / columns_.size()) * lineWidth);
  TableWriter lines(columns_, widths_, result);
  for (std::size_t i = 0; i < columns_.size(); ++i) lines.append(i, columns_[i].heading);
  lines.appendRule();
  std::size_t column = 0, offset = 0;
  for (const std::uint32_t size : sizes_) {
    if (size == rule) {
      lines.appendRule();
      continue;
    }
    lines.append(column, std::string_view(texts_).substr(offset, size));
    offset += size;
    column = (column + 1) % columns_.size();
  }
}

}  // namespace payrun

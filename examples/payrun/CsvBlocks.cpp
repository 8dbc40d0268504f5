#include "CsvBlocks.h"

#include <string_view>
#include <utility>

#include "Characters.h"

namespace payrun {

namespace {

/// The end of the last record that ends in `text`, or 0. `isQuoted` is true if the end of the text is within quotation
/// marks.
std::size_t lastRecordEnd(std::string_view text, bool isQuoted) {
  for (std::size_t i = text.size(); i > 0; --i) {
    if (text[i - 1] == '"') isQuoted = !isQuoted;
    if (text[i - 1] == '\n' && !isQuoted) return i;
  }
  return 0;
}

/// True if the text is only line ends, and a byte order mark perhaps.
bool hasNoRecord(std::string_view text) { return text.find_first_not_of("\xEF\xBB\xBF\r\n") == std::string_view::npos; }

}  // namespace

std::optional<CsvBlock> CsvBlocks::next() {
  const std::lock_guard lock(mutex_);
  if (isOver_) return std::nullopt;
  isOver_ = true;  // if this call throws
  std::string text = std::exchange(rest_, {});
  const bool isLast = !readRecords(text);
  if (isLast && text.empty() && number_ > 0) return std::nullopt;
  position_ += text.size();
  const std::size_t lines = countOf('\n', text);
  CsvBlock block{number_++, position_, TextFile(file_.name(), std::move(text), line_)};
  line_ += lines;
  isOver_ = isLast;
  return block;
}

bool CsvBlocks::readRecords(std::string& text) {
  bool needsRecord = number_ == 0;  // in the first block, until a character of a record was read
  while (true) {
    const std::size_t before = text.size();
    if (!file_.appendTo(text, size_)) return false;
    const std::string_view added = std::string_view(text).substr(before);
    if (countOf('"', added) % 2 != 0) isQuoted_ = !isQuoted_;
    const std::size_t end = lastRecordEnd(added, isQuoted_);
    if (end > 0 && !(needsRecord && hasNoRecord(added.substr(0, end)))) {
      rest_ = added.substr(end);
      text.resize(before + end);
      return true;
    }
    needsRecord = needsRecord && hasNoRecord(added);
  }
}

}  // namespace payrun

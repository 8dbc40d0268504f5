#include "CsvReader.h"

#include "Characters.h"

namespace payrun {

namespace {

/// False for commas, quotation marks and line ends, and for some characters that have no meaning: one comparison tells
/// letters and digits from them.
bool isOrdinary(char c) { return static_cast<unsigned char>(c) > ','; }

}  // namespace

bool CsvReader::atLineEnd() const {
  if (position_ == text_.size() || text_[position_] == '\n') return true;
  return text_[position_] == '\r' && position_ + 1 < text_.size() && text_[position_ + 1] == '\n';
}

bool CsvReader::next() {
  size_ = 0;
  while (position_ < text_.size() && atLineEnd()) position_ += text_[position_] == '\r' ? 2U : 1U;
  if (position_ == text_.size()) return false;

  recordBegin_ = position_;
  readField();
  while (!atLineEnd()) {
    ++position_;  // the comma, which ends every field except the last
    readField();
  }
  recordEnd_ = position_;
  if (position_ < text_.size()) position_ += text_[position_] == '\r' ? 2U : 1U;
  return true;
}

CsvField CsvReader::record() const { return {text_.substr(recordBegin_, recordEnd_ - recordBegin_), recordBegin_}; }

std::size_t CsvReader::line() {
  line_ += countOf('\n', text_.substr(lineOffset_, recordBegin_ - lineOffset_));
  lineOffset_ = recordBegin_;
  return line_;
}

void CsvReader::readField() {
  if (position_ < text_.size() && text_[position_] == '"') return readQuotedField();
  const std::size_t begin = position_;
  for (; position_ < text_.size(); ++position_) {
    const char c = text_[position_];
    if (isOrdinary(c)) continue;
    if (c == ',' || atLineEnd()) break;
    if (c == '"') {
      file_.refuse(begin, quoted(text_.substr(begin, position_ + 1 - begin)) +
                              " has a quotation mark inside a field that does not begin with one");
    }
  }
  addField(text_.substr(begin, position_ - begin), begin);
}

void CsvReader::readQuotedField() {
  const std::size_t begin = position_++;
  std::string* unquoted = nullptr;  // created only for a field with doubled quotation marks
  std::size_t from = position_;
  while (true) {
    const std::size_t quote = text_.find('"', position_);
    if (quote == std::string_view::npos) {
      const std::size_t line = text_.find('\n', begin);
      file_.refuse(begin, quoted(text_.substr(begin, line == std::string_view::npos ? line : line - begin)) +
                              " has a quotation mark that is never closed");
    }
    position_ = quote + 1;
    if (position_ < text_.size() && text_[position_] == '"') {
      if (unquoted == nullptr) unquoted = &unquoted_.emplace_back();
      unquoted->append(text_.substr(from, position_ - from));
      from = ++position_;
      continue;
    }
    if (unquoted != nullptr) unquoted->append(text_.substr(from, quote - from));
    addField(unquoted != nullptr ? std::string_view(*unquoted) : text_.substr(from, quote - from), begin);
    break;
  }
  if (!atLineEnd() && text_[position_] != ',') {
    file_.refuse(begin,
                 quoted(text_.substr(begin, position_ + 1 - begin)) + " continues after its closing quotation mark");
  }
}

}  // namespace payrun

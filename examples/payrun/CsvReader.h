// examples/payrun/CsvReader.h - reads the records of a CSV file (RFC 4180), with the position of every field.
//
//   TextFile file("employees.csv");
//   for (CsvReader records(file); records.next();) use(records[0].text, records[1].text);
//
// Lines end in LF or CRLF. A quoted field may contain commas, line ends and doubled quotation marks. Empty lines are
// skipped. A quotation mark at any other place, or one that is never closed, is refused.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "TextFile.h"

namespace payrun {

/// A field without its quotes, and the offset of its first character in the file. A quoted field begins with its quote.
struct CsvField {
  std::string_view text;
  std::size_t offset = 0;
};

class CsvReader {
 public:
  /// The file must outlive the reader.
  explicit CsvReader(const TextFile& file) : file_(file), text_(file.text()), line_(file.firstLine()) {}

  /// Reads the next record; false at the end. The texts of its fields are valid while the reader and the file exist.
  /// Throws InputError.
  bool next();

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] const CsvField& operator[](std::size_t index) const { return fields_[index]; }
  /// The record as in the file, without its line end.
  [[nodiscard]] CsvField record() const;
  /// The line at which the record begins. Counts from the record of the last call, so that calls for many records cost
  /// one pass over the text.
  [[nodiscard]] std::size_t line();
  /// The number of bytes that were read.
  [[nodiscard]] std::size_t position() const { return position_; }
  [[nodiscard]] const TextFile& file() const { return file_; }

 private:
  void addField(std::string_view text, std::size_t offset) {
    if (size_ == fields_.size()) fields_.emplace_back();
    fields_[size_++] = {text, offset};
  }
  void readField();
  void readQuotedField();
  [[nodiscard]] bool atLineEnd() const;

  const TextFile& file_;
  std::string_view text_;
  std::size_t position_ = 0, recordBegin_ = 0, recordEnd_ = 0;
  std::size_t line_, lineOffset_ = 0;  // of the last call of line()
  std::vector<CsvField> fields_;  // the first size_ are those of the record; the others are kept for longer records
  std::size_t size_ = 0;
  std::deque<std::string> unquoted_;  // texts of fields with doubled quotation marks
};

}  // namespace payrun

// fuzz/CsvReader_fuzzer.cpp - compares the pay run's CSV reader with a slow model of the format. The fuzzer writes the
// records that were read as CSV, and the reader must give the same records again.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "examples/payrun/Characters.h"
#include "examples/payrun/CsvReader.h"

namespace {

using Records = std::vector<std::vector<std::string>>;

std::optional<Records> readByReader(const std::string& text) {
  try {
    const payrun::TextFile file("input", text);
    Records result;
    for (payrun::CsvReader records(file); records.next();) {
      auto& record = result.emplace_back();
      for (std::size_t i = 0; i < records.size(); ++i) {
        if (records[i].offset > file.text().size()) std::abort();
        record.emplace_back(records[i].text);
      }
    }
    return result;
  } catch (const payrun::InputError&) {
    return std::nullopt;
  }
}

/// Reads one character at a time, with a state for each kind of position; returns nothing if the text is refused.
std::optional<Records> readByModel(std::string text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  if (payrun::firstInvalidUtf8(text) != std::string::npos) return std::nullopt;
  enum class State { RecordStart, FieldStart, Plain, Quoted, QuoteInQuoted } state = State::RecordStart;
  Records records;
  const auto endRecord = [&] { state = State::RecordStart; };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool crlf = c == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    const bool lineEnd = (c == '\n' || crlf) && state != State::Quoted;
    if (lineEnd) {
      if (crlf) ++i;
      endRecord();
      continue;
    }
    if (state == State::RecordStart) {
      records.emplace_back(1, "");
      state = State::FieldStart;
    }
    std::vector<std::string>& record = records.back();
    switch (state) {
      case State::Quoted:
        if (c == '"') {
          state = State::QuoteInQuoted;
        } else {
          record.back() += c;
        }
        break;
      case State::QuoteInQuoted:
        if (c == '"') {
          record.back() += c;
          state = State::Quoted;
        } else if (c == ',') {
          record.emplace_back();
          state = State::FieldStart;
        } else {
          return std::nullopt;
        }
        break;
      case State::FieldStart:
      case State::Plain:
      case State::RecordStart:
        if (c == '"') {
          if (state == State::Plain) return std::nullopt;
          state = State::Quoted;
        } else if (c == ',') {
          record.emplace_back();
          state = State::FieldStart;
        } else {
          record.back() += c;
          state = State::Plain;
        }
        break;
    }
  }
  if (state == State::Quoted) return std::nullopt;
  return records;
}

std::string written(const Records& records) {
  std::string text;
  for (const auto& record : records) {
    for (std::size_t i = 0; i < record.size(); ++i) {
      text += i > 0 ? ",\"" : "\"";
      for (const char c : record[i]) text += c == '"' ? std::string("\"\"") : std::string(1, c);
      text += '"';
    }
    text += "\r\n";
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::optional<Records> records = readByReader(text);
  if (records != readByModel(text)) std::abort();
  if (records && readByReader(written(*records)) != records) std::abort();
  return 0;
}

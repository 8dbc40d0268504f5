// fuzz/CsvReader_fuzzer.cpp - compares the pay run's CSV reader with a slow model of the format. The fuzzer writes the
// records that were read as CSV, and the reader must give the same records again.
//
// Blocks of any size must have the records, lines and errors of the whole file.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "examples/payrun/Characters.h"
#include "examples/payrun/CsvBlocks.h"
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

/// A file in memory that every input is written to.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& text) {
    const auto size = static_cast<off_t>(text.size());
    if (::ftruncate(descriptor(), 0) != 0 || ::ftruncate(descriptor(), size) != 0) std::abort();
    if (::pwrite(descriptor(), text.data(), text.size(), 0) != size) std::abort();
  }
  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor()); }

 private:
  static int descriptor() {
    static const int made = ::memfd_create("input", 0);
    return made;
  }
};

/// What a reader finds in a file: records with their lines, and the error that ends them.
struct Findings {
  Records records;
  std::vector<std::size_t> lines;
  std::string error;

  bool operator==(const Findings&) const = default;

  void add(const payrun::TextFile& text) {
    try {
      for (payrun::CsvReader reader(text); reader.next();) {
        auto& record = records.emplace_back();
        for (std::size_t i = 0; i < reader.size(); ++i) record.emplace_back(reader[i].text);
        lines.push_back(reader.line());
      }
    } catch (const payrun::InputError& problem) {
      error = problem.what();
    }
  }
};

Findings findInWhole(const std::string& path) {
  Findings findings;
  try {
    findings.add(payrun::TextFile(path));
  } catch (const payrun::InputError& problem) {
    findings.error = problem.what();
  }
  return findings;
}

Findings findInBlocks(const std::string& path, std::size_t size) {
  Findings findings;
  try {
    payrun::CsvBlocks blocks(path, size);
    while (const auto block = blocks.next()) {
      if (findings.error.empty()) findings.add(block->text);
    }
  } catch (const payrun::InputError& problem) {  // not UTF-8, for which a file is refused before its records are read
    findings = {{}, {}, problem.what()};
  }
  return findings;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::optional<Records> records = readByReader(text);
  if (records != readByModel(text)) std::abort();
  if (records && readByReader(written(*records)) != records) std::abort();

  const MemoryFile file(text);
  const Findings whole = findInWhole(file.path());
  for (const std::size_t blockSize : {std::size_t{1}, std::size_t{2}, std::size_t{7}, size / 2 + 1, size + 1}) {
    if (findInBlocks(file.path(), blockSize) != whole) std::abort();
  }
  return 0;
}

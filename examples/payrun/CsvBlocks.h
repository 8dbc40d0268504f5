// examples/payrun/CsvBlocks.h - a CSV file in blocks of whole records, so that several threads can read a large file
// while only a few blocks of it are in memory.
//
//   CsvBlocks blocks("items.csv");
//   dispatch_apply(processors, dispatch_get_global_queue(), [&](std::size_t) {
//     while (const auto block = blocks.next()) {
//       for (CsvReader records(block->text); records.next();) use(block->number, records[0].text);
//     }
//   });
//
// A block ends at a line end that follows an even number of quotation marks. Where CsvReader refuses a record, the
// number may be wrong from there on, but not before: the record is refused in the same way as in the whole file.
#pragma once

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "InputStream.h"
#include "TextFile.h"

namespace payrun {

struct CsvBlock {
  std::size_t number = 0;  // blocks count from 0 in the file's order
  std::size_t end = 0;     // the number of bytes of this block and those before it
  TextFile text;           // its lines count from the beginning of the file
};

/// Synchronised: each block is given to one caller.
class CsvBlocks {
 public:
  static constexpr std::size_t usualSize = std::size_t{1} << 18;

  /// A block has about `size` bytes; more if a record is longer. Throws InputError for a file that cannot be read.
  explicit CsvBlocks(const std::filesystem::path& path, std::size_t size = usualSize) : file_(path), size_(size) {}

  /// The next block; absent at the end. The first block has a record, unless the whole file has none. Throws
  /// InputError for a file that cannot be read or is not UTF-8, to one caller; the others get no more blocks.
  std::optional<CsvBlock> next();

  /// The size of the file; 0 if it is not known.
  [[nodiscard]] std::size_t size() const { return file_.size(); }

 private:
  /// Reads up to the end of a record. Returns false at the end of the file.
  bool readRecords(std::string& text);

  InputStream file_;
  std::size_t size_;
  std::mutex mutex_;  // guards file_ and the members below
  std::size_t number_ = 0, position_ = 0, line_ = 1;
  std::string rest_;       // the beginning of the next block
  bool isQuoted_ = false;  // what was read ends within quotation marks
  bool isOver_ = false;
};

}  // namespace payrun

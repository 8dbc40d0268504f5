#include "CsvBlocks.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <thread>
#include <utility>
#include <vector>

#include "CsvReader.h"
#include "tests/support/TemporaryFolder.h"

namespace payrun {
namespace {

using norvik::test::TemporaryFolder;
using Texts = std::vector<std::string>;

Texts textsOf(CsvBlocks& blocks) {
  Texts texts;
  while (const auto block = blocks.next()) texts.emplace_back(block->text.text());
  return texts;
}

Texts blocksOf(const std::string& text, std::size_t size) {
  const TemporaryFolder folder;
  CsvBlocks blocks(folder.write("test.csv", text), size);
  return textsOf(blocks);
}

/// The complaint about the first record that is refused, or about bytes that are not UTF-8, without the folder.
std::string refusalOf(const std::string& text, std::size_t size) {
  const TemporaryFolder folder;
  CsvBlocks blocks(folder.write("test.csv", text), size);
  try {
    while (const auto block = blocks.next()) {
      CsvReader records(block->text);
      while (records.next()) {
      }
    }
  } catch (const InputError& error) {
    const std::string complaint = std::string(error.what()).substr(folder.path().size() + 1);
    if (complaint.ends_with("UTF-8")) {
      EXPECT_FALSE(blocks.next()) << complaint;
    }
    return complaint;
  }
  return "nothing was refused";
}

TEST(CsvBlocks, EndAtTheLastLineEndOfThePieceThatIsOutsideOfQuotationMarks) {
  const struct {
    const char* why;
    std::string text;
    std::size_t size;
    Texts expected;
  } rows[] = {
      {"one record a block", "a,b\nc,d\n", 4, {"a,b\n", "c,d\n"}},
      {"the rest of a piece begins the next block", "a,b\nc,d\ne,f\n", 6, {"a,b\n", "c,d\ne,f\n"}},
      {"a record longer than a piece", "a\nbcdefghi\nj\n", 2, {"a\n", "bcdefghi\n", "j\n"}},
      {"CRLF", "a\r\nb\r\n", 3, {"a\r\n", "b\r\n"}},
      {"a piece that ends between CR and LF", "a\r\nb\r\n", 2, {"a\r\n", "b\r\n"}},
      {"no line end at the end", "a\nb", 2, {"a\n", "b"}},
      {"a line end in quotation marks", "\"a\nb\"\nc\n", 3, {"\"a\nb\"\n", "c\n"}},
      {"many line ends in quotation marks", "\"a\n\n\n\n\n\"\nc\n", 2, {"\"a\n\n\n\n\n\"\n", "c\n"}},
      {"a line end after doubled quotation marks", "\"a\"\"\n\"\nc\n", 2, {"\"a\"\"\n\"\n", "c\n"}},
      {"blank lines before the first record", "\n\n\na\nb\n", 1, {"\n\n\na\n", "b\n"}},
      {"blank lines and the beginning of the first record in a piece",
       "\n\n\nab\nc\nd\ne\n",
       5,
       {"\n\n\nab\nc\nd\n", "e\n"}},
      {"blank lines after it are a block", "a\n\n\nb\n", 2, {"a\n", "\n\n", "b\n"}},
      {"an empty file is one block", "", 4, {""}},
      {"a file of blank lines is one block", "\n\n\n\n", 2, {"\n\n\n\n"}},
      {"a byte order mark is removed at the beginning only",
       "\xEF\xBB\xBF"
       "a\n\xEF\xBB\xBF"
       "b\n",
       5,
       {"a\n",
        "\xEF\xBB\xBF"
        "b\n"}},
      {"a byte order mark before blank lines", "\xEF\xBB\xBF\n\na\nb\n", 4, {"\n\na\n", "b\n"}},
  };
  for (const auto& row : rows) EXPECT_EQ(blocksOf(row.text, row.size), row.expected) << row.why;
}

TEST(CsvBlocks, CountNumbersLinesAndBytesFromTheBeginningOfTheFile) {
  const TemporaryFolder folder;
  CsvBlocks blocks(folder.write("test.csv", "a,\"b\nc\"\nd,e\nf,g\n"), 8);
  EXPECT_EQ(blocks.size(), 16U);
  const struct { std::size_t number, end, line, secondLine; } rows[] = {{0, 8, 1, 1}, {1, 16, 3, 4}};
  for (const auto& row : rows) {
    const auto block = blocks.next();
    ASSERT_TRUE(block);
    EXPECT_EQ(block->number, row.number);
    EXPECT_EQ(block->end, row.end);
    CsvReader records(block->text);
    ASSERT_TRUE(records.next());
    EXPECT_EQ(records.line(), row.line);
    EXPECT_EQ(block->text.placeOf(records[1].offset).line, row.line);
    EXPECT_EQ(block->text.placeOf(records[1].offset).column, 3U);
    records.next();
    EXPECT_EQ(records.line(), row.secondLine);
  }
  EXPECT_FALSE(blocks.next());
}

TEST(CsvBlocks, ARecordIsRefusedAsInTheWholeFileWhateverTheSize) {
  const struct {
    std::string text, expected;
  } rows[] = {
      {"ok\nok,a\"b\nok\n\"\nok\n",
       "test.csv:2:4: \"a\"\" has a quotation mark inside a field that does not begin with one"},
      {"\"o\nk\"\nok,\"a\nb\"c\nok\n", "test.csv:3:4: \"\"a\\x0Ab\"c\" continues after its closing quotation mark"},
      {"ok\n\"\"\"\"\nok,\"a\nb,\"\"c\nok\n", "test.csv:3:4: \"\"a\" has a quotation mark that is never closed"},
      {"ok,\"\"\nok\nZo\xEBy,ok\nok\n\xFF\n", "test.csv:3:3: \"Zo\\xEBy\" is not UTF-8"},
      {"ok\n\n\nok\nok,\xC3", "test.csv:5:4: \"\\xC3\" is not UTF-8"},
  };
  for (const auto& row : rows) {
    for (std::size_t size = 1; size <= row.text.size() + 1; ++size) {
      EXPECT_EQ(refusalOf(row.text, size), row.expected) << size;
    }
  }
}

TEST(CsvBlocks, APipeIsReadToItsEnd) {
  const TemporaryFolder folder;
  const std::string path = folder.path("pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  std::thread writer([&] { std::ofstream(path) << "a\nb\n" << std::flush << "c\n"; });
  CsvBlocks blocks(path, 4);
  EXPECT_EQ(blocks.size(), 0U);
  EXPECT_EQ(textsOf(blocks), (Texts{"a\nb\n", "c\n"}));
  writer.join();
}

TEST(CsvBlocks, AFileThatGrowsIsReadToItsNewEnd) {
  const TemporaryFolder folder;
  const std::string path = folder.write("test.csv", "a\nb\n");
  CsvBlocks blocks(path, 2);
  ASSERT_EQ(blocks.next()->text.text(), "a\n");
  std::ofstream(path, std::ios::app) << "c\n";
  EXPECT_EQ(textsOf(blocks), (Texts{"b\n", "c\n"}));
}

TEST(CsvBlocks, AFileThatIsRemovedIsReadToItsEnd) {
  const TemporaryFolder folder;
  const std::string path = folder.write("test.csv", "a\nb\n");
  CsvBlocks blocks(path, 2);
  std::filesystem::remove(path);
  EXPECT_EQ(textsOf(blocks), (Texts{"a\n", "b\n"}));
}

TEST(CsvBlocks, AFileThatCannotBeReadIsNamed) {
  const TemporaryFolder folder;
  const auto complaint = [](const std::string& path) -> std::string {
    try {
      CsvBlocks blocks(path);
      while (blocks.next()) {
      }
    } catch (const InputError& error) {
      return error.what();
    }
    return "it was read";
  };
  EXPECT_EQ(complaint(folder.path("none")), folder.path("none") + ": cannot be read: No such file or directory");
  EXPECT_EQ(complaint(folder.path()), folder.path() + ": cannot be read: it is a folder");
  // Its first page is not mapped, so the kernel refuses to read it.
  EXPECT_EQ(complaint("/proc/self/mem"), "/proc/self/mem: cannot be read: Input/output error");
}

TEST(CsvBlocks, EachIsGivenToOneOfManyThreads) {
  std::string text;
  for (int i = 0; i < 5000; ++i) text += "\"" + std::to_string(i) + "\n\"\n";
  const TemporaryFolder folder;
  CsvBlocks blocks(folder.write("test.csv", text), 64);
  std::vector<std::vector<CsvBlock>> taken(4);
  std::vector<std::thread> threads;
  for (auto& mine : taken) {
    threads.emplace_back([&] {
      while (auto block = blocks.next()) mine.push_back(*std::move(block));
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<std::string> inOrder;
  for (const auto& mine : taken) {
    for (const CsvBlock& block : mine) {
      inOrder.resize(std::max(inOrder.size(), block.number + 1));
      EXPECT_EQ(inOrder[block.number], "");
      inOrder[block.number] = block.text.text();
    }
  }
  std::string joined;
  for (const std::string& block : inOrder) joined += block;
  EXPECT_EQ(joined, text);
}

}  // namespace
}  // namespace payrun

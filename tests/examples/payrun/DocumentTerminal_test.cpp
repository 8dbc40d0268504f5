#include "DocumentTerminal.h"

#include <gtest/gtest.h>

#include <sstream>

#include "NorvikCore/platform/foundation/TerminalCells.h"
#include "tests/examples/payrun/DocumentParts.h"

namespace payrun_test {
namespace {

using namespace norvik;
using namespace payrun;

std::string shown(std::vector<Block> blocks, std::size_t width, TerminalColors colors = TerminalColors::Plain) {
  return terminalDocument({"title", std::move(blocks)}, width, colors);
}

TEST(DocumentTerminal, ParagraphsAreWrappedAtBlanks) {
  const struct {
    const char* why;
    NSString text;
    std::size_t width;
    const char* expected;
  } rows[] = {
      {"nothing", "", 10, "\n"},
      {"as wide as the place", "one two", 7, "one two\n"},
      {"a cell wider", "one two", 6, "one\ntwo\n"},
      {"a space at the end of the place", "one two", 3, "one\ntwo\n"},
      {"line feeds", "one\n\ntwo\n", 10, "one\n\ntwo\n\n"},
      {"a word longer than the place", "abcdefgh ij", 3, "abc\ndef\ngh\nij\n"},
      {"a longer word after a short one", "a bcdefg", 4, "a\nbcde\nfg\n"},
      {"wide characters", "王小明王", 4, "王小\n明王\n"},
      {"half of a wide character", "王小明王", 5, "王小\n明王\n"},
      {"an accent stays with its letter", "aaae\u0301b", 4, "aaae\u0301\nb\n"},
      {"a place for nothing", "王a", 1, "王\na\n"},
      {"several words", "the quick brown fox jumps", 11, "the quick\nbrown fox\njumps\n"},
      {"beyond the basic plane", "\U0001F4B7\U0001F4B7 x", 4, "\U0001F4B7\U0001F4B7\nx\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(shown({Paragraph{text(row.text)}}, row.width), row.expected) << row.why;
}

TEST(DocumentTerminal, ATableIsAsWideAsItsTextsAndItsRulesToo) {
  DocumentTable table;
  table.rows.push_back({{left("Date"), left("Name"), right("Pay")}, true, false});
  table.rows.push_back({{left("6 April"), left("王小明"), right("1.00")}, false, false});
  table.rows.push_back({{left("7 April"), left("Zoe\u0308"), right("1,234.50")}, false, false});
  table.rows.push_back({{left(""), left("Total"), right("1,235.50")}, false, true});
  table.rows.push_back({{left("later")}, false, false});
  EXPECT_EQ(shown({table}, 80),
            "Date     Name         Pay\n"
            "-------  ------  --------\n"
            "6 April  王小明      1.00\n"
            "7 April  Zoe\u0308     1,234.50\n"
            "-------------------------\n"
            "         Total   1,235.50\n"
            "later\n");
}

TEST(DocumentTerminal, TextsOnTheRightEndWhereTheWidestTableDoes) {
  DocumentTable wide, narrow;
  wide.rows.push_back({{left("a description"), right("1.00")}, false, false});
  narrow.rows.push_back({{left("Net"), right("1.00")}, false, false});
  EXPECT_EQ(shown({wide, Rule{}, narrow, Paragraph{text("in words"), Side::Right}}, 80),
            "a description  1.00\n"
            "-------------------\n"
            "Net            1.00\n"
            "           in words\n");
}

TEST(DocumentTerminal, AHeadingWithinATableHasALineBeforeIt) {
  DocumentTable table;
  table.rows.push_back({{left("a")}, false, false});
  table.rows.push_back({{left("bc")}, true, false});
  EXPECT_EQ(shown({table}, 80), "a\n\nbc\n--\n");
}

TEST(DocumentTerminal, WhatDoesNotFitIsWrappedInItsColumnAndAmountsLast) {
  DocumentTable table;
  table.rows.push_back({{left("E1"), left("a long description"), right("1,234.50")}, false, false});
  EXPECT_EQ(shown({table}, 24),
            "E1  a long      1,234.50\n"
            "    descriptio\n"
            "    n\n");
  EXPECT_EQ(shown({table}, 16),
            "E1  a     1,234.\n"
            "    long      50\n"
            "    desc\n"
            "    ript\n"
            "    ion\n");
  DocumentTable address;
  address.rows.push_back({{left("Address"), left("1 High Street\nCardiff")}, false, false});
  EXPECT_EQ(shown({address}, 80), "Address  1 High Street\n         Cardiff\n");
}

TEST(DocumentTerminal, NoLineIsWiderThanThePlaceAsLongAsColumnsCanShrink) {
  DocumentTable table;
  table.rows.push_back(
      {{left(NSString(std::string(60, 'x'))), left("王小明王小明王小明"), right("999,999,999.99")}, true, false});
  table.rows.push_back({{left("short"), left("a b c d e f g h i j k l m"), right("1.00")}, false, true});
  for (std::size_t width = 16; width <= 110; ++width) {
    std::istringstream lines(shown({table, Paragraph{text("in words and more words"), Side::Right}, Rule{}}, width));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(terminalCells(NSString(line)), width) << line;
  }
}

TEST(DocumentTerminal, StylesAreSetOnEachLineAndNotOnWhatIsBetween) {
  DocumentTable table;
  table.rows.push_back({{{text("Net pay", true), Side::Left}, {text("1.00", true), Side::Right}}, false, false});
  EXPECT_EQ(shown({table, Paragraph{text("one two", true)}}, 5, TerminalColors::Ansi16),
            "\033[1mNet\033[0m   \033[1m1.00\033[0m\n\033[1mpay\033[0m\n\033[1mone\033[0m\n\033[1mtwo\033[0m\n");
}

}  // namespace
}  // namespace payrun_test

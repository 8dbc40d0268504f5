#include "CsvReader.h"

#include <gtest/gtest.h>

namespace payrun {
namespace {

using Records = std::vector<std::vector<std::string>>;

Records recordsOf(const std::string& text) {
  const TextFile file("test.csv", text);
  Records result;
  for (CsvReader records(file); records.next();) {
    auto& record = result.emplace_back();
    for (std::size_t i = 0; i < records.size(); ++i) record.emplace_back(records[i].text);
  }
  return result;
}

std::string refusalOf(const std::string& text) {
  try {
    recordsOf(text);
  } catch (const InputError& error) {
    return error.what();
  }
  return "no refusal";
}

TEST(CsvReader, SplitsRecordsAndFields) {
  const struct {
    const char* why;
    const char* text;
    Records expected;
  } rows[] = {
      {"nothing", "", {}},
      {"empty lines only", "\n\r\n\n", {}},
      {"one field", "a", {{"a"}}},
      {"empty fields", ",\n", {{"", ""}}},
      {"a last line without end", "a,b\nc,d", {{"a", "b"}, {"c", "d"}}},
      {"CRLF", "a,b\r\nc,d\r\n", {{"a", "b"}, {"c", "d"}}},
      {"an empty line between", "a\n\nb\n", {{"a"}, {"b"}}},
      {"spaces are text", " a , b \n", {{" a ", " b "}}},
      {"a carriage return alone is text", "a\rb\n", {{"a\rb"}}},
      {"quoted", "\"a\",\"b\"\n", {{"a", "b"}}},
      {"quoted and empty", "\"\",\"\"\n", {{"", ""}}},
      {"a comma in quotes", "\"a,b\",c\n", {{"a,b", "c"}}},
      {"a line end in quotes", "\"a\nb\",\"c\r\nd\"\n", {{"a\nb", "c\r\nd"}}},
      {"doubled quotation marks", "\"a \"\"b\"\" c\",\"\"\"\"\n", {{"a \"b\" c", "\""}}},
      {"not ASCII", "Zoë,\"Łukasz\"\n", {{"Zoë", "Łukasz"}}},
      {"quoted at the very end", "a,\"b\"", {{"a", "b"}}},
  };
  for (const auto& row : rows) EXPECT_EQ(recordsOf(row.text), row.expected) << row.why;
}

TEST(CsvReader, SeveralFieldsWithDoubledMarksKeepTheirOwnText) {
  EXPECT_EQ(recordsOf("\"\"\"1\",\"\"\"2\",\"\"\"3\",\"\"\"4\"\n"), (Records{{"\"1", "\"2", "\"3", "\"4"}}));
}

TEST(CsvReader, RefusesMisplacedQuotationMarks) {
  EXPECT_EQ(refusalOf("a,b\"c\n"),
            "test.csv:1:3: \"b\"\" has a quotation mark inside a field that does not begin with one");
  EXPECT_EQ(refusalOf("a\n\"b\"c\n"), "test.csv:2:1: \"\"b\"c\" continues after its closing quotation mark");
  EXPECT_EQ(refusalOf("a\nb,\"c\nd\n"), "test.csv:2:3: \"\"c\" has a quotation mark that is never closed");
}

TEST(CsvReader, KnowsWhereFieldsAndRecordsBegin) {
  const TextFile file("test.csv", "ë,b\n\"x\ny\",z\n");
  CsvReader records(file);
  ASSERT_TRUE(records.next());
  EXPECT_EQ(file.placeOf(records[1].offset).line, 1U);
  EXPECT_EQ(file.placeOf(records[1].offset).column, 3U);
  ASSERT_TRUE(records.next());
  EXPECT_EQ(records.record().text, "\"x\ny\",z");
  EXPECT_EQ(file.placeOf(records[1].offset).line, 3U);
  EXPECT_EQ(file.placeOf(records[1].offset).column, 4U);
  EXPECT_FALSE(records.next());
  EXPECT_EQ(records.position(), file.text().size());
}

}  // namespace
}  // namespace payrun

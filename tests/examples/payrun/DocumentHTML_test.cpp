#include "DocumentHTML.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/examples/payrun/DocumentParts.h"

namespace payrun_test {
namespace {

using namespace norvik;
using namespace payrun;
using testing::HasSubstr;
using testing::Not;

/// The content of <main>.
std::string bodyOf(std::vector<Block> blocks) {
  const std::string page = htmlDocument({"title", std::move(blocks)});
  const std::size_t begin = page.find("<main>\n") + 7;
  return page.substr(begin, page.find("</main>") - begin);
}

std::string printSizeOf(std::size_t rows, const NSString& cell = "x") {
  DocumentTable table;
  for (std::size_t i = 0; i < rows; ++i) table.rows.push_back({{left(cell), right("1.00")}, false, false});
  const std::string page = htmlDocument({"title", {table}});
  const std::size_t begin = page.find("--print-size: ") + 14;
  return page.substr(begin, page.find('"', begin) - begin);
}

TEST(DocumentHTML, IsACompletePageThatRefersToNothing) {
  const std::string page = htmlDocument({"Zoë </title><script>", {Paragraph{text("x")}}});
  EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n<html lang=\"en-GB\">\n<head>\n<meta charset=\"utf-8\">\n")) << page;
  EXPECT_TRUE(page.ends_with("<main>\n<p>x</p>\n</main>\n</body>\n</html>\n")) << page;
  EXPECT_THAT(page, HasSubstr("<title>Zoë &lt;/title&gt;&lt;script&gt;</title>\n"));
  EXPECT_THAT(page, HasSubstr("<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"));
  EXPECT_THAT(page, HasSubstr("content=\"default-src 'none'; style-src 'unsafe-inline'\""));
  EXPECT_THAT(page, HasSubstr("@page { size: A4;"));
  EXPECT_THAT(page, HasSubstr("@media print {"));
  for (const char* reference : {"<script", "src=", "url(", "@import", "<link", "http:"}) {
    EXPECT_THAT(page, Not(HasSubstr(reference)));
  }
}

TEST(DocumentHTML, BlocksAreElements) {
  EXPECT_EQ(bodyOf({Paragraph{text("a\nb & c")}, Paragraph{text("r"), Side::Right}, Rule{}, Paragraph{text("")}}),
            "<p>a<br>b &amp; c</p>\n<p class=\"right\">r</p>\n<hr>\n<p></p>\n");
  DocumentTable table;
  table.rows.push_back({{left("Date"), right("£")}, true, false});
  table.rows.push_back({{left("<b>"), right("1.00")}, false, false});
  table.rows.push_back({{left("one cell")}, false, true});
  EXPECT_EQ(bodyOf({table}),
            "<div class=\"wide\"><table class=\"full\">\n"
            "<tr class=\"heading\"><th scope=\"col\">Date</th><th scope=\"col\" class=\"right\">£</th></tr>\n"
            "<tr><td>&lt;b&gt;</td><td class=\"right\">1.00</td></tr>\n"
            "<tr class=\"rule\"><td colspan=\"2\">one cell</td></tr>\n"
            "</table></div>\n");
  DocumentTable plain;
  plain.rows.push_back({{left("a"), left("b")}, false, false});
  EXPECT_EQ(bodyOf({plain}), "<div class=\"wide\"><table>\n<tr><td>a</td><td>b</td></tr>\n</table></div>\n");
}

TEST(DocumentHTML, SizesAreRelativeToThePages) {
  const auto big = NSAttributedString::attributedStringWithString(
      "x", NSDictionary::dictionaryWithObject(make<NSFont>("Sans", 12.5, true), NSFontAttributeName));
  EXPECT_EQ(bodyOf({Paragraph{big}}), "<p><span style=\"font-size:1.25em;font-weight:bold\">x</span></p>\n");
}

TEST(DocumentHTML, OnlyAWordTooLongForAPhoneIsBroken) {
  const auto cell = [](const NSString& string) {
    DocumentTable table;
    table.rows.push_back({{left(string)}, false, false});
    return bodyOf({table});
  };
  EXPECT_THAT(cell("twelveletter and more"), HasSubstr("<td>twelve"));
  EXPECT_THAT(cell("thirteenletts"), HasSubstr("<td class=\"long\">"));
  EXPECT_THAT(cell("王小明王小明"), HasSubstr("<td>"));
  EXPECT_THAT(cell("王小明王小明王"), HasSubstr("<td class=\"long\">"));
  EXPECT_THAT(cell("short\nlines\nmany of them"), HasSubstr("<td>"));
}

TEST(DocumentHTML, IsPrintedInTheLargestSizeInWhichItIsOneSheet) {
  EXPECT_EQ(printSizeOf(1), "10pt");
  EXPECT_EQ(printSizeOf(51), "10pt");
  EXPECT_EQ(printSizeOf(52), "9.5pt");
  EXPECT_EQ(printSizeOf(86), "6pt");
  EXPECT_EQ(printSizeOf(500), "6pt") << "on several sheets";
  EXPECT_EQ(printSizeOf(30, NSString(std::string(100, 'x'))), "9pt") << "rows of two lines";
}

}  // namespace
}  // namespace payrun_test

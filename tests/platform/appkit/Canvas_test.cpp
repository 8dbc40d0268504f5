#include "NorvikCore/platform/appkit/Canvas.h"

#include "NorvikCore/platform/appkit/PDFDocument.h"
#include "NorvikCore/platform/appkit/PNGImage.h"

#include "tests/support/ExpectRaises.h"
#include "tests/support/PdfReader.h"
#include "tests/support/Picture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

using namespace norvik;
using norvik::test::linesOfPdf;
using norvik::test::Picture;
using testing::Contains;
using testing::HasSubstr;

namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

using Lines = std::vector<std::string>;

Ref<NSMutableAttributedString> styled(const NSString& text, double size = 11) {
  const auto font = NSFont::fontWithName("DejaVu Sans", size);
  return NSMutableAttributedString::attributedStringWithString(
      text, NSDictionary::dictionaryWithObject(font, NSFontAttributeName));
}

bool holds(const std::string& file, const std::string& text) { return file.find(text) != std::string::npos; }

std::string bytesOf(const NSData& data) { return std::string(data.text()); }

Lines linesOf(PDFDocument& document) { return linesOfPdf(bytesOf(*document.data())); }

}  // namespace

TEST(Canvas, HeaderExample) {
  PNGImage page({600, 200}, 2);
  const auto address = styled("1 High Street, Cardiff CF10 1AA, Wales, United Kingdom"), amount = styled("1,234.50");
  const NSSize used = page.drawText(*address, {56, 56}, 200);
  page.drawText(*amount, {440, 56}, 100, NSTextAlignmentRight);
  page.drawLine({56, 56 + used.height}, {540, 56 + used.height}, 0.5, *NSColor::blackColor());
  EXPECT_LE(used.width, 200);
  EXPECT_GT(used.height, 22) << "two lines";
  const Picture picture(bytesOf(*page.data()));
  const int line = static_cast<int>(2 * (56 + used.height));
  EXPECT_EQ(picture.count({880, 112, 960, 140}, 0xFFFFFF), 80 * 28) << "the amount is at the right";
  EXPECT_GT(picture.count({960, 112, 1080, 140}, 0x000000), 20);
  EXPECT_LT(picture.count({700, line - 2, 800, line + 2}, 0xFFFFFF), 100 * 4) << "the line";
  EXPECT_EQ(picture.count({700, line + 2, 800, line + 6}, 0xFFFFFF), 100 * 4);
}

TEST(PDFDocument, HeaderExample) {
  PDFDocument document(a4Paper, "Payslip of April");
  document.drawText(*styled("first page"), {56, 56}, 480);
  document.beginPage();
  document.drawText(*styled("second page"), {56, 56}, 480);
  const std::string file = bytesOf(*document.data());
  EXPECT_EQ(linesOfPdf(file), (Lines{"first page", "second page"}));
  const Lines facts = test::readPdf(NORVIK_PDFINFO, {}, file);
  EXPECT_THAT(facts, Contains("Title:           Payslip of April"));
  EXPECT_THAT(facts, Contains("Pages:           2"));
  EXPECT_THAT(facts, Contains("Page size:       595.276 x 841.89 pts (A4)"));
}

TEST(PDFDocument, TextCanBeSearchedInEveryScript) {
  PDFDocument document;
  document.drawText(*styled("Zo\u00EB \u0141ukasz Nguy\u1EC5n Th\u1ECB"), {56, 56});
  document.drawText(*styled("\u4E2D\u6587"), {56, 86});
  document.drawText(*styled("\u0645\u062D\u0645\u062F"), {56, 116});
  const Lines lines = linesOf(document);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "Zo\u00EB \u0141ukasz Nguy\u1EC5n Th\u1ECB");
  EXPECT_EQ(lines[1], "\u4E2D\u6587");
  EXPECT_THAT(lines[2], HasSubstr("\u0645\u062D\u0645\u062F"));
}

TEST(PDFDocument, FontsAreInTheFile) {
  PDFDocument document;
  document.drawText(*styled("Net pay"), {56, 56});
  const Lines fonts = test::readPdf(NORVIK_PDFFONTS, {}, bytesOf(*document.data()));
  ASSERT_EQ(fonts.size(), 3u);  // the first two lines are headings
  EXPECT_THAT(fonts[2], HasSubstr("DejaVuSans"));
  EXPECT_THAT(fonts[2], HasSubstr("yes yes yes"));  // embedded, a subset, with a map to Unicode
}

TEST(PDFDocument, AddressesAreLinksUnlessTheyCouldDoHarm) {
  PDFDocument document;
  const auto text = styled("web mail file script quote");
  text->addAttribute(NSLinkAttributeName, "https://example.org/a?b=c&d", {0, 3});
  text->addAttribute(NSLinkAttributeName, "MAILTO:pay@example.org", {4, 4});
  text->addAttribute(NSLinkAttributeName, "file:///etc/passwd", {9, 4});
  text->addAttribute(NSLinkAttributeName, "javascript:alert(1)", {14, 6});
  text->addAttribute(NSLinkAttributeName, "https://example.org/'\\ \u00EB)(", {21, 5});
  document.drawText(*text, {56, 56});
  document.drawText(*text, {56, 86}, 60);  // on several lines
  const std::string file = bytesOf(*document.data());
  EXPECT_TRUE(holds(file, "/URI (https://example.org/a?b=c&d)"));
  EXPECT_TRUE(holds(file, "/URI (MAILTO:pay@example.org)"));
  EXPECT_TRUE(holds(file, "/URI (https://example.org/%27%5C%20%C3%AB%29%28)"));
  EXPECT_FALSE(holds(file, "passwd"));
  EXPECT_FALSE(holds(file, "alert"));
}

TEST(PDFDocument, ALinkIsWhereItsTextIs) {
  PDFDocument document({200, 100});
  const auto text = styled("pay slip", 10);
  text->addAttribute(NSLinkAttributeName, "https://example.org", {4, 4});
  text->addAttribute(NSUnderlineStyleAttributeName, 1, {4, 4});  // makes Pango lay it out
  const NSSize size = document.drawText(*text, {20, 30});
  const std::string file = bytesOf(*document.data());
  const std::size_t at = file.find("/Rect [");
  ASSERT_NE(at, std::string::npos);
  double left = 0, bottom = 0, right = 0, top = 0;
  ASSERT_EQ(std::sscanf(file.c_str() + at, "/Rect [ %lf %lf %lf %lf", &left, &bottom, &right, &top), 4);
  const double blankEnd = 20 + widthInFont("pay ", *NSFont::fontWithName("DejaVu Sans", 10));
  // Cairo extends the area to whole points.
  EXPECT_EQ(left, std::floor(blankEnd));
  EXPECT_EQ(right, std::ceil(20 + size.width));
  EXPECT_EQ(std::max(bottom, top), 100 - 30);
  EXPECT_EQ(std::min(bottom, top), std::floor(100 - 30 - size.height));
}

TEST(PDFDocument, IsCompleteOnceItsDataIsTaken) {
  PDFDocument document;
  const auto file = document.data();
  EXPECT_EQ(bytesOf(*document.data()), bytesOf(*file));
  EXPECT_RAISES(document.drawText(*styled("late"), {0, 0}), "NSInternalInconsistencyException");
  EXPECT_RAISES(document.beginPage(), "NSInternalInconsistencyException");
}

TEST(PDFDocument, APageHasSidesThatTheFormatAllows) {
  EXPECT_RAISES(PDFDocument({0.5, 100}), "NSInvalidArgumentException");
  EXPECT_RAISES(PDFDocument({100, 14'401}), "NSInvalidArgumentException");
  EXPECT_RAISES(PDFDocument({noNumber, 100}), "NSInvalidArgumentException");
  EXPECT_NO_THROW((void)PDFDocument({1, 14'400}).data());
}

TEST(PDFDocument, TitlesOfAnyTextAreKept) {
  PDFDocument document(a4Paper, NSString::fromUtf16(u"a(b)\\ \xD800"));
  const Lines facts = test::readPdf(NORVIK_PDFINFO, {}, bytesOf(*document.data()));
  EXPECT_THAT(facts, Contains("Title:           a(b)\\ \uFFFD"));
}

TEST(Canvas, PlacesThatAreNoNumbersRaise) {
  PDFDocument document;
  EXPECT_RAISES(document.drawText(*styled("x"), {noNumber, 0}), "NSInvalidArgumentException");
  EXPECT_RAISES(document.drawLine({0, 0}, {noNumber, 0}, 1, *NSColor::redColor()), "NSInvalidArgumentException");
  EXPECT_RAISES(document.fillRect({{0, 0}, {noNumber, 1}}, *NSColor::redColor()), "NSInvalidArgumentException");
}

TEST(Canvas, DrawsWhatItMeasures) {
  PDFDocument document;
  const auto text = styled("net pay of April");
  EXPECT_EQ(document.drawText(*text, {56, 56}), sizeOfText(*text));
  EXPECT_EQ(document.drawText(*text, {56, 156}, 60), sizeOfText(*text, 60));
  EXPECT_EQ(document.drawText(*styled(""), {56, 256}), sizeOfText(*styled("")));
}

TEST(Canvas, LinesAreBrokenWhereTheWidthEnds) {
  PDFDocument document;
  document.drawText(*styled("net pay of April"), {56, 56},
                    1 + widthInFont("net pay of", *NSFont::fontWithName("DejaVu Sans", 11)));
  document.drawText(*styled("a\nb\r\nc"), {56, 156});
  EXPECT_EQ(linesOf(document), (Lines{"net pay of", "April", "a", "b", "c"}));
}

TEST(Canvas, NoCharacterStopsADocument) {
  PDFDocument document(a4Paper, "a\uFFFFb");
  document.drawText(*styled("net\uFFFE pay\U0010FFFF"), {56, 56});
  document.drawText(*styled("huge", 1e9), {56, 86});
  const std::string file = bytesOf(*document.data());
  EXPECT_EQ(linesOfPdf(file).at(0), "net\uFFFD pay\uFFFD");
  EXPECT_THAT(test::readPdf(NORVIK_PDFINFO, {}, file), Contains("Title:           a\uFFFDb"));
}

TEST(Canvas, LongWordsAreBrokenWithoutAHyphen) {
  PDFDocument document;
  document.drawText(*styled("QQ123456C/QQ123456C"), {56, 56}, 60);
  std::string read;
  for (const std::string& line : linesOf(document)) read += line;
  EXPECT_EQ(read, "QQ123456C/QQ123456C");
}

TEST(Canvas, LongTextIsDrawnInWhole) {
  PDFDocument document({1'000, 14'400});
  std::string text;
  for (int i = 0; i < 3'000; ++i) text += "w" + std::to_string(i) + " ";
  const NSSize size = document.drawText(*styled(NSString(text)), {0, 0}, 900);
  EXPECT_LT(size.height, 14'400);
  std::string read;
  const Lines lines = linesOf(document);
  for (const std::string& line : lines) read += line + " ";
  EXPECT_EQ(read, text);
  EXPECT_NEAR(static_cast<double>(lines.size()), size.height / sizeOfText(*styled("x")).height, 0.1);
}

TEST(PNGImage, HeaderExample) {
  PNGImage image({200, 80}, 2);
  image.drawText(*styled("Net pay"), {10, 10}, 180);
  const Picture picture(bytesOf(*image.data()));
  EXPECT_EQ(picture.width(), 400);
  EXPECT_EQ(picture.height(), 160);
  EXPECT_GT(picture.count({20, 20, 200, 60}, 0x000000), 20);  // black pixels
  EXPECT_EQ(picture.count({200, 0, 400, 160}, 0xFFFFFF), 200 * 160);
}

TEST(PNGImage, AreasAndLinesHaveTheirColours) {
  PNGImage image({100, 100}, 1, *NSColor::greenColor());
  image.fillRect({{10, 10}, {20, 30}}, *NSColor::redColor());
  image.drawLine({50, 0}, {50, 100}, 2, *NSColor::blueColor());
  const Picture picture(bytesOf(*image.data()));
  EXPECT_EQ(picture.count({0, 0, 100, 100}, 0xFF0000), 20 * 30);
  EXPECT_EQ(picture.count({0, 0, 100, 100}, 0x0000FF), 2 * 100);
  EXPECT_EQ(picture.count({0, 0, 100, 100}, 0x00FF00), 100 * 100 - 600 - 200);
}

TEST(PNGImage, TextHasItsColoursOnBothWaysOfDrawing) {
  for (const int underline : {0, 1}) {
    PNGImage image({300, 60});
    const auto text = styled("MMM MMM", 30);
    text->addAttribute(NSForegroundColorAttributeName, NSColor::redColor(), {0, 3});
    text->addAttribute(NSBackgroundColorAttributeName, NSColor::blueColor(), {4, 3});
    text->addAttribute(NSUnderlineStyleAttributeName, underline, {3, 1});
    const NSSize size = image.drawText(*text, {0, 0});
    const Picture picture(bytesOf(*image.data()));
    const int middle = static_cast<int>(size.width / 2);
    EXPECT_GT(picture.count({0, 0, middle, 60}, 0xFF0000), 100) << underline;
    EXPECT_EQ(picture.count({0, 0, middle - 6, 60}, 0x0000FF), 0) << underline;
    EXPECT_GT(picture.count({middle, 0, 300, 60}, 0x0000FF), 500) << underline;
    EXPECT_EQ(picture.count({middle + 6, 0, 300, 60}, 0xFF0000), 0) << underline;
    EXPECT_GT(picture.count({middle, 0, 300, 60}, 0x000000), 100) << underline;
  }
}

TEST(PNGImage, TextIsSetAtTheSideThatTheAlignmentSays) {
  for (const char* const line : {"MMM", "\u0645\u0631\u062D\u0628\u0627", "MMM\nM"}) {
    const auto inked = [&](NSTextAlignment alignment) {
      PNGImage image({300, 60});
      image.drawText(*styled(line, 20), {0, 0}, 300, alignment);
      const Picture picture(bytesOf(*image.data()));
      std::string columns;
      for (int third = 0; third < 3; ++third) {
        columns += picture.count({100 * third, 0, 100 * third + 100, 60}, 0xFFFFFF) < 100 * 60 ? '#' : '.';
      }
      return columns;
    };
    EXPECT_EQ(inked(NSTextAlignmentLeft), "#..") << line;
    EXPECT_EQ(inked(NSTextAlignmentCenter), ".#.") << line;
    EXPECT_EQ(inked(NSTextAlignmentRight), "..#") << line;
  }
}

TEST(PNGImage, ACharacterWhoseHalvesHaveTwoStylesIsDrawnOnce) {
  const NSString pair = "\U0001D49C";
  const auto split = styled(pair, 20);
  split->addAttribute(NSForegroundColorAttributeName, NSColor::redColor(), {0, 1});
  split->addAttribute(NSForegroundColorAttributeName, NSColor::blueColor(), {1, 1});
  EXPECT_EQ(sizeOfText(*split).width, sizeOfText(*styled(pair, 20)).width);
}

TEST(PNGImage, ItsSidesAreLimited) {
  EXPECT_RAISES(PNGImage({0, 10}), "NSInvalidArgumentException");
  EXPECT_RAISES(PNGImage({10, 10}, 0), "NSInvalidArgumentException");
  EXPECT_RAISES(PNGImage({10, 32'001}), "NSInvalidArgumentException");
  EXPECT_RAISES(PNGImage({noNumber, 10}), "NSInvalidArgumentException");
  EXPECT_RAISES(PNGImage({-10, -10}, -1), "NSInvalidArgumentException");
}

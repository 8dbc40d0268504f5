#include "NorvikCore/Categories/NSString+Norvik.h"

#include "NorvikCore/platform/appkit/NSStringDrawing.h"

#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace norvik {
namespace {

NSString units(std::u16string_view text) { return NSString::fromUtf16(text); }

}  // namespace

TEST(NSStringNorvik, HeaderExample) {
  EXPECT_TRUE(isNilOrEmpty(" \n"));
  EXPECT_EQ(sqlLiteEscapeString("O'Neil"), "'O''Neil'");
  EXPECT_EQ(nk_objCKeyPath("GrossPay.TaxCode"), "grossPay.taxCode");
  EXPECT_EQ(nk_sanitizeFileNameString("a/b:c.pdf", "-"), "a-b-c-pdf");
}

TEST(NSStringNorvik, NothingButBlanksAndLineBreaksIsEmpty) {
  EXPECT_TRUE(isEmpty("   \n"));
  EXPECT_TRUE(isEmpty(""));
  EXPECT_TRUE(isEmpty("\t\v\f\r\u0085\u00A0\u1680\u2003\u2028\u2029\u202F\u205F\u3000"));
  EXPECT_FALSE(isEmpty(" . "));
  EXPECT_FALSE(isEmpty("\u200B"));  // not white space in Unicode
  EXPECT_TRUE(isNilOrEmpty(std::nullopt));
  EXPECT_FALSE(isNilOrEmpty("x"));
}

TEST(NSStringNorvik, QuotesTextForSql) {
  EXPECT_EQ(sqlLiteEscapeString(""), "''");
  EXPECT_EQ(sqlLiteEscapeString("''"), "''''''");
  EXPECT_EQ(sqlLiteEscapeString("O'Neil"), "'O''Neil'");
  EXPECT_EQ(sqlLiteEscapeString("a\0'b"_ns), "'a\0''b'"_ns);
  EXPECT_EQ(sqlLiteEscapeString(units({u"\xD83D", 1})), "'" + units({u"\xD83D", 1}) + "'");
  EXPECT_EQ(sqlLiteEscapeString("Zo\u00EB \"x\""), "'Zo\u00EB \"x\"'");
}

TEST(NSStringNorvik, ASelectorOfAnActionHasOneColonAtItsEnd) {
  const struct {
    const char* name;
    bool expected;
  } rows[] = {{"save:", true},      {"save:with:", false},  {"save", false},    {":", false},           {"", false},
              {"sa ve:", false},    {"sa\u00A0ve:", false}, {"save:\n", false}, {"sa\u2028ve:", false}, {"s:", true},
              {"s\u00E9nd:", true}, {"::", false}};
  for (const auto& row : rows) EXPECT_EQ(isValidActionSelectorName(row.name), row.expected) << row.name;
}

TEST(NSStringNorvik, ChangesTheFirstUnitAlone) {
  EXPECT_EQ(nk_uppercaseFirstCharacter("net pay"), "Net pay");
  EXPECT_EQ(nk_uppercaseFirstCharacter("\u00DFtra\u00DFe"), "Sstra\u00DFe");
  EXPECT_EQ(nk_uppercaseFirstCharacter("\u01C6x"), "\u01C5x");
  EXPECT_EQ(nk_uppercaseFirstCharacter("\u00E9"), "\u00C9");
  EXPECT_EQ(nk_lowercaseFirstCharacter("PAYE"), "pAYE");
  EXPECT_EQ(nk_lowercaseFirstCharacter("\u0130x"), "i\u0307x");
  EXPECT_EQ(nk_lowercaseFirstCharacter("\u03A3x"), "\u03C3x");
  EXPECT_EQ(nk_lowercaseFirstCharacter("1A"), "1A");
}

TEST(NSStringNorvik, TheFirstUnitOfAPairHasNoCase) {
  EXPECT_EQ(nk_lowercaseFirstCharacter("\U00010400x"), "\U00010400x");
  EXPECT_EQ(nk_uppercaseFirstCharacter("\U00010428x"), "\U00010428x");
  EXPECT_EQ(nk_uppercaseFirstCharacter(units({u"\xD83D", 1}) + "x"), units({u"\xD83D", 1}) + "x");
}

TEST(NSStringNorvik, AnEmptyTextHasNoFirstCharacter) {
  EXPECT_RAISES((void)nk_uppercaseFirstCharacter(""), "NSRangeException");
  EXPECT_RAISES((void)nk_lowercaseFirstCharacter(""), "NSRangeException");
  EXPECT_RAISES((void)nk_objCKeyPath("A..B"), "NSRangeException");
  EXPECT_RAISES((void)nk_objCKeyPath("A."), "NSRangeException");
  EXPECT_RAISES((void)nk_objCKeyPath(""), "NSRangeException");
}

TEST(NSStringNorvik, LowersThePartsOfAPath) {
  EXPECT_EQ(nk_objCKeyPath("GrossPay"), "grossPay");
  EXPECT_EQ(nk_lowercaseFirstCharactersSeparatedByString("A::B::C", "::"), "a::b::c");
  EXPECT_EQ(nk_lowercaseFirstCharactersSeparatedByString("A.B", ""), "a.B");
}

TEST(NSStringNorvik, TakesOutOfFileNamesWhatPathsGiveAMeaning) {
  EXPECT_EQ(nk_sanitizeFileNameString(".:/\\?%*|\"<>", "_"), "___________");
  EXPECT_EQ(nk_sanitizeFileNameString("a/b:c.pdf"), "abcpdf");
  EXPECT_EQ(nk_sanitizeFileNameString(" \na/b\u00A0", "-"), "a-b");
  EXPECT_EQ(nk_sanitizeFileNameString("a/b:c.pdf", "-"), "a-b-c-pdf");
  EXPECT_EQ(nk_sanitizeFileNameString("/a/", " "), "a");
  EXPECT_EQ(nk_sanitizeFileNameString("a\0\nb"_ns), "a\0\nb"_ns);
  EXPECT_EQ(nk_sanitizeFileNameString("???"), "");
  EXPECT_EQ(nk_sanitizeFileNameString("\U0001F4B7|x", "\u20AC"), "\U0001F4B7\u20ACx");
}

TEST(NSStringNorvik, HalvesBesideWhatIsTakenOutMeet) {
  EXPECT_EQ(nk_sanitizeFileNameString(units({u"\xD83D/\xDCB7", 3})), "\U0001F4B7");
}

TEST(NSStringNorvik, KeepsThePathExtensionOfAFileName) {
  const struct {
    const char *name, *expected;
  } rows[] = {
      {"a/b:c.pdf", "a-b-c.pdf"},
      {"pay.tar.gz", "pay-tar.gz"},
      {"pay", "pay"},
      {".profile", "-profile"},
      {"pay.", "pay"},
      {"a.p?f", "a.p-f"},
      {"a.pdf/", "a.pdf"},
      {"", ""},
      {" pay .pdf", "pay.pdf"},
      {"pay. pdf ", "pay.pdf"},
      {"pay. ", "pay"},
      {" .pdf", ""},
      {"a..pdf", "a-.pdf"},
      {"..pdf", "--pdf"},
      {"..", "--"},
      {"/", "-"},
      {"a/.pdf", "a--pdf"},
      {"a.b/c", "a-b-c"},
  };
  for (const auto& row : rows) EXPECT_EQ(nk_sanitizeFileNameExtString(row.name, "-"), row.expected) << row.name;
  EXPECT_EQ(nk_sanitizeFileNameExtString("?.pdf", ""), "");
  EXPECT_EQ(nk_sanitizeFileNameExtString("pay.???", ""), "pay");
}

TEST(NSStringNorvik, KnowsTypesOfImagesByTheirExtension) {
  const struct {
    const char *path, *expected;
  } rows[] = {
      {"a.jpg", "image/jpg"},
      {"a.JPEG", "image/jpg"},
      {"/x/a.png", "image/png"},
      {"a.gif", "image/gif"},
      {"a.bmp", "application/octet-stream"},
      {"jpg", "application/octet-stream"},
      {".jpg", "application/octet-stream"},
      {"..jpg", "application/octet-stream"},
      {"a..jpg", "image/jpg"},
      {"a.jpg.", "application/octet-stream"},
      {"a.jpg ", "application/octet-stream"},
      {"a.jpg/", "image/jpg"},
      {"a.jpg/b", "application/octet-stream"},
      {"", "application/octet-stream"},
  };
  for (const auto& row : rows) EXPECT_EQ(nk_imageMimeTypeFromPathExtension(row.path), row.expected) << row.path;
}

// Looks like a mistake but is deliberate: 0 is worded like 1.
TEST(NSStringNorvik, NoneIsWordedLikeOne) {
  EXPECT_EQ(nk_pluralIs(0), "is");
  EXPECT_EQ(nk_pluralIs(1), "is");
  EXPECT_EQ(nk_pluralIs(2), "are");
  EXPECT_EQ(nk_pluralSuffix(0), "");
  EXPECT_EQ(nk_pluralSuffix(1), "");
  EXPECT_EQ(nk_pluralSuffix(2), "s");
}

TEST(NSStringNorvik, GuessesXmlByItsDeclarationAnywhere) {
  EXPECT_TRUE(nk_isXml("<?xml version='1.0'?><a/>"));
  EXPECT_TRUE(nk_isXml("not at all, but <?XML"));
  EXPECT_FALSE(nk_isXml("<a/>"));
  EXPECT_FALSE(nk_isXml(""));
}

TEST(NSStringNorvik, GuessesJsonByAQuotedKeyAndNoLineBreakBehindIt) {
  const struct {
    const char* text;
    bool expected;
  } rows[] = {
      {"{\"a\":1}", true},
      {"{ \n\t\"a\":1}", true},
      {"{\u00A0\"a\":1}", true},
      {"{\"}", true},
      {"{\"a\":1}\n", true},
      {"{\"a\":1}\r\n", true},
      {"{\"a\":1}\u2028", true},
      {"{\"a\":1}\n\n", false},
      {"{\"a\":\n1}", false},
      {"[\"a\"]", false},
      {"{}", false},
      {" {\"a\":1}", false},
      {"{\"a\":1} ", false},
      {"{a:1}", false},
      {"", false},
      {"{", false},
      {"{\"a\":1}\n}", false},
  };
  for (const auto& row : rows) EXPECT_EQ(nk_isJson(row.text), row.expected) << row.text;
}

TEST(NSStringNorvik, PutsABlankBeforeEveryCapital) {
  EXPECT_EQ(nk_stringFromCamelCase("GrossPay"), " Gross Pay");
  EXPECT_EQ(nk_stringFromCamelCase("taxCode"), "tax Code");
  EXPECT_EQ(nk_stringFromCamelCase("PAYE"), " P A Y E");
  EXPECT_EQ(nk_stringFromCamelCase("\u00C9t\u00E9\u01C5"), " \u00C9t\u00E9 \u01C5");
  EXPECT_EQ(nk_stringFromCamelCase("\u2160"), "\u2160");          // a numeral, not a letter
  EXPECT_EQ(nk_stringFromCamelCase("\U00010400"), "\U00010400");  // two units, neither of them a letter
  EXPECT_EQ(nk_stringFromCamelCase(""), "");
}

TEST(NSStringNorvik, ReplacesTheFirstOccurrence) {
  EXPECT_EQ(nk_stringByReplacingFirstOccurrenceOfString("a-b-c", "-", "+"), "a+b-c");
  EXPECT_EQ(nk_stringByReplacingFirstOccurrenceOfString("abc", "", "+"), "abc");
  EXPECT_EQ(nk_stringByReplacingFirstOccurrenceOfString("abc", "abc", ""), "");
  const NSString text = std::string("Pay of April");
  EXPECT_TRUE(nk_stringByReplacingFirstOccurrenceOfString(text, "pay", "x").isIdenticalTo(text));
}

TEST(NSStringNorvik, BecomesAttributedText) {
  const auto attributes = NSDictionary::dictionaryWithObject("red", "colour");
  const auto text = nk_addAttributes("pay", attributes);
  NSRange run;
  EXPECT_TRUE(text->attributesAtIndex(2, &run)->isEqual(*attributes));
  EXPECT_EQ(run, (NSRange{0, 3}));
  EXPECT_EQ(nk_addAttributes("pay", nullptr)->attributesAtIndex(0)->count(), 0u);
  EXPECT_EQ(nk_addAttributes("", attributes)->length(), 0u);
}

TEST(NSStringNorvik, SplitsATextIntoLinesThatFitAWidthInAFont) {
  const auto font = NSFont::fontWithName("DejaVu Sans", 11);
  const auto lines = [&](const NSString& text, double width) -> Value {
    return nk_splitStringMaxWidth(text, width, *font);
  };
  const double twoWords = std::trunc(widthInFont("net pay", *font));
  EXPECT_EQ(lines("net pay of April", twoWords), NSArray::arrayWith({"net pay", "of April"}));
  EXPECT_EQ(lines("net pay of April", twoWords - 1), NSArray::arrayWith({"net", "pay of", "April"}));
  EXPECT_EQ(lines("net pay of April", 1e9), NSArray::arrayWith({"net pay of April"}));
  EXPECT_EQ(lines("Llanfairpwllgwyngyll", 10), NSArray::arrayWith({"Llanfairpwllgwyngyll"}));
  EXPECT_EQ(lines("", 10), NSArray::arrayWith({""}));
  EXPECT_EQ(lines("a\tb  c", 1e9), NSArray::arrayWith({"a b  c"}));
}

TEST(NSStringNorvik, WrapsATextAtAWidthInAFont) {
  const auto font = NSFont::fontWithName("DejaVu Sans", 11);
  EXPECT_EQ(nk_wrapStringMaxWidth("net pay of April", std::trunc(widthInFont("net pay", *font)), *font),
            "net pay\nof April");
  EXPECT_EQ(nk_wrapStringMaxWidth("", 10, *font), "");
}

}  // namespace norvik

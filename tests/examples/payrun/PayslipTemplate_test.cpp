#include "PayslipTemplate.h"

#include <gtest/gtest.h>

#include "BuiltInTemplate.h"
#include "NorvikCore/platform/appkit/NSColor.h"
#include "tests/examples/payrun/PayrunProgram.h"
#include "tests/examples/payrun/SmallEmployer.h"

namespace payrun_test {
namespace {

using namespace norvik;
using namespace payrun;

/// A run of one person, and the documents that templates create of it.
class PayslipTemplateOfOne : public testing::Test {
 protected:
  PayslipTemplateOfOne() { employer_.add(person("E1", "Zoë O'Brien", "1 High Street,Cardiff , , CF10 1AA")); }

  PayRun run() const {
    PayRun run(employer_, 1);
    run.add(item(0, 4, 28, ItemKind::Pay, 2345.67_dec, "Salary"));
    run.add(item(0, 4, 30, ItemKind::Deduction, 345.67_dec, "Tax"));
    run.add(item(0, 5, 1, ItemKind::Bonus, 50_dec, "Long service"));
    return run;
  }
  Document documentOf(const std::string& form) const {
    return PayslipTemplate(TextFile("test.template", form)).payslip(run(), 0);
  }
  /// A line for each block and row: "P text" or "R cell|cell". ">" is before right-aligned texts, "=" before a heading,
  /// and "-" before a row with a rule above it. "---" is a rule.
  std::string outlineOf(const std::string& form) const {
    std::string result;
    const auto side = [](Side of) { return of == Side::Right ? ">" : ""; };
    for (const Block& block : documentOf(form).blocks) {
      if (const auto* paragraph = std::get_if<Paragraph>(&block)) {
        result += std::string("P ") + side(paragraph->side) + paragraph->text->string().str() + "\n";
      } else if (const auto* table = std::get_if<DocumentTable>(&block)) {
        result += "T\n";
        for (const Row& row : table->rows) {
          result += std::string("R ") + (row.isHeading ? "=" : "") + (row.hasRuleAbove ? "-" : "");
          for (const Cell& cell : row.cells) result += side(cell.side) + cell.text->string().str() + "|";
          result += "\n";
        }
      } else {
        result += "---\n";
      }
    }
    return result;
  }
  std::string textOf(const std::string& line) const {
    const Document document = documentOf(line);
    return std::get<Paragraph>(document.blocks.at(0)).text->string().str();
  }
  Ref<NSDictionary> attributesOf(const std::string& line, NSUInteger at = 0) const {
    const Document document = documentOf(line);
    return std::get<Paragraph>(document.blocks.at(0)).text->attributesAtIndex(at);
  }
  static std::string refusalOf(const std::string& form) {
    try {
      PayslipTemplate read(TextFile("my.template", form));
    } catch (const InputError& error) {
      return error.what();
    }
    return "no refusal";
  }

  Employer employer_ = smallEmployer();
};

TEST_F(PayslipTemplateOfOne, EveryPlaceholderStandsForItsValue) {
  const struct {
    const char *placeholder, *value;
  } rows[] = {
      {"{employer}", "Test & Sons Ltd"},
      {"{payeReference}", "123/T1"},
      {"{employee}", "Zoë O'Brien"},
      {"{number}", "E1"},
      {"{address}", "1 High Street\nCardiff\nCF10 1AA"},
      {"{department}", "Operations"},
      {"{sortCode}", "12-34-56"},
      {"{account}", "12345678"},
      {"{taxMonth}", "1"},
      {"{taxYear}", "2024-25"},
      {"{firstDay}", "6 April 2024"},
      {"{lastDay}", "5 May 2024"},
      {"{pay}", "2,395.67"},
      {"{£pay}", "£2,395.67"},
      {"{deductions}", "345.67"},
      {"{net}", "2,050.00"},
      {"{£net}", "£2,050.00"},
      {"{payToDate}", "2,395.67"},
      {"{deductionsToDate}", "345.67"},
      {"{£netToDate}", "£2,050.00"},
      {"{netInWords}", "two thousand and fifty pounds and zero pence"},
      {"a{warning}{number}", "aE1"},
      {"{<}b{>}{|}{{}{}}", "<b>|{}"},
      {"a > b, c } d", "a > b, c } d"},
  };
  for (const auto& row : rows) EXPECT_EQ(textOf(row.placeholder), row.value) << row.placeholder;
}

TEST_F(PayslipTemplateOfOne, ItemsAreRepeatedByTheirKind) {
  EXPECT_EQ(outlineOf("<items>\n{date} {kind} {description} {amount} {£amount} {number}\n</items>"),
            "P 28 Apr 2024 Pay Salary 2,345.67 £2,345.67 E1\n"
            "P 30 Apr 2024 Deduction Tax 345.67 £345.67 E1\n"
            "P 1 May 2024 Bonus Long service 50.00 £50.00 E1\n");
  EXPECT_EQ(outlineOf("<PAY>\n{description}\n\n  </Pay>\n<deductions>\n{description}\n</deductions>"),
            "P Salary\nP \nP Long service\nP \nP Tax\n");
}

TEST_F(PayslipTemplateOfOne, LinesAreParagraphsRowsAndRules) {
  EXPECT_EQ(outlineOf("; a comment\n\nfirst\r\n\n---\n<right>last</right>\n\n"), "P first\nP \n---\nP >last\n");
  EXPECT_EQ(outlineOf("| a | <right>b</right> |\n|<heading>c</heading>|\n|---|----|\n|| d\n\n| e"),
            "T\nR a|>b|\nR =c|\nR -|d|\nP \nT\nR e|\n");
  EXPECT_EQ(outlineOf("|\n"), "T\nR |\n");
  EXPECT_EQ(outlineOf("| {|} | <a href=\"http://a/|b\">c</a> |"), "T\nR ||c|\n");
  EXPECT_EQ(outlineOf("|a|\n<pay>\n|{amount}|\n</pay>\n|---|\n|b|"), "T\nR a|\nR 2,345.67|\nR 50.00|\nR -b|\n")
      << "items are rows of the table around them";
  EXPECT_EQ(outlineOf("|a|\n|---|\nx\n|b|"), "T\nR a|\nP x\nT\nR b|\n") << "a rule with no row below it";
}

TEST_F(PayslipTemplateOfOne, ALineIsLeftOutWhereNoneOfItsPlaceholdersHasAValue) {
  EXPECT_EQ(outlineOf("{warning}\nWarning: {warning}\n{warning}{number}\n| a | {warning} |\n| {warning} | {number} |"),
            "P E1\nT\nR |E1|\n");
  employer_.add(person("E2", "Ann"));
  EXPECT_EQ(PayslipTemplate(TextFile("t", "{address}")).payslip(PayRun(employer_, 1), 1).blocks.size(), 0U);
}

TEST_F(PayslipTemplateOfOne, ALineThatIsLeftOutHasNoEffectOnTheRuleAboveIt) {
  const struct {
    const char *why, *form, *outline;
  } rows[] = {
      {"the first row of a group", "|a|\n|---|\n|b|{warning}|\n|c|\n|d|", "T\nR a|\nR -c|\nR d|\n"},
      {"a paragraph", "|a|\n|---|\n{warning}\n|c|", "T\nR a|\nR -c|\n"},
      {"the only row of a group", "|a|\n|---|\n|b|{warning}|\n|---|\n|c|", "T\nR a|\nR -c|\n"},
      {"the last row of a table", "|a|\n|---|\n|b|{warning}|\n\n|c|", "T\nR a|\nP \nT\nR c|\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(outlineOf(row.form), row.outline) << row.why;
}

TEST_F(PayslipTemplateOfOne, AWarningStandsWhereTheNetPayIsBelowZero) {
  PayRun run(employer_, 1);
  const PayslipTemplate form(TextFile("t", "{warning}"));
  EXPECT_TRUE(form.payslip(run, 0).blocks.empty()) << "at zero";
  run.add(item(0, 4, 28, ItemKind::Deduction, 0.01_dec, "Tax"));
  EXPECT_EQ(std::get<Paragraph>(form.payslip(run, 0).blocks.at(0)).text->string(), "The net pay is below zero.");
  EXPECT_EQ(std::get<Paragraph>(PayslipTemplate(TextFile("t", "{£net}")).payslip(run, 0).blocks.at(0)).text->string(),
            "-£0.01");
}

TEST_F(PayslipTemplateOfOne, TagsGiveAttributesThatAddUp) {
  EXPECT_EQ(attributesOf("plain")->count(), 0U);
  const auto font = [&](const char* line) { return attributesOf(line)->objectForKey(NSFontAttributeName); };
  EXPECT_EQ(font("<b>x</b>"), Value(make<NSFont>("Sans", 10, true)));
  EXPECT_EQ(font("<b><i>x</i></b>"), Value(make<NSFont>("Sans", 10, true, true)));
  EXPECT_EQ(font("<BIG>x</big>"), Value(make<NSFont>("Sans", 12.5)));
  EXPECT_EQ(font("<big><big><b>{employee}</b></big></big>"), Value(make<NSFont>("Sans", 15.625, true)));
  EXPECT_EQ(font("<small>x</small>"), Value(make<NSFont>("Sans", 8)));
  EXPECT_EQ(attributesOf("<color value=\"#FF8000\">x</color>")->objectForKey(NSForegroundColorAttributeName),
            Value(NSColor::colorWithRed(1, 128 / 255.0, 0, 1)));
  EXPECT_EQ(attributesOf("<background value=#0000ff>x</background>")->objectForKey(NSBackgroundColorAttributeName),
            Value(NSColor::blueColor()));
  EXPECT_EQ(attributesOf("<u>x</u>")->objectForKey(NSUnderlineStyleAttributeName), Value(1));
  EXPECT_EQ(attributesOf("<a href='https://a'>x</a>")->objectForKey(NSLinkAttributeName), Value("https://a"));
  EXPECT_EQ(attributesOf("<right>x</right>")->count(), 0U);
  EXPECT_EQ(attributesOf("x<b>{number}</b>", 1)->count(), 1U);
  EXPECT_EQ(attributesOf("x<b>{number}</b>y", 3)->count(), 0U);
}

TEST_F(PayslipTemplateOfOne, AValueIsTextWhateverItHolds) {
  for (const std::string name : {"<b>Bob</b>", "</b>", "<script>", "{net}", "a | b", ">Bob", "---", "\001<b>", "; x",
                                 "\uFDD0", "王小明", "محمد", "Zoe\u0308"}) {
    Employer employer = smallEmployer();
    employer.add(person("E1", name));
    const Document document =
        PayslipTemplate(TextFile("t", "<b>{employee}</b>\n| {employee} |")).payslip(PayRun(employer, 1), 0);
    const auto& text = std::get<Paragraph>(document.blocks.at(0)).text;
    EXPECT_EQ(text->string(), NSString(name));
    NSRange run;
    EXPECT_EQ(text->attributesAtIndex(0, &run)->count(), 1U);
    EXPECT_EQ(run.length, text->length()) << name;
    const auto& table = std::get<DocumentTable>(document.blocks.at(1));
    ASSERT_EQ(table.rows.at(0).cells.size(), 1U) << name;
    EXPECT_EQ(table.rows[0].cells[0].text->string(), NSString(name));
  }
}

TEST_F(PayslipTemplateOfOne, ADescriptionKeepsItsLinesAndLosesOtherControlCharacters) {
  PayRun run(employer_, 1);
  run.add(item(0, 4, 28, ItemKind::Pay, 1_dec, "a\r\nb\rc\nd\te\033[2Jf\u0085g\u202Eh"));
  const Document document = PayslipTemplate(TextFile("t", "<pay>\n{description}\n</pay>")).payslip(run, 0);
  EXPECT_EQ(std::get<Paragraph>(document.blocks.at(0)).text->string(), "a\nb\nc\nd e [2Jf g h");
}

TEST_F(PayslipTemplateOfOne, TheTitleIsOneLine) {
  EXPECT_EQ(documentOf("<title>Payslip of <b>{employee}</b>, {address}</title>\nx").title,
            "Payslip of Zoë O'Brien, 1 High Street Cardiff CF10 1AA");
  EXPECT_EQ(documentOf("x").title, "Payslip");
}

TEST_F(PayslipTemplateOfOne, WhatIsWrongIsRefusedWithItsPlace) {
  const struct {
    const char *form, *complaint;
  } rows[] = {
      {"", "my.template:1:1: the template has no line"},
      {"; a comment\n<title>x</title>\n", "my.template:1:1: the template has no line"},
      {"x\ny\n  <b>{employee}\n",
       "my.template:3:3: \"<b>{employee}\": Reached end of string with 1 tags remaining (b)"},
      {"<b>x</i>", "my.template:1:1: \"<b>x</i>\": String had ending tag /i when we expected ending tag b or new tag"},
      {"x</b>", "my.template:1:1: \"x</b>\": String had ending tag /b when we expected ending tag (null) or new tag"},
      {"| a | <b>b |", "my.template:1:7: \"<b>b\": Reached end of string with 1 tags remaining (b)"},
      {"Name: {name}", "my.template:1:7: there is no placeholder \"{name}\""},
      {"{Employee}", "my.template:1:1: there is no placeholder \"{Employee}\""},
      {"{}", "my.template:1:1: there is no placeholder \"{}\""},
      {"{£employee}", "my.template:1:1: there is no placeholder \"{£employee}\""},
      {"{employee", "my.template:1:1: a { has no } after it; {{} is the character"},
      {"a < b", "my.template:1:3: a < has no > after it; {<} is the character"},
      {"<a href=\"{employee}\">x</a>", "my.template:1:1: \"<a href=\"{employee}\">\" has a { within a tag"},
      {"{amount}", "my.template:1:1: \"{amount}\" can be used only between <items>, <pay> or <deductions> and its end"},
      {"<pay>\n{amount}\n</pay>\n{kind}",
       "my.template:4:1: \"{kind}\" can be used only between <items>, <pay> or <deductions> and its end"},
      {"<blink>now</blink>", "my.template:1:1: \"<blink>now</blink>\": there is no tag \"blink\""},
      {"<blink></blink>", "my.template:1:1: \"<blink></blink>\": there is no tag \"blink\""},
      {"<b>x</b> <blink></blink>", "my.template:1:1: \"<b>x</b> <blink></blink>\": there is no tag \"blink\""},
      {"<b size=2>x</b>", "my.template:1:1: \"<b size=2>x</b>\": the tag \"b\" takes no attributes"},
      {"<color>x</color>",
       "my.template:1:1: \"<color>x</color>\": the tag \"color\" takes the attribute value and no other"},
      {"<color value=red>x</color>",
       "my.template:1:1: \"<color value=red>x</color>\": the tag \"color\" takes a colour such as #5B6470, not "
       "\"red\""},
      {"<color value=#12345G>x</color>",
       "my.template:1:1: \"<color value=#12345G>x</color>\": the tag \"color\" takes a colour such as #5B6470, not "
       "\"#12345G\""},
      {"<a name=x>x</a>", "my.template:1:1: \"<a name=x>x</a>\": the tag \"a\" takes the attribute href and no other"},
      {"<heading>x</heading>", "my.template:1:1: <heading> can be used only in a row"},
      {"<items>\nx\n", "my.template:1:1: \"<items>\" is never closed"},
      {"x\n</items>\n", "my.template:2:1: \"</items>\" closes nothing"},
      {"<items>\nx\n</pay>\n", "my.template:3:1: \"</pay>\" closes nothing"},
      {"<items>\n<pay>\n", "my.template:2:1: \"<pay>\" is inside \"<items>\""},
      {"<title>x</title>\n<title>y</title>\n", "my.template:2:1: the title is given twice"},
      {"a\001b", "my.template:1:2: \"a\\x01b\" has a control character"},
      {"a\xFF", "my.template:1:2: \"a\\xFF\" is not UTF-8"},
  };
  for (const auto& row : rows) EXPECT_EQ(refusalOf(row.form), row.complaint) << row.form;
}

TEST_F(PayslipTemplateOfOne, TheOneThatIsBuiltInIsTheFile) {
  EXPECT_EQ(std::string(builtInTemplate), readFile(PAYRUN_TEMPLATE_FILE));
  EXPECT_EQ(installedTemplate().name(), "payslip.template") << "none is installed beside a test";
  EXPECT_EQ(PayslipTemplate(installedTemplate()).payslip(run(), 0).title,
            "Payslip of Zoë O'Brien, tax month 1 of 2024-25");
}

TEST_F(PayslipTemplateOfOne, ItsPageShowsTheWholeTemplate) {
  const std::string page = readFile(std::string(PROJECT_FOLDER) + "/docs/payslips.md");
  EXPECT_NE(page.find("```text\n" + readFile(PAYRUN_TEMPLATE_FILE) + "```\n"), std::string::npos);
  for (const char* complaint :
       {"payrun: my.template:3:1: \"<b>{employee}\": Reached end of string with 1 tags remaining (b)\n",
        "payrun: my.template:4:9: there is no placeholder \"{salary}\"\n",
        "payrun: my.template:5:1: \"<blink>now</blink>\": there is no tag \"blink\"\n"}) {
    EXPECT_NE(page.find(complaint), std::string::npos) << complaint;
  }
  EXPECT_EQ("payrun: " + refusalOf("\n\n<b>{employee}\n"),
            "payrun: my.template:3:1: \"<b>{employee}\": Reached end of string with 1 tags remaining (b)");
}

}  // namespace
}  // namespace payrun_test

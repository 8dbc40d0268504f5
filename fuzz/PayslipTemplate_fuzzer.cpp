// fuzz/PayslipTemplate_fuzzer.cpp - the templates of the pay run's payslips. The first line of the input is the
// employee's name, the others are the template.
//
// A template is refused or makes a payslip. In a payslip, a name is always text and never markup. To check this, a
// second payslip is made for a name of one letter, which is then replaced by the real name. Both must be equal. On a
// terminal only colours are set. In HTML every tag is known, and closed.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "DocumentHTML.h"
#include "DocumentTerminal.h"
#include "NorvikCore/platform/values/Utf8.h"
#include "PayslipTemplate.h"

namespace {

using namespace norvik;
using namespace payrun;

void check(bool holds) {
  if (!holds) std::abort();
}

constexpr const char* letter = "\uE000";

Document payslipOf(const PayslipTemplate& form, const std::string& name) {
  Employer employer;
  employer.name = "Employer";
  employer.payeReference = "123/T1";
  employer.taxYear = 2024;
  employer.add(Department{"OPS", "Operations"});
  employer.add(Employee{"E1", name, 0, "12-34-56", "12345678", "1 High Street, Town"});
  PayRun run(employer, 1);
  const Date day = run.days().first;
  run.add({0, day, ItemKind::Pay, Decimal(100), "Salary", std::nullopt});
  run.add({0, day, ItemKind::Deduction, Decimal(150), "Tax\n(two lines)", std::nullopt});
  return form.payslip(run, 0);
}

std::vector<std::string> textsOf(const Document& document) {
  std::vector<std::string> texts = {document.title.str()};
  for (const Block& block : document.blocks) {
    if (const auto* paragraph = std::get_if<Paragraph>(&block)) texts.push_back(paragraph->text->string().str());
    if (const auto* table = std::get_if<DocumentTable>(&block)) {
      check(!table->rows.empty());
      for (const Row& row : table->rows) {
        for (const Cell& cell : row.cells) texts.push_back(cell.text->string().str());
      }
    }
  }
  return texts;
}

std::string replaced(std::string text, std::string_view what, std::string_view by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

void checkNameIsText(const PayslipTemplate& form, const std::string& name) {
  const std::vector<std::string> texts = textsOf(payslipOf(form, name)), others = textsOf(payslipOf(form, letter));
  check(texts.size() == others.size());
  for (std::size_t i = 0; i < texts.size(); ++i) check(texts[i] == replaced(others[i], letter, name));
}

/// The text without escape sequences, which may only set and reset styles.
std::string withoutStyles(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    if (!text.starts_with("\033[")) {
      check(text.front() != '\033');
      result += text.front();
      text.remove_prefix(1);
      continue;
    }
    const std::size_t end = text.find_first_not_of("0123456789;", 2);
    check(end != std::string_view::npos && text[end] == 'm');
    text.remove_prefix(end + 1);
  }
  return result;
}

void checkTerminal(const Document& document) {
  for (const std::size_t width : {1U, 20U, 80U}) {
    const std::string plain = terminalDocument(document, width, TerminalColors::Plain);
    check(plain.find('\033') == std::string::npos);
    check(utf8::isValid(plain));
    check(withoutStyles(terminalDocument(document, width, TerminalColors::Direct)) == plain);
  }
}

void checkTags(std::string_view html) {
  const std::string_view known[] = {"p", "span", "a", "div", "table", "tr", "td", "th"};
  std::vector<std::string_view> open;
  for (std::size_t at = html.find('<'); at != std::string_view::npos; at = html.find('<', at + 1)) {
    const std::string_view tag = html.substr(at + 1, html.find('>', at) - at - 1);
    check(tag.find('<') == std::string_view::npos);
    if (tag == "br" || tag == "hr") continue;
    if (tag.starts_with('/')) {
      check(!open.empty() && open.back() == tag.substr(1));
      open.pop_back();
      continue;
    }
    open.push_back(tag.substr(0, tag.find(' ')));
    bool isKnown = false;
    for (const std::string_view each : known) isKnown |= open.back() == each;
    check(isKnown);
  }
  check(open.empty());
}

void checkHTML(const Document& document) {
  const std::string page = htmlDocument(document);
  check(utf8::isValid(page));
  const std::size_t begin = page.find("<main>\n") + 7, end = page.rfind("</main>");
  check(end != std::string::npos && begin <= end);
  checkTags(std::string_view(page).substr(begin, end - begin));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t end = std::min(input.find('\n'), input.size());
  const std::string name = input.substr(0, end);
  if (name.empty() || !utf8::isValid(name) || name.find('\r') != std::string::npos) return 0;
  const std::string text = input.substr(std::min(end + 1, input.size()));
  if (text.find(letter) != std::string::npos || name.find(letter) != std::string::npos) return 0;
  try {
    const PayslipTemplate form(TextFile("input", text));
    checkNameIsText(form, name);
    const Document document = payslipOf(form, name);
    checkTerminal(document);
    checkHTML(document);
  } catch (const InputError&) {
  }
  return 0;
}

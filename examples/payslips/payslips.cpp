// examples/payslips/payslips.cpp - docs/payslips.md: the parts of a payslip in a program of your own.
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/markup/MRKEscapedStringForString.h"
#include "NorvikCore/markup/MRKTaggedString.h"
#include "NorvikCore/platform/appkit/AttributedStringTerminal.h"
#include "NorvikCore/platform/appkit/PDFDocument.h"

#include <iostream>

using namespace norvik;

int main() {
  const NSString name = "Sian <O'Brien>";
  const Decimal pay = 2500.00_dec, deductions = 425.50_dec;

  auto styles = MRKTaggedStringOptions::optionsWithBaseAttributes(
      NSDictionary::dictionaryWithObject(NSFont::systemFontOfSize(10), NSFontAttributeName));
  styles->setAttributes(NSDictionary::dictionaryWithObject(NSFont::boldSystemFontOfSize(10), NSFontAttributeName), "b");
  styles->setAttributes(NSDictionary::dictionaryWithObject(NSFont::boldSystemFontOfSize(14), NSFontAttributeName),
                        "big");

  // The name is escaped, so it is shown as it is. The amounts have no tags.
  const auto heading = MRKTaggedString::stringWithFormat("<big>Payslip of %@</big>", MRKEscapedStringForString(name));
  const auto net = MRKTaggedString::stringWithFormat("net pay <b>%@</b>", nk_currencyStyleString(pay - deductions));
  const Ref<NSAttributedString> lines[] = {heading->attributedStringWithOptions(*styles),
                                           net->attributedStringWithOptions(*styles)};

  PDFDocument document(a4Paper, "Payslip");
  double top = 56;
  for (const auto& line : lines) {
    document.drawText(*line, {56, top}, 480);
    top += 24;
    std::cout << terminalText(*line, TerminalColors::Plain) << "\n";
  }
  document.drawLine({56, top}, {536, top}, 0.5, *NSColor::grayColor());
  std::cout << (document.data()->length() > 1000 ? "a file to print" : "no file") << "\n";
}

// examples/tutorial/step9.cpp - docs/tutorial.md: payslips as text and as HTML.
#include "PayslipText.h"

#include "NorvikCore/platform/appkit/AttributedStringHTML.h"
#include "NorvikCore/platform/appkit/AttributedStringTerminal.h"

#include <iostream>

using namespace payroll;

int main() {
  const Ref<NSAttributedString> text = payslipText(*payslip("Siân <Works>", "Works", 2500.00_dec));
  std::cout << terminalText(*text, TerminalColors::Plain) << "\n";  // Ansi16 on a terminal
  std::cout << htmlText(*text, NSFont::systemFontOfSize(12).get()) << "\n";
}

// examples/drawing/drawing.cpp - the code of docs/drawing.md.
#include "NorvikCore/Categories/NSString+Norvik.h"
#include "NorvikCore/platform/appkit/NSStringDrawing.h"
#include "NorvikCore/platform/appkit/PDFDocument.h"
#include "NorvikCore/platform/appkit/PNGImage.h"

#include <iostream>

using namespace norvik;

int main() {
  const auto sans = NSFont::fontWithName("Sans", 11);
  const auto text = NSMutableAttributedString::attributedStringWithString(
      "Net pay 1,234.50", NSDictionary::dictionaryWithObject(sans, NSFontAttributeName));
  text->addAttribute(NSForegroundColorAttributeName, NSColor::redColor(), {8, 8});

  const NSSize size = sizeOfText(*text);  // points: 72 to the inch
  const bool fits = size.width + widthInFont(" ", *sans) < 200;

  PDFDocument document(a4Paper, "Payslip");
  document.drawText(*text, {56, 56});                              // at the place, as wide as it is
  document.drawText(*text, {56, 80}, 100);                         // wrapped within 100 points
  document.drawText(*text, {56, 120}, 300, NSTextAlignmentRight);  // at the right of 300 points
  document.drawLine({56, 140}, {356, 140}, 0.5, *NSColor::grayColor());
  const Ref<NSData> file = document.data();

  PNGImage picture({200, 40}, 2);  // two pixels a point each way
  picture.drawText(*text, {10, 10});
  const Ref<NSData> image = picture.data();

  const Ref<NSArray> lines = nk_splitStringMaxWidth("A note for the employee", 80, *sans);
  std::cout << (fits ? "fits, " : "too wide, ") << lines->count() << " lines, a page of " << document.size().width
            << " points\n";
}

// examples/markup/markup.cpp - the code of docs/markup.md.
#include "NorvikCore/markup/MRKEscapedStringForString.h"
#include "NorvikCore/markup/MRKTaggedString.h"
#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/NSFont.h"

#include <iostream>

using namespace norvik;

/// Each run of the text on a line of its own, with the names and values of its attributes.
void print(const NSAttributedString& text) {
  for (const auto& [range, attributes] : text) {
    std::cout << range.location << " '" << text.string().substringWithRange(range) << "'";
    for (const auto& [name, value] : *attributes) std::cout << "  " << name << "=" << value;
    std::cout << "\n";
  }
}

int main() {
  auto options = MRKTaggedStringOptions::optionsWithBaseAttributes(
      NSDictionary::dictionaryWithObject(NSFont::fontWithName("DejaVu Sans", 11), NSFontAttributeName));
  options->setAttributes(
      NSDictionary::dictionaryWithObject(NSFont::fontWithName("DejaVu Sans Bold", 11), NSFontAttributeName), "b");
  options->setAttributes(NSDictionary::dictionaryWithObject(NSColor::redColor(), NSForegroundColorAttributeName),
                         "due");
  options->setDynamicAttributes(
      [](const NSString&, const NSDictionary& written, const NSDictionary&) -> Ref<NSDictionary> {
        if (!written["href"].isString()) return nullptr;
        return NSDictionary::dictionaryWithObject(written["href"], NSLinkAttributeName);
      },
      "a");

  NSString name = "Bob <Builder>";
  auto letter = MRKTaggedString::stringWithFormat("Dear %@, <due>pay <b>now</b> or <a href='/help'>ask</a></due>",
                                                  MRKEscapedStringForString(name));
  std::cout << *letter->string() << "\n";
  print(*letter->attributedStringWithOptions(*options));

  Ref<NSError> error;
  if (!MRKTaggedString::stringWithString("Pay <b>now")->stringWithError(&error))
    std::cout << error->userInfo()->objectForKey("developerError") << "\n";
}

// NorvikCore/Categories/NSMutableAttributedString+Norvik.h - a format and its arguments, appended to attributed text.
//
//   auto text = nk_stringWithFormat_attributes("Net pay of %@: ", plain, "April");
//   nk_appendFormat_attributes_argumentAttributes(*text, "GBP %@", plain, bold, 1234.50_dec);
//
// NSAttributedString+Norvik.h describes formats. The text itself may be one of the arguments. If an argument raises,
// nothing is appended.
#pragma once

#include "NorvikCore/Categories/NSAttributedString+Norvik.h"

namespace norvik {

template <class... Args>
void nk_appendFormat_attributes_argumentAttributes(NSMutableAttributedString& text, const NSString& format,
                                                   const Ref<NSDictionary>& attributes,
                                                   const Ref<NSDictionary>& argumentAttributes,
                                                   const Args&... arguments) {
  const auto formatted =
      nk_stringWithFormat_attributes_argumentAttributes(format, attributes, argumentAttributes, arguments...);
  text.appendAttributedString(*formatted);
}

template <class... Args>
void nk_appendFormat_attributes(NSMutableAttributedString& text, const NSString& format,
                                const Ref<NSDictionary>& attributes, const Args&... arguments) {
  nk_appendFormat_attributes_argumentAttributes(text, format, attributes, attributes, arguments...);
}

}  // namespace norvik
